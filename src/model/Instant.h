#pragma once

#include <QByteArray>

#include <compare>
#include <optional>
#include <string_view>

namespace orbitledge {

/// A point in time, to the millisecond, without a calendar. Only `Calendar` tells its day.
class Instant {
public:
    /// 1970-01-01T00:00:00Z.
    constexpr Instant() = default;

    static constexpr Instant fromMillisecondsSinceEpoch(qint64 milliseconds) { return Instant(milliseconds); }
    static constexpr Instant fromSecondsSinceEpoch(qint64 seconds) { return Instant(seconds * 1000); }

    /// Reads the internet date-time form of ISO 8601 (RFC 3339, section 5.6): date, upper-case "T", hours,
    /// minutes and seconds, an optional fraction after a dot (read to milliseconds, the rest cut off), and
    /// a zone: "Z", "±HH:MM", "±HHMM" or "±HH". Refused: no zone, a blank for "T", second 60, hour 24, a
    /// day that does not exist, a year outside 1 to 9999 (also once the offset is taken off), anything left
    /// over.
    static std::optional<Instant> fromText(std::string_view text);

    /// "yyyy-MM-ddTHH:mm:ssZ": UTC, whole seconds, rounded down.
    [[nodiscard]] QByteArray text() const;

    [[nodiscard]] constexpr qint64 millisecondsSinceEpoch() const { return m_milliseconds; }

    friend constexpr auto operator<=>(const Instant &, const Instant &) = default;

private:
    constexpr explicit Instant(qint64 milliseconds)
        : m_milliseconds(milliseconds)
    {
    }

    qint64 m_milliseconds = 0;
};

} // namespace orbitledge
