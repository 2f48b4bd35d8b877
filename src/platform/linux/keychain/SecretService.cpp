#include "platform/linux/keychain/SecretService.h"

#include "platform/linux/keychain/PromptWatcher.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusPendingReply>
#include <QVariantMap>

#include <algorithm>

namespace orbitledge {

namespace {

using Attributes = QMap<QString, QString>;

/// A secret on its way, of the signature (oayays).
struct TransferredSecret {
    QDBusObjectPath session;
    QByteArray parameters;
    QByteArray value;
    QString contentType;
};
using TransferredSecrets = QMap<QDBusObjectPath, TransferredSecret>;

// Beside the type, where the toolkit looks for them.
QDBusArgument &operator<<(QDBusArgument &argument, const TransferredSecret &secret)
{
    argument.beginStructure();
    argument << secret.session << secret.parameters << secret.value << secret.contentType;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, TransferredSecret &secret)
{
    argument.beginStructure();
    argument >> secret.session >> secret.parameters >> secret.value >> secret.contentType;
    argument.endStructure();
    return argument; // NOLINT(bugprone-return-const-ref-from-parameter): the toolkit has it so
}

} // namespace

using namespace Qt::StringLiterals;

namespace {

void registerTypes()
{
    static const QMetaType attributes = qDBusRegisterMetaType<Attributes>();
    static const QMetaType secret = qDBusRegisterMetaType<TransferredSecret>();
    static const QMetaType secrets = qDBusRegisterMetaType<TransferredSecrets>();
    Q_UNUSED(attributes)
    Q_UNUSED(secret)
    Q_UNUSED(secrets)
}

constexpr auto encodingName = "type";

QString nameOf(SecretService::Encoding encoding)
{
    return encoding == SecretService::Encoding::Base64 ? u"base64"_s : u"plaintext"_s;
}

/// Without the schema: a keyring that was not yet unlocked in this session does not find items by it.
Attributes attributesOf(const KeychainItem &item)
{
    return {{u"user"_s, item.account}, {u"server"_s, item.service}};
}

Attributes writtenAttributesOf(const KeychainItem &item)
{
    Attributes attributes = attributesOf(item);
    attributes[QLatin1StringView(encodingName)] = nameOf(SecretService::Encoding::Base64);
    attributes[u"xdg:schema"_s] = u"org.qt.keychain"_s;
    return attributes;
}

constexpr auto noObject = QLatin1StringView("/");

QDBusMessage method(const QString &path, const QString &interface, const QString &name)
{
    return QDBusMessage::createMethodCall(SecretService::name, path, interface, name);
}

QDBusMessage serviceMethod(const QString &name)
{
    return method(u"/org/freedesktop/secrets"_s, u"org.freedesktop.Secret.Service"_s, name);
}

/// A value of a reply, where the reply has the types that it should have.
template <int Index, typename... Types> auto valueOf(const QDBusMessage &reply)
{
    const QDBusPendingReply<Types...> typed(reply);
    return typed.template argumentAt<Index>();
}

template <typename... Types> bool hasTypes(const QDBusMessage &reply)
{
    return QDBusPendingReply<Types...>(reply).isValid();
}

/// For calls to objects that every service has: there, a missing object says nothing about an item.
KeychainStatus serviceFailure(KeychainStatus status)
{
    return status == KeychainStatus::ItemNotFound ? KeychainStatus::IoError : status;
}

} // namespace

QCoro::Task<tl::expected<SecretService::FoundItems, KeychainStatus>> SecretService::search(
    const KeychainItem &item)
{
    return searchAttributes(attributesOf(item));
}

QCoro::Task<tl::expected<SecretService::FoundItems, KeychainStatus>> SecretService::search(
    const KeychainItem &item, Encoding encoding)
{
    Attributes attributes = attributesOf(item);
    attributes[QLatin1StringView(encodingName)] = nameOf(encoding);
    return searchAttributes(attributes);
}

QCoro::Task<tl::expected<SecretService::FoundItems, KeychainStatus>> SecretService::searchWritten(
    const KeychainItem &item)
{
    return searchAttributes(writtenAttributesOf(item));
}

QCoro::Task<tl::expected<SecretService::FoundItems, KeychainStatus>> SecretService::searchAttributes(
    QMap<QString, QString> attributes)
{
    registerTypes();
    QDBusMessage ask = serviceMethod(u"SearchItems"_s);
    ask << QVariant::fromValue(attributes);
    const auto reply = co_await m_calls.call(ask);
    if (!reply)
        co_return tl::unexpected(serviceFailure(reply.error()));
    using Paths = QList<QDBusObjectPath>;
    if (!hasTypes<Paths, Paths>(*reply))
        co_return tl::unexpected(KeychainStatus::IoError);
    co_return FoundItems{valueOf<0, Paths, Paths>(*reply), valueOf<1, Paths, Paths>(*reply)};
}

QCoro::Task<tl::expected<QDBusObjectPath, KeychainStatus>> SecretService::defaultCollection()
{
    QDBusMessage ask = serviceMethod(u"ReadAlias"_s);
    ask << u"default"_s;
    const auto reply = co_await m_calls.call(ask);
    if (!reply)
        co_return tl::unexpected(serviceFailure(reply.error()));
    if (!hasTypes<QDBusObjectPath>(*reply))
        co_return tl::unexpected(KeychainStatus::IoError);
    co_return valueOf<0, QDBusObjectPath>(*reply);
}

QCoro::Task<KeychainStatus> SecretService::createDefaultCollection()
{
    const QVariantMap properties{{u"org.freedesktop.Secret.Collection.Label"_s, u"Default keyring"_s}};
    QDBusMessage create = serviceMethod(u"CreateCollection"_s);
    create << properties << u"default"_s;
    const auto reply = co_await m_calls.call(create);
    if (!reply)
        co_return serviceFailure(reply.error());
    const KeychainStatus answer = co_await answerToMaking(*reply);
    co_return answer;
}

QCoro::Task<tl::expected<bool, KeychainStatus>> SecretService::isCollectionLocked(QDBusObjectPath collection)
{
    QDBusMessage get = method(collection.path(), u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    get << u"org.freedesktop.Secret.Collection"_s << u"Locked"_s;
    const auto reply = co_await m_calls.call(get);
    if (!reply)
        co_return tl::unexpected(reply.error());
    if (!hasTypes<QDBusVariant>(*reply))
        co_return tl::unexpected(KeychainStatus::IoError);
    co_return valueOf<0, QDBusVariant>(*reply).variant().toBool();
}

QCoro::Task<KeychainStatus> SecretService::unlock(QList<QDBusObjectPath> objects)
{
    QDBusMessage ask = serviceMethod(u"Unlock"_s);
    ask << QVariant::fromValue(objects);
    const auto reply = co_await m_calls.call(ask);
    if (!reply)
        co_return serviceFailure(reply.error());
    using Paths = QList<QDBusObjectPath>;
    if (!hasTypes<Paths, QDBusObjectPath>(*reply))
        co_return KeychainStatus::IoError;
    const auto unlocked = valueOf<0, Paths, QDBusObjectPath>(*reply);
    const auto prompt = valueOf<1, Paths, QDBusObjectPath>(*reply);
    if (prompt.path() == noObject)
        co_return unlocked.size() == objects.size() ? KeychainStatus::Success : KeychainStatus::AuthFailed;
    const KeychainStatus answer = co_await answerOf(prompt);
    co_return answer;
}

QCoro::Task<KeychainStatus> SecretService::deleteItem(QDBusObjectPath item, KeychainPrompt prompt)
{
    const auto reply
        = co_await m_calls.call(method(item.path(), u"org.freedesktop.Secret.Item"_s, u"Delete"_s));
    if (!reply)
        co_return reply.error();
    if (!hasTypes<QDBusObjectPath>(*reply))
        co_return KeychainStatus::IoError;
    const auto wanted = valueOf<0, QDBusObjectPath>(*reply);
    if (wanted.path() == noObject)
        co_return KeychainStatus::Success;
    if (prompt == KeychainPrompt::Forbidden) {
        // Not shown yet, and nobody is going to.
        co_await m_calls.call(method(wanted.path(), u"org.freedesktop.Secret.Prompt"_s, u"Dismiss"_s));
        co_return KeychainStatus::InteractionNotAllowed;
    }
    const KeychainStatus answer = co_await answerOf(wanted);
    co_return answer;
}

QCoro::Task<tl::expected<QDBusMessage, KeychainStatus>> SecretService::openSession(
    QString algorithm, QVariant input)
{
    QDBusMessage ask = serviceMethod(u"OpenSession"_s);
    ask << algorithm << QVariant::fromValue(QDBusVariant(input));
    auto reply = co_await m_calls.call(ask);
    if (!reply)
        co_return tl::unexpected(serviceFailure(reply.error()));
    if (!hasTypes<QDBusVariant, QDBusObjectPath>(*reply))
        co_return tl::unexpected(KeychainStatus::IoError);
    co_return reply;
}

QCoro::Task<tl::expected<std::shared_ptr<const SecretSession>, KeychainStatus>> SecretService::session(
    std::shared_ptr<const SecretSession> known)
{
    const auto service = co_await m_calls.owner(name);
    if (!service)
        co_return tl::unexpected(service.error());
    if (known && known->service == *service)
        co_return known;

    if (std::optional<SecretCipher> cipher = SecretCipher::make()) {
        auto opening = openEncrypted(*service, *std::move(cipher));
        auto opened = co_await opening;
        if (opened || opened.error() != KeychainStatus::NotAvailable)
            co_return opened;
    }
    // There are services without a cipher. They are on the person's own bus.
    const auto reply = co_await openSession(u"plain"_s, QString());
    if (!reply)
        co_return tl::unexpected(reply.error());
    SecretSession session{
        .service = *service, .path = valueOf<1, QDBusVariant, QDBusObjectPath>(*reply), .cipher = {}};
    co_return std::make_shared<const SecretSession>(std::move(session));
}

QCoro::Task<tl::expected<std::shared_ptr<const SecretSession>, KeychainStatus>> SecretService::openEncrypted(
    QString service, SecretCipher cipher)
{
    const auto reply = co_await openSession(SecretCipher::algorithm, cipher.publicKey());
    if (!reply && reply.error() == KeychainStatus::TimedOut)
        co_return tl::unexpected(reply.error());
    if (!reply)
        co_return tl::unexpected(KeychainStatus::NotAvailable);
    const QVariant output = valueOf<0, QDBusVariant, QDBusObjectPath>(*reply).variant();
    if (!cipher.agree(output.toByteArray()))
        co_return tl::unexpected(KeychainStatus::IoError);
    SecretSession session{
        .service = service, .path = valueOf<1, QDBusVariant, QDBusObjectPath>(*reply), .cipher = cipher};
    co_return std::make_shared<const SecretSession>(std::move(session));
}

std::optional<SecretCipher::Sealed> SecretSession::sealed(const QByteArray &secret) const
{
    return cipher ? cipher->seal(secret) : SecretCipher::Sealed{.parameters = {}, .value = secret};
}

std::optional<QByteArray> SecretSession::opened(const SecretCipher::Sealed &sealed) const
{
    return cipher ? cipher->open(sealed) : sealed.value;
}

QCoro::Task<tl::expected<QByteArray, KeychainStatus>> SecretService::secret(
    QDBusObjectPath item, Encoding encoding, std::shared_ptr<const SecretSession> session)
{
    registerTypes();
    QDBusMessage ask = serviceMethod(u"GetSecrets"_s);
    ask << QVariant::fromValue(QList<QDBusObjectPath>{item}) << QVariant::fromValue(session->path);
    const auto reply = co_await m_calls.call(ask);
    if (!reply)
        co_return tl::unexpected(reply.error());
    if (!hasTypes<TransferredSecrets>(*reply))
        co_return tl::unexpected(KeychainStatus::IoError);
    const auto secrets = valueOf<0, TransferredSecrets>(*reply);
    const auto found = secrets.constFind(item);
    if (found == secrets.constEnd())
        co_return tl::unexpected(KeychainStatus::ItemNotFound);
    const std::optional<QByteArray> kept
        = session->opened({.parameters = found->parameters, .value = found->value});
    if (!kept)
        co_return tl::unexpected(KeychainStatus::IoError);
    co_return encoding == Encoding::Base64 ? QByteArray::fromBase64(*kept) : *kept;
}

QCoro::Task<KeychainStatus> SecretService::write(QDBusObjectPath collection, KeychainItem item,
    QByteArray secret, std::shared_ptr<const SecretSession> session)
{
    registerTypes();
    const std::optional<SecretCipher::Sealed> sealed = session->sealed(secret.toBase64());
    if (!sealed)
        co_return KeychainStatus::IoError;
    TransferredSecret transferred;
    transferred.session = session->path;
    transferred.parameters = sealed->parameters;
    transferred.value = sealed->value;
    transferred.contentType = u"text/plain"_s;
    const QVariantMap properties{{u"org.freedesktop.Secret.Item.Label"_s, item.label},
        {u"org.freedesktop.Secret.Item.Attributes"_s, QVariant::fromValue(writtenAttributesOf(item))}};
    constexpr bool replacesItsLike = true;
    QDBusMessage create = method(collection.path(), u"org.freedesktop.Secret.Collection"_s, u"CreateItem"_s);
    create << properties << QVariant::fromValue(transferred) << replacesItsLike;
    const auto reply = co_await m_calls.call(create);
    if (!reply)
        co_return serviceFailure(reply.error());
    const KeychainStatus answer = co_await answerToMaking(*reply);
    co_return answer;
}

QDBusObjectPath SecretService::collectionOf(const QDBusObjectPath &item)
{
    const QString path = item.path();
    return QDBusObjectPath(path.left(std::max<qsizetype>(path.lastIndexOf(u'/'), 1)));
}

QCoro::Task<KeychainStatus> SecretService::answerToMaking(QDBusMessage reply)
{
    if (!hasTypes<QDBusObjectPath, QDBusObjectPath>(reply))
        co_return KeychainStatus::IoError;
    const auto prompt = valueOf<1, QDBusObjectPath, QDBusObjectPath>(reply);
    const KeychainStatus answer = co_await answerOf(prompt);
    co_return answer;
}

QCoro::Task<KeychainStatus> SecretService::answerOf(QDBusObjectPath prompt)
{
    if (prompt.path() == noObject)
        co_return KeychainStatus::Success;
    const auto service = co_await m_calls.owner(name);
    if (!service) // it was there a moment ago
        co_return service.error();

    PromptWatcher watcher(*service, prompt);
    QDBusMessage show = method(prompt.path(), u"org.freedesktop.Secret.Prompt"_s, u"Prompt"_s);
    show << QString(); // no window of ours to stand before
    const auto accepted = co_await m_calls.call(show);
    if (!accepted)
        co_return serviceFailure(accepted.error());
    const std::optional<KeychainStatus> answer = co_await watcher.ended();
    m_calls.restartTime();
    if (answer == KeychainStatus::UserCanceled) {
        const bool shown = co_await wasShown(*service);
        co_return shown ? KeychainStatus::UserCanceled : KeychainStatus::InteractionNotAllowed;
    }
    co_return answer.value_or(KeychainStatus::IoError);
}

QCoro::Task<bool> SecretService::wasShown(QString service)
{
    // GNOME Keyring calls a prompt dismissed also where the program that shows it cannot run, for instance
    // without a display. Where it did run, it stays for a while.
    const auto gnomeKeyring = co_await m_calls.owner(u"org.gnome.keyring"_s);
    if (!gnomeKeyring || *gnomeKeyring != service)
        co_return true;
    const auto prompter = co_await m_calls.owner(PromptWatcher::gnomePrompter);
    co_return prompter.has_value();
}

} // namespace orbitledge
