#pragma once

#include "JsonGrammar.h"
#include "Require.h"
#include "model/RecordCodecs.h"

namespace orbitledge::fuzz {

// What writing does to a record: its instants lose what is beyond whole seconds.

inline void roundDown(Instant &instant)
{
    const qint64 milliseconds = instant.millisecondsSinceEpoch();
    instant = Instant::fromMillisecondsSinceEpoch(milliseconds - (milliseconds % 1000 + 1000) % 1000);
}

inline void roundDown(std::optional<Instant> &instant)
{
    if (instant)
        roundDown(*instant);
}

inline void roundDown(Subscription &record)
{
    roundDown(record.cancelledAt);
    roundDown(record.createdAt);
    roundDown(record.updatedAt);
}

inline void roundDown(UserProfile &record)
{
    roundDown(record.planExpiresAt);
    roundDown(record.planCancelledAt);
    roundDown(record.trialStartDate);
    roundDown(record.trialEndDate);
    roundDown(record.createdAt);
    roundDown(record.updatedAt);
}

inline void roundDown(SubscriptionTemplate &record)
{
    roundDown(record.createdAt);
    roundDown(record.updatedAt);
}

inline void roundDown(CreateSubscriptionRequest &) { }

inline void roundDown(SubscriptionMutationResponse &record)
{
    roundDown(record.subscription);
}

inline void roundDown(AuthenticationResponse &record)
{
    roundDown(record.user);
}

/// Checks that a document was taken for JSON exactly if it is.
template <typename T> void checkDecoded(const Decoded<T> &decoded, std::string_view text)
{
    const JsonGrammar grammar(text);
    if (decoded) {
        require(grammar.isJson() || grammar.depth() >= JsonGrammar::depthLimit, "what was decoded is JSON");
        return;
    }
    const DecodingError &error = decoded.error();
    require(!error.debugDescription.isEmpty(), "a fault is described");
    require(!error.errorDescription().isEmpty(), "a fault is described to the person");
    require(error.codingPath.empty() == error.pathText().isEmpty(), "a path is printed");
    const bool malformed = error.debugDescription.startsWith(QLatin1StringView("The data is not valid JSON"));
    require(!malformed || !grammar.isJson(), "JSON is not called malformed");
    require(!malformed || error.kind == DecodingError::Kind::DataCorrupted, "malformed data is corrupted");
}

template <typename T> Decoded<T> decodeChecked(const std::uint8_t *data, std::size_t size, JsonSource source)
{
    // Not copied, so that a checker of memory knows where the bytes end.
    const auto json
        = QByteArray::fromRawData(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const auto decoded = decodeJson<T>(json, source);
    checkDecoded(decoded, textOf(data, size));
    return decoded;
}

template <typename Record> void checkRoundTrip(Record record)
{
    const QByteArray written = encodeJson(record);
    const auto again = decodeJson<Record>(written);
    require(again.has_value(), "what was written can be read");
    roundDown(record);
    require(*again == record, "what was written is what was read");
    require(encodeJson(*again) == written, "the same record is written the same way");
    require(JsonGrammar(textOf(reinterpret_cast<const std::uint8_t *>(written.constData()),
                            static_cast<std::size_t>(written.size())))
                .isJson(),
        "what was written is JSON");
}

template <typename Record> void checkRecord(const std::uint8_t *data, std::size_t size)
{
    const auto fromService = decodeChecked<Record>(data, size, JsonSource::Service);
    const auto fromCache = decodeChecked<Record>(data, size, JsonSource::SnapshotCache);
    require(fromService.has_value() == fromCache.has_value(), "the source decides on no more than a message");
    if (fromService) {
        require(*fromService == *fromCache, "the source does not change a record");
        checkRoundTrip(*fromService);
    } else {
        require(fromService.error().codingPath == fromCache.error().codingPath, "faults lie at one place");
        require(fromService.error().kind == fromCache.error().kind, "faults are of one kind");
    }
}

} // namespace orbitledge::fuzz
