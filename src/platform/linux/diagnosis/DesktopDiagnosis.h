#pragma once

#include "platform/Diagnosis.h"
#include "platform/Keychain.h"
#include "platform/linux/diagnosis/FileInspection.h"

#include <QByteArray>
#include <QString>

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

namespace orbitledge {

/// Asks everybody on a Linux desktop at once. A keyring or a portal that does not run is not started, so that
/// what is wrong is not mended by looking at it.
class DesktopDiagnosis final : public Diagnosis {
public:
    struct Settings {
        /// The environment of this process.
        std::function<QByteArray(const char *)> variable;
        /// Also the name that the program with windows owns on the bus.
        QString applicationId;
        /// Where the session is kept.
        KeychainItem item;
        /// "orbitledge" and "orbitledge-desktop"
        std::filesystem::path program;
        std::filesystem::path desktopProgram;
        std::filesystem::path autostartEntry;
        std::filesystem::path configurationFolder;
        std::filesystem::path dataFolder;
        std::vector<WatchedFolder> folders;
        std::vector<WatchedFile> files;
        QString httpVersion;
        /// For each one who is asked.
        std::chrono::milliseconds patience = std::chrono::seconds(2);
        /// For a program of ours, whose libraries may have to come from the disk first.
        std::chrono::milliseconds startPatience = std::chrono::seconds(5);
    };

    explicit DesktopDiagnosis(Settings settings);

    [[nodiscard]] QCoro::Task<Findings> findings() override;

private:
    std::shared_ptr<const Settings> m_settings;
};

} // namespace orbitledge
