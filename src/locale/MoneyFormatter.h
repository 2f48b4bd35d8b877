#pragma once

#include "locale/Locale.h"
#include "model/Decimal.h"

#include <QString>

#include <memory>

namespace orbitledge {

/// Amounts as people read them: in the locale's way of writing the currency, always with two digits after
/// the point, rounded half-even. Keeps ICU's formatters, which are slow to make; not for use by two
/// threads at once.
class MoneyFormatter {
public:
    explicit MoneyFormatter(const Locale &locale);
    MoneyFormatter(MoneyFormatter &&) noexcept;
    MoneyFormatter &operator=(MoneyFormatter &&) noexcept;
    ~MoneyFormatter();

    /// `currency` is an ISO 4217 code in any case. Where it has not the form of one, the text is the code
    /// in upper case, a space, and the plain number.
    [[nodiscard]] QString text(const Decimal &amount, const QString &currency);

private:
    class Private;
    std::unique_ptr<Private> m_private;
};

} // namespace orbitledge
