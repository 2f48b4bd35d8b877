#include "platform/Keychain.h"

namespace orbitledge {

using namespace Qt::StringLiterals;

std::optional<QString> keychainMessage(KeychainStatus status)
{
    switch (status) {
    case KeychainStatus::Success:
        return u"No error."_s;
    case KeychainStatus::UserCanceled:
        return u"Unlocking the keyring was cancelled."_s;
    case KeychainStatus::IoError:
        return u"The keyring could not carry out the request."_s;
    case KeychainStatus::TimedOut:
        return u"The keyring did not answer in time."_s;
    case KeychainStatus::NotAvailable:
        return u"No keyring is available. Install and start GNOME Keyring, KWallet or KeePassXC, then try again."_s;
    case KeychainStatus::AuthFailed:
        return u"The keyring denied access."_s;
    case KeychainStatus::ItemNotFound:
        return u"The item could not be found in the keyring."_s;
    case KeychainStatus::InteractionNotAllowed:
        return u"The keyring is locked."_s;
    }
    return std::nullopt;
}

} // namespace orbitledge
