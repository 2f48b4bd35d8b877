#pragma once

#include <QtGlobal>

namespace orbitledge::testing {

/// The time that a test grants, in milliseconds. Builds that are not optimised or that watch themselves are
/// slower by a factor, but what grows with the square of its input is slower by far more.
constexpr qint64 timeLimit(qint64 milliseconds)
{
#if !defined(__OPTIMIZE__) || defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)                  \
    || defined(ORBITLEDGE_WITH_FAULTS)
    return milliseconds * 15;
#else
    return milliseconds;
#endif
}

} // namespace orbitledge::testing
