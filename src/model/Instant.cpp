#include "model/Instant.h"

#include "model/FixedText.h"
#include "model/FloorDivide.h"
#include "model/LocalDate.h"

namespace orbitledge {

namespace {

constexpr qint64 secondsPerDay = 86400;
constexpr qint64 millisecondsPerSecond = 1000;

/// Reads a text from its start; every step that does not fit makes the whole reading fail.
class Scanner {
public:
    explicit Scanner(std::string_view text)
        : m_rest(text)
    {
    }

    bool failed() const { return m_failed; }
    bool atEnd() const { return m_rest.empty(); }
    char peek() const { return m_rest.empty() ? '\0' : m_rest.front(); }

    void expect(char c)
    {
        if (peek() == c && !m_rest.empty())
            m_rest.remove_prefix(1);
        else
            m_failed = true;
    }

    bool accept(char c)
    {
        if (m_rest.empty() || m_rest.front() != c)
            return false;
        m_rest.remove_prefix(1);
        return true;
    }

    /// Exactly `digits` ASCII digits.
    qint64 number(int digits, qint64 largest)
    {
        qint64 value = 0;
        for (int i = 0; i < digits; ++i) {
            if (!nextIsDigit()) {
                m_failed = true;
                return 0;
            }
            value = value * 10 + takeDigit();
        }
        if (value > largest)
            m_failed = true;
        return value;
    }

    bool nextIsDigit() const { return peek() >= '0' && peek() <= '9'; }

    int takeDigit()
    {
        const int digit = m_rest.front() - '0';
        m_rest.remove_prefix(1);
        return digit;
    }

    void fail() { m_failed = true; }

private:
    std::string_view m_rest;
    bool m_failed = false;
};

/// Any number of digits, of which three count.
qint64 milliseconds(Scanner &scanner)
{
    if (!scanner.nextIsDigit())
        scanner.fail();
    qint64 value = 0;
    int taken = 0;
    while (scanner.nextIsDigit()) {
        const int digit = scanner.takeDigit();
        if (taken < 3) {
            value = value * 10 + digit;
            ++taken;
        }
    }
    for (; taken < 3; ++taken)
        value *= 10;
    return value;
}

qint64 offsetSeconds(Scanner &scanner)
{
    if (scanner.accept('Z'))
        return 0;
    const bool west = scanner.peek() == '-';
    if (!scanner.accept('-'))
        scanner.expect('+');
    const qint64 hours = scanner.number(2, 23);
    qint64 minutes = 0;
    if (!scanner.failed() && !scanner.atEnd()) {
        scanner.accept(':');
        minutes = scanner.number(2, 59);
    }
    const qint64 seconds = hours * 3600 + minutes * 60;
    return west ? -seconds : seconds;
}

} // namespace

std::optional<Instant> Instant::fromText(std::string_view text)
{
    Scanner scanner(text);
    LocalDate date;
    date.year = scanner.number(4, 9999);
    scanner.expect('-');
    date.month = scanner.number(2, 12);
    scanner.expect('-');
    date.day = scanner.number(2, 31);
    scanner.expect('T');
    const qint64 hour = scanner.number(2, 23);
    scanner.expect(':');
    const qint64 minute = scanner.number(2, 59);
    scanner.expect(':');
    const qint64 second = scanner.number(2, 59);
    const qint64 fraction = scanner.accept('.') ? milliseconds(scanner) : 0;
    const qint64 offset = offsetSeconds(scanner);
    if (scanner.failed() || !scanner.atEnd() || !date.isValid())
        return std::nullopt;

    const qint64 seconds
        = date.daysSinceEpoch() * secondsPerDay + hour * 3600 + minute * 60 + second - offset;
    // What the offset moves out of the years 1 to 9999 could not be written again.
    static const qint64 first = LocalDate{1, 1, 1}.daysSinceEpoch() * secondsPerDay;
    static const qint64 end = LocalDate{10000, 1, 1}.daysSinceEpoch() * secondsPerDay;
    if (seconds < first || seconds >= end)
        return std::nullopt;
    return Instant(seconds * millisecondsPerSecond + fraction);
}

QByteArray Instant::text() const
{
    const qint64 seconds = floorDivide(m_milliseconds, millisecondsPerSecond);
    const qint64 days = floorDivide(seconds, secondsPerDay);
    const qint64 ofDay = seconds - days * secondsPerDay;
    FixedText text;
    text.date(LocalDate::fromDaysSinceEpoch(days));
    text.character('T');
    text.number(ofDay / 3600, 2);
    text.character(':');
    text.number(ofDay / 60 % 60, 2);
    text.character(':');
    text.number(ofDay % 60, 2);
    text.character('Z');
    return QByteArrayView(text.view()).toByteArray();
}

} // namespace orbitledge
