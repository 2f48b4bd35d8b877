#include "logos/EncodedPicture.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <limits>
#include <optional>

namespace orbitledge {

namespace {

using Result = tl::expected<EncodedPicture, LogoFault>;

tl::unexpected<LogoFault> damaged()
{
    return tl::make_unexpected(LogoFault::Damaged);
}

/// Reads on in bytes that may end anywhere: beyond the end everything is zero, and the reader has failed.
class ByteReader {
public:
    explicit ByteReader(QByteArrayView bytes)
        : m_bytes(bytes)
    {
    }

    [[nodiscard]] bool hasFailed() const { return m_hasFailed; }
    [[nodiscard]] qsizetype position() const { return m_position; }

    QByteArrayView take(qsizetype size)
    {
        if (size > m_bytes.size() - m_position)
            m_hasFailed = true;
        if (m_hasFailed)
            return {};
        const QByteArrayView taken = m_bytes.sliced(m_position, size);
        m_position += size;
        return taken;
    }
    void skip(qsizetype size) { (void)take(size); }

    template <typename Number> Number big()
    {
        const QByteArrayView bytes = take(sizeof(Number));
        return bytes.isEmpty() ? Number{} : qFromBigEndian<Number>(bytes.data());
    }
    template <typename Number> Number little()
    {
        const QByteArrayView bytes = take(sizeof(Number));
        return bytes.isEmpty() ? Number{} : qFromLittleEndian<Number>(bytes.data());
    }
    quint8 byte() { return big<quint8>(); }

private:
    QByteArrayView m_bytes;
    qsizetype m_position = 0;
    bool m_hasFailed = false;
};

/// Absent for what cannot be a picture's.
std::optional<QSize> sizeOf(quint32 width, quint32 height)
{
    constexpr quint32 most = std::numeric_limits<int>::max();
    if (width == 0 || height == 0 || width > most || height > most)
        return std::nullopt;
    return QSize(static_cast<int>(width), static_cast<int>(height));
}

// PNG (ISO/IEC 15948): a signature and chunks of length, type, data and checksum.

constexpr QByteArrayView pngSignature("\x89PNG\r\n\x1a\n", 8);

bool makesPixels(QByteArrayView chunkType)
{
    static constexpr std::array<QByteArrayView, 5> types{"IHDR", "PLTE", "tRNS", "IDAT", "IEND"};
    return std::ranges::find(types, chunkType) != types.end();
}

Result inspectPng(const QByteArray &content)
{
    constexpr qsizetype lengthSize = 4;
    constexpr qsizetype typeSize = 4;
    constexpr qsizetype checksumSize = 4;
    ByteReader reader(content);
    EncodedPicture picture{
        .format = PictureFormat::Png, .size = {}, .content = reader.take(pngSignature.size()).toByteArray()};
    while (true) {
        const qsizetype start = reader.position();
        const qsizetype length = reader.big<quint32>();
        const QByteArrayView type = reader.take(typeSize);
        ByteReader data(reader.take(length));
        reader.skip(checksumSize);
        if (reader.hasFailed())
            return damaged();
        if (picture.size.isEmpty()) {
            const auto width = data.big<quint32>();
            const auto size = sizeOf(width, data.big<quint32>());
            if (type != QByteArrayView("IHDR") || !size)
                return damaged();
            picture.size = *size;
        }
        if (makesPixels(type))
            picture.content
                += QByteArrayView(content).sliced(start, lengthSize + typeSize + length + checksumSize);
        if (type == QByteArrayView("IEND"))
            return picture;
    }
}

// JPEG (ITU-T T.81): segments that begin with 0xFF and a marker.

constexpr QByteArrayView jpegSignature("\xff\xd8\xff", 3);
constexpr QByteArrayView jpegScan("\xff\xda", 2);
constexpr QByteArrayView jpegEnd("\xff\xd9", 2);

bool isFrameHeader(quint8 marker)
{
    constexpr quint8 first = 0xc0;
    constexpr quint8 last = 0xcf;
    constexpr std::array<quint8, 3> others{0xc4, 0xc8, 0xcc}; // tables
    return marker >= first && marker <= last && std::ranges::find(others, marker) == others.end();
}

/// Absent where a scan, or the end, comes before it.
std::optional<QSize> jpegSize(QByteArrayView content)
{
    constexpr quint8 fill = 0xff;
    constexpr quint8 endOfImage = 0xd9;
    constexpr quint8 startOfScan = 0xda;
    ByteReader reader(content.sliced(jpegSignature.size() - 1));
    while (reader.byte() == fill) {
        quint8 marker = reader.byte();
        while (marker == fill)
            marker = reader.byte();
        if (marker == startOfScan || marker == endOfImage)
            return std::nullopt;
        const qsizetype length = reader.big<quint16>();
        if (length < 2)
            return std::nullopt;
        ByteReader segment(reader.take(length - 2));
        if (!isFrameHeader(marker))
            continue;
        segment.skip(1); // bits of a sample
        const quint32 height = segment.big<quint16>();
        return sizeOf(segment.big<quint16>(), height);
    }
    return std::nullopt;
}

Result inspectJpeg(const QByteArray &content)
{
    // Each scan goes over all pixels, and a few bytes are one. Encoders make about ten.
    constexpr qsizetype mostScans = 100;
    const QByteArrayView bytes(content);
    const auto size = jpegSize(bytes);
    if (!size || bytes.count(jpegScan) > mostScans
        || bytes.lastIndexOf(jpegEnd) < bytes.lastIndexOf(jpegScan))
        return damaged();
    return EncodedPicture{.format = PictureFormat::Jpeg, .size = *size, .content = content};
}

// GIF (version 89a): a screen, and blocks of which some are frames.

constexpr QByteArrayView gifSignature("GIF8");

qsizetype gifColorTableSize(quint8 flags)
{
    constexpr quint8 isThere = 0x80;
    constexpr quint8 exponent = 0x07;
    constexpr qsizetype bytesPerColor = 3;
    return (flags & isThere) != 0 ? bytesPerColor << ((flags & exponent) + 1) : 0;
}

void skipGifSubBlocks(ByteReader &reader)
{
    while (const quint8 length = reader.byte())
        reader.skip(length);
}

Result inspectGif(const QByteArray &content)
{
    constexpr qsizetype signatureSize = 6;
    constexpr quint8 extension = 0x21;
    constexpr quint8 frame = 0x2c;
    ByteReader reader(content);
    reader.skip(signatureSize);
    quint32 width = reader.little<quint16>();
    quint32 height = reader.little<quint16>();
    const quint8 flags = reader.byte();
    reader.skip(2 + gifColorTableSize(flags)); // background, aspect
    quint8 block = reader.byte();
    while (block == extension) {
        reader.skip(1); // its label
        skipGifSubBlocks(reader);
        block = reader.byte();
    }
    if (block != frame)
        return damaged();
    const quint32 left = reader.little<quint16>();
    const quint32 top = reader.little<quint16>();
    width = std::max(width, left + reader.little<quint16>());
    height = std::max(height, top + reader.little<quint16>());
    const quint8 frameFlags = reader.byte();
    reader.skip(gifColorTableSize(frameFlags) + 1); // bits of a code
    skipGifSubBlocks(reader);
    const auto size = sizeOf(width, height);
    if (reader.hasFailed() || !size)
        return damaged();
    return EncodedPicture{
        .format = PictureFormat::Gif, .size = *size, .content = content.first(reader.position()) + ';'};
}

// WebP: a RIFF container, whose first chunk tells the size in one of three ways.

constexpr QByteArrayView riffSignature("RIFF");
constexpr QByteArrayView webpSignature("WEBP");
constexpr qsizetype webpSignaturePlace = 8;

std::optional<QSize> webpSize(QByteArrayView chunkType, ByteReader chunk)
{
    constexpr quint32 fourteenBits = 0x3fff;
    if (chunkType == QByteArrayView("VP8 ")) {
        constexpr qsizetype frameTagAndStartCode = 6;
        chunk.skip(frameTagAndStartCode);
        const quint32 width = chunk.little<quint16>() & fourteenBits;
        return sizeOf(width, chunk.little<quint16>() & fourteenBits);
    }
    if (chunkType == QByteArrayView("VP8L")) {
        chunk.skip(1); // a signature
        const auto bits = chunk.little<quint32>();
        if (chunk.hasFailed())
            return std::nullopt;
        return sizeOf((bits & fourteenBits) + 1, ((bits >> 14U) & fourteenBits) + 1);
    }
    if (chunkType == QByteArrayView("VP8X")) {
        constexpr qsizetype flagsAndReserved = 4;
        chunk.skip(flagsAndReserved);
        const auto twentyFourBits = [&chunk] {
            const quint32 low = chunk.little<quint16>();
            return low + (quint32{chunk.byte()} << 16U);
        };
        const quint32 width = twentyFourBits() + 1;
        const quint32 height = twentyFourBits() + 1;
        return chunk.hasFailed() ? std::nullopt : sizeOf(width, height);
    }
    return std::nullopt;
}

Result inspectWebP(const QByteArray &content)
{
    constexpr qsizetype typeSize = 4;
    ByteReader reader(content);
    reader.skip(riffSignature.size());
    const qsizetype length = reader.little<quint32>();
    ByteReader riff(reader.take(length));
    riff.skip(webpSignature.size());
    const QByteArrayView type = riff.take(typeSize);
    const qsizetype chunkLength = riff.little<quint32>();
    const auto size = webpSize(type, ByteReader(riff.take(chunkLength)));
    if (reader.hasFailed() || riff.hasFailed() || !size)
        return damaged();
    return EncodedPicture{
        .format = PictureFormat::WebP, .size = *size, .content = content.first(reader.position())};
}

} // namespace

Result inspectPicture(const QByteArray &content)
{
    const QByteArrayView bytes(content);
    if (bytes.startsWith(pngSignature))
        return inspectPng(content);
    if (bytes.startsWith(jpegSignature))
        return inspectJpeg(content);
    if (bytes.startsWith(gifSignature))
        return inspectGif(content);
    if (bytes.startsWith(riffSignature)
        && bytes.sliced(std::min(webpSignaturePlace, bytes.size())).startsWith(webpSignature))
        return inspectWebP(content);
    return tl::make_unexpected(LogoFault::UnknownFormat);
}

} // namespace orbitledge
