#pragma once

#include "model/Instant.h"
#include "model/LocalDate.h"

#include <QString>
#include <QUrl>

#include <optional>

namespace orbitledge {

/// When a reminder is to be shown.
class RenewalNotificationDelivery {
public:
    /// As soon as possible.
    static RenewalNotificationDelivery immediate() { return {}; }
    static RenewalNotificationDelivery scheduled(Instant instant)
    {
        RenewalNotificationDelivery delivery;
        delivery.m_instant = instant;
        return delivery;
    }

    [[nodiscard]] bool isImmediate() const { return !m_instant; }
    /// Absent where it is immediate.
    [[nodiscard]] std::optional<Instant> instant() const { return m_instant; }

    friend bool operator==(const RenewalNotificationDelivery &, const RenewalNotificationDelivery &)
        = default;

private:
    RenewalNotificationDelivery() = default;

    std::optional<Instant> m_instant;
};

/// One reminder of one renewal.
struct RenewalNotificationPlan {
    /// "<id of the subscription>.<yyyy-MM-dd of the renewal>.<lead days>": another lead time is another
    /// reminder.
    QString key;
    /// The key behind "orbitledge.renewal.".
    QString identifier;
    QString title;
    QString body;
    /// The page to open when the reminder is clicked.
    QUrl destinationURL;
    RenewalNotificationDelivery delivery = RenewalNotificationDelivery::immediate();
    /// The day that it announces.
    LocalDate renewalDate;

    friend bool operator==(const RenewalNotificationPlan &, const RenewalNotificationPlan &) = default;
};

/// What the identifiers of all renewal reminders begin with.
inline constexpr QStringView renewalIdentifierPrefix = u"orbitledge.renewal.";

} // namespace orbitledge
