#pragma once

#include "platform/HttpSession.h"
#include "platform/SessionService.h"
#include "platform/linux/notifications/DesktopNotificationCenter.h"
#include "service/SessionCredentialStoring.h"
#include "state/AppStore.h"

#include <tl/expected.hpp>

#include <filesystem>
#include <memory>

namespace orbitledge {

/// How long this process is there.
enum class Presence {
    /// For one command.
    Short,
    /// For the session; what it has shown can be chosen.
    Resident,
};

/// What the program is made of on this system: the real things, for the composition of what is run.
struct SystemParts {
    std::shared_ptr<DesktopNotificationCenter> notifications;
    std::shared_ptr<SessionCredentialStoring> credentials;
    std::shared_ptr<UserDefaults> defaults;
    /// Of the service.
    QUrl api;
    AppStore::Collaborators store;
    AppStore::Identity identity;

    /// Needs an application object. Nothing is fetched and nobody is asked yet. On failure, for people, what
    /// is wrong with the environment.
    static tl::expected<SystemParts, QString> make(Presence presence);

    /// The session that this store has.
    [[nodiscard]] std::shared_ptr<SessionService> makeSession(std::shared_ptr<AppStore> appStore) const;

    /// What sends requests: of a process that stays, a program that is there only then, if it is installed.
    static std::shared_ptr<HttpSession> makeHttp(Presence presence, HttpSessionConfiguration configuration,
        std::shared_ptr<Connectivity> connectivity = nullptr);

    /// The part of it that shows reminders, alone.
    static std::shared_ptr<NotificationDisplay> makeNotificationDisplay(Presence presence);
    static std::shared_ptr<DesktopNotificationCenter> makeNotifications(
        std::shared_ptr<NotificationDisplay> display);

    /// What others are to start: "orbitledge".
    static std::filesystem::path programPath();
};

} // namespace orbitledge
