#pragma once

#include "platform/Clock.h"
#include "platform/FileStore.h"

#include <QByteArray>

#include <filesystem>
#include <functional>
#include <memory>

namespace orbitledge {

/// Everything of the machine that a command uses, handed in so that commands can be tried without one.
struct Environment {
    std::shared_ptr<const Clock> clock;
    std::shared_ptr<FileStore> files;
    /// The person's own cache file.
    std::filesystem::path cacheFile;
    std::function<QByteArray(const char *name)> variable;
    std::function<tl::expected<QByteArray, FileError>()> readStandardInput;
    /// False where not everything could be written.
    std::function<bool(const QByteArray &)> writeOutput;
    std::function<void(const QByteArray &)> writeError;
    bool outputIsTerminal = false;
    /// Of the terminal; 0 where the output is none or does not tell.
    int terminalColumns = 0;
    /// The encoding of the terminal's locale, as nl_langinfo(3) names it.
    QByteArray encoding = "UTF-8";
};

/// What a command ends with.
enum class ExitCode { Success = 0, Failure = 1, Usage = 2 };

/// One line on standard error, whatever the reason contains and however long it is: "orbitledge: " and the
/// reason.
void reportError(const Environment &environment, const QString &reason);

/// Text for people, in the terminal's encoding; false where not everything could be written.
bool writeText(const Environment &environment, const QString &text);

/// The end of a command whose output was written, or was not, which is reported.
ExitCode finish(const Environment &environment, bool written);

} // namespace orbitledge
