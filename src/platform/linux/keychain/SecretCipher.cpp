#include "platform/linux/keychain/SecretCipher.h"

#include <QMessageAuthenticationCode>
#include <QRandomGenerator>

#include <gcrypt.h>

#include <cstddef>
#include <memory>
#include <type_traits>

namespace orbitledge {

namespace {

constexpr qsizetype primeSize = 128; // bytes
/// Twice what the prime is worth in bits (80: NIST SP 800-57, part 1, table 2) is enough, and this is more.
/// As many bytes as the prime has would hold up the calling thread four times as long for no more safety.
constexpr qsizetype privateKeySize = 32;
constexpr qsizetype keySize = 16;
constexpr qsizetype blockSize = 16;

/// RFC 2409, section 6.2.
constexpr auto primeDigits = "FFFFFFFFFFFFFFFFC90FDAA22168C234C4C6628B80DC1CD129024E088A67CC74"
                             "020BBEA63B139B22514A08798E3404DDEF9519B3CD3A431B302B0A6DF25F1437"
                             "4FE1356D6D51C245E485B576625E7EC6F44C42E9A637ED6B0BFF5CB6F406B7ED"
                             "EE386BFB5A899FA5AE9F24117C4B1FE649286651ECE65381FFFFFFFFFFFFFFFF";
constexpr unsigned long generator = 2;

struct FreeNumber {
    void operator()(gcry_mpi_t number) const { gcry_mpi_release(number); }
};
using Number = std::unique_ptr<std::remove_pointer_t<gcry_mpi_t>, FreeNumber>;

struct FreeCipher {
    void operator()(gcry_cipher_hd_t cipher) const { gcry_cipher_close(cipher); }
};
using Cipher = std::unique_ptr<std::remove_pointer_t<gcry_cipher_hd_t>, FreeCipher>;

Number numberFrom(const QByteArray &bytes)
{
    gcry_mpi_t number = nullptr;
    gcry_mpi_scan(
        &number, GCRYMPI_FMT_USG, bytes.constData(), static_cast<std::size_t>(bytes.size()), nullptr);
    return Number(number);
}

/// As many bytes as the prime has, since the key is derived from all of them.
QByteArray bytesOf(const Number &number)
{
    QByteArray bytes(primeSize, '\0');
    std::size_t written = 0;
    gcry_mpi_print(
        GCRYMPI_FMT_USG, reinterpret_cast<unsigned char *>(bytes.data()), primeSize, &written, number.get());
    bytes.truncate(static_cast<qsizetype>(written));
    return bytes.rightJustified(primeSize, '\0');
}

Number prime()
{
    return numberFrom(QByteArray::fromHex(primeDigits));
}

QByteArray power(const Number &base, const QByteArray &exponent)
{
    const Number result(gcry_mpi_new(0));
    gcry_mpi_powm(result.get(), base.get(), numberFrom(exponent).get(), prime().get());
    return bytesOf(result);
}

QByteArray randomBytes(qsizetype count)
{
    QByteArray bytes(count, '\0');
    QRandomGenerator::system()->generate(bytes.begin(), bytes.end());
    return bytes;
}

/// RFC 5869 without salt and information. One round has more than is needed.
QByteArray derivedKey(const QByteArray &shared)
{
    constexpr auto hash = QCryptographicHash::Sha256;
    const QByteArray noSalt(QCryptographicHash::hashLength(hash), '\0');
    const QByteArray extracted = QMessageAuthenticationCode::hash(shared, noSalt, hash);
    return QMessageAuthenticationCode::hash(QByteArray(1, '\1'), extracted, hash).first(keySize);
}

Cipher cipherWith(const QByteArray &key, const QByteArray &parameters)
{
    gcry_cipher_hd_t opened = nullptr;
    if (key.size() != keySize || parameters.size() != blockSize
        || gcry_cipher_open(&opened, GCRY_CIPHER_AES128, GCRY_CIPHER_MODE_CBC, 0) != 0)
        return nullptr;
    Cipher cipher(opened);
    if (gcry_cipher_setkey(opened, key.constData(), keySize) != 0
        || gcry_cipher_setiv(opened, parameters.constData(), blockSize) != 0)
        return nullptr;
    return cipher;
}

/// How many bytes at the end are there to fill the last block; absent where that cannot be.
std::optional<qsizetype> paddingOf(const QByteArray &padded)
{
    const auto count = static_cast<unsigned char>(padded.back());
    if (count == 0 || count > blockSize || padded.last(count).count(padded.back()) != count)
        return std::nullopt;
    return count;
}

} // namespace

std::optional<SecretCipher> SecretCipher::make()
{
    // Before the library's first use in the process. Its own memory for secrets would be locked for as long
    // as the process lives; ours are in the caller's hands anyway.
    static const bool isThere = [] {
        if (gcry_control(GCRYCTL_INITIALIZATION_FINISHED_P) != 0)
            return true;
        if (gcry_check_version(nullptr) == nullptr)
            return false;
        gcry_control(GCRYCTL_DISABLE_SECMEM, 0);
        gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0);
        return true;
    }();
    if (!isThere)
        return std::nullopt;
    SecretCipher cipher;
    cipher.m_privateKey = randomBytes(privateKeySize);
    cipher.m_publicKey = power(Number(gcry_mpi_set_ui(nullptr, generator)), cipher.m_privateKey);
    return cipher;
}

bool SecretCipher::agree(const QByteArray &servicesKey)
{
    // Neither 0, 1 nor the one before the prime, with which the secret would be known, and none that is
    // larger.
    const Number theirs = numberFrom(servicesKey);
    const Number largest = prime();
    if (!theirs || !largest)
        return false;
    gcry_mpi_sub_ui(largest.get(), largest.get(), 1);
    if (gcry_mpi_cmp_ui(theirs.get(), 1) <= 0 || gcry_mpi_cmp(theirs.get(), largest.get()) >= 0)
        return false;
    m_key = derivedKey(power(theirs, m_privateKey));
    return true;
}

std::optional<SecretCipher::Sealed> SecretCipher::seal(const QByteArray &secret) const
{
    Sealed sealed{.parameters = randomBytes(blockSize), .value = secret};
    const qsizetype padding = blockSize - secret.size() % blockSize;
    sealed.value.append(padding, static_cast<char>(padding));
    const Cipher cipher = cipherWith(m_key, sealed.parameters);
    if (!cipher
        || gcry_cipher_encrypt(
               cipher.get(), sealed.value.data(), static_cast<std::size_t>(sealed.value.size()), nullptr, 0)
            != 0)
        return std::nullopt;
    return sealed;
}

std::optional<QByteArray> SecretCipher::open(const Sealed &sealed) const
{
    if (sealed.value.isEmpty() || sealed.value.size() % blockSize != 0)
        return std::nullopt;
    QByteArray secret = sealed.value;
    const Cipher cipher = cipherWith(m_key, sealed.parameters);
    if (!cipher
        || gcry_cipher_decrypt(
               cipher.get(), secret.data(), static_cast<std::size_t>(secret.size()), nullptr, 0)
            != 0)
        return std::nullopt;
    const std::optional<qsizetype> padding = paddingOf(secret);
    if (!padding)
        return std::nullopt;
    secret.chop(*padding);
    return secret;
}

} // namespace orbitledge
