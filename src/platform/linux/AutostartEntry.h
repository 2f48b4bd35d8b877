#pragma once

#include "platform/FileStore.h"
#include "platform/LoginItemService.h"
#include "platform/SerialQueue.h"
#include "platform/UserDirectories.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

namespace orbitledge {

/// Starting the program at login by a desktop entry in the person's autostart folder (Desktop Application
/// Autostart Specification). Desktops switch an entry off in the file itself, so the file tells the status.
class AutostartEntry final : public LoginItemService {
public:
    /// Opens the desktop's page for what starts at login; false where there is none.
    using SettingsOpener = std::function<QCoro::Task<bool>()>;

    /// `program` is what is started, with --background.
    AutostartEntry(std::filesystem::path file, std::filesystem::path program,
        std::shared_ptr<FileStore> files, SettingsOpener openSettings);

    /// Absent where the machine names no place for a person's choices.
    static std::optional<std::filesystem::path> defaultLocation(const UserDirectories &directories);

    /// Enabled also where another copy of the program is what is started. A person's entry hides one of the
    /// system of the same name, which is why only the person's counts.
    [[nodiscard]] LoginItemStatus status() const override;

    /// Also where the desktop has switched the entry off: who uses our switch means it. What others added to
    /// the file stays.
    [[nodiscard]] QCoro::Task<tl::expected<void, LoginItemError>> registerItem() override;
    [[nodiscard]] QCoro::Task<tl::expected<void, LoginItemError>> unregisterItem() override;
    [[nodiscard]] QCoro::Task<bool> openSystemSettings() override;

private:
    std::filesystem::path m_file;
    std::filesystem::path m_program;
    std::shared_ptr<FileStore> m_files;
    SettingsOpener m_openSettings;
    SerialQueue m_queue;
};

} // namespace orbitledge
