#pragma once

#include "state/CacheSnapshot.h"

#include <QByteArray>
#include <QList>

namespace orbitledge::bench {

/// The day around which the sample's renewals lie.
inline constexpr LocalDate today{2026, 3, 18};

/// So many subscriptions with every field set, about 670 bytes of JSON each: names and logos all distinct,
/// renewals spread over a year, one in ten cancelled, one in five in a foreign currency. The same for the
/// same count.
QList<Subscription> sampleSubscriptions(qsizetype count);

/// As the service sends them: one array, keys in the order of the fields.
QByteArray sampleJson(qsizetype count);

/// As the cache file holds them.
CacheSnapshot sampleSnapshot(qsizetype count);

} // namespace orbitledge::bench
