#include "locale/TimeZone.h"

#include <QDateTime>
#include <QFileInfo>
#include <QTimeZone>

#include <algorithm>
#include <mutex>
#include <vector>

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 hour = qint64{3600} * 1000;
constexpr qint64 day = 24 * hour;

// No zone was ever further from UTC, nor moved its clocks further at once.
constexpr qint64 largestOffset = 26 * hour;

/// A stretch of time with one offset: from `start` up to `end`.
struct Period {
    qint64 start;
    qint64 end;
    qint64 offset;
};

QDateTime utc(qint64 milliseconds)
{
    return QDateTime::fromMSecsSinceEpoch(milliseconds, Qt::UTC);
}

const QString databaseFolder = u"/usr/share/zoneinfo/"_s;

bool isPartOfName(const QByteArray &text)
{
    constexpr QByteArrayView others("_+-");
    return !text.isEmpty() && std::ranges::all_of(text, [others](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')
            || others.contains(c);
    });
}

bool isInDatabase(const QByteArray &id)
{
    // The toolkit would also take a POSIX rule ("FOO+3") for a name, and a path that leaves the folder.
    const QList<QByteArray> parts = id.split('/');
    if (!std::ranges::all_of(parts, isPartOfName) || parts.constFirst() == "right")
        return false;
    return QFileInfo(databaseFolder + QString::fromLatin1(id)).isFile();
}

} // namespace

/// The zone's periods: those of the years that a program meets in a table, all others from the toolkit,
/// which works them out anew, and slowly, each time it is asked.
class TimeZone::Rules {
public:
    explicit Rules(const QTimeZone &zone)
        : m_zone(zone)
    {
        appendPeriods(m_periods, tableStart, tableEnd);
    }

    const QTimeZone &zone() const { return m_zone; }

    qint64 offsetAt(qint64 milliseconds) const
    {
        if (milliseconds >= tableStart && milliseconds < tableEnd)
            return tablePeriod(milliseconds)->offset;
        return offsetFromToolkit(milliseconds);
    }

    /// Calls `visit(period, next)` for the periods that touch [from, to], in their order, until it returns
    /// true; `next` is null at the last.
    template <typename Visit> void visitPeriods(qint64 from, qint64 to, Visit visit) const
    {
        if (from >= tableStart && to < tableEnd) {
            const Period *period = tablePeriod(from);
            const Period *const last = tablePeriod(to);
            while (!visit(*period, period == last ? nullptr : period + 1) && period != last)
                ++period;
            return;
        }
        std::vector<Period> periods;
        appendPeriods(periods, from, to + 1);
        for (std::size_t i = 0; i < periods.size(); ++i) {
            if (visit(periods[i], i + 1 < periods.size() ? &periods[i + 1] : nullptr))
                return;
        }
    }

private:
    static constexpr qint64 tableStart = -2208988800000; // 1900-01-01
    static constexpr qint64 tableEnd = 4102444800000; // 2100-01-01

    qint64 offsetFromToolkit(qint64 milliseconds) const
    {
        return qint64{m_zone.offsetFromUtc(utc(milliseconds))} * 1000;
    }

    void appendPeriods(std::vector<Period> &periods, qint64 from, qint64 to) const
    {
        periods.push_back({from, to, offsetFromToolkit(from)});
        // The toolkit ends its list at the last change that the zone's file spells out, even where the file
        // ends in a rule for all later years; asked again from a moment after that change it applies the
        // rule.
        constexpr qint64 moment = 1000;
        qint64 asked = from;
        while (asked < to) {
            const QTimeZone::OffsetDataList transitions = m_zone.transitions(utc(asked), utc(to));
            if (transitions.isEmpty())
                return;
            for (const QTimeZone::OffsetData &transition : transitions)
                appendTransition(periods, transition, to);
            asked = transitions.last().atUtc.toMSecsSinceEpoch() + moment;
        }
    }

