#pragma once

#include "platform/Diagnosis.h"

#include <QCoroTask>
#include <QDBusMessage>
#include <QDeadlineTimer>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <tl/expected.hpp>

#include <chrono>

namespace orbitledge {

/// Who is on the session bus, and whom it could start.
struct BusNames {
    QStringList owned;
    QStringList startable;

    /// Present where somebody has the name, who has not been asked anything yet.
    [[nodiscard]] findings::Presence presenceOf(const QString &name) const;
};

/// The questions about one subject, which have to be answered in a limited time, all together. Nobody is
/// started to answer. Must outlive what it returns. On failure: Mute or Refusing.
class BusInquiry {
public:
    explicit BusInquiry(std::chrono::milliseconds limit)
        : m_deadline(limit)
    {
    }

    using Answer = tl::expected<QDBusMessage, findings::Presence>;
    using Property = tl::expected<QVariant, findings::Presence>;

    QCoro::Task<Answer> ask(QDBusMessage question);
    QCoro::Task<Property> property(QString service, QString path, QString interface, QString name);
    QCoro::Task<tl::expected<BusNames, findings::Presence>> names();

private:
    QDeadlineTimer m_deadline;
};

} // namespace orbitledge
