#pragma once

#include <QByteArray>
#include <QLatin1StringView>

#include <optional>

namespace orbitledge {

/// How secrets cross the bus, so that who listens there cannot read them: the algorithm
/// "dh-ietf1024-sha256-aes128-cbc-pkcs7" of the Secret Service API 0.2, from this side. Keys are agreed upon
/// in the second group of RFC 2409 and derived by RFC 5869; the cipher is AES-128 in CBC mode with the
/// padding of RFC 5652.
class SecretCipher {
public:
    static constexpr auto algorithm = QLatin1StringView("dh-ietf1024-sha256-aes128-cbc-pkcs7");

    /// With a private key of its own. Absent where the system has no library for it.
    static std::optional<SecretCipher> make();

    /// For the service, in network byte order.
    [[nodiscard]] QByteArray publicKey() const { return m_publicKey; }

    /// Takes the service's public key. False where that is none; nothing can be sealed then.
    [[nodiscard]] bool agree(const QByteArray &servicesKey);

    struct Sealed {
        /// What the cipher began with.
        QByteArray parameters;
        QByteArray value;
    };
    [[nodiscard]] std::optional<Sealed> seal(const QByteArray &secret) const;
    /// Absent where it was not sealed with this key.
    [[nodiscard]] std::optional<QByteArray> open(const Sealed &sealed) const;

private:
    SecretCipher() = default;

    QByteArray m_privateKey;
    QByteArray m_publicKey;
    QByteArray m_key;
};

} // namespace orbitledge
