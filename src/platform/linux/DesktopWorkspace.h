#pragma once

#include "platform/Workspace.h"

#include <chrono>
#include <filesystem>
#include <optional>

namespace orbitledge {

/// Pages open by xdg-open, settings by the programs of the desktop that XDG_CURRENT_DESKTOP names.
/// User-interface thread only.
class DesktopWorkspace final : public Workspace {
public:
    /// `autostartFolder` is shown where the desktop has no page for what starts at login. A program that has
    /// not failed within `patience` is taken to do its work: some browsers are what xdg-open waits for.
    explicit DesktopWorkspace(std::optional<std::filesystem::path> autostartFolder,
        std::chrono::milliseconds patience = std::chrono::seconds(3));

    [[nodiscard]] QCoro::Task<bool> open(QUrl url, QString activationToken) override;
    [[nodiscard]] QCoro::Task<bool> openNotificationSettings() override;

    /// The desktop's settings for what starts at login, or else the folder with the entries, made where it is
    /// missing. False where neither can be opened.
    [[nodiscard]] QCoro::Task<bool> openLoginItemSettings();

private:
    std::optional<std::filesystem::path> m_autostartFolder;
    std::chrono::milliseconds m_patience;
};

} // namespace orbitledge
