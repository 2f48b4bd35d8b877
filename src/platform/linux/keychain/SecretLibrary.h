#pragma once

#include "platform/Keychain.h"

#include <functional>
#include <memory>

namespace orbitledge {

/// libsecret, where it is installed, for what QtKeychain cannot do with it. QtKeychain reads by
/// secret_password_lookup, which in libsecret 0.20.5 never lets go of the service's answer: one to two
/// kilobytes for each read.
class SecretLibrary {
public:
    struct Answer {
        /// ItemNotFound also where the item is locked and stays so.
        KeychainStatus status = KeychainStatus::Success;
        QByteArray secret;
    };

    /// Waits for the disk. Null where the library is not installed. It stays loaded.
    static std::shared_ptr<const SecretLibrary> load();

    /// So that the next operation finds the service anew.
    void disconnectFromService() const;

    /// Whether a person may be asked to unlock the item.
    enum class Unlocking { No, Yes };

    /// Calls `answered` on this thread, whose event loop has to be
    /// GLib's, however long that takes.
    static void read(std::shared_ptr<const SecretLibrary> library, const KeychainItem &item,
        Unlocking unlocking, std::function<void(Answer)> answered);

    struct Functions;
    explicit SecretLibrary(std::unique_ptr<const Functions> functions);
    ~SecretLibrary();
    Q_DISABLE_COPY_MOVE(SecretLibrary)

private:
    class Reading;

    std::unique_ptr<const Functions> m_functions;
};

} // namespace orbitledge
