#pragma once

#include "cli/ViewArguments.h"
#include "timeline/TimelineSnapshot.h"

#include <QString>

#include <optional>

namespace orbitledge {

struct ComingRenewal {
    SubscriptionRef subscription;
    /// Not negative.
    qint64 daysUntilRenewal = 0;
};

/// What a status bar has room for.
struct Status {
    /// Active renewals due today or within three days.
    qint64 badgeCount = 0;
    /// The active renewals that are not over and due within seven days, by their day; those of one day in the
    /// order in which they are held.
    QList<ComingRenewal> withinSevenDays;
    /// The first of all that are not over, however far off.
    std::optional<ComingRenewal> nextRenewal;
    // In `currency`, not rounded.
    Decimal monthlyTotal;
    Decimal remainingThisMonth;
    bool totalsArePartial = false;
    qint64 activeCount = 0;
    /// ISO 4217 code.
    QString currency;
    Instant fetchedAt;
};

Status statusOf(const CacheSnapshot &snapshot, const View &view);

/// One line for people, ending in a line feed. Here and below: `status` is absent where nothing is saved.
QString statusLine(const std::optional<Status> &status, const Locale &locale);

/// One JSON object for programs on a line of its own, in UTF-8.
QByteArray statusJson(const std::optional<Status> &status);

/// One JSON object on a line of its own, in UTF-8, as the status bar Waybar takes it from a program. Its
/// texts are Pango markup.
QByteArray waybarJson(const std::optional<Status> &status, const Locale &locale);

} // namespace orbitledge
