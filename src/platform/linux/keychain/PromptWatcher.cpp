#include "platform/linux/keychain/PromptWatcher.h"

#include "platform/linux/bus/SessionBusSignal.h"

#include <QDBusConnection>

namespace orbitledge {

using namespace Qt::StringLiterals;

PromptWatcher::PromptWatcher(const QString &service, const QDBusObjectPath &prompt)
{
    hearSignal({.sender = service,
                   .path = prompt.path(),
                   .interface = u"org.freedesktop.Secret.Prompt"_s,
                   .name = u"Completed"_s},
        this, &PromptWatcher::complete);

    // GNOME Keyring's windows belong to another process. When that one ends, the keyring calls the prompt
    // dismissed, but not before the bus told us.
    m_watcher.setConnection(QDBusConnection::sessionBus());
    m_watcher.setWatchMode(QDBusServiceWatcher::WatchForUnregistration);
    m_watcher.setWatchedServices({service, gnomePrompter});
    connect(
        &m_watcher, &QDBusServiceWatcher::serviceUnregistered, this, [this, service](const QString &name) {
            if (name == service)
                m_outcome.settle(KeychainStatus::IoError);
            else
                m_isPrompterLost = true;
        });
}

void PromptWatcher::complete(bool dismissed, const QDBusVariant & /*result*/)
{
    if (!dismissed)
        m_outcome.settle(KeychainStatus::Success);
    else
        m_outcome.settle(m_isPrompterLost ? KeychainStatus::IoError : KeychainStatus::UserCanceled);
}

} // namespace orbitledge
