#include "platform/linux/diagnosis/AutostartInspection.h"

#include "platform/linux/AutostartEntry.h"
#include "platform/linux/DesktopEntryFile.h"
#include "platform/linux/PosixFileStore.h"

#include <QStandardPaths>

#include <system_error>

namespace orbitledge {

using findings::Autostart;

namespace {

/// Empty where the entry cannot be read, or names nothing.
QByteArray programOf(const std::filesystem::path &file)
{
    constexpr std::uintmax_t largestEntry = 65'536;
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error)
        || std::filesystem::file_size(file, error) > largestEntry || error)
        return {};
    const auto content = PosixFileStore().read(file);
    const auto entry = content ? DesktopEntryFile::fromText(*content) : std::nullopt;
    return entry ? programOfExec(entry->value("Exec").value_or("")) : QByteArray();
}

} // namespace

Autostart inspectAutostart(const std::filesystem::path &file, const std::filesystem::path &program)
{
    const AutostartEntry entry(file, program, std::make_shared<PosixFileStore>(), {});
    Autostart found;
    found.status = entry.status();
    found.file = QString::fromStdString(file.string());
    if (found.status == LoginItemStatus::NotRegistered)
        return found;
    found.program = QString::fromUtf8(programOf(file));
    if (found.program.isEmpty())
        return found;
    const QString executable = QStandardPaths::findExecutable(found.program);
    found.isProgramThere = !executable.isEmpty();
    std::error_code error;
    found.isThisProgram
        = found.isProgramThere && std::filesystem::equivalent(executable.toStdString(), program, error);
    return found;
}

} // namespace orbitledge
