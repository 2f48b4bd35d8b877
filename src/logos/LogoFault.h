#pragma once

namespace orbitledge {

/// Why something is not shown as a logo.
enum class LogoFault {
    /// No picture in one of the formats that logos may have.
    UnknownFormat,
    /// It has too many bytes, or would have too many pixels.
    TooLarge,
    Damaged,
};

} // namespace orbitledge
