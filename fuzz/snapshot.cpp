#include "RecordRoundTrip.h"
#include "state/CacheSnapshot.h"

using namespace orbitledge;

// The cache file as the program finds it: whatever stands in it, what was accepted can be saved again.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const auto json
        = QByteArray::fromRawData(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const auto snapshot = decodeCacheSnapshot(json);
    if (!snapshot) {
        fuzz::require(!snapshot.error().debugDescription.isEmpty(), "a fault is described");
        return 0;
    }
    fuzz::require(snapshot->version == SnapshotVersion(), "only the current version is accepted");

    CacheSnapshot expected = *snapshot;
    fuzz::roundDown(expected.fetchedAt);
    fuzz::roundDown(expected.profile);
    for (Subscription &subscription : expected.subscriptions)
        fuzz::roundDown(subscription);
    const QByteArray written = encodeCacheSnapshot(*snapshot);
    const auto again = decodeCacheSnapshot(written);
    fuzz::require(again.has_value(), "what was saved can be loaded");
    fuzz::require(*again == expected, "what was saved is what was shown");
    fuzz::require(encodeCacheSnapshot(*again) == written, "the same snapshot is saved the same way");
    return 0;
}
