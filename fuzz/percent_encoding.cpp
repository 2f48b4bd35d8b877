#include "Require.h"
#include "service/PercentEncoding.h"

#include <QUrl>

#include <algorithm>

using namespace orbitledge;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString text
        = QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const QByteArray encoded = percentEncodedQueryValue(text);
    fuzz::require(
        QByteArray::fromPercentEncoding(encoded) == text.toUtf8(), "what was encoded can be decoded");

    constexpr std::string_view kept
        = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789!$'()*+,-./:;?@_~";
    constexpr std::string_view hexadecimal = "0123456789ABCDEF";
    qsizetype characters = 0;
    for (qsizetype i = 0; i < encoded.size(); ++i, ++characters) {
        if (encoded[i] != '%') {
            fuzz::require(
                kept.find(encoded[i]) != std::string_view::npos, "a character may stand in a query");
            continue;
        }
        fuzz::require(i + 2 < encoded.size() && hexadecimal.find(encoded[i + 1]) != std::string_view::npos
                && hexadecimal.find(encoded[i + 2]) != std::string_view::npos,
            "two digits follow the sign");
        const auto byte = static_cast<char>(encoded.mid(i + 1, 2).toInt(nullptr, 16));
        fuzz::require(kept.find(byte) == std::string_view::npos, "nothing is encoded that need not be");
        i += 2;
    }
    fuzz::require(characters == text.toUtf8().size(), "each byte once");

    // On its way through an address nothing may be added to it, or taken off.
    const QByteArray path = "/templates/search?q=" + encoded + "&limit=20";
    const QUrl url = QUrl(QStringLiteral("https://api.example.com/"))
                         .resolved(QUrl::fromEncoded(path, QUrl::StrictMode));
    fuzz::require(url.isValid(), "it may stand in an address");
    fuzz::require(url.toEncoded() == "https://api.example.com" + path, "an address carries it as it is");
    return 0;
}
