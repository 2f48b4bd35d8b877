#include "updates/WholeNumber.h"

#include <algorithm>

namespace orbitledge {

std::optional<QStringView> wholeNumberDigits(QStringView text)
{
    const auto isDigit = [](QChar c) { return c >= u'0' && c <= u'9'; };
    if (text.isEmpty() || !std::ranges::all_of(text, isDigit))
        return std::nullopt;
    while (text.size() > 1 && text.front() == u'0')
        text = text.sliced(1);
    return text;
}

std::weak_ordering compareDigits(QStringView left, QStringView right)
{
    if (const auto bySize = left.size() <=> right.size(); bySize != 0)
        return bySize;
    return left.compare(right) <=> 0;
}

} // namespace orbitledge
