#include "service/Cookies.h"

#include <QDateTime>
#include <QTimeZone>

#include <algorithm>
#include <array>

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isLetter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

/// What no header may carry back.
bool isControl(char c)
{
    constexpr unsigned char firstPrintable = 0x20;
    constexpr char deleteCharacter = 0x7F;
    return static_cast<unsigned char>(c) < firstPrintable || c == deleteCharacter;
}

/// RFC 9110, section 5.6.2.
bool isTokenCharacter(char c)
{
    return isDigit(c) || isLetter(c) || QByteArrayView("!#$%&'*+-.^_`|~").contains(c);
}

/// Not by trimming, which would look at the whole rest of the field for each of its commas.
bool startsWithNameAndEquals(QByteArrayView text)
{
    const auto isBlank = [](char c) { return QByteArrayView(" \t\n\v\f\r").contains(c); };
    const auto *const begin = std::ranges::find_if_not(text, isBlank);
    const auto *const end = std::find_if_not(begin, text.end(), isTokenCharacter);
    return end != begin && end != text.end() && *end == '=';
}

QList<QByteArrayView> splitCookies(QByteArrayView field)
{
    QList<QByteArrayView> cookies;
    qsizetype start = 0;
    for (qsizetype i = 0; i < field.size(); ++i) {
        if (field[i] == ',' && startsWithNameAndEquals(field.sliced(i + 1))) {
            cookies.append(field.sliced(start, i - start));
            start = i + 1;
        }
    }
    cookies.append(field.sliced(start));
    return cookies;
}

qsizetype leadingDigits(QByteArrayView token)
{
    return std::ranges::find_if_not(token, isDigit) - token.begin();
}

/// The number of digits at the start, if there are `fewest` to `most` of them and no further one.
std::optional<int> leadingNumber(QByteArrayView token, qsizetype fewest, qsizetype most)
{
    const qsizetype digits = leadingDigits(token);
    if (digits < fewest || digits > most)
        return std::nullopt;
    return token.first(digits).toInt();
}

std::optional<QTime> timeOf(QByteArrayView token)
{
    std::array<int, 3> parts{};
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (i > 0) {
            if (!token.startsWith(':'))
                return std::nullopt;
            token = token.sliced(1);
        }
        const auto number = leadingNumber(token, 1, 2);
        if (!number)
            return std::nullopt;
        parts.at(i) = *number;
        token = token.sliced(leadingDigits(token));
    }
    return QTime(parts[0], parts[1], parts[2]);
}

std::optional<int> monthOf(QByteArrayView token)
{
    constexpr std::array months{
        "jan", "feb", "mar", "apr", "may", "jun", "jul", "aug", "sep", "oct", "nov", "dec"};
    for (std::size_t i = 0; i < months.size(); ++i) {
        if (token.size() >= 3 && token.first(3).compare(months.at(i), Qt::CaseInsensitive) == 0)
            return static_cast<int>(i) + 1;
    }
    return std::nullopt;
}

int fullYear(int year)
{
    constexpr int firstOfLastCentury = 70;
    constexpr int century = 100;
    if (year >= firstOfLastCentury && year < century)
        return year + 1900;
    return year < firstOfLastCentury ? year + 2000 : year;
}

/// Whether `found` is kept, as there was none before.
template <typename T> bool keepFirst(std::optional<T> &kept, std::optional<T> found)
{
    if (kept || !found)
        return false;
    kept = found;
    return true;
}

/// RFC 6265, section 5.1.1, which reads the three forms that ever were: RFC 1123's, RFC 850's and asctime's.
std::optional<Instant> cookieDate(QByteArrayView text)
{
    std::optional<QTime> time;
    std::optional<int> day;
    std::optional<int> month;
    std::optional<int> year;
    const auto isDelimiter = [](char c) { return !isDigit(c) && !isLetter(c) && c != ':'; };
    const auto *position = text.begin();
    while (true) {
        position = std::ranges::find_if_not(position, text.end(), isDelimiter);
        if (position == text.end())
            break;
        const auto *const end = std::ranges::find_if(position, text.end(), isDelimiter);
        const QByteArrayView token(position, end);
        position = end;
        // A token is one thing only, the first that is still missing.
        if (keepFirst(time, timeOf(token)) || keepFirst(day, leadingNumber(token, 1, 2))
            || keepFirst(month, monthOf(token)))
            continue;
        keepFirst(year, leadingNumber(token, 2, 4));
    }
    if (!time || !day || !month || !year)
        return std::nullopt;
    constexpr int firstYear = 1601;
    const QDate date(fullYear(*year), *month, *day);
    if (!date.isValid() || !time->isValid() || date.year() < firstYear)
        return std::nullopt;
    return Instant::fromMillisecondsSinceEpoch(QDateTime(date, *time, QTimeZone::utc()).toMSecsSinceEpoch());
}

