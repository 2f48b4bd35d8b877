#include "updates/Version.h"

#include "updates/WholeNumber.h"

#include <algorithm>
#include <limits>

namespace orbitledge {

namespace {

bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

/// The value of the digits at the start, 0 where there are none.
qint64 leadingNumber(QStringView text)
{
    constexpr qint64 largest = std::numeric_limits<qint64>::max();
    constexpr qint64 base = 10;
    qint64 value = 0;
    for (const QChar c : text) {
        if (!isDigit(c))
            break;
        const qint64 digit = c.unicode() - u'0';
        if (value > (largest - digit) / base)
            return largest;
        value = value * base + digit;
    }
    return value;
}

std::weak_ordering compareIdentifiers(QStringView left, QStringView right)
{
    const auto leftDigits = wholeNumberDigits(left);
    const auto rightDigits = wholeNumberDigits(right);
    if (leftDigits && rightDigits)
        return compareDigits(*leftDigits, *rightDigits);
    if (leftDigits || rightDigits)
        return leftDigits ? std::weak_ordering::less : std::weak_ordering::greater;
    return left.compare(right) <=> 0;
}

} // namespace

Version Version::fromText(const QString &text)
{
    QStringView rest = QStringView(text).trimmed();
    if (const auto plus = rest.indexOf(u'+'); plus >= 0)
        rest = rest.first(plus);
    if (rest.startsWith(u'v') || rest.startsWith(u'V'))
        rest = rest.sliced(1);

    Version version;
    if (const auto hyphen = rest.indexOf(u'-'); hyphen >= 0) {
        version.m_preRelease = rest.sliced(hyphen + 1).toString().split(u'.');
        rest = rest.first(hyphen);
    }
    const auto pieces = rest.split(u'.');
    for (const QStringView piece : pieces)
        version.m_core.append(leadingNumber(piece));
    return version;
}

std::weak_ordering operator<=>(const Version &left, const Version &right)
{
    const qsizetype numbers = std::max(left.m_core.size(), right.m_core.size());
    for (qsizetype i = 0; i < numbers; ++i) {
        if (const auto order = left.m_core.value(i) <=> right.m_core.value(i); order != 0)
            return order;
    }
    if (left.m_preRelease.isEmpty() != right.m_preRelease.isEmpty())
        return left.m_preRelease.isEmpty() ? std::weak_ordering::greater : std::weak_ordering::less;
    const qsizetype shared = std::min(left.m_preRelease.size(), right.m_preRelease.size());
    for (qsizetype i = 0; i < shared; ++i) {
        if (const auto order = compareIdentifiers(left.m_preRelease[i], right.m_preRelease[i]); order != 0)
            return order;
    }
    return left.m_preRelease.size() <=> right.m_preRelease.size();
}

} // namespace orbitledge
