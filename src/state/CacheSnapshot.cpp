#include "state/CacheSnapshot.h"

#include "model/json/RecordReader.h"
#include "model/json/RecordWriter.h"
#include "model/json/Records.h" // IWYU pragma: keep

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace json {

template <> struct RecordFields<CacheSnapshot> {
    static constexpr auto table = std::tuple{
        field<&CacheSnapshot::version>("version"),
        field<&CacheSnapshot::profile>("profile"),
        field<&CacheSnapshot::subscriptions>("subscriptions"),
        field<&CacheSnapshot::fetchedAt>("fetchedAt"),
    };
};

// Found by argument-dependent lookup, like the overloads for all other types of fields; inside an unnamed
// namespace they would not be.
// NOLINTBEGIN(misc-use-internal-linkage)

bool read(Value &value, DecodingContext &context, SnapshotVersion &target)
{
    if (!read(value, context, target.number))
        return false;
    if (target.number == SnapshotVersion::current)
        return true;
    return context.fail(DecodingError::Kind::DataCorrupted,
        u"Version %1 of the file format is not supported, only version %2 is"_s.arg(target.number)
            .arg(SnapshotVersion::current));
}

bool read(Value &value, DecodingContext &context, CacheSnapshot &target)
{
    return readRecord(value, context, target);
}

void write(JsonWriter &writer, const SnapshotVersion &version)
{
    writer.number(version.number);
}

// NOLINTEND(misc-use-internal-linkage)

} // namespace json

Decoded<CacheSnapshot> decodeCacheSnapshot(QByteArray json)
{
    return json::decodeDocument<CacheSnapshot>(std::move(json), JsonSource::SnapshotCache);
}

QByteArray encodeCacheSnapshot(const CacheSnapshot &snapshot)
{
    json::JsonWriter writer(json::KeyOrder::Sorted);
    json::writeRecord(writer, snapshot);
    return writer.take();
}

} // namespace orbitledge
