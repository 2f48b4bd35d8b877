#pragma once

#include <QBuffer>
#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QImageWriter>
#include <QtEndian>

#include <zlib.h>

namespace orbitledge::testing {

/// A picture of one colour, encoded by the toolkit: "png", "jpeg" or "webp". A WebP of less than the best
/// quality has another first chunk than one that loses nothing, and yet another where something is
/// transparent.
inline QByteArray picture(
    const char *format, QSize size = {8, 8}, const QColor &color = Qt::red, int quality = 100)
{
    QImage image(size, QImage::Format_ARGB32);
    image.fill(color);
    QByteArray content;
    QBuffer buffer(&content);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    if (qstrcmp(format, "png") != 0) // to which it would mean not to compress
        writer.setQuality(quality);
    if (!writer.write(image))
        qFatal("no %s was written: %s", format, qPrintable(writer.errorString()));
    return content;
}

inline QByteArray pngChunk(const QByteArray &type, const QByteArray &data)
{
    QByteArray length(4, '\0');
    qToBigEndian(static_cast<quint32>(data.size()), length.data());
    const QByteArray checked = type + data;
    QByteArray checksum(4, '\0');
    qToBigEndian(static_cast<quint32>(
                     crc32(0, reinterpret_cast<const Bytef *>(checked.constData()), uInt(checked.size()))),
        checksum.data());
    return length + checked + checksum;
}

/// A whole PNG whose header tells a lie, with a good checksum.
inline QByteArray pngThatClaims(quint32 width, quint32 height)
{
    QByteArray header(8, '\0');
    qToBigEndian(width, header.data());
    qToBigEndian(height, header.data() + 4);
    header += QByteArray("\x08\x06\x00\x00\x00", 5);
    const QByteArray good = picture("png");
    const qsizetype signature = 8;
    const qsizetype headerChunk = 25;
    return good.first(signature) + pngChunk("IHDR", header) + good.sliced(signature + headerChunk);
}

/// One pixel, red at first and blue then. `claimed` is the screen's size.
inline QByteArray animatedGif(QSize claimed = {1, 1})
{
    const auto number = [](int value) {
        QByteArray bytes(2, '\0');
        qToLittleEndian(static_cast<quint16>(value), bytes.data());
        return bytes;
    };
    const QByteArray frame("\x2c\x00\x00\x00\x00\x01\x00\x01\x00\x00\x02\x02", 12);
    const QByteArray delay("\x21\xf9\x04\x00\x0a\x00\x00\x00", 8);
    return "GIF89a" + number(claimed.width()) + number(claimed.height()) + QByteArray("\x80\x00\x00", 3)
        + QByteArray("\xff\x00\x00\x00\x00\xff", 6) + delay + frame + QByteArray("\x44\x01\x00", 3) + delay
        + frame + QByteArray("\x4c\x01\x00", 3) + ';';
}

inline QByteArray vectorPicture()
{
    return R"(<?xml version="1.0"?><svg xmlns="http://www.w3.org/2000/svg" width="8" height="8">)"
           R"(<rect width="8" height="8" fill="red"/></svg>)";
}

} // namespace orbitledge::testing
