#include "Require.h"
#include "model/WebAddress.h"

#include <algorithm>

using namespace orbitledge;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString text
        = QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const auto url = absoluteUrlFromText(text);
    if (!url)
        return 0;
    fuzz::require(!text.isEmpty(), "the empty text is no address");
    fuzz::require(url->isValid() && !url->scheme().isEmpty(), "an address has a scheme");
    const QByteArray encoded = url->toEncoded();
    fuzz::require(std::ranges::all_of(encoded, [](char c) { return c > 0x20 && c < 0x7F; }),
        "an encoded address has no blank, no control character and nothing beyond ASCII");
    const auto again = absoluteUrlFromText(QString::fromLatin1(encoded));
    fuzz::require(again.has_value(), "what was encoded can be read");
    fuzz::require(*again == *url, "what was encoded is what was read");
    fuzz::require(again->toEncoded() == encoded, "an address is encoded once");
    return 0;
}
