#pragma once

#include <QString>

#include <unicode/unistr.h>

namespace orbitledge {

inline QString toQString(const icu::UnicodeString &text)
{
    return QString(reinterpret_cast<const QChar *>(text.getBuffer()), text.length());
}

/// A view, not a copy: `text` must outlive it.
inline icu::UnicodeString fromQString(const QString &text)
{
    return {false, reinterpret_cast<const char16_t *>(text.utf16()), static_cast<int32_t>(text.size())};
}

} // namespace orbitledge