    static void appendTransition(
        std::vector<Period> &periods, const QTimeZone::OffsetData &transition, qint64 to)
    {
        const qint64 at = transition.atUtc.toMSecsSinceEpoch();
        const qint64 offset = qint64{transition.offsetFromUtc} * 1000;
        // A change of name alone, or of the part that is called daylight saving, moves no clock.
        if (at <= periods.back().start || at >= to || offset == periods.back().offset)
            return;
        periods.back().end = at;
        periods.push_back({at, to, offset});
    }

    const Period *tablePeriod(qint64 milliseconds) const
    {
        const auto next = std::ranges::upper_bound(m_periods, milliseconds, {}, &Period::start);
        return &*std::prev(next);
    }

    QTimeZone m_zone;
    std::vector<Period> m_periods;
};

TimeZone::TimeZone(std::shared_ptr<const Rules> rules)
    : m_rules(std::move(rules))
{
}

std::optional<TimeZone> TimeZone::named(const QByteArray &id)
{
    // To make a table takes half a millisecond, and one zone is asked for many times.
    static std::mutex mutex;
    static QByteArray lastId;
    static std::shared_ptr<const Rules> lastRules;
    const std::scoped_lock lock(mutex);
    if (lastRules && id == lastId)
        return TimeZone(lastRules);
    if (!isInDatabase(id))
        return std::nullopt;
    const QTimeZone zone(id);
    if (!zone.isValid())
        return std::nullopt;
    lastId = id;
    lastRules = std::make_shared<const Rules>(zone);
    return TimeZone(lastRules);
}

TimeZone TimeZone::system()
{
    // The C library takes a colon in front, and whole paths; the toolkit takes neither.
    QString chosen = qEnvironmentVariable("TZ");
    if (chosen.startsWith(u':'))
        chosen.remove(0, 1);
    // Where nothing is chosen, the link names the zone; the toolkit would ask a text file first, which may
    // be out of date.
    if (chosen.isEmpty())
        chosen = QFileInfo(u"/etc/localtime"_s).symLinkTarget();
    if (chosen.startsWith(databaseFolder))
        chosen.remove(0, databaseFolder.size());
    if (auto zone = named(chosen.toLatin1()))
        return *std::move(zone);
    QTimeZone zone(QTimeZone::systemTimeZoneId());
    if (!zone.isValid())
        zone = QTimeZone::utc();
    return TimeZone(std::make_shared<const Rules>(zone));
}

QByteArray TimeZone::id() const
{
    return m_rules->zone().id();
}

qint64 TimeZone::offsetMilliseconds(Instant instant) const
{
    return m_rules->offsetAt(instant.millisecondsSinceEpoch());
}

qint64 TimeZone::wallClock(Instant instant) const
{
    return instant.millisecondsSinceEpoch() + offsetMilliseconds(instant);
}

namespace {

/// What stands for a wall time: the first instant that shows it, or what follows from the gap it fell in.
struct Resolution {
    qint64 instant = 0;
    /// The first instant after the gap; absent where the wall time exists.
    std::optional<qint64> gapEnd;
};

template <typename Rules> Resolution resolve(const Rules &rules, qint64 wallClock)
{
    Resolution result;
    bool inGap = false;
    rules.visitPeriods(
        wallClock - largestOffset, wallClock + largestOffset, [&](const Period &period, const Period *next) {
            const qint64 instant = wallClock - period.offset;
            if (instant >= period.start && instant < period.end) {
                result = {instant, std::nullopt};
                return true;
            }
            if (!inGap && next != nullptr && instant >= period.end
                && wallClock - next->offset < next->start) {
                inGap = true;
                result = {instant, period.end};
            }
            return false;
        });
    return result;
}

} // namespace

Instant TimeZone::instantAt(qint64 wallClock) const
{
    return Instant::fromMillisecondsSinceEpoch(resolve(*m_rules, wallClock).instant);
}

Instant TimeZone::firstInstantFrom(qint64 wallClock) const
{
    const Resolution resolution = resolve(*m_rules, wallClock);
    return Instant::fromMillisecondsSinceEpoch(resolution.gapEnd.value_or(resolution.instant));
}

Instant TimeZone::startOfDay(qint64 days) const
{
    return firstInstantFrom(days * day);
}

} // namespace orbitledge
