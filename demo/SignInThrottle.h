#pragma once

#include <QHash>
#include <QList>
#include <QMutex>
#include <QString>

#include <chrono>
#include <optional>

namespace orbitledge::demo {

/// Slows down whoever guesses a password: after so many failed sign-ins for one e-mail within the window,
/// further ones are refused, right or wrong, until the oldest failure leaves the window. Successful sign-ins
/// are never counted. Any thread may use it.
class SignInThrottle {
public:
    using Time = std::chrono::steady_clock::time_point;

    static constexpr qsizetype failuresAllowed = 5;
    static constexpr std::chrono::seconds window{60};

    /// How long to wait before the next attempt, in whole seconds and at least one; absent where there is no
    /// need to.
    std::optional<std::chrono::seconds> waitFor(const QString &emailKey, Time now);

    void recordFailure(const QString &emailKey, Time now);

private:
    void forgetOld(Time now);

    QMutex m_mutex;
    QHash<QString, QList<Time>> m_failures;
    Time m_lastSweep;
};

} // namespace orbitledge::demo
