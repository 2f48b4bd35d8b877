#pragma once

#include "locale/Locale.h"
#include "model/Decimal.h"

#include <QString>

#include <memory>
#include <optional>

namespace orbitledge {

/// How many digits stand after the point.
enum class FractionDigits {
    /// Two, whatever the currency, so that amounts in a list line up.
    Two,
    /// As many as the currency has: none for yen, three for dinars.
    OfCurrency,
};

/// Amounts as people read them: in the locale's way of writing the currency, rounded half-even. Keeps ICU's
/// formatters, which are slow to make; not for use by two threads at once.
class MoneyFormatter {
public:
    explicit MoneyFormatter(const Locale &locale, FractionDigits digits = FractionDigits::Two);
    MoneyFormatter(MoneyFormatter &&) noexcept;
    MoneyFormatter &operator=(MoneyFormatter &&) noexcept;
    ~MoneyFormatter();

    /// `currency` is an ISO 4217 code in any case. Where it has not the form of one, the text is the code
    /// in upper case, a space, and the plain number.
    [[nodiscard]] QString text(const Decimal &amount, const QString &currency);

    /// The same, but absent where the code has not the form of one.
    [[nodiscard]] std::optional<QString> currencyText(const Decimal &amount, const QString &currency);

private:
    class Private;
    std::unique_ptr<Private> m_private;
};

} // namespace orbitledge
