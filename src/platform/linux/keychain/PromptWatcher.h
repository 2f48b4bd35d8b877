#pragma once

#include "platform/Keychain.h"
#include "platform/OneShot.h"

#include <QDBusObjectPath>
#include <QDBusServiceWatcher>
#include <QDBusVariant>

namespace orbitledge {

/// Waits for the end of a Secret Service prompt: Success, UserCanceled where the person dismissed it, IoError
/// where the service ended, or the desktop's prompter under it.
class PromptWatcher final : public QObject {
public:
    /// The bus name of the program that shows GNOME Keyring's prompts.
    static constexpr auto gnomePrompter = QLatin1StringView("org.gnome.keyring.SystemPrompter");

    /// `service` is the unique name of who shows the prompt: nobody else's word counts.
    PromptWatcher(const QString &service, const QDBusObjectPath &prompt);

    /// For co_await.
    auto ended() { return m_outcome.settled(); }

private:
    void complete(bool dismissed, const QDBusVariant &result);

    OneShot<KeychainStatus> m_outcome;
    QDBusServiceWatcher m_watcher;
    bool m_isPrompterLost = false;
};

} // namespace orbitledge