/// RFC 6265, section 5.2.2.
std::optional<Instant> afterMaxAge(QByteArrayView text, Instant now)
{
    const QByteArrayView digits = text.startsWith('-') ? text.sliced(1) : text;
    if (digits.isEmpty() || !std::ranges::all_of(digits, isDigit))
        return std::nullopt;
    // A thousand years do for ever, and cannot overflow.
    constexpr qint64 longest = qint64{1000} * 366 * 86'400;
    bool fits = false;
    const qint64 seconds = text.toLongLong(&fits);
    if (text.startsWith('-'))
        return now;
    return Instant::fromMillisecondsSinceEpoch(
        now.millisecondsSinceEpoch() + (fits ? std::min(seconds, longest) : longest) * 1000);
}

/// RFC 6265, section 5.1.3; a leading dot means nothing.
bool domainMatches(QString domain, const QString &host)
{
    if (domain.startsWith(u'.'))
        domain.remove(0, 1);
    if (domain.isEmpty() || domain == host)
        return true;
    const bool isAddress = host.contains(u':') || (!host.isEmpty() && host.back().isDigit());
    return !isAddress && host.endsWith(u'.' + domain);
}

void keepLatest(std::optional<Instant> &kept, std::optional<Instant> latest)
{
    if (latest)
        kept = latest;
}

std::optional<Cookie> cookieOf(QByteArrayView text, const QUrl &url, Instant now)
{
    const auto semicolon = text.indexOf(';');
    const QByteArrayView pair = semicolon < 0 ? text : text.first(semicolon);
    const auto equals = pair.indexOf('=');
    if (equals < 0)
        return std::nullopt;
    const QByteArrayView name = pair.first(equals).trimmed();
    const QByteArrayView value = pair.sliced(equals + 1).trimmed();
    if (name.isEmpty() || std::ranges::any_of(name, isControl) || std::ranges::any_of(value, isControl))
        return std::nullopt;

    QString domain;
    std::optional<Instant> maxAge;
    std::optional<Instant> expires;
    QByteArrayView rest = semicolon < 0 ? QByteArrayView() : text.sliced(semicolon + 1);
    while (!rest.isEmpty()) {
        const auto end = rest.indexOf(';');
        const QByteArrayView attribute = end < 0 ? rest : rest.first(end);
        rest = end < 0 ? QByteArrayView() : rest.sliced(end + 1);
        const auto sign = attribute.indexOf('=');
        const QByteArrayView key = (sign < 0 ? attribute : attribute.first(sign)).trimmed();
        const QByteArrayView setting = sign < 0 ? QByteArrayView() : attribute.sliced(sign + 1).trimmed();
        // The last one of a kind counts, unless it cannot be read.
        if (key.compare("Domain", Qt::CaseInsensitive) == 0)
            domain = QString::fromLatin1(setting).toLower();
        else if (key.compare("Max-Age", Qt::CaseInsensitive) == 0)
            keepLatest(maxAge, afterMaxAge(setting, now));
        else if (key.compare("Expires", Qt::CaseInsensitive) == 0)
            keepLatest(expires, cookieDate(setting));
    }
    if (!domainMatches(domain, url.host()))
        return std::nullopt;
    return Cookie{
        .name = QString::fromLatin1(name),
        .value = QString::fromLatin1(value),
        .expiresAt = maxAge ? maxAge : expires,
    };
}

} // namespace

std::vector<Cookie> cookiesOf(const QList<HttpHeader> &headers, const QUrl &url, Instant now)
{
    std::vector<Cookie> cookies;
    for (const HttpHeader &header : headers) {
        if (header.name.compare("Set-Cookie", Qt::CaseInsensitive) != 0)
            continue;
        for (const QByteArrayView text : splitCookies(header.value)) {
            if (auto cookie = cookieOf(text, url, now))
                cookies.push_back(*std::move(cookie));
        }
    }
    return cookies;
}

} // namespace orbitledge
