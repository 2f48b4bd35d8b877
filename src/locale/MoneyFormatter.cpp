#include "locale/MoneyFormatter.h"

#include "locale/IcuText.h"

#include <QHash>

#include <unicode/currunit.h>
#include <unicode/numberformatter.h>

#include <algorithm>

namespace orbitledge {

using icu::number::LocalizedNumberFormatter;

namespace {

bool isCurrencyCode(const QString &code)
{
    return code.size() == 3
        && std::ranges::all_of(code, [](QChar c) { return c >= QLatin1Char('A') && c <= QLatin1Char('Z'); });
}

} // namespace

class MoneyFormatter::Private {
public:
    Private(const Locale &locale, FractionDigits digits)
        : m_locale(locale.money.constData())
        , m_precision(digits == FractionDigits::Two
                  ? icu::number::Precision(icu::number::Precision::fixedFraction(2))
                  : icu::number::Precision(icu::number::Precision::currency(UCURR_USAGE_STANDARD)))
    {
    }

    /// Absent where the formatter has nothing to say about the code.
    std::optional<QString> format(const Decimal &amount, const QString &code)
    {
        if (!isCurrencyCode(code))
            return std::nullopt;
        UErrorCode status = U_ZERO_ERROR;
        auto known = m_formatters.find(code);
        if (known == m_formatters.end())
            known = m_formatters.insert(code, formatter(code, status));
        const std::string digits = amount.toAscii();
        const icu::UnicodeString text = known->formatDecimal(digits, status).toString(status);
        if (U_FAILURE(status) || text.isEmpty())
            return std::nullopt;
        return toQString(text);
    }

private:
    LocalizedNumberFormatter formatter(const QString &code, UErrorCode &status) const
    {
        const icu::CurrencyUnit unit(reinterpret_cast<const char16_t *>(code.utf16()), status);
        return icu::number::NumberFormatter::withLocale(m_locale)
            .unit(unit)
            .precision(m_precision)
            .roundingMode(UNUM_ROUND_HALFEVEN);
    }

    icu::Locale m_locale;
    icu::number::Precision m_precision;
    QHash<QString, LocalizedNumberFormatter> m_formatters;
};

MoneyFormatter::MoneyFormatter(const Locale &locale, FractionDigits digits)
    : m_private(std::make_unique<Private>(locale, digits))
{
}

MoneyFormatter::MoneyFormatter(MoneyFormatter &&) noexcept = default;
MoneyFormatter &MoneyFormatter::operator=(MoneyFormatter &&) noexcept = default;
MoneyFormatter::~MoneyFormatter() = default;

QString MoneyFormatter::text(const Decimal &amount, const QString &currency)
{
    const auto formatted = currencyText(amount, currency);
    return formatted ? *formatted : currency.toUpper() + QLatin1Char(' ') + amount.toString();
}

std::optional<QString> MoneyFormatter::currencyText(const Decimal &amount, const QString &currency)
{
    return m_private->format(amount, currency.toUpper());
}

} // namespace orbitledge
