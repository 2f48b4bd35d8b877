#include "RecordRoundTrip.h"
#include "model/json/JsonWriter.h"
#include "updates/AvailableUpdate.h"

using namespace orbitledge;

namespace {

QByteArray written(const ReleaseManifest &manifest)
{
    json::JsonWriter writer;
    const auto add = [&writer](std::string_view key, const auto &value) {
        writer.key(key);
        write(writer, value);
    };
    writer.beginObject();
    // Backwards, as the order of keys means nothing.
    add("comingSoon", manifest.comingSoon);
    add("architectures", manifest.architectures);
    add("sha256", manifest.sha256);
    add("size", manifest.size);
    add("url", manifest.url);
    add("publishedAt", manifest.publishedAt);
    add("minimumSystemVersion", manifest.minimumSystemVersion);
    add("build", manifest.build);
    add("version", manifest.version);
    writer.endObject();
    return writer.take();
}

void checkRead(ReleaseManifest manifest)
{
    fuzz::require(
        manifest.url.isValid() && !manifest.url.scheme().isEmpty(), "an announced address is absolute");
    fuzz::roundDown(manifest.publishedAt);
    const auto again = decodeReleaseManifest(written(manifest));
    fuzz::require(again == manifest, "what was written is what was read");
}

void checkOffer(const ReleaseManifest &manifest)
{
    const RunningRelease itself{.version = manifest.version, .build = manifest.build};
    fuzz::require(!isAvailableUpdate(manifest, itself, std::nullopt), "nothing is newer than itself");
    const RunningRelease oldest{.version = {}, .build = {}};
    fuzz::require(
        !isAvailableUpdate(manifest, oldest, manifest.version), "what was dismissed is not offered");
    if (manifest.comingSoon)
        fuzz::require(!isAvailableUpdate(manifest, oldest, std::nullopt), "what is to come is not offered");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    // Not copied, so that a checker of memory knows where the bytes end.
    const auto json
        = QByteArray::fromRawData(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const auto manifest = decodeReleaseManifest(json);
    fuzz::checkDecoded(manifest, fuzz::textOf(data, size));
    if (!manifest)
        return 0;
    checkRead(*manifest);
    checkOffer(*manifest);
    return 0;
}
