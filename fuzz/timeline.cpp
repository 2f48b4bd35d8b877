#include "RecordRoundTrip.h"
#include "cli/TimelineJson.h"
#include "cli/TimelineTable.h"
#include "timeline/TimelineBuilder.h"

#include <array>

using namespace orbitledge;

namespace {

const Calendar &calendarFor(std::uint8_t choice)
{
    static const std::array calendars{
        Calendar(*TimeZone::named("UTC"), *Locale::named("en_US")),
        Calendar(*TimeZone::named("Africa/Cairo"), *Locale::named("ar_EG")),
        Calendar(*TimeZone::named("America/Asuncion"), *Locale::named("es_PY")),
        Calendar(*TimeZone::named("Pacific/Apia"), *Locale::named("en_WS")),
        Calendar(*TimeZone::named("Australia/Lord_Howe"), *Locale::named("de_DE")),
    };
    return calendars[choice % calendars.size()];
}

/// Seven bytes of the input: any instant of the years that can be written, and a little beyond.
Instant instantFrom(const std::uint8_t *data)
{
    qint64 value = 0;
    for (int i = 0; i < 7; ++i)
        value = value * 256 + data[i];
    constexpr qint64 span = 600'000'000'000'000;
    return Instant::fromMillisecondsSinceEpoch(value % span - span / 2);
}

} // namespace

// The first byte chooses the calendar, the next seven the instant; the rest is the service's list.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    constexpr std::size_t header = 8;
    if (size < header)
        return 0;
    const auto subscriptions = decodeJson<QList<Subscription>>(QByteArray::fromRawData(
        reinterpret_cast<const char *>(data) + header, static_cast<qsizetype>(size - header)));
    if (!subscriptions)
        return 0;
    const Calendar &calendar = calendarFor(data[0]);
    const Instant now = instantFrom(data + 1);
    const QString currency = QStringLiteral("EUR");
    const TimelineSnapshot snapshot = buildTimeline(*subscriptions, currency, now, calendar);

    qsizetype entries = 0;
    qint64 urgent = 0;
    for (const TimelineSection &section : snapshot.sections) {
        fuzz::require(!section.entries.isEmpty(), "a section that is shown holds something");
        fuzz::require(!section.title.isEmpty(), "a section has a title");
        entries += section.entries.size();
        std::optional<qint64> before;
        for (const TimelineEntry &entry : section.entries) {
            fuzz::require(!before || !entry.daysUntilRenewal || *before <= *entry.daysUntilRenewal,
                "entries come by their days");
            before = entry.daysUntilRenewal;
            urgent += entry.daysUntilRenewal && *entry.daysUntilRenewal >= 0 && *entry.daysUntilRenewal <= 3;
        }
    }
    fuzz::require(entries == subscriptions->size(), "each subscription is in one section");
    fuzz::require(urgent == snapshot.badgeCount, "the badge counts what is urgent");
    fuzz::require(snapshot.week.size() <= 7, "a week has seven days at most");
    fuzz::require(snapshot == buildTimeline(*subscriptions, currency, now, calendar),
        "the same input, the same timeline");

    const QByteArray json = timelineJson(snapshot);
    fuzz::require(
        fuzz::JsonGrammar(std::string_view(json.constData(), static_cast<std::size_t>(json.size()))).isJson(),
        "what is printed for programs is JSON");
    const QString table
        = timelineTable(snapshot, now, calendar, {.currency = currency, .colors = false, .columns = 60});
    fuzz::require(!table.contains(QChar(0x1B)), "a table without colours has no escape sequences");
    return 0;
}
