#pragma once

#include "cli/Environment.h"
#include "locale/Calendar.h"
#include "model/Instant.h"
#include "state/CacheSnapshot.h"

#include <QString>

#include <optional>
#include <span>
#include <vector>

namespace orbitledge {

/// What a command that shows saved data was asked for; what is absent comes from the data or the machine.
struct ViewArguments {
    /// A file of the cache's format, "-" for standard input; absent for the person's own cache.
    std::optional<std::filesystem::path> snapshot;
    std::optional<QString> currency;
    std::optional<Instant> now;
    std::optional<TimeZone> timeZone;
    std::optional<Locale> locale;
    bool json = false;
    bool help = false;
};

/// An option with a value that one command has beyond the others.
struct ValueOption {
    QByteArray name;
    /// Takes the value; on failure, what is wrong with it, for people.
    std::function<std::optional<QString>(const QByteArray &value)> set;
};

/// An option without a value that one command has beyond the others.
struct SwitchOption {
    QByteArray name;
    std::function<void()> set;
};

/// Reads what stands after a command's name. On failure: what is wrong, for people.
tl::expected<ViewArguments, QString> parseViewArguments(std::span<const QByteArray> words,
    const std::vector<ValueOption> &further = {}, const std::vector<SwitchOption> &furtherSwitches = {});

/// The data to show; on failure one sentence that names the file, the place in it, and the reason.
tl::expected<CacheSnapshot, QString> loadSnapshot(
    const ViewArguments &arguments, const Environment &environment);

/// The same, but absent where nothing is saved: the person's own cache is missing, damaged or of another
/// version. A file that was named must be there and whole.
tl::expected<std::optional<CacheSnapshot>, QString> loadSnapshotIfSaved(
    const ViewArguments &arguments, const Environment &environment);

/// The day, region and currency in which the data are to be seen.
struct View {
    Instant now;
    Calendar calendar;
    QString currency;
};

View viewOf(const ViewArguments &arguments, const CacheSnapshot &snapshot, const Environment &environment);

} // namespace orbitledge
