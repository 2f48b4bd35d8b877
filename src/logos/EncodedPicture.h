#pragma once

#include "logos/LogoFault.h"

#include <QByteArray>
#include <QSize>

#include <tl/expected.hpp>

namespace orbitledge {

enum class PictureFormat { Png, Jpeg, Gif, WebP };

/// A picture as somebody sent it, before any library decodes it.
struct EncodedPicture {
    PictureFormat format = PictureFormat::Png;
    /// What its header claims, and so what decoding it would take.
    QSize size;
    /// The part that is worth decoding: of a GIF the first frame, of a PNG what its pixels are made of. Its
    /// texts and profiles are left out, since they are compressed too and each may unpack to megabytes.
    QByteArray content;
};

/// Tells the format by the first bytes, and by nothing else: PNG, JPEG, GIF or WebP. Reads the frame of each
/// and none of its pixels; one that ends too early is Damaged.
tl::expected<EncodedPicture, LogoFault> inspectPicture(const QByteArray &content);

} // namespace orbitledge
