#include "locale/DateFormatter.h"

#include "locale/IcuText.h"
#include "locale/IcuZone.h"

#include <unicode/dtptngen.h>
#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>

#include <array>
#include <map>
#include <optional>

namespace orbitledge {

namespace {

/// Which parts of a date and in which form, as Unicode Technical Standard 35 has it; each locale puts them in
/// its own order.
namespace skeleton {
constexpr auto monthAndDay = u"MMMd";
constexpr auto monthAndYear = u"yMMMM";
constexpr auto month = u"LLLL";
constexpr auto narrowWeekday = u"ccccc";
constexpr auto day = u"d";
constexpr auto completeDate = u"yMMMMEEEEd";
constexpr auto shortTime = u"jm";
} // namespace skeleton

constexpr std::array skeletons{skeleton::monthAndDay, skeleton::monthAndYear, skeleton::month,
    skeleton::narrowWeekday, skeleton::day, skeleton::completeDate, skeleton::shortTime};

} // namespace

class DateFormatter::Private {
public:
    explicit Private(const Locale &locale)
        : m_locale(locale.dates.constData())
    {
        // Billing dates are Gregorian, also for people whose locale counts months in another way.
        UErrorCode status = U_ZERO_ERROR;
        m_locale.setKeywordValue("calendar", "gregorian", status);
    }

    QString format(const LocalDate &date, const char16_t *wanted)
    {
        constexpr double millisecondsPerDay = 86'400'000;
        const auto text = date.isValid()
            ? formatWallClock(static_cast<double>(date.daysSinceEpoch()) * millisecondsPerDay, wanted)
            : std::nullopt;
        return text.value_or(date.text());
    }

    /// `wallClock`: what the clock shows, in milliseconds since it showed the start of 1970. Absent where ICU
    /// has no such format.
    std::optional<QString> formatWallClock(double wallClock, const char16_t *wanted)
    {
        if (!m_formatter)
            prepare();
        const auto pattern = m_patterns.find(wanted);
        if (!m_formatter || pattern == m_patterns.end())
            return std::nullopt;
        if (m_current != wanted) {
            m_formatter->applyPattern(pattern->second);
            m_current = wanted;
        }
        icu::UnicodeString text;
        m_formatter->format(wallClock, text);
        return toQString(text);
    }

private:
    /// One formatter for all patterns, since each has the names of all months and days. What makes patterns
    /// is larger still, so it is asked for all of them at once, and goes.
    void prepare()
    {
        keepIcuFromTheSystemsZone();
        UErrorCode status = U_ZERO_ERROR;
        const std::unique_ptr<icu::DateTimePatternGenerator> generator(
            icu::DateTimePatternGenerator::createInstance(m_locale, status));
        auto calendar
            = std::make_unique<icu::GregorianCalendar>(icu::TimeZone::getGMT()->clone(), m_locale, status);
        constexpr double beforeAllDates = -1e17;
        calendar->setGregorianChange(beforeAllDates, status);
        auto formatter = std::make_unique<icu::SimpleDateFormat>(icu::UnicodeString(), m_locale, status);
        if (U_FAILURE(status))
            return;
        formatter->adoptCalendar(calendar.release());
        for (const char16_t *const wanted : skeletons) {
            UErrorCode found = U_ZERO_ERROR;
            const icu::UnicodeString pattern = generator->getBestPattern(wanted, found);
            if (U_SUCCESS(found))
                m_patterns.emplace(wanted, pattern);
        }
        m_formatter = std::move(formatter);
    }

    icu::Locale m_locale;
    std::unique_ptr<icu::SimpleDateFormat> m_formatter;
    std::map<std::u16string_view, icu::UnicodeString> m_patterns;
    /// Which the formatter has.
    std::u16string_view m_current;
};

DateFormatter::DateFormatter(const Locale &locale)
    : m_private(std::make_unique<Private>(locale))
{
}

DateFormatter::DateFormatter(DateFormatter &&) noexcept = default;
DateFormatter &DateFormatter::operator=(DateFormatter &&) noexcept = default;
DateFormatter::~DateFormatter() = default;

QString DateFormatter::monthAndDay(const LocalDate &date)
{
    return m_private->format(date, skeleton::monthAndDay);
}

QString DateFormatter::monthAndYear(const LocalDate &date)
{
    return m_private->format(date, skeleton::monthAndYear);
}

QString DateFormatter::month(const LocalDate &date)
{
    return m_private->format(date, skeleton::month);
}

QString DateFormatter::narrowWeekday(const LocalDate &date)
{
    return m_private->format(date, skeleton::narrowWeekday);
}

QString DateFormatter::day(const LocalDate &date)
{
    return m_private->format(date, skeleton::day);
}

QString DateFormatter::completeDate(const LocalDate &date)
{
    return m_private->format(date, skeleton::completeDate);
}

QString DateFormatter::shortTime(Instant instant, const TimeZone &timeZone)
{
    return m_private->formatWallClock(static_cast<double>(timeZone.wallClock(instant)), skeleton::shortTime)
        .value_or(QString());
}

} // namespace orbitledge
