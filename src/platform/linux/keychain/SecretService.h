#pragma once

#include "platform/Keychain.h"
#include "platform/linux/keychain/BusCalls.h"
#include "platform/linux/keychain/SecretCipher.h"

#include <QCoroTask>
#include <QDBusObjectPath>
#include <QList>
#include <QMap>

#include <tl/expected.hpp>

#include <memory>
#include <optional>

namespace orbitledge {

/// What was agreed upon with a Secret Service, for as long as that runs.
struct SecretSession {
    /// The unique name of the service on the bus.
    QString service;
    QDBusObjectPath path;
    /// Absent where the service knows of no cipher.
    std::optional<SecretCipher> cipher;

    /// As it is handed to the service, and back as it came from there. Absent where that cannot be.
    [[nodiscard]] std::optional<SecretCipher::Sealed> sealed(const QByteArray &secret) const;
    [[nodiscard]] std::optional<QByteArray> opened(const SecretCipher::Sealed &sealed) const;
};

/// The desktop's Secret Service (freedesktop.org's API 0.2), for one operation: where an item lies, whether
/// that is locked, the prompts, and the secrets. Items have the attributes that QtKeychain gives them, so
/// that who looks for them by these finds them.
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
    QCoro::Task<tl::expected<FoundItems, KeychainStatus>> search(const KeychainItem &item);

    /// How the bytes of a secret are kept.
    enum class Encoding { Base64, Text };

    /// Those among them that are kept so.
    QCoro::Task<tl::expected<FoundItems, KeychainStatus>> search(const KeychainItem &item, Encoding encoding);

    /// Those among them that were written here: one for each collection at most.
    QCoro::Task<tl::expected<FoundItems, KeychainStatus>> searchWritten(const KeychainItem &item);

    /// `known` where that is still of use, else another one.
    QCoro::Task<tl::expected<std::shared_ptr<const SecretSession>, KeychainStatus>> session(
        std::shared_ptr<const SecretSession> known);

    /// The secret of an unlocked item. ItemNotFound where the service has none for us.
    QCoro::Task<tl::expected<QByteArray, KeychainStatus>> secret(
        QDBusObjectPath item, Encoding encoding, std::shared_ptr<const SecretSession> session);

    /// Replaces the item that was written to this unlocked collection, or adds one; with a prompt where the
    /// service has one.
    QCoro::Task<KeychainStatus> write(QDBusObjectPath collection, KeychainItem item, QByteArray secret,
        std::shared_ptr<const SecretSession> session);

    /// The collection to which new items are added; a path "/" where there is none.
    QCoro::Task<tl::expected<QDBusObjectPath, KeychainStatus>> defaultCollection();

    /// Makes a default collection, for which the person is asked to choose a password.
    QCoro::Task<KeychainStatus> createDefaultCollection();

    QCoro::Task<tl::expected<bool, KeychainStatus>> isCollectionLocked(QDBusObjectPath collection);

    /// With a prompt where the service has one.
    QCoro::Task<KeychainStatus> unlock(QList<QDBusObjectPath> objects);

    /// InteractionNotAllowed where the service wants to ask and must not.
    QCoro::Task<KeychainStatus> deleteItem(QDBusObjectPath item, KeychainPrompt prompt);

    /// The collection in which an item lies.
    static QDBusObjectPath collectionOf(const QDBusObjectPath &item);

private:
    /// NotAvailable where the service does not know the cipher.
    QCoro::Task<tl::expected<std::shared_ptr<const SecretSession>, KeychainStatus>> openEncrypted(
        QString service, SecretCipher cipher);
    QCoro::Task<tl::expected<QDBusMessage, KeychainStatus>> openSession(QString algorithm, QVariant input);

    QCoro::Task<tl::expected<FoundItems, KeychainStatus>> searchAttributes(QMap<QString, QString> attributes);

    /// To the reply of a call that makes something: its path, and that of a prompt, without which there is
    /// none.
    QCoro::Task<KeychainStatus> answerToMaking(QDBusMessage reply);

    /// Shows a prompt and waits for the person. InteractionNotAllowed where there is nobody to show it to.
    QCoro::Task<KeychainStatus> answerOf(QDBusObjectPath prompt);

    /// Whether a prompt that counts as dismissed was shown at all. `service` is the unique name of who
    /// should.
    QCoro::Task<bool> wasShown(QString service);

    BusCalls &m_calls;
};

} // namespace orbitledge
