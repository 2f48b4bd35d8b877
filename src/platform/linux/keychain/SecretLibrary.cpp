#include "platform/linux/keychain/SecretLibrary.h"

#include <QLibrary>

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace orbitledge {

using namespace Qt::StringLiterals;

namespace {

// What the functions take and give, as the library lays it out for programs in C.

struct List {
    void *data;
    List *next;
    List *previous;
};

struct Failure {
    std::uint32_t domain;
    int code;
    char *message;
};

using Answered = void (*)(void *source, void *result, void *data);

constexpr int unlockItems = 1 << 2;
constexpr int loadSecrets = 1 << 3;
constexpr int noSuchObject = 3;

template <typename Function> bool resolve(QLibrary &library, Function &function, const char *name)
{
    function = reinterpret_cast<Function>(library.resolve(name));
    return function != nullptr;
}

} // namespace

struct SecretLibrary::Functions {
    void (*disconnect)() = nullptr;
    void (*search)(void *service, const void *schema, void *attributes, int flags, void *cancellable,
        Answered answered, void *data)
        = nullptr;
    List *(*searchFinish)(void *service, void *result, Failure **failure) = nullptr;
    void *(*secretOf)(void *item) = nullptr;
    const char *(*bytesOf)(void *secret, std::size_t *length) = nullptr;
    void (*releaseSecret)(void *secret) = nullptr;
    std::uint32_t (*errorDomain)() = nullptr;

    void *(*newTable)(void (*hash)(), void (*equal)()) = nullptr;
    int (*insert)(void *table, const void *key, const void *value) = nullptr;
    void (*releaseTable)(void *table) = nullptr;
    void (*hashText)() = nullptr;
    void (*equalTexts)() = nullptr;
    void (*freeList)(List *list, void (*freeItem)(void *)) = nullptr;
    void (*releaseObject)(void *object) = nullptr;
    void (*freeFailure)(Failure *failure) = nullptr;
};

/// One read. It belongs to itself until the library has answered, which holds its address.
class SecretLibrary::Reading {
public:
    Reading(std::shared_ptr<const SecretLibrary> library, KeychainItem item, Unlocking unlocking,
        std::function<void(Answer)> answered)
        : m_library(std::move(library))
        , m_item(std::move(item))
        , m_flags(loadSecrets | (unlocking == Unlocking::Yes ? unlockItems : 0))
        , m_answered(std::move(answered))
    {
    }

    /// As QtKeychain writes them: for texts, and for bytes.
    static void start(std::unique_ptr<Reading> reading)
    {
        const Functions &call = *reading->m_library->m_functions;
        const QByteArray user = reading->m_item.account.toUtf8();
        const QByteArray server = reading->m_item.service.toUtf8();
        void *const attributes = call.newTable(call.hashText, call.equalTexts);
        call.insert(attributes, "user", user.constData());
        call.insert(attributes, "server", server.constData());
        call.insert(attributes, "type", reading->m_isText ? "plaintext" : "base64");
        auto *const waiting = reading.release();
        call.search(nullptr, nullptr, attributes, waiting->m_flags, nullptr, &Reading::receive, waiting);
        call.releaseTable(attributes);
    }

private:
    static void receive(void *source, void *result, void *data)
    {
        std::unique_ptr<Reading> reading(static_cast<Reading *>(data));
        Answer answer = reading->take(source, result);
        if (answer.status == KeychainStatus::ItemNotFound && std::exchange(reading->m_isText, false))
            start(std::move(reading));
        else
            reading->m_answered(std::move(answer));
    }

    Answer take(void *source, void *result) const
    {
        const Functions &call = *m_library->m_functions;
        Failure *failure = nullptr;
        List *const items = call.searchFinish(source, result, &failure);
        if (failure != nullptr) {
            const bool isGone = failure->domain == call.errorDomain() && failure->code == noSuchObject;
            call.freeFailure(failure);
            return {.status = isGone ? KeychainStatus::ItemNotFound : KeychainStatus::IoError, .secret = {}};
        }
        Answer answer{.status = KeychainStatus::ItemNotFound, .secret = {}};
        if (void *const secret = items == nullptr ? nullptr : call.secretOf(items->data)) {
            std::size_t length = 0;
            const char *const bytes = call.bytesOf(secret, &length);
            const QByteArray stored(bytes, static_cast<qsizetype>(length));
            answer = {.status = KeychainStatus::Success,
                .secret = m_isText ? stored : QByteArray::fromBase64(stored)};
            call.releaseSecret(secret);
        }
        call.freeList(items, call.releaseObject);
        return answer;
    }

    std::shared_ptr<const SecretLibrary> m_library;
    KeychainItem m_item;
    int m_flags;
    std::function<void(Answer)> m_answered;
    bool m_isText = true;
};

SecretLibrary::SecretLibrary(std::unique_ptr<const Functions> functions)
    : m_functions(std::move(functions))
{
}

SecretLibrary::~SecretLibrary() = default;

std::shared_ptr<const SecretLibrary> SecretLibrary::load()
{
    // By the name by which QtKeychain loads it. What it is built on is found by it as well.
    QLibrary library(u"secret-1"_s, 0);
    auto call = std::make_unique<Functions>();
    const std::array found{
        resolve(library, call->disconnect, "secret_service_disconnect"),
        resolve(library, call->search, "secret_service_search"),
        resolve(library, call->searchFinish, "secret_service_search_finish"),
        resolve(library, call->secretOf, "secret_item_get_secret"),
        resolve(library, call->bytesOf, "secret_value_get"),
        resolve(library, call->releaseSecret, "secret_value_unref"),
        resolve(library, call->errorDomain, "secret_error_get_quark"),
        resolve(library, call->newTable, "g_hash_table_new"),
        resolve(library, call->insert, "g_hash_table_insert"),
        resolve(library, call->releaseTable, "g_hash_table_unref"),
        resolve(library, call->hashText, "g_str_hash"),
        resolve(library, call->equalTexts, "g_str_equal"),
        resolve(library, call->freeList, "g_list_free_full"),
        resolve(library, call->releaseObject, "g_object_unref"),
        resolve(library, call->freeFailure, "g_error_free"),
    };
    for (const bool isFound : found) {
        if (!isFound)
            return nullptr;
    }
    return std::make_shared<const SecretLibrary>(std::move(call));
}

void SecretLibrary::disconnectFromService() const
{
    m_functions->disconnect();
}

void SecretLibrary::read(std::shared_ptr<const SecretLibrary> library, const KeychainItem &item,
    Unlocking unlocking, std::function<void(Answer)> answered)
{
    Reading::start(std::make_unique<Reading>(std::move(library), item, unlocking, std::move(answered)));
}

} // namespace orbitledge
