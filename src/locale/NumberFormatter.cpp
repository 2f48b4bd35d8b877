#include "locale/NumberFormatter.h"

#include "locale/IcuText.h"

#include <unicode/numberformatter.h>

namespace orbitledge {

class NumberFormatter::Private {
public:
    explicit Private(const Locale &locale)
        : m_formatter(icu::number::NumberFormatter::withLocale(icu::Locale(locale.money.constData())))
    {
    }

    QString format(qint64 number)
    {
        UErrorCode status = U_ZERO_ERROR;
        const icu::UnicodeString text = m_formatter.formatInt(number, status).toString(status);
        return U_FAILURE(status) ? QString::number(number) : toQString(text);
    }

private:
    icu::number::LocalizedNumberFormatter m_formatter;
};

NumberFormatter::NumberFormatter(const Locale &locale)
    : m_private(std::make_unique<Private>(locale))
{
}

NumberFormatter::NumberFormatter(NumberFormatter &&) noexcept = default;
NumberFormatter &NumberFormatter::operator=(NumberFormatter &&) noexcept = default;
NumberFormatter::~NumberFormatter() = default;

QString NumberFormatter::text(qint64 number)
{
    return m_private->format(number);
}

} // namespace orbitledge
