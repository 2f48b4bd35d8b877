#include "cli/TimelineJson.h"

#include "model/json/JsonWriter.h"

namespace orbitledge {

namespace {

using json::JsonWriter;

template <typename T> void member(JsonWriter &writer, std::string_view key, const T &value)
{
    writer.key(key);
    json::write(writer, value);
}

void write(JsonWriter &writer, const TimelineEntry &entry)
{
    writer.beginObject();
    member(writer, "id", entry.subscription->id);
    member(writer, "name", entry.subscription->name);
    if (entry.daysUntilRenewal)
        member(writer, "daysUntilRenewal", *entry.daysUntilRenewal);
    writer.endObject();
}

void write(JsonWriter &writer, const TimelineSection &section)
{
    writer.beginObject();
    member(writer, "id", section.id);
    member(writer, "title", section.title);
    writer.key("entries");
    writer.beginArray();
    for (const TimelineEntry &entry : section.entries)
        write(writer, entry);
    writer.endArray();
    writer.endObject();
}

void write(JsonWriter &writer, const TimelineDay &day)
{
    writer.beginObject();
    member(writer, "date", day.date);
    member(writer, "localDate", day.localDate);
    member(writer, "isToday", day.isToday);
    member(writer, "renewalColors", day.renewalColors);
    writer.endObject();
}

} // namespace

QByteArray timelineJson(const TimelineSnapshot &snapshot)
{
    JsonWriter writer;
    writer.beginObject();
    member(writer, "monthlyTotal", snapshot.monthlyTotal);
    member(writer, "remainingThisMonth", snapshot.remainingThisMonth);
    member(writer, "activeCount", snapshot.activeCount);
    member(writer, "totalsArePartial", snapshot.totalsArePartial);
    writer.key("sections");
    writer.beginArray();
    for (const TimelineSection &section : snapshot.sections)
        write(writer, section);
    writer.endArray();
    writer.key("week");
    writer.beginArray();
    for (const TimelineDay &day : snapshot.week)
        write(writer, day);
    writer.endArray();
    member(writer, "badgeCount", snapshot.badgeCount);
    writer.endObject();
    return writer.take() + '\n';
}

} // namespace orbitledge
