#include "service/APIClient.h"

#include "locale/Graphemes.h"
#include "model/RecordCodecs.h"
#include "model/UuidText.h"
#include "model/json/JsonWriter.h"
#include "platform/SerialQueue.h"
#include "service/Cookies.h"
#include "service/PercentEncoding.h"
#include "service/ResponseFailure.h"

#include <algorithm>

namespace orbitledge {

using namespace Qt::StringLiterals;

/// Shared with every operation that waits, so that none depends on the client's life.
struct APIClientParts {
    QUrl baseURL;
    std::shared_ptr<HttpSession> session;
    std::shared_ptr<SessionCredentialStoring> credentialStore;
    std::shared_ptr<const Clock> clock;
    SerialQueue decoding;
    /// How many credentials were handed to the store.
    int saves = 0;
};

namespace {

constexpr const char *sessionCookieName = "orbitledge_user_session";
constexpr qint64 sessionCookieLifetime = qint64{7} * 86'400 * 1000; // milliseconds

enum class Authorised { No, Yes };

/// One request as an endpoint describes it.
struct Call {
    QByteArray method = "GET";
    /// Absolute, percent-encoded, with its query.
    QByteArray path;
    std::optional<QByteArray> body;
    Authorised authorised = Authorised::Yes;
};

Call getOf(QByteArray path)
{
    return {.method = "GET", .path = std::move(path), .body = std::nullopt};
}

Call postOf(QByteArray path, QByteArray body)
{
    return {.method = "POST", .path = std::move(path), .body = std::move(body)};
}

tl::unexpected<APIError> failed(APIError error)
{
    return tl::make_unexpected(std::move(error));
}

QByteArray loginBody(const QString &email, const QString &password)
{
    json::JsonWriter writer;
    writer.beginObject();
    writer.key("email");
    writer.string(email);
    writer.key("password");
    writer.string(password);
    writer.endObject();
    return writer.take();
}

QByteArray emptyBody()
{
    return "{}"_ba;
}

QByteArray subscriptionPath(const QUuid &id, const char *verb)
{
    return "/subscriptions/" + uuidText(id).toLatin1() + '/' + verb;
}

/// The path begins with a slash, and takes the place of the base's. Absent where base and path make no
/// address that a request can go to.
std::optional<QUrl> urlOf(const QUrl &base, const QByteArray &path)
{
    QUrl url = base.resolved(QUrl::fromEncoded(path, QUrl::StrictMode));
    if (!url.isValid() || url.host().isEmpty())
        return std::nullopt;
    return url;
}

QCoro::Task<void> forget(
    std::shared_ptr<APIClientParts> parts, KeychainPrompt prompt = KeychainPrompt::Forbidden)
{
    // What cannot be removed now is removed the next time that it is found to be of no use.
    (void)co_await parts->credentialStore->clear(prompt);
}

/// Somebody who signs in may have stored another one since `saves`, while what is of no use was being loaded,
/// or the service said so.
QCoro::Task<void> forgetWhatWasLoaded(std::shared_ptr<APIClientParts> parts, int saves)
{
    if (parts->saves == saves)
        co_await forget(parts);
}

/// What a request says of who sends it.
struct Authorisation {
    /// The Cookie header's value; absent where no credential is stored, or none that is still good.
    std::optional<QByteArray> cookie;
    /// When it was loaded.
    int saves = 0;
};

APITask<Authorisation> loadAuthorisation(std::shared_ptr<APIClientParts> parts)
{
    int saves = parts->saves;
    auto loaded = co_await parts->credentialStore->load();
    // Once more where somebody signed in meanwhile: what was loaded is another session's.
    while (loaded && parts->saves != saves) {
        saves = parts->saves;
        loaded = co_await parts->credentialStore->load();
    }
    if (!loaded)
        co_return failed(APIError::SessionStorage{loaded.error().errorDescription()});
    const std::optional<SessionCredential> &credential = *loaded;
    if (!credential)
        co_return Authorisation{.cookie = std::nullopt, .saves = saves};
    if (credential->isExpired(parts->clock->now())) {
        co_await forgetWhatWasLoaded(parts, saves);
        co_return Authorisation{.cookie = std::nullopt, .saves = saves};
    }
    QByteArray cookie = QByteArray(sessionCookieName) + '=' + credential->value.toLatin1();
    co_return Authorisation{.cookie = std::move(cookie), .saves = saves};
}

/// A success's answer, or the failure that the exchange came to.
APITask<HttpResponse> exchange(std::shared_ptr<APIClientParts> parts, Call call)
{
    const std::optional<QUrl> url = urlOf(parts->baseURL, call.path);
    if (!url)
        co_return failed(APIError::InvalidResponse{});
    HttpRequest request;
    request.method = call.method;
    request.url = *url;
    request.headers.append(HttpHeader{"Accept", "application/json"});
    if (call.body) {
        request.body = std::move(call.body);
        request.headers.append(HttpHeader{"Content-Type", "application/json"});
    }
    int saves = parts->saves;
    if (call.authorised == Authorised::Yes) {
        auto authorisation = co_await loadAuthorisation(parts);
        if (!authorisation)
            co_return failed(std::move(authorisation.error()));
        saves = authorisation->saves;
        if (const std::optional<QByteArray> &cookie = authorisation->cookie)
            request.headers.append(HttpHeader{"Cookie", *cookie});
    }

    auto outcome = co_await parts->session->send(std::move(request));
    if (!outcome)
        co_return failed(APIError::Transport{outcome.error().errorDescription()});

    // An error's body may be as large as any other.
    auto check = [response = *std::move(outcome)]() mutable -> tl::expected<HttpResponse, APIError> {
        if (auto failure = failureOf(response))
            return failed(*std::move(failure));
        return std::move(response);
    };
    auto checking = parts->decoding.run(std::move(check));
    auto checked = co_await checking;
    if (!checked && checked.error().is<APIError::Unauthorized>())
        co_await forgetWhatWasLoaded(parts, saves);
    co_return checked;
}

template <typename Record> APITask<Record> decode(std::shared_ptr<APIClientParts> parts, QByteArray body)
{
    auto work = [json = std::move(body)]() mutable { return decodeJson<Record>(std::move(json)); };
    auto decoding = parts->decoding.run(std::move(work));
    auto decoded = co_await decoding;
    if (!decoded)
        co_return failed(APIError::Decoding{decoded.error().errorDescription()});
    co_return *std::move(decoded);
}

template <typename Record> APITask<Record> ask(std::shared_ptr<APIClientParts> parts, Call call)
{
    auto response = co_await exchange(parts, std::move(call));
    if (!response)
        co_return failed(std::move(response.error()));
    auto record = co_await decode<Record>(parts, std::move(response->body));
    co_return record;
}

APITask<Subscription> change(std::shared_ptr<APIClientParts> parts, QByteArray path)
{
    Call call = postOf(std::move(path), emptyBody());
    auto response = co_await ask<SubscriptionMutationResponse>(parts, std::move(call));
    if (!response)
        co_return failed(std::move(response.error()));
    co_return std::move(response->subscription);
}

std::optional<SessionCredential> credentialOf(const HttpResponse &response, const QUrl &baseURL, Instant now)
{
    const std::vector<Cookie> cookies = cookiesOf(response.headers, baseURL, now);
    const auto cookie = std::ranges::find(cookies, QLatin1StringView(sessionCookieName), &Cookie::name);
    if (cookie == cookies.end() || cookie->value.isEmpty())
        return std::nullopt;
    return SessionCredential{
        .value = cookie->value,
        .expiresAt = cookie->expiresAt.value_or(
            Instant::fromMillisecondsSinceEpoch(now.millisecondsSinceEpoch() + sessionCookieLifetime)),
    };
}

APITask<UserProfile> openSession(std::shared_ptr<APIClientParts> parts, QString email, QString password)
{
    Call call = postOf("/auth/login", loginBody(email, password));
    call.authorised = Authorised::No;
    auto response = co_await exchange(parts, std::move(call));
    if (!response)
        co_return failed(std::move(response.error()));

    auto credential = credentialOf(*response, parts->baseURL, parts->clock->now());
    if (!credential)
        co_return failed(APIError::InvalidResponse{});
    ++parts->saves;
    const auto saved = co_await parts->credentialStore->save(*std::move(credential));
    if (!saved)
        co_return failed(APIError::SessionStorage{saved.error().errorDescription()});

    auto answer = co_await decode<AuthenticationResponse>(parts, std::move(response->body));
    if (!answer) {
        co_await forget(parts);
        co_return failed(std::move(answer.error()));
    }
    co_return std::move(answer->user);
}

QCoro::Task<bool> checkSession(std::shared_ptr<APIClientParts> parts)
{
    const int saves = parts->saves;
    const auto loaded = co_await parts->credentialStore->load();
    if (loaded) {
        const std::optional<SessionCredential> &credential = *loaded;
        if (!credential)
            co_return false;
        if (!credential->isExpired(parts->clock->now()))
            co_return true;
    }
    co_await forgetWhatWasLoaded(parts, saves);
    co_return false;
}

QCoro::Task<void> closeSession(std::shared_ptr<APIClientParts> parts)
{
    Call call = postOf("/auth/logout", emptyBody());
    const auto answer = co_await exchange(parts, std::move(call));
    // Who has just declined to unlock the store, or waited for it in vain, is not asked again.
    const bool storeFailed = !answer && answer.error().is<APIError::SessionStorage>();
    co_await forget(parts, storeFailed ? KeychainPrompt::Forbidden : KeychainPrompt::Allowed);
}

template <typename T> APITask<T> immediately(T value)
{
    co_return value;
}

} // namespace

APIClient::APIClient(QUrl baseURL, std::shared_ptr<HttpSession> session,
    std::shared_ptr<SessionCredentialStoring> credentialStore, std::shared_ptr<const Clock> clock)
    : m_parts(std::make_shared<APIClientParts>())
{
    m_parts->baseURL = std::move(baseURL);
    m_parts->session = std::move(session);
    m_parts->credentialStore = std::move(credentialStore);
    m_parts->clock = std::move(clock);
}

APIClient::~APIClient() = default;

QCoro::Task<bool> APIClient::hasValidSession()
{
    return checkSession(m_parts);
}

APITask<UserProfile> APIClient::signIn(QString email, QString password)
{
    return openSession(m_parts, std::move(email), std::move(password));
}

APITask<UserProfile> APIClient::fetchProfile()
{
    return ask<UserProfile>(m_parts, getOf("/auth/profile"));
}

APITask<QList<Subscription>> APIClient::fetchSubscriptions()
{
    return ask<QList<Subscription>>(m_parts, getOf("/subscriptions"));
}

APITask<QList<SubscriptionTemplate>> APIClient::searchTemplates(QString query, qint64 limit)
{
    constexpr qsizetype shortest = 2;
    constexpr qint64 fewest = 1;
    constexpr qint64 most = 20;
    const QString trimmed = query.trimmed();
    if (graphemesOf(trimmed).size() < shortest)
        return immediately(QList<SubscriptionTemplate>());
    return ask<QList<SubscriptionTemplate>>(m_parts,
        getOf("/templates/search?q=" + percentEncodedQueryValue(trimmed)
            + "&limit=" + QByteArray::number(std::clamp(limit, fewest, most))));
}

APITask<Subscription> APIClient::createSubscription(CreateSubscriptionRequest request)
{
    return ask<Subscription>(m_parts, postOf("/subscriptions", encodeJson(request)));
}

APITask<Subscription> APIClient::cancelSubscription(QUuid id)
{
    return change(m_parts, subscriptionPath(id, "cancel"));
}

APITask<Subscription> APIClient::uncancelSubscription(QUuid id)
{
    return change(m_parts, subscriptionPath(id, "uncancel"));
}

QCoro::Task<void> APIClient::signOut()
{
    return closeSession(m_parts);
}

} // namespace orbitledge
