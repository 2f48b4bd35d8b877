#pragma once

#include "locale/Locale.h"

namespace orbitledge {

/// The weekday on which the region's week starts: 1 for Sunday to 7 for Saturday.
int firstWeekdayNumber(const Locale &locale);

} // namespace orbitledge
