#pragma once

#include <QString>

namespace orbitledge {

inline constexpr char16_t firstStrongIsolate = 0x2068;
inline constexpr char16_t popDirectionalIsolate = 0x2069;

/// How many columns a terminal gives to a text: two for wide characters and emoji, none for marks that
/// combine with the character before them (UAX #11, UAX #29).
int displayWidth(const QString &text);

/// A text from outside, made safe to print: control characters, which could steer the terminal, become
/// U+FFFD, and characters that turn the direction of what follows are left out.
QString printable(const QString &text);

/// Set apart from what stands beside it where some of it runs from right to left, which would otherwise carry
/// numbers and punctuation around it along (UAX #9).
QString isolated(const QString &text);

/// Cut to at most `width` columns, the last of them an ellipsis.
QString elided(const QString &text, int width);

enum class Align { Left, Right };

/// Filled up with blanks to `width` columns.
QString padded(const QString &text, int width, Align align);

/// How a piece of text is set off, where colours are wanted.
enum class Style { Plain, Bold, Dim, Red, Green, Yellow, Blue, Magenta, Cyan };

/// The text between the sequences of ECMA-48 that switch the style on and off.
QString styled(const QString &text, Style style);

} // namespace orbitledge
