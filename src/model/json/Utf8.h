#pragma once

#include <QString>
#include <QStringDecoder>

#include <string_view>

namespace orbitledge::json {

inline QString fromUtf8(std::string_view utf8)
{
    // Inside a document U+FEFF is a character like any other, which the toolkit would take off.
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    const QByteArrayView bytes(utf8.data(), static_cast<qsizetype>(utf8.size()));
    if (utf8.starts_with(byteOrderMark))
        return QStringDecoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom)(bytes);
    return QString::fromUtf8(bytes);
}

/// Whether a text that came out of unescaping holds half a surrogate pair, written as if it were a
/// character of its own (ED A0 80 to ED BF BF, which UTF-8 excludes, RFC 3629, section 3).
inline bool holdsSurrogate(std::string_view text)
{
    for (auto at = text.find('\xED'); at != std::string_view::npos; at = text.find('\xED', at + 1)) {
        if (at + 1 < text.size() && static_cast<unsigned char>(text[at + 1]) >= 0xA0)
            return true;
    }
    return false;
}

} // namespace orbitledge::json
