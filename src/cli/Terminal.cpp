#include "cli/Terminal.h"

#include "locale/Graphemes.h"

#include <algorithm>

namespace orbitledge {

using namespace Qt::StringLiterals;

int displayWidth(const QString &text)
{
    int width = 0;
    for (const Grapheme &grapheme : graphemesOf(text))
        width += grapheme.columns;
    return width;
}

QString printable(const QString &text)
{
    QString result;
    result.reserve(text.size());
    for (const QChar c : text) {
        const char16_t unit = c.unicode();
        const bool turnsDirection = (unit >= 0x202A && unit <= 0x202E) || (unit >= 0x2066 && unit <= 0x2069);
        if (turnsDirection)
            continue;
        const bool breaksLine = unit == 0x2028 || unit == 0x2029;
        result += c.category() == QChar::Other_Control || breaksLine ? QChar(QChar::ReplacementCharacter) : c;
    }
    return result;
}

QString isolated(const QString &text)
{
    const auto runsFromRightToLeft = [](char32_t c) {
        switch (QChar::direction(c)) {
        case QChar::DirR:
        case QChar::DirAL:
        case QChar::DirAN:
            return true;
        default:
            return false;
        }
    };
    if (!std::ranges::any_of(text.toUcs4(), runsFromRightToLeft))
        return text;
    return QChar(firstStrongIsolate) + text + QChar(popDirectionalIsolate);
}

QString elided(const QString &text, int width)
{
    if (displayWidth(text) <= width)
        return text;
    QString result;
    int used = 1; // the ellipsis
    for (const Grapheme &grapheme : graphemesOf(text)) {
        if (used + grapheme.columns > width)
            break;
        used += grapheme.columns;
        result += grapheme.text;
    }
    return result + u'…';
}

QString padded(const QString &text, int width, Align align)
{
    const QString blanks(std::max(0, width - displayWidth(text)), u' ');
    return align == Align::Left ? text + blanks : blanks + text;
}

QString styled(const QString &text, Style style)
{
    const auto code = [style] {
        switch (style) {
        case Style::Plain:
            break;
        case Style::Bold:
            return "1"_L1;
        case Style::Dim:
            return "2"_L1;
        case Style::Red:
            return "31"_L1;
        case Style::Green:
            return "32"_L1;
        case Style::Yellow:
            return "33"_L1;
        case Style::Blue:
            return "34"_L1;
        case Style::Magenta:
            return "35"_L1;
        case Style::Cyan:
            return "36"_L1;
        }
        return ""_L1;
    }();
    if (code.isEmpty() || text.isEmpty())
        return text;
    return u"\x1B["_s + code + u'm' + text + u"\x1B[0m"_s;
}

} // namespace orbitledge
