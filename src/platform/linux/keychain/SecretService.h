#pragma once

#include "platform/Keychain.h"
#include "platform/linux/keychain/BusCalls.h"

#include <QCoroTask>
#include <QDBusObjectPath>
#include <QList>
#include <QMap>

#include <tl/expected.hpp>

namespace orbitledge {

/// What has to be asked of the desktop's Secret Service beside the secrets themselves, for one operation:
/// where an item lies, whether that is locked, and the prompts. No secret passes here.
class SecretService {
public:
    static constexpr auto name = QLatin1StringView("org.freedesktop.secrets");

    /// `calls` must outlive this object.
    explicit SecretService(BusCalls &calls)
        : m_calls(calls)
    {
    }

    struct FoundItems {
        QList<QDBusObjectPath> unlocked;
        /// Those in a locked collection, and those for which the service wants to ask the person.
        QList<QDBusObjectPath> locked;

        [[nodiscard]] bool isEmpty() const { return unlocked.isEmpty() && locked.isEmpty(); }
    };

    /// All items of that service and account, in all collections. Never prompts.
    QCoro::Task<tl::expected<FoundItems, KeychainStatus>> search(KeychainItem item);

    /// Those among them that QtKeychain wrote, as bytes: one for each collection at most.
    QCoro::Task<tl::expected<FoundItems, KeychainStatus>> searchWritten(KeychainItem item);

    /// The collection to which new items are added; a path "/" where there is none.
    QCoro::Task<tl::expected<QDBusObjectPath, KeychainStatus>> defaultCollection();

    /// Makes a default collection, for which the person is asked to choose a password.
    QCoro::Task<KeychainStatus> createDefaultCollection();

    QCoro::Task<tl::expected<bool, KeychainStatus>> isCollectionLocked(QDBusObjectPath collection);

    /// With a prompt where the service has one.
    QCoro::Task<KeychainStatus> unlock(QList<QDBusObjectPath> objects);

    /// InteractionNotAllowed where the service wants to ask and must not.
    QCoro::Task<KeychainStatus> deleteItem(QDBusObjectPath item, KeychainPrompt prompt);

    QCoro::Task<KeychainStatus> setLabel(QDBusObjectPath item, QString label);

    /// The collection in which an item lies.
    static QDBusObjectPath collectionOf(const QDBusObjectPath &item);

private:
    QCoro::Task<tl::expected<FoundItems, KeychainStatus>> searchAttributes(QMap<QString, QString> attributes);

    /// Shows a prompt and waits for the person. InteractionNotAllowed where there is nobody to show it to.
    QCoro::Task<KeychainStatus> answerOf(QDBusObjectPath prompt);

    /// Whether a prompt that counts as dismissed was shown at all. `service` is the unique name of who
    /// should.
    QCoro::Task<bool> wasShown(QString service);

    BusCalls &m_calls;
};

} // namespace orbitledge
