#include "RecordRoundTrip.h"

using namespace orbitledge;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const auto decoded = fuzz::decodeChecked<QList<Subscription>>(data, size, JsonSource::Service);
    if (!decoded)
        return 0;
    QByteArrayList documents;
    for (const Subscription &record : *decoded) {
        fuzz::checkRoundTrip(record);
        documents.append(encodeJson(record));
    }
    const auto again = decodeJson<QList<Subscription>>('[' + documents.join(',') + ']');
    fuzz::require(again.has_value(), "a list of written records can be read");
    QList<Subscription> expected = *decoded;
    for (Subscription &record : expected)
        fuzz::roundDown(record);
    fuzz::require(*again == expected, "a list reads as its records do");
    return 0;
}
