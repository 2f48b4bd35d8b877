#pragma once

#include "timeline/TimelineSnapshot.h"

#include <QByteArray>

namespace orbitledge {

/// The timeline as one JSON object for programs, in UTF-8 and ending in a line feed. Amounts are numbers
/// with all their digits, instants are in UTC, and a missing "daysUntilRenewal" means that there is none.
QByteArray timelineJson(const TimelineSnapshot &snapshot);

} // namespace orbitledge
