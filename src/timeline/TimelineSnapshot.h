#pragma once

#include "model/Decimal.h"
#include "model/Instant.h"
#include "model/LocalDate.h"
#include "model/Subscription.h"

#include <QList>
#include <QString>

#include <optional>

namespace orbitledge {

/// One of the subscriptions that a snapshot was made from. It shares the list and copies nothing, so that a
/// snapshot costs little beside the list, and stays valid for as long as it is held.
class SubscriptionRef {
public:
    SubscriptionRef(QList<Subscription> list, qsizetype index)
        : m_list(std::move(list))
        , m_index(index)
    {
    }

    const Subscription &operator*() const { return m_list.at(m_index); }
    const Subscription *operator->() const { return &m_list.at(m_index); }

    friend bool operator==(const SubscriptionRef &left, const SubscriptionRef &right)
    {
        return *left == *right;
    }

private:
    QList<Subscription> m_list;
    qsizetype m_index;
};

struct TimelineEntry {
    SubscriptionRef subscription;
    /// Whole days from today; negative where the renewal is overdue. Absent for what does not renew: an
    /// inactive subscription, or a date that does not exist.
    std::optional<qint64> daysUntilRenewal;

    friend bool operator==(const TimelineEntry &, const TimelineEntry &) = default;
};

struct TimelineSection {
    /// "week", "month", "next-month", "later" or "inactive".
    QString id;
    /// For people; that of "next-month" is the month's name.
    QString title;
    QList<TimelineEntry> entries;

    friend bool operator==(const TimelineSection &, const TimelineSection &) = default;
};

struct TimelineDay {
    /// The start of the day.
    Instant date;
    LocalDate localDate;
    bool isToday = false;
    /// Of active subscriptions, on this day.
    qint64 renewalCount = 0;
    /// "#RRGGBB", of the day's first three renewals.
    QList<QString> renewalColors;

    friend bool operator==(const TimelineDay &, const TimelineDay &) = default;
};

/// What there is to show about the subscriptions on one day. Amounts are in the profile's currency and
/// not rounded.
struct TimelineSnapshot {
    Decimal monthlyTotal;
    /// What active subscriptions still charge from today to the end of the month.
    Decimal remainingThisMonth;
    /// Active subscriptions, counted in the totals or not.
    qint64 activeCount = 0;
    /// Some active subscription could not be counted in full: no amount in the profile's currency, or a
    /// billing cycle that is not known.
    bool totalsArePartial = false;
    /// In a fixed order; none is empty.
    QList<TimelineSection> sections;
    /// The seven days of the calendar week that contains today.
    QList<TimelineDay> week;
    /// Active renewals due today or within three days.
    qint64 badgeCount = 0;

    friend bool operator==(const TimelineSnapshot &, const TimelineSnapshot &) = default;
};

} // namespace orbitledge

Q_DECLARE_TYPEINFO(orbitledge::SubscriptionRef, Q_RELOCATABLE_TYPE);
Q_DECLARE_TYPEINFO(orbitledge::TimelineEntry, Q_RELOCATABLE_TYPE);
