#include "ui/kit/SymbolRecord.h"

#include <QPainter>

namespace orbitledge::ui {

QImage SymbolRecord::drawn(int pixels, Move move) const
{
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(move.x / 4.0, move.y / 4.0);
    painter.scale(pixels / gridUnits, pixels / gridUnits);
    painter.drawPicture(0, 0, strokes);
    return image;
}

QDataStream &operator<<(QDataStream &stream, const SymbolRecord &record)
{
    stream << record.strokes << record.moves.size();
    for (const SymbolRecord::Move move : record.moves)
        stream << move.x << move.y;
    return stream;
}

QDataStream &operator>>(QDataStream &stream, SymbolRecord &record)
{
    qsizetype count = 0;
    stream >> record.strokes >> count;
    for (qsizetype i = 0; i < count && stream.status() == QDataStream::Ok; ++i) {
        SymbolRecord::Move move;
        stream >> move.x >> move.y;
        record.moves.append(move);
    }
    return stream;
}

} // namespace orbitledge::ui
