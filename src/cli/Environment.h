#pragma once

#include "platform/Clock.h"
#include "platform/Diagnosis.h"
#include "platform/FileStore.h"
#include "platform/SessionService.h"
#include "platform/UserDefaults.h"
#include "platform/UserNotificationCenter.h"

#include <QByteArray>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace orbitledge {

/// What a command ends with.
enum class ExitCode { Success = 0, Failure = 1, Usage = 2 };

/// Everything of the machine that a command uses, handed in so that commands can be tried without one.
struct Environment {
    std::shared_ptr<const Clock> clock;
    std::shared_ptr<FileStore> files;
    /// The person's own cache file.
    std::filesystem::path cacheFile;
    std::function<QByteArray(const char *name)> variable;
    /// The person's own settings; looking at them writes nothing.
    std::function<std::shared_ptr<const UserDefaults>()> userDefaults;
    std::function<tl::expected<QByteArray, FileError>()> readStandardInput;
    /// From the terminal without echo, with this text before it, or all of standard input where that is no
    /// terminal; the line's end included. On failure a reason for people.
    std::function<tl::expected<QByteArray, QString>(const QString &prompt)> readPassword;
    /// Has the one who is in charge of the session do it: the program that runs, or this process, with an
    /// event loop of its own. On failure why nobody could, for people.
    std::function<tl::expected<SessionOutcome, QString>(SessionRequest)> performSession;
    /// Shows the reminders that are due, with an event loop of its own.
    std::function<NotificationDelivery()> deliverReminders;
    /// What the machine and the desktop offer, asked with an event loop of its own.
    std::function<Findings()> lookAround;
    /// Replaces this process by the program with windows. Comes back only where that failed, with a reason
    /// for people.
    std::function<QString(const std::vector<QByteArray> &arguments)> becomeDesktop;
    /// False where not everything could be written.
    std::function<bool(const QByteArray &)> writeOutput;
    std::function<void(const QByteArray &)> writeError;
    bool outputIsTerminal = false;
    /// Of the terminal; 0 where the output is none or does not tell.
    int terminalColumns = 0;
    /// The encoding of the terminal's locale, as nl_langinfo(3) names it.
    QByteArray encoding = "UTF-8";
};

/// One line on standard error, whatever the reason contains and however long it is: "orbitledge: " and the
/// reason.
void reportError(const Environment &environment, const QString &reason);

/// The end of a command that failed, whose reason is reported.
ExitCode failure(const Environment &environment, const QString &reason);

/// Text of the terminal or of an argument, which come in the encoding of the locale. Absent where it is none.
std::optional<QString> decodedText(const Environment &environment, const QByteArray &bytes);

/// Text for people, in the terminal's encoding; false where not everything could be written.
bool writeText(const Environment &environment, const QString &text);

/// The end of a command whose output was written, or was not, which is reported.
ExitCode finish(const Environment &environment, bool written);

} // namespace orbitledge
