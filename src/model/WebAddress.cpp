#include "model/WebAddress.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orbitledge {

namespace {

/// Whether a text needs no encoding anywhere in a URL, and none taken off.
bool isPlain(QStringView text)
{
    return std::ranges::all_of(text, [](QChar c) {
        return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9')
            || "/:.-_~?=&@+,;!$'()*"_L1.contains(c);
    });
}

} // namespace

std::optional<QUrl> absoluteUrlFromText(const QString &text)
{
    QUrl url(text, QUrl::TolerantMode);
    if (!url.isValid() || url.isRelative())
        return std::nullopt;
    if (isPlain(text))
        return url;
    // QUrl keeps some characters as they were written and encodes them later (a second "#"), so that an
    // address would not equal itself once it has been stored.
    url = QUrl::fromEncoded(url.toEncoded());
    if (!url.isValid() || url.isRelative())
        return std::nullopt;
    return url;
}

} // namespace orbitledge
