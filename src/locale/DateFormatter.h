#pragma once

#include "locale/Locale.h"
#include "locale/TimeZone.h"
#include "model/Instant.h"
#include "model/LocalDate.h"

#include <QString>

#include <memory>

namespace orbitledge {

/// Days as people read them, in the locale's words and digits, by the Gregorian calendar. Keeps ICU's
/// formatters, which are slow to make; not for use by two threads at once.
class DateFormatter {
public:
    explicit DateFormatter(const Locale &locale);
    DateFormatter(DateFormatter &&) noexcept;
    DateFormatter &operator=(DateFormatter &&) noexcept;
    ~DateFormatter();

    /// "Mar 14". A day that does not exist is shown as its numbers, "2026-02-30".
    [[nodiscard]] QString monthAndDay(const LocalDate &date);
    /// "March 2026"
    [[nodiscard]] QString monthAndYear(const LocalDate &date);
    /// "March", in the form that stands alone.
    [[nodiscard]] QString month(const LocalDate &date);
    /// "S" for Saturday, in the form that stands alone.
    [[nodiscard]] QString narrowWeekday(const LocalDate &date);
    /// "14", in the locale's digits.
    [[nodiscard]] QString day(const LocalDate &date);
    /// "Saturday, March 14, 2026"
    [[nodiscard]] QString completeDate(const LocalDate &date);
    /// "9:41 AM" or "09:41", as the wall clock of the zone shows it.
    [[nodiscard]] QString shortTime(Instant instant, const TimeZone &timeZone);

private:
    class Private;
    std::unique_ptr<Private> m_private;
};

} // namespace orbitledge
