#pragma once

#include <QDataStream>
#include <QImage>
#include <QList>
#include <QPicture>

namespace orbitledge::ui {

/// What is known of a symbol after the build: its strokes, on a grid of 24 units, and how far they are moved
/// at each small number of pixels, so that straight lines lie on whole ones. Finding that takes many
/// drawings.
struct SymbolRecord {
    static constexpr qreal gridUnits = 24;
    /// From this many pixels on, a line that lies between two of them looks sharp anyway.
    static constexpr int hintedPixels = 40;

    /// In quarters of a pixel.
    struct Move {
        qint8 x = 0;
        qint8 y = 0;
    };

    QPicture strokes;
    /// By the number of pixels; what is not in it stays in its place.
    QList<Move> moves;

    /// On nothing, in a square of so many pixels.
    [[nodiscard]] QImage drawn(int pixels) const { return drawn(pixels, moves.value(pixels)); }
    [[nodiscard]] QImage drawn(int pixels, Move move) const;
};

QDataStream &operator<<(QDataStream &stream, const SymbolRecord &record);
QDataStream &operator>>(QDataStream &stream, SymbolRecord &record);

} // namespace orbitledge::ui
