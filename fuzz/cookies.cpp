#include "service/Cookies.h"

#include "Require.h"

#include <QUrl>

#include <algorithm>

using namespace orbitledge;

namespace {

const Instant &now()
{
    static const Instant instant = *Instant::fromText("2026-03-18T12:00:00Z");
    return instant;
}

std::vector<Cookie> parsed(const QList<QByteArray> &fields)
{
    static const QUrl url(QStringLiteral("https://api.example.com/v1/"));
    QList<HttpHeader> headers;
    for (const QByteArray &field : fields)
        headers.append(HttpHeader{"Set-Cookie", field});
    return cookiesOf(headers, url, now());
}

bool isControl(QChar c)
{
    return c < QChar(0x20) || c == QChar(0x7F);
}

void checkCookie(const Cookie &cookie, bool mayHaveDate)
{
    const auto isBlank = [](QChar c) { return c == u' ' || isControl(c); };
    fuzz::require(!cookie.name.isEmpty(), "a cookie has a name");
    fuzz::require(!cookie.name.contains(u'=') && !cookie.name.contains(u';'), "a name ends where it ends");
    fuzz::require(!cookie.value.contains(u';'), "a value ends where attributes begin");
    for (const QString &text : {cookie.name, cookie.value}) {
        fuzz::require(std::ranges::none_of(text, isControl), "a cookie can be sent back");
        fuzz::require(
            std::ranges::all_of(text, [](QChar c) { return c <= QChar(0xFF); }), "a byte a character");
        fuzz::require(
            text.isEmpty() || (!isBlank(text.front()) && !isBlank(text.back())), "blanks are trimmed");
    }

    // A name that holds a comma had a blank behind it, or the comma would have separated two cookies.
    const QByteArray sign = cookie.name.contains(u',') ? " =" : "=";
    const QByteArray pair = cookie.name.toLatin1() + sign + cookie.value.toLatin1();
    const Cookie plain{cookie.name, cookie.value, std::nullopt};
    fuzz::require(parsed({pair}) == std::vector{plain}, "what was read can be written and read again");

    if (!cookie.expiresAt)
        return;
    constexpr qint64 firstMoment = -11'644'473'600'000; // 1601-01-01
    constexpr qint64 lastMoment = 253'402'300'799'999; // the end of 9999
    const qint64 moment = cookie.expiresAt->millisecondsSinceEpoch();
    fuzz::require(
        moment >= firstMoment && moment <= lastMoment, "a cookie's end is a moment of the calendar");
    fuzz::require(mayHaveDate || *cookie.expiresAt >= now(), "an age does not lead to the past");
}

/// The text as the value of Max-Age.
void checkAge(const QByteArray &text)
{
    if (text.contains(';') || text.contains(','))
        return;
    const auto cookies = parsed({"a=1; Max-Age=" + text});
    fuzz::require(cookies.size() == 1, "an attribute does not take the cookie away");
    const QByteArray trimmed = text.trimmed();
    const QByteArray digits = trimmed.startsWith('-') ? trimmed.mid(1) : trimmed;
    const bool isNumber
        = !digits.isEmpty() && std::ranges::all_of(digits, [](char c) { return c >= '0' && c <= '9'; });
    const std::optional<Instant> end = cookies.front().expiresAt;
    fuzz::require(end.has_value() == isNumber, "an age is an integer");
    fuzz::require(!end || *end >= now(), "an age does not lead to the past");
}

} // namespace

// One Set-Cookie field; and its bytes once more as an age.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray field(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const auto cookies = parsed({field});
    fuzz::require(
        static_cast<qsizetype>(cookies.size()) <= field.count(',') + 1, "a comma separates cookies");
    const bool mayHaveDate = field.toLower().contains("expires");
    for (const Cookie &cookie : cookies)
        checkCookie(cookie, mayHaveDate);

    auto twice = cookies;
    twice.insert(twice.end(), cookies.begin(), cookies.end());
    fuzz::require(parsed({field, field}) == twice, "fields do not depend on each other");
    checkAge(field);
    return 0;
}
