#include "service/SessionCredentialStore.h"

namespace orbitledge {

namespace {

using Error = SessionCredentialStoreError;
template <typename T> using Task = SessionCredentialStoring::Task<T>;

tl::unexpected<Error> failed(KeychainStatus status)
{
    return tl::make_unexpected(Error(Error::Keychain{status}));
}

// Free of the store, which may be gone while they wait.

Task<std::optional<SessionCredential>> load(std::shared_ptr<Keychain> keychain, KeychainItem item)
{
    const tl::expected<QByteArray, KeychainStatus> secret = co_await keychain->read(std::move(item));
    if (!secret) {
        if (secret.error() == KeychainStatus::ItemNotFound)
            co_return std::nullopt;
        co_return failed(secret.error());
    }
    auto credential = decodeSessionCredential(*secret);
    if (!credential)
        co_return tl::make_unexpected(Error(Error::InvalidStoredData{}));
    co_return credential;
}

Task<void> save(std::shared_ptr<Keychain> keychain, KeychainItem item, QByteArray secret)
{
    const KeychainStatus status = co_await keychain->write(std::move(item), std::move(secret));
    if (status != KeychainStatus::Success)
        co_return failed(status);
    co_return {};
}

Task<void> clear(std::shared_ptr<Keychain> keychain, KeychainItem item, KeychainPrompt prompt)
{
    const KeychainStatus status = co_await keychain->remove(std::move(item), prompt);
    if (status != KeychainStatus::Success && status != KeychainStatus::ItemNotFound)
        co_return failed(status);
    co_return {};
}

} // namespace

SessionCredentialStore::SessionCredentialStore(
    std::shared_ptr<Keychain> keychain, QString service, QString account, QString label)
    : m_keychain(std::move(keychain))
    , m_item{std::move(service), std::move(account), std::move(label)}
{
}

Task<std::optional<SessionCredential>> SessionCredentialStore::load()
{
    return orbitledge::load(m_keychain, m_item);
}

Task<void> SessionCredentialStore::save(SessionCredential credential)
{
    return orbitledge::save(m_keychain, m_item, encodeSessionCredential(credential));
}

Task<void> SessionCredentialStore::clear(KeychainPrompt prompt)
{
    return orbitledge::clear(m_keychain, m_item, prompt);
}

} // namespace orbitledge
