#pragma once

#include "model/DecodingError.h"
#include "model/Instant.h"
#include "model/Subscription.h"
#include "model/UserProfile.h"

#include <QByteArray>
#include <QList>

namespace orbitledge {

/// The version of the file's format; the decoder accepts only the current one.
struct SnapshotVersion {
    static constexpr qint64 current = 1;
    qint64 number = current;

    friend bool operator==(const SnapshotVersion &, const SnapshotVersion &) = default;
};

/// The last good data, as the cache file holds it.
struct CacheSnapshot {
    SnapshotVersion version;
    UserProfile profile;
    QList<Subscription> subscriptions;
    Instant fetchedAt;

    friend bool operator==(const CacheSnapshot &, const CacheSnapshot &) = default;
};

/// One JSON object. A version that is not the current one is a fault of the key "version" and comes before
/// all others but broken JSON.
Decoded<CacheSnapshot> decodeCacheSnapshot(QByteArray json);

/// Keys sorted, no white space; instants in UTC and whole seconds, rounded down.
QByteArray encodeCacheSnapshot(const CacheSnapshot &snapshot);

} // namespace orbitledge
