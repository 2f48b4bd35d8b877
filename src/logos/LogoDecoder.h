#pragma once

#include "logos/LogoFault.h"

#include <QByteArray>
#include <QImage>

#include <tl/expected.hpp>

namespace orbitledge {

/// A picture with a longer side is refused by its header, before there is memory for it.
inline constexpr int longestLogoSide = 2048;

/// What comes out is scaled down to this, with its proportions: six pixels for each of the largest tile's.
inline constexpr int longestDecodedSide = 256;

/// Decodes a logo from anybody: PNG, JPEG, WebP or the first frame of a GIF, whatever it is called. From any
/// thread, with at most about 32 MiB, and with no waiting.
tl::expected<QImage, LogoFault> decodeLogo(const QByteArray &content);

} // namespace orbitledge
