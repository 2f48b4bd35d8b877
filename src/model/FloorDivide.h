#pragma once

#include <QtGlobal>

namespace orbitledge {

/// The quotient rounded down, so that days before 1970 have their times counted forward too.
constexpr qint64 floorDivide(qint64 value, qint64 divisor)
{
    return value / divisor - (value % divisor < 0 ? 1 : 0);
}

} // namespace orbitledge
