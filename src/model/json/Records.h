#pragma once

#include "model/json/DecodingContext.h"
#include "model/json/JsonWriter.h"

namespace orbitledge::json {

// For documents that hold records in records: the cache's snapshot, and the records themselves.

bool read(Value &value, DecodingContext &context, Subscription &target);
bool read(Value &value, DecodingContext &context, UserProfile &target);
bool read(Value &value, DecodingContext &context, SubscriptionTemplate &target);
bool read(Value &value, DecodingContext &context, CreateSubscriptionRequest &target);
bool read(Value &value, DecodingContext &context, SubscriptionMutationResponse &target);
bool read(Value &value, DecodingContext &context, AuthenticationResponse &target);

void write(JsonWriter &writer, const Subscription &record);
void write(JsonWriter &writer, const UserProfile &record);
void write(JsonWriter &writer, const SubscriptionTemplate &record);
void write(JsonWriter &writer, const CreateSubscriptionRequest &record);
void write(JsonWriter &writer, const SubscriptionMutationResponse &record);
void write(JsonWriter &writer, const AuthenticationResponse &record);

} // namespace orbitledge::json
