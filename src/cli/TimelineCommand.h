#pragma once

#include "cli/Environment.h"
#include "locale/Locale.h"
#include "locale/TimeZone.h"
#include "model/Instant.h"

#include <QString>

#include <optional>
#include <span>

namespace orbitledge {

/// What `orbitledge timeline` was asked for; what is absent comes from the saved data or the machine.
struct TimelineArguments {
    /// A file of the cache's format, "-" for standard input; absent for the person's own cache.
    std::optional<std::filesystem::path> snapshot;
    std::optional<QString> currency;
    std::optional<Instant> now;
    std::optional<TimeZone> timeZone;
    std::optional<Locale> locale;
    bool json = false;
    bool help = false;
};

/// Reads what stands after the word "timeline". On failure: what is wrong, for people.
tl::expected<TimelineArguments, QString> parseTimelineArguments(std::span<const QByteArray> words);

/// Prints the timeline of a snapshot. Changes nothing, damaged files included.
ExitCode runTimeline(std::span<const QByteArray> words, const Environment &environment);

} // namespace orbitledge
