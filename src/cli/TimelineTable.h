#pragma once

#include "locale/Calendar.h"
#include "timeline/TimelineSnapshot.h"

#include <QString>

namespace orbitledge {

struct TableOptions {
    /// ISO 4217 code of the totals.
    QString currency;
    bool colors = false;
    /// Where lines would be longer, subtitles and then names give way, down to some 50 columns; 0 for no
    /// limit.
    int columns = 0;
};

/// The timeline as a table for people, lines ending in a line feed.
QString timelineTable(
    const TimelineSnapshot &snapshot, Instant now, const Calendar &calendar, const TableOptions &options);

} // namespace orbitledge
