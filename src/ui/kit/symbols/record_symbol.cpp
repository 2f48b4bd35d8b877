// Part of the build: records what drawing an SVG file on a grid of 24 units comes to, so that the program
// that shows it needs neither the library for SVG nor its time.
//
//   record_symbol INPUT.svg OUTPUT.picture

#include <QPainter>
#include <QPicture>
#include <QSvgRenderer>

#include <cstdlib>
#include <iostream>

int main(int argc, char **argv)
{
    if (argc != 3)
        return EXIT_FAILURE;
    QSvgRenderer renderer(QString::fromLocal8Bit(argv[1]));
    constexpr QRectF grid(0, 0, 24, 24);
    QPicture picture;
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    renderer.render(&painter, grid);
    painter.end();
    if (!renderer.isValid() || renderer.viewBoxF() != grid
        || !picture.save(QString::fromLocal8Bit(argv[2]))) {
        std::cerr << argv[1] << ": not a symbol\n";
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
