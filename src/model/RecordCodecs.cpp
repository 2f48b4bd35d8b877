#include "model/RecordCodecs.h"

#include "model/json/RecordReader.h"
#include "model/json/RecordWriter.h"
#include "model/json/Records.h"

namespace orbitledge {

namespace json {

bool read(Value &value, DecodingContext &context, Subscription &target)
{
    return readRecord(value, context, target);
}

bool read(Value &value, DecodingContext &context, UserProfile &target)
{
    return readRecord(value, context, target);
}

bool read(Value &value, DecodingContext &context, SubscriptionTemplate &target)
{
    return readRecord(value, context, target);
}

bool read(Value &value, DecodingContext &context, CreateSubscriptionRequest &target)
{
    return readRecord(value, context, target);
}

bool read(Value &value, DecodingContext &context, SubscriptionMutationResponse &target)
{
    return readRecord(value, context, target);
}

bool read(Value &value, DecodingContext &context, AuthenticationResponse &target)
{
    return readRecord(value, context, target);
}

void write(JsonWriter &writer, const Subscription &record)
{
    writeRecord(writer, record);
}

void write(JsonWriter &writer, const UserProfile &record)
{
    writeRecord(writer, record);
}

void write(JsonWriter &writer, const SubscriptionTemplate &record)
{
    writeRecord(writer, record);
}

void write(JsonWriter &writer, const CreateSubscriptionRequest &record)
{
    writeRecord(writer, record);
}

void write(JsonWriter &writer, const SubscriptionMutationResponse &record)
{
    writeRecord(writer, record);
}

void write(JsonWriter &writer, const AuthenticationResponse &record)
{
    writeRecord(writer, record);
}

} // namespace json

template <typename Record> Decoded<Record> decodeJson(QByteArray json, JsonSource source)
{
    return json::decodeDocument<Record>(std::move(json), source);
}

template <typename Record> QByteArray encodeJson(const Record &record)
{
    json::JsonWriter writer;
    json::write(writer, record);
    return writer.take();
}

template Decoded<Subscription> decodeJson(QByteArray, JsonSource);
template Decoded<UserProfile> decodeJson(QByteArray, JsonSource);
template Decoded<SubscriptionTemplate> decodeJson(QByteArray, JsonSource);
template Decoded<CreateSubscriptionRequest> decodeJson(QByteArray, JsonSource);
template Decoded<SubscriptionMutationResponse> decodeJson(QByteArray, JsonSource);
template Decoded<AuthenticationResponse> decodeJson(QByteArray, JsonSource);
template Decoded<QList<Subscription>> decodeJson(QByteArray, JsonSource);
template Decoded<QList<SubscriptionTemplate>> decodeJson(QByteArray, JsonSource);

template QByteArray encodeJson(const Subscription &);
template QByteArray encodeJson(const UserProfile &);
template QByteArray encodeJson(const SubscriptionTemplate &);
template QByteArray encodeJson(const CreateSubscriptionRequest &);
template QByteArray encodeJson(const SubscriptionMutationResponse &);
template QByteArray encodeJson(const AuthenticationResponse &);

} // namespace orbitledge
