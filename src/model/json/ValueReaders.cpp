#include "model/json/ValueReaders.h"

#include "model/UuidText.h"
#include "model/WebAddress.h"
#include "model/json/Utf8.h"

using namespace Qt::StringLiterals;

namespace orbitledge::json {

namespace {

bool failCorrupted(DecodingContext &context, QString description)
{
    return context.fail(DecodingError::Kind::DataCorrupted, std::move(description));
}

bool readNumber(Value &value, DecodingContext &context, Decimal &target, QLatin1StringView type)
{
    const std::string_view raw = token(value);
    const auto number = Decimal::fromJsonNumber(raw);
    if (number) {
        target = *number;
        return true;
    }
    if (number.error() == Decimal::ParseError::Malformed)
        return context.failTypeMismatch("a number"_L1, raw);
    return failCorrupted(context, u"The number is out of the range of "_s + type);
}

} // namespace

bool read(Value &value, DecodingContext &context, QString &target)
{
    std::string_view text;
    if (!readText(value, context, text))
        return false;
    target = fromUtf8(text);
    return true;
}

bool readRepeating(Value &value, DecodingContext &context, QString &target)
{
    std::string_view text;
    if (!readText(value, context, text))
        return false;
    target = context.strings().intern(text);
    return true;
}

bool read(Value &value, DecodingContext &context, bool &target)
{
    const std::string_view raw = token(value);
    if (raw != "true" && raw != "false")
        return context.failTypeMismatch("a boolean"_L1, raw);
    target = raw == "true";
    return true;
}

bool read(Value &value, DecodingContext &context, qint64 &target)
{
    Decimal number;
    if (!readNumber(value, context, number, "a 64-bit integer"_L1))
        return false;
    const auto integer = number.toInteger();
    if (!integer)
        return failCorrupted(context, u"The number is not a 64-bit integer"_s);
    target = *integer;
    return true;
}

bool read(Value &value, DecodingContext &context, Decimal &target)
{
    return readNumber(value, context, target, "a decimal"_L1);
}

bool read(Value &value, DecodingContext &context, QUuid &target)
{
    std::string_view text;
    if (!readText(value, context, text))
        return false;
    const auto uuid = uuidFromText(text);
    if (!uuid)
        return failCorrupted(context, u"Expected a UUID"_s);
    target = *uuid;
    return true;
}

bool read(Value &value, DecodingContext &context, QUrl &target)
{
    std::string_view text;
    if (!readText(value, context, text))
        return false;
    auto url = absoluteUrlFromText(fromUtf8(text));
    if (!url)
        return failCorrupted(context, u"Expected an absolute URL"_s);
    target = *std::move(url);
    return true;
}

bool read(Value &value, DecodingContext &context, LocalDate &target)
{
    std::string_view text;
    if (!readText(value, context, text))
        return false;
    const auto date = LocalDate::fromText(text);
    if (!date)
        return failCorrupted(context, u"Expected a valid date in yyyy-MM-dd format"_s);
    target = *date;
    return true;
}

bool read(Value &value, DecodingContext &context, Instant &target)
{
    std::string_view text;
    if (!readText(value, context, text))
        return false;
    const auto instant = Instant::fromText(text);
    if (!instant) {
        auto description = u"Expected an ISO-8601 timestamp"_s;
        if (context.source() == JsonSource::SnapshotCache)
            description += u", got \""_s + fromUtf8(text) + u'"';
        return failCorrupted(context, std::move(description));
    }
    target = *instant;
    return true;
}

} // namespace orbitledge::json
