// Part of the build: records what drawing an SVG file on a grid of 24 units comes to, so that the program
// that shows it needs neither the library for SVG nor its time.
//
//   record_symbol INPUT.svg OUTPUT.symbol

#include "ui/kit/SymbolRecord.h"

#include <QFile>
#include <QPainter>
#include <QSvgRenderer>

#include <array>
#include <cstdlib>
#include <iostream>
#include <numeric>
#include <vector>

using namespace orbitledge::ui;

namespace {

/// Higher where straight lines lie on fewer rows and columns. Single pixels would tell more of the curves.
qint64 sharpnessOf(const QImage &image)
{
    const auto side = static_cast<std::size_t>(image.width());
    std::vector<qint64> rows(side);
    std::vector<qint64> columns(side);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const int alpha = qAlpha(image.pixel(x, y));
            rows.at(static_cast<std::size_t>(y)) += alpha;
            columns.at(static_cast<std::size_t>(x)) += alpha;
        }
    }
    const auto addSquare = [](qint64 sum, qint64 ink) { return sum + ink * ink; };
    const qint64 ofRows = std::accumulate(rows.begin(), rows.end(), qint64{0}, addSquare);
    return std::accumulate(columns.begin(), columns.end(), ofRows, addSquare);
}

/// In place first: a move must be worth more than the unevenness it brings.
SymbolRecord::Move sharpestMove(const SymbolRecord &symbol, int pixels)
{
    SymbolRecord::Move best;
    qint64 bestSharpness = sharpnessOf(symbol.drawn(pixels, best)) * 101 / 100;
    constexpr std::array<qint8, 4> distances{0, -1, 1, -2};
    for (const qint8 y : distances) {
        for (const qint8 x : distances) {
            const qint64 sharpness = sharpnessOf(symbol.drawn(pixels, {x, y}));
            if (sharpness > bestSharpness) {
                bestSharpness = sharpness;
                best = {x, y};
            }
        }
    }
    return best;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 3)
        return EXIT_FAILURE;
    QSvgRenderer renderer(QString::fromLocal8Bit(argv[1]));
    constexpr QRectF grid(0, 0, SymbolRecord::gridUnits, SymbolRecord::gridUnits);
    SymbolRecord symbol;
    QPainter painter(&symbol.strokes);
    painter.setRenderHint(QPainter::Antialiasing);
    renderer.render(&painter, grid);
    painter.end();

    symbol.moves.append(SymbolRecord::Move()); // of no pixels
    for (int pixels = 1; pixels < SymbolRecord::hintedPixels; ++pixels)
        symbol.moves.append(sharpestMove(symbol, pixels));

    QFile file(QString::fromLocal8Bit(argv[2]));
    QDataStream stream(&file);
    if (!renderer.isValid() || renderer.viewBoxF() != grid || !file.open(QFile::WriteOnly)) {
        std::cerr << argv[1] << ": not a symbol\n";
        return EXIT_FAILURE;
    }
    stream << symbol;
    return stream.status() == QDataStream::Ok && file.flush() ? EXIT_SUCCESS : EXIT_FAILURE;
}
