#include "Require.h"
#include "service/SessionCredential.h"

#include <algorithm>

using namespace orbitledge;

namespace {

bool isControl(QChar c)
{
    return c < QChar(0x20) || c == QChar(0x7F);
}

void checkRoundTrip(const SessionCredential &credential)
{
    const QByteArray written = encodeSessionCredential(credential);
    const auto again = decodeSessionCredential(written);
    fuzz::require(again.has_value(), "what was saved can be loaded");
    fuzz::require(*again == credential, "what was saved is what is loaded");
    fuzz::require(encodeSessionCredential(*again) == written, "a credential is saved the same way");
}

} // namespace

// The item as the secure store hands it out; and its bytes once more as a cookie's value.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray json(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    if (const auto credential = decodeSessionCredential(json)) {
        fuzz::require(std::ranges::none_of(credential->value, isControl), "a header can carry the value");
        checkRoundTrip(*credential);
    }

    const QString value = QString::fromLatin1(json);
    if (size >= 6 && std::ranges::none_of(value, isControl)) {
        // Six bytes of it are the moment, over some ten thousand years.
        qint64 moment = 0;
        for (int i = 0; i < 6; ++i)
            moment = moment * 256 + data[i];
        checkRoundTrip({value, Instant::fromMillisecondsSinceEpoch(moment)});
    }
    return 0;
}
