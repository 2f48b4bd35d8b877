#include "updates/ReleaseManifest.h"

#include "model/json/RecordReader.h"

namespace orbitledge {

namespace json {

template <> struct RecordFields<ReleaseManifest> {
    static constexpr auto table = std::tuple{
        field<&ReleaseManifest::version>("version"),
        field<&ReleaseManifest::build>("build"),
        field<&ReleaseManifest::minimumSystemVersion>("minimumSystemVersion"),
        field<&ReleaseManifest::publishedAt>("publishedAt"),
        field<&ReleaseManifest::url>("url"),
        field<&ReleaseManifest::size>("size"),
        field<&ReleaseManifest::sha256>("sha256"),
        field<&ReleaseManifest::architectures>("architectures"),
        field<&ReleaseManifest::comingSoon>("comingSoon"),
    };
};

// Found by argument-dependent lookup; inside an unnamed namespace it would not be.
// NOLINTNEXTLINE(misc-use-internal-linkage)
bool read(Value &value, DecodingContext &context, ReleaseManifest &target)
{
    return readRecord(value, context, target);
}

} // namespace json

Decoded<ReleaseManifest> decodeReleaseManifest(QByteArray json)
{
    return json::decodeDocument<ReleaseManifest>(std::move(json), JsonSource::Service);
}

} // namespace orbitledge
