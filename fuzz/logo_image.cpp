#include "Require.h"
#include "logos/EncodedPicture.h"
#include "logos/LogoDecoder.h"
#include "logos/cache/LogoCache.h"

#include <QLoggingCategory>

#include <algorithm>

using namespace orbitledge;

// A logo as somebody sent it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const bool isQuiet = [] {
        QLoggingCategory::setFilterRules(QStringLiteral("qt.gui.imageio*=false"));
        return true;
    }();
    fuzz::require(isQuiet, "what libraries say of damaged pictures is not shown");

    const QByteArray content(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const auto picture = inspectPicture(content);
    const auto image = decodeLogo(content);
    if (picture) {
        fuzz::require(!picture->size.isEmpty(), "a picture has pixels");
        const auto again = inspectPicture(picture->content);
        fuzz::require(again && again->format == picture->format && again->size == picture->size
                && again->content == picture->content,
            "what is worth decoding is the same picture");
    }
    if (image) {
        fuzz::require(picture.has_value(), "nothing is decoded that was not understood before");
        fuzz::require(content.size() <= largestLogo, "no logo has too many bytes");
        fuzz::require(std::max(picture->size.width(), picture->size.height()) <= longestLogoSide,
            "no logo claims too many pixels");
        fuzz::require(!image->isNull() && std::max(image->width(), image->height()) <= longestDecodedSide,
            "no logo is larger than what is kept");
    }
    return 0;
}
