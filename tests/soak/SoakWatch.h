#pragma once

#include "soak/SoakDesk.h"

#include <QDateTime>

#include <vector>

namespace orbitledge::testing {

/// Looks at the program while everything around it fails, and tells what is not as it always should be.
class SoakWatch {
public:
    explicit SoakWatch(SoakDesk &desk)
        : m_desk(desk)
    {
    }

    /// What takes no time; to be called again and again. Here and below: what is wrong, or nothing.
    [[nodiscard]] QString glance();
    /// What takes a little; after each step.
    [[nodiscard]] QString look();
    /// When everything is well again: what should come to rest by itself, and what should have happened by
    /// now.
    [[nodiscard]] QString lookAtTheEnd();

    /// For people.
    [[nodiscard]] QStringList figures() const;

private:
    struct Sample {
        int life = 0;
        qint64 memory = 0; // KiB
        int descriptors = 0;
        int threads = 0;
    };

    [[nodiscard]] QString lookAtProcess();
    [[nodiscard]] QString lookAtCache();
    [[nodiscard]] QString lookForSecrets() const;
    [[nodiscard]] QString lookAtResources();
    [[nodiscard]] QString lookAtNotifications(bool isAtTheEnd);
    [[nodiscard]] QString lookAtGrowth() const;

    SoakDesk &m_desk;
    QDateTime m_cacheTime;
    int m_looks = 0;
    int m_cachesRead = 0;
    int m_mostHelpers = 0;
    double m_longest = 0;
    std::vector<Sample> m_samples;
};

} // namespace orbitledge::testing
