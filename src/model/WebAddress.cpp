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

bool isSameOrigin(const QUrl &a, const QUrl &b)
{
    const auto port = [](const QUrl &url) {
        constexpr int http = 80;
        constexpr int https = 443;
        return url.port(url.scheme() == u"https" ? https : http);
    };
    // QUrl keeps scheme and host in lower case.
    return a.scheme() == b.scheme() && a.host() == b.host() && port(a) == port(b);
}

bool isLoopback(const QUrl &url)
{
    const QString host = url.host();
    if (host == u"localhost" || host.endsWith(u".localhost") || host == u"::1")
        return true;
    // QUrl writes every form of an IPv4 address as four decimal numbers.
    const QStringList parts = host.split(u'.');
    return parts.size() == 4 && parts.front() == u"127"
        && std::ranges::all_of(parts, [](const QString &part) {
               bool isNumber = false;
               return part.toUShort(&isNumber) <= 255 && isNumber;
           });
}

} // namespace orbitledge
