#include "service/SessionCredentialStoreError.h"

namespace orbitledge {

using namespace Qt::StringLiterals;

QString SessionCredentialStoreError::errorDescription() const
{
    const auto *const keychain = std::get_if<Keychain>(&m_case);
    if (keychain == nullptr)
        return u"The stored session is invalid."_s;
    if (const auto message = keychainMessage(keychain->status))
        return u"Keychain error: "_s + *message;
    return u"Keychain error (%1)"_s.arg(static_cast<qint32>(keychain->status));
}

} // namespace orbitledge
