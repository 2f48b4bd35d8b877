#include "locale/RegionData.h"

#include "locale/IcuZone.h"

#include <unicode/calendar.h>

#include <memory>

namespace orbitledge {

int firstWeekdayNumber(const Locale &locale)
{
    keepIcuFromTheSystemsZone();
    UErrorCode status = U_ZERO_ERROR;
    // The zone plays no part in the answer.
    const std::unique_ptr<icu::Calendar> calendar(icu::Calendar::createInstance(
        icu::TimeZone::getGMT()->clone(), icu::Locale(locale.dates.constData()), status));
    const auto weekday = U_SUCCESS(status) ? calendar->getFirstDayOfWeek(status) : UCAL_MONDAY;
    return U_SUCCESS(status) ? weekday : UCAL_MONDAY;
}

} // namespace orbitledge
