#pragma once

#include "model/Decimal.h"

#include <QtGlobal>

#include <array>
#include <cstddef>

/// What the arithmetic of Decimal and the reading of its digits share.
namespace orbitledge::decimal {

__extension__ using Significand = unsigned __int128;

inline constexpr Significand largestSignificand = ~Significand{0};

/// That a significand can hold.
inline constexpr int powersOfTen = 39;

constexpr std::array<Significand, powersOfTen> makePowers()
{
    std::array<Significand, powersOfTen> powers{};
    Significand power = 1;
    for (Significand &entry : powers) {
        entry = power;
        power *= 10;
    }
    return powers;
}

inline constexpr std::array<Significand, powersOfTen> powers = makePowers();

/// Gathers digits from left to right, exactly while they fit, with what rounding needs to know after.
class DigitCollector {
public:
    void push(int digit)
    {
        if (m_dropped > 0) {
            m_sticky = m_sticky || digit != 0;
            ++m_dropped;
            return;
        }
        // Zeros wait until a digit follows, so that the significand never ends in one.
        if (digit == 0) {
            if (m_significand != 0)
                ++m_waitingZeros;
            return;
        }
        while (m_waitingZeros > 0) {
            if (m_significand > largestSignificand / 10) {
                drop(0, m_waitingZeros + 1);
                m_sticky = true;
                return;
            }
            m_significand *= 10;
            --m_waitingZeros;
        }
        Significand next = 0;
        if (__builtin_mul_overflow(m_significand, Significand{10}, &next)
            || __builtin_add_overflow(next, static_cast<Significand>(digit), &next)) {
            drop(digit, 1);
            return;
        }
        m_significand = next;
    }

    /// The significand, rounded where digits were dropped; `shift` is added to the exponent.
    Significand finish(qint64 &shift)
    {
        shift = m_waitingZeros + m_dropped;
        if (m_dropped == 0)
            return m_significand;
        if (m_significand >= powers[Decimal::guaranteedDigits]) {
            m_sticky = m_sticky || m_firstDropped != 0;
            m_firstDropped = static_cast<int>(m_significand % 10);
            m_significand /= 10;
            ++shift;
        }
        const bool odd = (m_significand & 1) != 0;
        if (m_firstDropped > 5 || (m_firstDropped == 5 && (m_sticky || odd)))
            ++m_significand;
        // Zeros that the rounding made belong to the exponent, which may be too large by them.
        while (m_significand % 10 == 0) {
            m_significand /= 10;
            ++shift;
        }
        return m_significand;
    }

private:
    void drop(int first, qint64 count)
    {
        m_firstDropped = first;
        m_dropped = count;
        m_waitingZeros = 0;
    }

    Significand m_significand = 0;
    qint64 m_waitingZeros = 0;
    qint64 m_dropped = 0;
    int m_firstDropped = 0;
    bool m_sticky = false;
};

} // namespace orbitledge::decimal
