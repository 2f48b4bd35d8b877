#include "logos/Freshness.h"

#include <QDateTime>
#include <QLocale>

#include <algorithm>
#include <chrono>

namespace orbitledge {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using std::chrono::seconds;

namespace {

constexpr seconds usualLifetime = std::chrono::weeks(1);
constexpr seconds longestLifetime = std::chrono::years(1);

Instant later(Instant now, seconds lifetime)
{
    const std::chrono::milliseconds bounded = std::clamp(lifetime, 0s, longestLifetime);
    return Instant::fromMillisecondsSinceEpoch(now.millisecondsSinceEpoch() + bounded.count());
}

struct Directives {
    bool noStore = false;
    bool noCache = false;
    std::optional<seconds> maxAge;
};

/// Of a number that does not fit, more than any bound; of none, zero, so that the answer is not trusted.
seconds deltaSeconds(QByteArray text)
{
    if (text.size() > 1 && text.startsWith('"') && text.endsWith('"'))
        text = text.sliced(1, text.size() - 2);
    const bool isNumber
        = !text.isEmpty() && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
    if (!isNumber)
        return 0s;
    bool fits = false;
    const qlonglong number = text.toLongLong(&fits);
    return fits ? std::min(seconds(number), longestLifetime) : longestLifetime;
}

Directives directivesOf(const QList<HttpHeader> &headers)
{
    Directives directives;
    for (const HttpHeader &header : headers) {
        if (header.name.compare("Cache-Control", Qt::CaseInsensitive) != 0)
            continue;
        for (const QByteArray &part : header.value.toLower().split(',')) {
            const QByteArray directive = part.trimmed();
            if (directive == "no-store")
                directives.noStore = true;
            else if (directive == "no-cache")
                directives.noCache = true;
            else if (directive.startsWith("max-age="))
                directives.maxAge = std::min(
                    directives.maxAge.value_or(longestLifetime), deltaSeconds(directive.sliced(8).trimmed()));
        }
    }
    return directives;
}

seconds lifetimeOf(const Directives &directives, const QList<HttpHeader> &headers, Instant now)
{
    if (directives.noCache)
        return 0s;
    if (directives.maxAge) {
        const auto age = headerValue(headers, "Age");
        return *directives.maxAge - (age ? deltaSeconds(age->trimmed()) : 0s);
    }
    if (const auto expires = headerValue(headers, "Expires")) {
        const auto end = instantOfHttpDate(*expires);
        if (!end)
            return 0s; // "0" and its like say that it is over
        // Counted from the server's own clock, which may differ from ours.
        const auto date = headerValue(headers, "Date");
        const Instant start = (date ? instantOfHttpDate(*date) : std::nullopt).value_or(now);
        return std::chrono::floor<seconds>(
            std::chrono::milliseconds(end->millisecondsSinceEpoch() - start.millisecondsSinceEpoch()));
    }
    return usualLifetime;
}

} // namespace

std::optional<Instant> instantOfHttpDate(const QByteArray &text)
{
    constexpr qsizetype dateSize = 16; // "Sun, 06 Nov 1994"
    const QString whole = QString::fromLatin1(text.trimmed());
    // Apart, since a moment without a zone would be the machine's, which skips some.
    const QDate date = QLocale::c().toDate(whole.left(dateSize), u"ddd, dd MMM yyyy"_s);
    const QTime time = QTime::fromString(whole.mid(dateSize), u" hh:mm:ss 'GMT'"_s);
    if (!date.isValid() || !time.isValid())
        return std::nullopt;
    return Instant::fromMillisecondsSinceEpoch(QDateTime(date, time, Qt::UTC).toMSecsSinceEpoch());
}

Freshness freshnessOf(const QList<HttpHeader> &headers, Instant now)
{
    const Directives directives = directivesOf(headers);
    return {
        .mayBeKept = !directives.noStore,
        .until = later(now, lifetimeOf(directives, headers, now)),
    };
}

} // namespace orbitledge
