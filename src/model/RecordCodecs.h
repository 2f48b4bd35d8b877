#pragma once

#include "model/AuthenticationResponse.h" // IWYU pragma: export
#include "model/CreateSubscriptionRequest.h" // IWYU pragma: export
#include "model/DecodingError.h"
#include "model/Subscription.h" // IWYU pragma: export
#include "model/SubscriptionMutationResponse.h" // IWYU pragma: export
#include "model/SubscriptionTemplate.h" // IWYU pragma: export
#include "model/UserProfile.h" // IWYU pragma: export

#include <QByteArray>

namespace orbitledge {

/// Where a document comes from, which decides how a bad timestamp is described: what the service sent is
/// not repeated in an error, what the own cache file holds is.
enum class JsonSource { Service, SnapshotCache };

/// Decode one document of JSON (RFC 8259, UTF-8, a byte order mark is skipped) into a record, or into the
/// list of records of an array. Unknown keys are ignored, of keys that occur twice the first one counts,
/// and of several faults in one object the one of the earliest field is reported. Documents over 1 GiB and
/// values nested more than 512 deep are refused.
///
/// Safe to call from any thread. The bytes are copied only where their buffer has no room for the
/// parser's 64 bytes of padding, which `reserve` gives.
///
/// Instantiated for the six records of this folder and for lists of subscriptions and of templates.
template <typename Record>
Decoded<Record> decodeJson(QByteArray json, JsonSource source = JsonSource::Service);

/// Encodes a record with its keys in the order of its fields; absent fields are left out.
/// Instantiated for the six records of this folder.
template <typename Record> QByteArray encodeJson(const Record &record);

} // namespace orbitledge
