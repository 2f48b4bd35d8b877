#pragma once

#include "platform/Keychain.h"
#include "platform/linux/keychain/BusCalls.h"

#include <QCoroTask>
#include <QString>

#include <tl/expected.hpp>

namespace orbitledge {

/// KWallet's daemon, for one operation. The names are those under which QtKeychain keeps entries: the service
/// is the folder, and who asks for access.
class KWallet {
public:
    /// `calls` must outlive this object. `daemon` is its name on the bus, for instance "org.kde.kwalletd5".
    KWallet(BusCalls &calls, QString daemon);

    /// False where the person does without wallets.
    QCoro::Task<tl::expected<bool, KeychainStatus>> isEnabled();

    /// The wallet for passwords; NotAvailable where the person does without wallets.
    QCoro::Task<tl::expected<QString, KeychainStatus>> wallet();

    /// Never prompts.
    QCoro::Task<tl::expected<bool, KeychainStatus>> isOpen(QString wallet);

    /// Whether it is certain that there is no such entry. Never prompts, also with a closed wallet.
    QCoro::Task<tl::expected<bool, KeychainStatus>> isSurelyAbsent(QString wallet, KeychainItem item);

    /// Whether the wallet is open and already ours to use, so that nobody will be asked.
    QCoro::Task<tl::expected<bool, KeychainStatus>> isOpenForUs(QString wallet, QString service);

    /// Opens the wallet for us and waits for the person's password and consent: the handle for what follows.
    /// AuthFailed where they or the daemon decline.
    QCoro::Task<tl::expected<int, KeychainStatus>> open(QString wallet, QString service);

    QCoro::Task<tl::expected<QByteArray, KeychainStatus>> read(int handle, KeychainItem item);
    QCoro::Task<KeychainStatus> write(int handle, KeychainItem item, QByteArray secret);
    QCoro::Task<KeychainStatus> remove(int handle, KeychainItem item);

private:
    [[nodiscard]] QDBusMessage method(const QString &name) const;
    /// Of the entry; what else it takes comes before the last argument, which is who asks.
    [[nodiscard]] QDBusMessage entryMethod(const QString &name, int handle, const KeychainItem &item) const;

    BusCalls &m_calls;
    QString m_daemon;
};

} // namespace orbitledge
