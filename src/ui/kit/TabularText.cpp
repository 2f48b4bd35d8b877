#include "ui/kit/TabularText.h"

#include <QFontMetricsF>
#include <QHash>
#include <QPainter>
#include <QTextCharFormat>
#include <QTextLine>
#include <QTextOption>

#include <algorithm>
#include <array>
#include <limits>
#include <utility>
#include <vector>

namespace orbitledge::ui {

namespace {

using DigitAdvances = std::array<qreal, 10>;

/// One code point of a text.
struct Piece {
    int start = 0;
    int length = 1;
    char32_t scalar = 0;
    qreal extra = 0;

    bool isDigit() const { return QChar::category(scalar) == QChar::Number_DecimalDigit; }

    // Letters may be joined to their neighbours; these are not, so they can be moved apart.
    bool standsAlone() const
    {
        return QChar::isSpace(scalar) || QChar::isPunct(scalar) || QChar::isSymbol(scalar);
    }
};

std::vector<Piece> piecesOf(const QString &text)
{
    std::vector<Piece> pieces;
    for (int at = 0; at < text.size();) {
        Piece piece{at, 1, text.at(at).unicode()};
        if (text.at(at).isHighSurrogate() && at + 1 < text.size() && text.at(at + 1).isLowSurrogate()) {
            piece.length = 2;
            piece.scalar = QChar::surrogateToUcs4(text.at(at), text.at(at + 1));
        }
        pieces.push_back(piece);
        at += piece.length;
    }
    return pieces;
}

/// Of the digits that begin with this zero. A list has hundreds of sums in few fonts, so they are measured
/// once.
DigitAdvances advancesFrom(char32_t zero, const QFont &font)
{
    constexpr qsizetype manyFonts = 64;
    static QHash<std::pair<QFont, char32_t>, DigitAdvances> known;
    if (const auto found = known.constFind({font, zero}); found != known.constEnd())
        return *found;
    if (known.size() >= manyFonts)
        known.clear();
    const QFontMetricsF metrics(font);
    DigitAdvances advances{};
    for (char32_t digit = 0; digit < advances.size(); ++digit) {
        const char32_t scalar = zero + digit;
        advances.at(digit) = metrics.horizontalAdvance(QString::fromUcs4(&scalar, 1));
    }
    known.insert({font, zero}, advances);
    return advances;
}

/// Half of what a digit lacks goes before it and half after it. Where nothing before it can be moved away,
/// all of it goes after.
void spreadDigits(std::vector<Piece> &pieces, const QFont &font)
{
    for (std::size_t index = 0; index < pieces.size(); ++index) {
        Piece &piece = pieces.at(index);
        if (!piece.isDigit())
            continue;
        const auto value = static_cast<char32_t>(QChar::digitValue(piece.scalar));
        const char32_t zero = piece.scalar - value;
        const DigitAdvances advances = advancesFrom(zero, font);
        const qreal lack = *std::ranges::max_element(advances) - advances.at(value);
        Piece *before = index > 0 ? &pieces.at(index - 1) : nullptr;
        if (before && (before->isDigit() || before->standsAlone())) {
            before->extra += lack / 2;
            piece.extra += lack / 2;
        } else {
            piece.extra += lack;
        }
    }
}

/// Neighbours that are moved alike have one together: what has one of its own is shaped by itself.
QList<QTextLayout::FormatRange> formatsOf(const std::vector<Piece> &pieces, const QFont &font)
{
    QList<QTextLayout::FormatRange> formats;
    const Piece *last = nullptr;
    for (const Piece &piece : pieces) {
        // Digits have one even if they lack nothing: they must not be kerned.
        const bool isMoved = piece.extra != 0 || piece.isDigit();
        if (isMoved && last && last->isDigit() == piece.isDigit() && last->extra == piece.extra) {
            formats.last().length += piece.length;
        } else if (isMoved) {
            QFont spaced = font;
            spaced.setKerning(false);
            spaced.setLetterSpacing(QFont::AbsoluteSpacing, font.letterSpacing() + piece.extra);
            QTextLayout::FormatRange range;
            range.start = piece.start;
            range.length = piece.length;
            range.format.setFont(spaced);
            formats.append(range);
        }
        last = isMoved ? &piece : nullptr;
    }
    return formats;
}

} // namespace

TabularText::TabularText(const QString &text, const QFont &font, Qt::LayoutDirection direction)
    : m_layout(text, font)
{
    std::vector<Piece> pieces = piecesOf(text);
    spreadDigits(pieces, font);
    m_layout.setFormats(formatsOf(pieces, font));
    QTextOption option(Qt::AlignLeft | Qt::AlignAbsolute);
    option.setTextDirection(direction);
    option.setWrapMode(QTextOption::NoWrap);
    m_layout.setTextOption(option);
    m_layout.setCacheEnabled(true);
    m_layout.beginLayout();
    QTextLine line = m_layout.createLine();
    if (line.isValid()) {
        line.setLineWidth(std::numeric_limits<short>::max());
        m_width = line.naturalTextWidth();
        // Lines that read from the right are laid against the right edge: it is where the text ends.
        line.setLineWidth(m_width);
    }
    m_layout.endLayout();
}

QSizeF TabularText::size() const
{
    const qreal height
        = m_layout.lineCount() > 0 ? m_layout.lineAt(0).height() : QFontMetricsF(m_layout.font()).height();
    return {m_width, height};
}

void TabularText::draw(QPainter &painter, QPointF corner) const
{
    m_layout.draw(&painter, corner);
}

} // namespace orbitledge::ui
