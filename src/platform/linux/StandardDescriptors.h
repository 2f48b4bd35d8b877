#pragma once

namespace orbitledge {

/// Sees that the descriptors of standard input, output and error are taken. Whoever started this program may
/// have closed them; the next file or socket would get their numbers then, and words for people would be
/// written into it, or a password read from it. What was closed still fails to be read or written.
///
/// To be called before anything is opened.
void occupyStandardDescriptors();

} // namespace orbitledge
