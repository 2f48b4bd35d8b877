#include "locale/IcuZone.h"

#include <unicode/timezone.h>

#include <mutex>

namespace orbitledge {

void keepIcuFromTheSystemsZone()
{
    static std::once_flag done;
    std::call_once(done, [] { icu::TimeZone::adoptDefault(icu::TimeZone::getGMT()->clone()); });
}

} // namespace orbitledge
