#include "logos/LogoDecoder.h"

#include "logos/EncodedPicture.h"
#include "logos/cache/LogoCache.h"

#include <QBuffer>
#include <QImageReader>

#include <algorithm>

namespace orbitledge {

namespace {

QByteArray readerName(PictureFormat format)
{
    switch (format) {
    case PictureFormat::Png:
        return "png";
    case PictureFormat::Jpeg:
        return "jpeg";
    case PictureFormat::Gif:
        return "gif";
    case PictureFormat::WebP:
        return "webp";
    }
    return {};
}

bool isTooLarge(QSize size)
{
    return std::max(size.width(), size.height()) > longestLogoSide;
}

QSize decodedSize(QSize size)
{
    const QSize most(longestDecodedSide, longestDecodedSide);
    if (size.boundedTo(most) == size)
        return size;
    return size.scaled(most, Qt::KeepAspectRatio).expandedTo({1, 1});
}

} // namespace

tl::expected<QImage, LogoFault> decodeLogo(const QByteArray &content)
{
    if (content.size() > largestLogo)
        return tl::make_unexpected(LogoFault::TooLarge);
    auto picture = inspectPicture(content);
    if (!picture)
        return tl::make_unexpected(picture.error());
    if (isTooLarge(picture->size))
        return tl::make_unexpected(LogoFault::TooLarge);

    QBuffer device(&picture->content);
    QImageReader reader(&device, readerName(picture->format));
    // Told the format and left no choice: no other of the toolkit's readers gets to see these bytes.
    reader.setAutoDetectImageFormat(false);
    reader.setDecideFormatFromContent(false);
    const QSize size = reader.size();
    if (size.isEmpty())
        return tl::make_unexpected(LogoFault::Damaged);
    if (isTooLarge(size))
        return tl::make_unexpected(LogoFault::TooLarge);
    if (decodedSize(size) != size)
        reader.setScaledSize(decodedSize(size));
    QImage image = reader.read();
    if (image.isNull())
        return tl::make_unexpected(LogoFault::Damaged);
    // A reader that cannot scale, or finds another size than it said.
    if (decodedSize(image.size()) != image.size())
        image = image.scaled(decodedSize(image.size()), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    image.convertTo(QImage::Format_ARGB32_Premultiplied);
    return image;
}

} // namespace orbitledge
