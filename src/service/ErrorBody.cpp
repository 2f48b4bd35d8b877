#include "service/ErrorBody.h"

#include "model/json/RecordReader.h"

namespace orbitledge {

namespace json {

template <> struct RecordFields<ErrorBody> {
    static constexpr auto table = std::tuple{
        field<&ErrorBody::error>("error"),
        field<&ErrorBody::message>("message"),
        field<&ErrorBody::details>("details"),
        field<&ErrorBody::errorCode>("error_code"),
    };
};

// Found by argument-dependent lookup; inside an unnamed namespace it would not be.
// NOLINTNEXTLINE(misc-use-internal-linkage)
bool read(Value &value, DecodingContext &context, ErrorBody &target)
{
    return readRecord(value, context, target);
}

} // namespace json

Decoded<ErrorBody> decodeErrorBody(QByteArray json)
{
    return json::decodeDocument<ErrorBody>(std::move(json), JsonSource::Service);
}

} // namespace orbitledge
