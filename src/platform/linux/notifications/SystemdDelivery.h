#pragma once

#include "platform/FileStore.h"
#include "platform/linux/notifications/UnattendedDelivery.h"

#include <QByteArray>
#include <QString>

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>

namespace orbitledge {

/// A timer of the person's systemd instance that runs `<program> deliver-reminders`, which may call this in
/// turn. It survives a new login and a restart of the machine, and what was missed meanwhile is made up for.
/// Where that instance is not on the session bus, nothing is arranged; what was arranged before can still be
/// taken back.
///
/// A moment that comes while a delivery runs counts as one of that run: systemd starts no second one. So
/// whoever delivers should arrange first and look for what is due afterwards.
///
/// Belongs to the thread that made it. It may be destroyed at any time: what was asked for is still done, in
/// order, as long as there is an event loop. To ask again for what is in force costs two small files to read,
/// and the first time two questions to systemd, which starts the timer where that is not so.
class SystemdDelivery final : public UnattendedDelivery {
public:
    struct Settings {
        /// "app.example.Program": the units are called after it.
        QString applicationId;
        std::filesystem::path programPath;
        /// Those of this person, where systemd looks for units and keeps the stamps of timers.
        std::filesystem::path configurationFolder;
        std::filesystem::path dataFolder;
        /// The environment of this process.
        std::function<QByteArray(const char *)> variable;
        std::shared_ptr<FileStore> files;
        /// For all that systemd has to do for one call.
        std::chrono::milliseconds patience = std::chrono::seconds(20);
    };

    explicit SystemdDelivery(Settings settings);
    ~SystemdDelivery() override;

    /// What the timer and its service are called, without ".timer" and ".service".
    static QString unitName(const QString &applicationId);

    QCoro::Task<tl::expected<void, QString>> arrange(std::optional<Instant> next) override;

private:
    struct State;
    std::shared_ptr<State> m_state;
};

} // namespace orbitledge
