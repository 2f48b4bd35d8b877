#include "platform/linux/keychain/SecretService.h"

#include "platform/linux/keychain/PromptWatcher.h"

#include <QDBusMetaType>
#include <QDBusPendingReply>
#include <QVariantMap>

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

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

QCoro::Task<tl::expected<SecretService::FoundItems, KeychainStatus>> SecretService::search(KeychainItem item)
{
    // Without the schema: a keyring that was not yet unlocked in this session does not find items by it.
    return searchAttributes({{u"user"_s, item.account}, {u"server"_s, item.service}});
}

QCoro::Task<tl::expected<SecretService::FoundItems, KeychainStatus>> SecretService::searchWritten(
    KeychainItem item)
{
    return searchAttributes({{u"user"_s, item.account}, {u"server"_s, item.service}, {u"type"_s, u"base64"_s},
        {u"xdg:schema"_s, u"org.qt.keychain"_s}});
}

QCoro::Task<tl::expected<SecretService::FoundItems, KeychainStatus>> SecretService::searchAttributes(
    QMap<QString, QString> attributes)
{
    static const QMetaType attributesType = qDBusRegisterMetaType<QMap<QString, QString>>();
    Q_UNUSED(attributesType)
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
    if (!hasTypes<QDBusObjectPath, QDBusObjectPath>(*reply))
        co_return KeychainStatus::IoError;
    const auto prompt = valueOf<1, QDBusObjectPath, QDBusObjectPath>(*reply);
    const KeychainStatus answer = co_await answerOf(prompt);
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

QCoro::Task<KeychainStatus> SecretService::setLabel(QDBusObjectPath item, QString label)
{
    QDBusMessage set = method(item.path(), u"org.freedesktop.DBus.Properties"_s, u"Set"_s);
    set << u"org.freedesktop.Secret.Item"_s << u"Label"_s << QVariant::fromValue(QDBusVariant(label));
    const auto reply = co_await m_calls.call(set);
    co_return reply ? KeychainStatus::Success : reply.error();
}

QDBusObjectPath SecretService::collectionOf(const QDBusObjectPath &item)
{
    const QString path = item.path();
    return QDBusObjectPath(path.left(path.lastIndexOf(u'/')));
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
