#include "platform/linux/keychain/KWallet.h"

#include <utility>

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

/// What an entry is, by the daemon's count.
constexpr int textEntry = 1;
constexpr int bytesEntry = 2;

/// Whatever a call on the daemon's one object reports as missing or locked, it is not an item.
KeychainStatus daemonFailure(KeychainStatus status)
{
    return status == KeychainStatus::ItemNotFound || status == KeychainStatus::InteractionNotAllowed
        ? KeychainStatus::IoError
        : status;
}

} // namespace

KWallet::KWallet(BusCalls &calls, QString daemon)
    : m_calls(calls)
    , m_daemon(std::move(daemon))
{
}

QDBusMessage KWallet::method(const QString &name) const
{
    // org.kde.kwalletd5 has its object at /modules/kwalletd5
    const QString path = u"/modules/"_s + m_daemon.section(u'.', -1);
    return QDBusMessage::createMethodCall(m_daemon, path, u"org.kde.KWallet"_s, name);
}

QCoro::Task<tl::expected<bool, KeychainStatus>> KWallet::isEnabled()
{
    const auto reply = co_await m_calls.call(method(u"isEnabled"_s));
    if (!reply)
        co_return tl::unexpected(daemonFailure(reply.error()));
    co_return reply->arguments().value(0).toBool();
}

QCoro::Task<tl::expected<QString, KeychainStatus>> KWallet::wallet()
{
    const auto enabled = co_await isEnabled();
    if (!enabled)
        co_return tl::unexpected(enabled.error());
    if (!*enabled)
        co_return tl::unexpected(KeychainStatus::NotAvailable);
    const auto name = co_await m_calls.call(method(u"networkWallet"_s));
    if (!name)
        co_return tl::unexpected(daemonFailure(name.error()));
    co_return name->arguments().value(0).toString();
}

QCoro::Task<tl::expected<bool, KeychainStatus>> KWallet::isOpen(QString wallet)
{
    QDBusMessage ask = method(u"isOpen"_s);
    ask << wallet;
    const auto reply = co_await m_calls.call(ask);
    if (!reply)
        co_return tl::unexpected(daemonFailure(reply.error()));
    co_return reply->arguments().value(0).toBool();
}

QCoro::Task<tl::expected<bool, KeychainStatus>> KWallet::isSurelyAbsent(QString wallet, KeychainItem item)
{
    QDBusMessage ask = method(u"keyDoesNotExist"_s);
    ask << wallet << item.service << item.account;
    const auto reply = co_await m_calls.call(ask);
    if (!reply)
        co_return tl::unexpected(daemonFailure(reply.error()));
    co_return reply->arguments().value(0).toBool();
}

QCoro::Task<tl::expected<bool, KeychainStatus>> KWallet::isOpenForUs(QString wallet, QString service)
{
    // An open wallet still asks before it lets in a program that does not use it yet.
    QDBusMessage ask = method(u"users"_s);
    ask << wallet;
    const auto reply = co_await m_calls.call(ask);
    if (!reply)
        co_return tl::unexpected(daemonFailure(reply.error()));
    co_return reply->arguments().value(0).toStringList().contains(service);
}

QCoro::Task<tl::expected<int, KeychainStatus>> KWallet::open(QString wallet, QString service)
{
    QDBusMessage ask = method(u"open"_s);
    ask << wallet << qlonglong(0) << service; // no window of ours to stand before
    const auto reply = co_await m_calls.callPatiently(ask);
    if (!reply)
        co_return tl::unexpected(daemonFailure(reply.error()));
    const int handle = reply->arguments().value(0, -1).toInt();
    if (handle < 0)
        co_return tl::unexpected(KeychainStatus::AuthFailed);
    co_return handle;
}

QDBusMessage KWallet::entryMethod(const QString &name, int handle, const KeychainItem &item) const
{
    QDBusMessage message = method(name);
    message << handle << item.service << item.account;
    return message;
}

QCoro::Task<tl::expected<QByteArray, KeychainStatus>> KWallet::read(int handle, KeychainItem item)
{
    QDBusMessage ask = entryMethod(u"entryType"_s, handle, item);
    ask << item.service;
    const auto type = co_await m_calls.call(ask);
    if (!type)
        co_return tl::unexpected(daemonFailure(type.error()));
    const bool isText = type->arguments().value(0).toInt() == textEntry;
    if (!isText && type->arguments().value(0).toInt() != bytesEntry)
        co_return tl::unexpected(KeychainStatus::ItemNotFound);
    QDBusMessage get = entryMethod(isText ? u"readPassword"_s : u"readEntry"_s, handle, item);
    get << item.service;
    const auto secret = co_await m_calls.call(get);
    if (!secret)
        co_return tl::unexpected(daemonFailure(secret.error()));
    const QVariant value = secret->arguments().value(0);
    co_return isText ? value.toString().toUtf8() : value.toByteArray();
}

QCoro::Task<KeychainStatus> KWallet::write(int handle, KeychainItem item, QByteArray secret)
{
    QDBusMessage put = entryMethod(u"writeEntry"_s, handle, item);
    put << secret << item.service;
    const auto reply = co_await m_calls.call(put);
    if (!reply)
        co_return daemonFailure(reply.error());
    co_return reply->arguments().value(0, -1).toInt() == 0 ? KeychainStatus::Success
                                                           : KeychainStatus::IoError;
}

QCoro::Task<KeychainStatus> KWallet::remove(int handle, KeychainItem item)
{
    QDBusMessage ask = entryMethod(u"removeEntry"_s, handle, item);
    ask << item.service;
    const auto reply = co_await m_calls.call(ask);
    if (!reply)
        co_return daemonFailure(reply.error());
    co_return reply->arguments().value(0, -1).toInt() == 0 ? KeychainStatus::Success
                                                           : KeychainStatus::IoError;
}

} // namespace orbitledge
