#include "platform/linux/AutostartEntry.h"

#include "BuildInfo.h"
#include "platform/linux/DesktopEntryFile.h"

#include <QFileInfo>
#include <QStandardPaths>
#include <QStringDecoder>

#include <algorithm>

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

using Outcome = tl::expected<void, LoginItemError>;

/// What some desktops set instead of Hidden; true where there is none.
constexpr QByteArrayView gnomeSwitch = "X-GNOME-Autostart-enabled";
constexpr QByteArrayView mateSwitch = "X-MATE-Autostart-enabled";

struct StoredEntry {
    bool exists = false;
    /// Absent where there is no entry, or what is there is none that a desktop would start.
    std::optional<DesktopEntryFile> content;
};

/// Larger ones count as none: the interface's thread reads them too.
constexpr qint64 largestEntry = 65536;

/// Takes nothing that may keep the reader waiting.
StoredEntry readEntry(const std::filesystem::path &path)
{
    const QString name = QString::fromStdString(path.string());
    const QFileInfo info(name);
    if (!info.exists())
        return {};
    StoredEntry entry{.exists = true, .content = std::nullopt};
    QFile file(name);
    if (!info.isFile() || !file.open(QIODevice::ReadOnly))
        return entry;
    const QByteArray text = file.read(largestEntry + 1);
    if (text.size() <= largestEntry)
        entry.content = DesktopEntryFile::fromText(text);
    return entry;
}

bool isSwitchedOff(const DesktopEntryFile &entry)
{
    return entry.truthValue("Hidden").value_or(false) || !entry.truthValue(gnomeSwitch).value_or(true)
        || !entry.truthValue(mateSwitch).value_or(true);
}

/// A path that can be executed, or the name of what PATH leads to.
bool isProgram(const QByteArray &program)
{
    const QString name = QString::fromUtf8(program);
    if (name.isEmpty() || (name.contains(u'/') && !name.startsWith(u'/')))
        return false;
    return !QStandardPaths::findExecutable(name).isEmpty();
}

bool startsSomething(const DesktopEntryFile &entry)
{
    const auto tryExec = entry.value("TryExec");
    return entry.value("Type") == "Application" && isProgram(programOfExec(entry.value("Exec").value_or("")))
        && (!tryExec || isProgram(*tryExec));
}

/// Values of a desktop entry are UTF-8 without control characters, and the program in Exec has no "=".
bool canBeNamed(const QByteArray &program)
{
    const auto isOutlawed = [](char c) { return (c >= 0 && c < ' ') || c == '\x7F' || c == '='; };
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString text = decoder(program);
    return program.startsWith('/') && !decoder.hasError() && std::ranges::none_of(program, isOutlawed);
}

/// Makes the entry one that starts the program; what else is in it stays.
void fillIn(DesktopEntryFile &entry, const QByteArray &program)
{
    entry.setValue("Type", "Application");
    entry.setValue("Name", "Orbitledge");
    entry.setValue("Comment", "Keeps an eye on recurring subscriptions");
    entry.setValue("Icon", build::applicationId);
    entry.setValue("Exec", quotedExecArgument(program) + " --background");
    entry.setValue("Terminal", "false");
    entry.setValue("StartupNotify", "false");
    entry.setValue(gnomeSwitch, "true");
    entry.remove(mateSwitch);
    entry.remove("Hidden");
    // It would keep the desktop from starting the program where it names another one that is gone.
    entry.remove("TryExec");
}

/// The text of the entry to be, made from the one that is there.
QByteArray filledIn(std::optional<DesktopEntryFile> present, const QByteArray &program)
{
    auto entry = std::move(present).value_or(DesktopEntryFile());
    fillIn(entry, program);
    QByteArray text = entry.text();
    if (text.size() <= largestEntry)
        return text;
    DesktopEntryFile fresh;
    fillIn(fresh, program);
    return fresh.text();
}

tl::unexpected<LoginItemError> failed(const QString &sentence)
{
    return tl::make_unexpected(LoginItemError{sentence});
}

Outcome saveEntry(
    FileStore &files, const std::filesystem::path &path, const std::filesystem::path &programPath)
{
    const auto program = QByteArray::fromStdString(programPath.native());
    if (!canBeNamed(program)) {
        return failed(u"The desktop cannot start Orbitledge at login from a path like \"%1\"."_s.arg(
            QString::fromUtf8(program).simplified()));
    }
    const auto saved = files.replace(path, filledIn(readEntry(path).content, program));
    if (!saved)
        return failed(u"The login item could not be saved: %1."_s.arg(saved.error().errorDescription));
    return {};
}

Outcome removeEntry(FileStore &files, const std::filesystem::path &path)
{
    const auto removed = files.remove(path);
    if (!removed)
        return failed(u"The login item could not be removed: %1."_s.arg(removed.error().errorDescription));
    return {};
}

// Free of the entry, which may go while the page opens.
QCoro::Task<bool> openPage(AutostartEntry::SettingsOpener open)
{
    auto task = open();
    co_return co_await task;
}

} // namespace

AutostartEntry::AutostartEntry(std::filesystem::path file, std::filesystem::path program,
    std::shared_ptr<FileStore> files, SettingsOpener openSettings)
    : m_file(std::move(file))
    , m_program(std::move(program))
    , m_files(std::move(files))
    , m_openSettings(std::move(openSettings))
{
}

std::optional<std::filesystem::path> AutostartEntry::defaultLocation(const UserDirectories &directories)
{
    const auto configuration = directories.configuration();
    if (!configuration)
        return std::nullopt;
    return *configuration / "autostart" / (std::string(build::applicationId) + ".desktop");
}

LoginItemStatus AutostartEntry::status() const
{
    const StoredEntry entry = readEntry(m_file);
    if (!entry.exists)
        return LoginItemStatus::NotRegistered;
    if (!entry.content)
        return LoginItemStatus::NotFound;
    if (isSwitchedOff(*entry.content))
        return LoginItemStatus::RequiresApproval;
    return startsSomething(*entry.content) ? LoginItemStatus::Enabled : LoginItemStatus::NotFound;
}

QCoro::Task<Outcome> AutostartEntry::registerItem()
{
    return m_queue.run(
        [files = m_files, file = m_file, program = m_program] { return saveEntry(*files, file, program); });
}

QCoro::Task<Outcome> AutostartEntry::unregisterItem()
{
    return m_queue.run([files = m_files, file = m_file] { return removeEntry(*files, file); });
}

QCoro::Task<bool> AutostartEntry::openSystemSettings()
{
    return openPage(m_openSettings);
}

} // namespace orbitledge
