#include "locale/DateFormatter.h"

#include "locale/IcuText.h"

#include <unicode/dtptngen.h>
#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>

#include <map>
#include <optional>

namespace orbitledge {

class DateFormatter::Private {
public:
    explicit Private(const Locale &locale)
        : m_locale(locale.dates.constData())
    {
        // Billing dates are Gregorian, also for people whose locale counts months in another way.
        UErrorCode status = U_ZERO_ERROR;
        m_locale.setKeywordValue("calendar", "gregorian", status);
    }

    QString format(const LocalDate &date, const char16_t *skeleton)
    {
        constexpr double millisecondsPerDay = 86'400'000;
        const auto text = date.isValid()
            ? formatWallClock(static_cast<double>(date.daysSinceEpoch()) * millisecondsPerDay, skeleton)
            : std::nullopt;
        return text.value_or(date.text());
    }

    /// `wallClock`: what the clock shows, in milliseconds since it showed the start of 1970. Absent where ICU
    /// has no such format.
    std::optional<QString> formatWallClock(double wallClock, const char16_t *skeleton)
    {
        icu::SimpleDateFormat *const formatter = formatterFor(skeleton);
        if (formatter == nullptr)
            return std::nullopt;
        icu::UnicodeString text;
        formatter->format(wallClock, text);
        return toQString(text);
    }

private:
    icu::SimpleDateFormat *formatterFor(const char16_t *skeleton)
    {
        const auto known = m_formatters.find(skeleton);
        return known != m_formatters.end()
            ? known->second.get()
            : m_formatters.emplace(skeleton, make(skeleton)).first->second.get();
    }

    std::unique_ptr<icu::SimpleDateFormat> make(const char16_t *skeleton)
    {
        UErrorCode status = U_ZERO_ERROR;
        if (!m_patterns)
            m_patterns.reset(icu::DateTimePatternGenerator::createInstance(m_locale, status));
        if (U_FAILURE(status))
            return nullptr;
        const icu::UnicodeString pattern = m_patterns->getBestPattern(skeleton, status);
        auto formatter = std::make_unique<icu::SimpleDateFormat>(pattern, m_locale, status);
        auto calendar
            = std::make_unique<icu::GregorianCalendar>(icu::TimeZone::getGMT()->clone(), m_locale, status);
        constexpr double beforeAllDates = -1e17;
        calendar->setGregorianChange(beforeAllDates, status);
        if (U_FAILURE(status))
            return nullptr;
        formatter->adoptCalendar(calendar.release());
        return formatter;
    }

    icu::Locale m_locale;
    std::unique_ptr<icu::DateTimePatternGenerator> m_patterns;
    std::map<std::u16string_view, std::unique_ptr<icu::SimpleDateFormat>> m_formatters;
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
    return m_private->format(date, u"MMMd");
}

QString DateFormatter::monthAndYear(const LocalDate &date)
{
    return m_private->format(date, u"yMMMM");
}

QString DateFormatter::month(const LocalDate &date)
{
    return m_private->format(date, u"LLLL");
}

QString DateFormatter::narrowWeekday(const LocalDate &date)
{
    return m_private->format(date, u"ccccc");
}

QString DateFormatter::day(const LocalDate &date)
{
    return m_private->format(date, u"d");
}

QString DateFormatter::completeDate(const LocalDate &date)
{
    return m_private->format(date, u"yMMMMEEEEd");
}

QString DateFormatter::shortTime(Instant instant, const TimeZone &timeZone)
{
    return m_private->formatWallClock(static_cast<double>(timeZone.wallClock(instant)), u"jm")
        .value_or(QString());
}

} // namespace orbitledge
