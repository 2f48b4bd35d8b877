#pragma once

#include "locale/Calendar.h"
#include "model/FloorDivide.h"

#include <QTest>

#include <ctime>

namespace orbitledge {

inline char *toString(const DateInterval &interval)
{
    return QTest::toString(QString::fromLatin1(interval.start.text()) + QLatin1String(" to ")
        + QString::fromLatin1(interval.end.text()));
}

inline char *toString(Weekday weekday)
{
    return QTest::toString(static_cast<int>(weekday));
}

namespace testing {

constexpr qint64 second = 1000;
constexpr qint64 minute = 60 * second;
constexpr qint64 hour = 60 * minute;
constexpr qint64 day = 24 * hour;

// Zones and locales are the system's. A test that names one the system lacks cannot say anything, so these
// end the program rather than go on with another.

inline Instant at(const char *text)
{
    const auto instant = Instant::fromText(text);
    if (!instant)
        qFatal("%s is not an instant", text);
    return *instant;
}

inline TimeZone zoneNamed(const QByteArray &id)
{
    auto zone = TimeZone::named(id);
    if (!zone)
        qFatal("the system's tzdata lacks %s", id.constData());
    return *std::move(zone);
}

inline Locale localeNamed(const QByteArray &name)
{
    auto locale = Locale::named(name);
    if (!locale)
        qFatal("ICU lacks %s", name.constData());
    return *std::move(locale);
}

inline Calendar calendarIn(const QByteArray &zone, const QByteArray &locale = "en_US")
{
    return Calendar(zoneNamed(zone), localeNamed(locale));
}

/// What a clock shows, in the unit of `TimeZone::wallClock`.
inline qint64 wallTime(const LocalDate &date, qint64 hours = 0, qint64 minutes = 0, qint64 seconds = 0)
{
    return date.daysSinceEpoch() * day + hours * hour + minutes * minute + seconds * second;
}

inline Instant later(Instant instant, qint64 milliseconds)
{
    return Instant::fromMillisecondsSinceEpoch(instant.millisecondsSinceEpoch() + milliseconds);
}

/// The C library's own reading of a zone's file, which shares no code with the toolkit's.
class CLibraryZone {
public:
    explicit CLibraryZone(const QByteArray &id)
        : m_previous(qgetenv("TZ"))
    {
        use(id);
    }
    ~CLibraryZone() { use(m_previous); }
    Q_DISABLE_COPY_MOVE(CLibraryZone)

    [[nodiscard]] qint64 offsetSeconds(qint64 secondsSinceEpoch) const
    {
        return brokenDown(secondsSinceEpoch).tm_gmtoff;
    }

    [[nodiscard]] LocalDate localDate(qint64 secondsSinceEpoch) const
    {
        const std::tm time = brokenDown(secondsSinceEpoch);
        return {qint64{time.tm_year} + 1900, qint64{time.tm_mon} + 1, time.tm_mday};
    }

private:
    static void use(const QByteArray &id)
    {
        qputenv("TZ", id);
        ::tzset();
    }

    static std::tm brokenDown(qint64 secondsSinceEpoch)
    {
        const std::time_t time = secondsSinceEpoch;
        std::tm result{};
        if (::localtime_r(&time, &result) == nullptr)
            qFatal("the C library cannot tell the time at %lld", secondsSinceEpoch);
        return result;
    }

    QByteArray m_previous;
};

/// Zones that between them have every kind of change there is.
inline const QList<QByteArray> &instructiveZones()
{
    static const QList<QByteArray> zones{"UTC", "Europe/Berlin", "Europe/London", "Europe/Dublin",
        "Europe/Lisbon", "Europe/Moscow", "Europe/Amsterdam", "Europe/Istanbul", "Africa/Cairo",
        "Africa/Casablanca", "Africa/El_Aaiun", "Africa/Monrovia", "Africa/Windhoek", "Africa/Juba",
        "America/New_York", "America/Los_Angeles", "America/St_Johns", "America/Havana", "America/Sao_Paulo",
        "America/Asuncion", "America/Santiago", "America/Nuuk", "America/Scoresbysund", "America/Caracas",
        "America/Toronto", "Antarctica/Troll", "Asia/Beirut", "Asia/Gaza", "Asia/Jerusalem", "Asia/Tehran",
        "Asia/Kolkata", "Asia/Kathmandu", "Asia/Pyongyang", "Asia/Tokyo", "Asia/Manila",
        "Australia/Lord_Howe", "Australia/Adelaide", "Pacific/Apia", "Pacific/Kwajalein", "Pacific/Chatham",
        "Pacific/Norfolk", "Pacific/Kiritimati", "Pacific/Easter", "Etc/GMT+5"};
    return zones;
}

} // namespace testing
} // namespace orbitledge
