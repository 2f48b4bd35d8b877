#pragma once

#include "locale/Locale.h"

#include <QString>

#include <memory>

namespace orbitledge {

/// Whole numbers as people read them, in the digits and groups of the locale's amounts. Keeps ICU's
/// formatter, which is slow to make; not for use by two threads at once.
class NumberFormatter {
public:
    explicit NumberFormatter(const Locale &locale);
    NumberFormatter(NumberFormatter &&) noexcept;
    NumberFormatter &operator=(NumberFormatter &&) noexcept;
    ~NumberFormatter();

    /// "1,234"
    [[nodiscard]] QString text(qint64 number);

private:
    class Private;
    std::unique_ptr<Private> m_private;
};

} // namespace orbitledge
