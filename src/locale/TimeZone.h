#pragma once

#include "model/Instant.h"

#include <QByteArray>

#include <memory>
#include <optional>

namespace orbitledge {

/// A time zone of the system's tzdata: the offset from UTC at every instant, and the way back from a wall
/// clock. A cheap value that can be shared between threads.
///
/// The way back has two hard cases, decided here once for the whole program:
///
/// - A wall time that was skipped (clocks went forward over it) moves on by the length of the gap:
///   02:30 on 2026-03-29 in Europe/Berlin is 03:30 CEST.
/// - A wall time that happened twice (clocks went back over it) is the first of the two:
///   02:30 on 2026-10-25 in Europe/Berlin is 02:30 CEST, not CET.
///
/// and a day starts with the first instant that carries its date: 2017-10-01 in America/Asuncion starts
/// at 01:00, because midnight was skipped. A day that was skipped whole (2011-12-30 in Pacific/Apia) starts
/// where the next one does.
class TimeZone {
public:
    /// The zone with this name in the tz database, aliases included. Absent where the system does not know
    /// it. Zones that count leap seconds ("right/…") are not accepted.
    static std::optional<TimeZone> named(const QByteArray &id);

    /// The machine's zone, UTC where it is not set to one that can be read.
    static TimeZone system();

    [[nodiscard]] QByteArray id() const;

    /// Milliseconds to add to UTC, between −26 and 26 hours.
    [[nodiscard]] qint64 offsetMilliseconds(Instant instant) const;

    /// The wall clock at an instant, as milliseconds since 1970-01-01T00:00 on that same clock.
    [[nodiscard]] qint64 wallClock(Instant instant) const;

    /// The instant at which the wall clock shows `wallClock`, in the same unit.
    [[nodiscard]] Instant instantAt(qint64 wallClock) const;

    /// The first instant at which the wall clock shows `wallClock` or, where that was skipped, a later time:
    /// the end of the gap. (What moves on by the length of the gap instead is `instantAt`.)
    [[nodiscard]] Instant firstInstantFrom(qint64 wallClock) const;

    /// The first instant of the day that lies `days` after 1970-01-01.
    [[nodiscard]] Instant startOfDay(qint64 days) const;

private:
    class Rules;
    explicit TimeZone(std::shared_ptr<const Rules> rules);

    std::shared_ptr<const Rules> m_rules;
};

} // namespace orbitledge
