#include "cli/Status.h"
#include "model/json/JsonWriter.h"

namespace orbitledge {

namespace {

using json::JsonWriter;

template <typename T> void member(JsonWriter &writer, std::string_view key, const T &value)
{
    writer.key(key);
    json::write(writer, value);
}

void nullMember(JsonWriter &writer, std::string_view key)
{
    writer.key(key);
    writer.null();
}

void nextRenewalMember(JsonWriter &writer, const std::optional<ComingRenewal> &renewal)
{
    if (!renewal) {
        nullMember(writer, "nextRenewal");
        return;
    }
    const Subscription &subscription = *renewal->subscription;
    writer.key("nextRenewal");
    writer.beginObject();
    member(writer, "id", subscription.id);
    member(writer, "name", subscription.name);
    member(writer, "date", subscription.nextBillingDate);
    member(writer, "daysUntilRenewal", renewal->daysUntilRenewal);
    member(writer, "cost", subscription.cost);
    member(writer, "currency", subscription.currency);
    writer.endObject();
}

void members(JsonWriter &writer, const Status &status)
{
    member(writer, "badgeCount", status.badgeCount);
    nextRenewalMember(writer, status.nextRenewal);
    member(writer, "monthlyTotal", status.monthlyTotal);
    member(writer, "remainingThisMonth", status.remainingThisMonth);
    member(writer, "activeCount", status.activeCount);
    member(writer, "currency", status.currency);
    member(writer, "fetchedAt", status.fetchedAt);
}

void nullMembers(JsonWriter &writer)
{
    for (const char *key : {"badgeCount", "nextRenewal", "monthlyTotal", "remainingThisMonth", "activeCount",
             "currency", "fetchedAt"})
        nullMember(writer, key);
}

} // namespace

QByteArray statusJson(const std::optional<Status> &status)
{
    JsonWriter writer;
    writer.beginObject();
    member(writer, "signedIn", status.has_value());
    if (status)
        members(writer, *status);
    else
        nullMembers(writer);
    writer.endObject();
    return writer.take() + '\n';
}

} // namespace orbitledge
