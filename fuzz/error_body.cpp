#include "JsonGrammar.h"
#include "Require.h"
#include "model/json/JsonWriter.h"
#include "platform/HttpStatusPhrase.h"
#include "service/ErrorBody.h"
#include "service/ResponseFailure.h"

using namespace orbitledge;

namespace {

QByteArray written(const ErrorBody &body)
{
    json::JsonWriter writer;
    writer.beginObject();
    const auto add = [&writer](const char *key, const std::optional<QString> &text) {
        if (!text)
            return;
        writer.key(key);
        writer.string(*text);
    };
    add("error", body.error);
    add("message", body.message);
    add("details", body.details);
    add("error_code", body.errorCode);
    writer.endObject();
    return writer.take();
}

QString expectedMessage(const Decoded<ErrorBody> &body)
{
    if (body) {
        for (const auto &text : {body->error, body->message, body->details}) {
            if (text)
                return *text;
        }
    }
    return httpStatusPhrase(404);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    // Not copied, so that a checker of memory knows where the bytes end.
    const auto json
        = QByteArray::fromRawData(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const auto body = decodeErrorBody(json);
    const auto failure = failureOf({.statusCode = 404, .headers = {}, .body = json});
    fuzz::require(failure == APIError(APIError::RequestFailed{404, expectedMessage(body)}),
        "the first of the texts is the message, the status's own where there is none");

    const fuzz::JsonGrammar grammar(fuzz::textOf(data, size));
    if (!body) {
        fuzz::require(!body.error().debugDescription.isEmpty(), "a fault is described");
        return 0;
    }
    fuzz::require(
        grammar.isJson() || grammar.depth() >= fuzz::JsonGrammar::depthLimit, "what was read is JSON");
    fuzz::require(decodeErrorBody(written(*body)) == *body, "what was written is what was read");
    return 0;
}
