#pragma once

#include "platform/FileStore.h"
#include "platform/linux/notifications/SystemdUnits.h"

#include <QString>

#include <tl/expected.hpp>

#include <filesystem>
#include <memory>

namespace orbitledge {

/// Where a timer and its service lie in a person's folders. Every call blocks. On failure they tell why, as
/// the end of a sentence.
class SystemdUnitFiles {
public:
    struct Folders {
        std::filesystem::path configuration;
        std::filesystem::path data;
    };

    /// `name` is what the units are called, without ".timer" and ".service".
    SystemdUnitFiles(const QString &name, const Folders &folders, std::shared_ptr<FileStore> files);

    /// Are these units there, marked as in force?
    [[nodiscard]] bool areInForce(const SystemdUnits &units) const;
    [[nodiscard]] bool leaveTraces() const;

    /// The units are there from the next login on. They are not marked as in force: for that systemd must
    /// have read them.
    [[nodiscard]] tl::expected<void, QString> write(const SystemdUnits &units) const;
    [[nodiscard]] tl::expected<void, QString> markInForce() const;

    /// All but the service, which shows until the end that there is still something to undo.
    [[nodiscard]] tl::expected<void, QString> removeTimer() const;
    [[nodiscard]] tl::expected<void, QString> removeService() const;

private:
    [[nodiscard]] tl::expected<void, QString> link(const std::filesystem::path &target) const;
    [[nodiscard]] tl::expected<void, QString> dateStamp(Instant elapse) const;
    [[nodiscard]] tl::expected<void, QString> replace(
        const std::filesystem::path &file, const QByteArray &content) const;
    [[nodiscard]] tl::expected<void, QString> remove(const std::filesystem::path &file) const;

    std::shared_ptr<FileStore> m_files;
    std::filesystem::path m_service;
    std::filesystem::path m_timer;
    std::filesystem::path m_link;
    std::filesystem::path m_stamp;
};

} // namespace orbitledge
