#include "service/APIClient.h"

#include "model/RecordCodecs.h"
#include "model/UuidText.h"
#include "platform/curl/CurlHttpSession.h"
#include "service/AccountData.h"
#include "service/SessionCredentialStore.h"
#include "support/FakeKeychain.h"
#include "support/FaultServer.h"
#include "support/SampleRecords.h"
#include "support/StoppedClock.h"
#include "support/StretchWatch.h"
#include "support/TestMain.h"

#include <algorithm>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const SessionCredential credential{u"secret-value"_s, *Instant::fromText("2026-03-20T00:00:00Z")};

QByteArray userJson()
{
    return "{\"user\":" + encodeJson(sampleProfile()) + '}';
}

QByteArray listJson(int count)
{
    QByteArray list = "[";
    for (int i = 0; i < count; ++i)
        list += (i == 0 ? "" : ",") + encodeJson(sampleSubscription(i));
    return list + ']';
}

QByteArray mutationJson()
{
    return "{\"message\":\"Done\",\"subscription\":" + encodeJson(sampleSubscription()) + '}';
}

/// The record without what only some answers hold.
template <typename T> QString describe(const tl::expected<T, APIError> &result)
{
    return result ? u"success"_s : result.error().errorDescription();
}

class SessionThatIsNoHttp final : public HttpSession {
public:
    QCoro::Task<tl::expected<HttpResponse, TransportFailure>> send(HttpRequest /*request*/) override
    {
        co_return HttpResponse{.statusCode = std::nullopt, .headers = {}, .body = "{}"};
    }
};

} // namespace

/// The client with the real transport against a server on loopback.
class APIClientTest : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<FaultServer> m_server;
    std::shared_ptr<FakeKeychain> m_keychain;
    std::shared_ptr<SessionCredentialStore> m_store;
    std::shared_ptr<StoppedClock> m_clock;
    std::shared_ptr<APIClient> m_client;

    void makeClient(const QUrl &baseURL)
    {
        HttpSessionConfiguration configuration;
        configuration.requestTimeout = 1s;
        configuration.resourceTimeout = 2s;
        m_client = std::make_shared<APIClient>(
            baseURL, std::make_shared<CurlHttpSession>("Agent/1", configuration), m_store, m_clock);
    }

    void storeCredential(const SessionCredential &value = credential)
    {
        QVERIFY(QCoro::waitFor(m_store->save(value)));
    }

    [[nodiscard]] std::optional<SessionCredential> stored() const
    {
        return QCoro::waitFor(m_store->load()).value_or(std::nullopt);
    }

    /// What a request must look like, to the byte.
    [[nodiscard]] QByteArray expected(const QByteArray &method, const QByteArray &target, const char *cookie,
        const std::optional<QByteArray> &body = {}) const
    {
        QByteArray text = method + ' ' + target
            + " HTTP/1.1\r\nHost: 127.0.0.1:" + QByteArray::number(m_server->port())
            + "\r\nAccept-Encoding: gzip\r\nAccept: application/json\r\n";
        if (body)
            text += "Content-Type: application/json\r\n";
        if (cookie != nullptr)
            text += "Cookie: orbitledge_user_session=" + QByteArray(cookie) + "\r\n";
        text += "User-Agent: Agent/1\r\n";
        if (body)
            text += "Content-Length: " + QByteArray::number(body->size()) + "\r\n";
        return text + "\r\n" + body.value_or(QByteArray());
    }

private Q_SLOTS:
    void init()
    {
        m_server = std::make_unique<FaultServer>();
        m_keychain = std::make_shared<FakeKeychain>();
        m_store = std::make_shared<SessionCredentialStore>(
            m_keychain, u"app.example"_s, u"session"_s, u"Example session"_s);
        m_clock = std::make_shared<StoppedClock>(*Instant::fromText("2026-03-18T12:00:00Z"));
        makeClient(m_server->url());
    }

    void cleanup() { m_client.reset(); }

    // The endpoints

    void shouldAskForTheProfile()
    {
        storeCredential();
        m_server->answerAll(FaultServer::whole(200, encodeJson(sampleProfile())));
        const auto profile = QCoro::waitFor(m_client->fetchProfile());
        QVERIFY2(profile, qUtf8Printable(describe(profile)));
        QVERIFY(*profile == sampleProfile());
        QCOMPARE(m_server->requests(), QList{expected("GET", "/auth/profile", "secret-value")});
    }

    void shouldAskForTheSubscriptions()
    {
        storeCredential();
        m_server->answerAll(FaultServer::whole(200, listJson(3)));
        const auto list = QCoro::waitFor(m_client->fetchSubscriptions());
        QVERIFY2(list, qUtf8Printable(describe(list)));
        QVERIFY(*list == sampleSnapshot(3).subscriptions);
        QCOMPARE(m_server->requests(), QList{expected("GET", "/subscriptions", "secret-value")});
    }

    void shouldCreateASubscription()
    {
        storeCredential();
        m_server->answerAll(FaultServer::whole(201, encodeJson(sampleSubscription())));
        CreateSubscriptionRequest request;
        request.name = u"Caf\u00e9 \"Z\""_s;
        request.cost = *Decimal::fromText("9.90");
        request.billingCycle = u"monthly"_s;
        const auto created = QCoro::waitFor(m_client->createSubscription(request));
        QVERIFY2(created, qUtf8Printable(describe(created)));
        QVERIFY(*created == sampleSubscription());
        QCOMPARE(m_server->requests(),
            QList{expected("POST", "/subscriptions", "secret-value",
                "{\"name\":\"Caf\u00e9 \\\"Z\\\"\",\"cost\":9.9,\"billing_cycle\":\"monthly\"}"_ba)});
    }

    void shouldCancelAndTakeItBack()
    {
        storeCredential();
        m_server->answerAll(FaultServer::whole(200, mutationJson()));
        const QUuid id(u"{0a1b2c3d-4e5f-6789-abcd-ef0123456789}"_s);
        const auto cancelled = QCoro::waitFor(m_client->cancelSubscription(id));
        QVERIFY2(cancelled, qUtf8Printable(describe(cancelled)));
        const auto uncancelled = QCoro::waitFor(m_client->uncancelSubscription(id));
        QVERIFY(uncancelled && *uncancelled == sampleSubscription());
        const QByteArray path = "/subscriptions/0A1B2C3D-4E5F-6789-ABCD-EF0123456789/";
        QCOMPARE(m_server->requests(),
            (QList{expected("POST", path + "cancel", "secret-value", "{}"_ba),
                expected("POST", path + "uncancel", "secret-value", "{}"_ba)}));
    }

    void shouldSayWhyACancellationFailed()
    {
        storeCredential();
        m_server->answerAll(FaultServer::whole(409, "{\"error\":\"It has ended already.\"}"));
        const QUuid id = sampleSubscription().id;
        const APIError expected = APIError::RequestFailed{409, u"It has ended already."_s};
        const auto cancelled = QCoro::waitFor(m_client->cancelSubscription(id));
        QVERIFY(!cancelled && cancelled.error() == expected);
        const auto uncancelled = QCoro::waitFor(m_client->uncancelSubscription(id));
        QVERIFY(!uncancelled && uncancelled.error() == expected);
    }

    void shouldTakeEveryStatusFrom200To299ForSuccess()
    {
        storeCredential();
        for (const int status : {200, 201, 202, 206, 250, 299}) {
            m_server->answerNext(FaultServer::whole(status, encodeJson(sampleProfile())));
            QVERIFY2(QCoro::waitFor(m_client->fetchProfile()), QByteArray::number(status).constData());
        }
    }

    // Searching

    void shouldNotSearchForLessThanTwoCharacters_data()
    {
        QTest::addColumn<QString>("query");
        QTest::newRow("nothing") << QString();
        QTest::newRow("one letter between blanks") << u" a "_s;
        QTest::newRow("blanks") << u" \t\n\u00a0 "_s;
        QTest::newRow("one character of two code points") << u"e\u0301"_s;
        QTest::newRow("one flag") << u"\U0001F1E9\U0001F1EA"_s;
    }
    void shouldNotSearchForLessThanTwoCharacters()
    {
        QFETCH(QString, query);
        storeCredential();
        const int reads = m_keychain->reads;
        const auto found = QCoro::waitFor(m_client->searchTemplates(query, 50));
        QVERIFY(found && found->isEmpty());
        QCOMPARE(m_server->connectionCount(), 0);
        QCOMPARE(m_keychain->reads, reads);
    }

    void shouldSearch_data()
    {
        QTest::addColumn<QString>("query");
        QTest::addColumn<qint64>("limit");
        QTest::addColumn<QByteArray>("sent");
        const auto row = [](const char *name, const QString &query, qint64 limit, const char *sent) {
            QTest::newRow(name) << query << limit << QByteArray(sent);
        };
        row("a limit of zero", u"netf"_s, 0, "q=netf&limit=1");
        row("a limit below zero", u"netf"_s, -7, "q=netf&limit=1");
        row("a limit beyond the largest", u"netf"_s, 50, "q=netf&limit=20");
        row("a limit in between", u"netf"_s, 7, "q=netf&limit=7");
        row("blanks around it", u" \nnews paper\t"_s, 20, "q=news%20paper&limit=20");
        row("what stays", u"aZ09!$'()*+,-./:;?@_~"_s, 5, "q=aZ09!$'()*+,-./:;?@_~&limit=5");
        row("what does not", u"a&b=c#d%e\"<>[]\\^`{|}"_s, 5,
            "q=a%26b%3Dc%23d%25e%22%3C%3E%5B%5D%5C%5E%60%7B%7C%7D&limit=5");
        row("other scripts", u"\u00fc\u65e5\U0001F600"_s, 5, "q=%C3%BC%E6%97%A5%F0%9F%98%80&limit=5");
        row("dots", u".."_s, 5, "q=..&limit=5");
    }
    void shouldSearch()
    {
        QFETCH(QString, query);
        QFETCH(qint64, limit);
        QFETCH(QByteArray, sent);
        storeCredential();
        m_server->answerAll(FaultServer::whole(200, "[]"));
        const auto found = QCoro::waitFor(m_client->searchTemplates(query, limit));
        QVERIFY2(found, qUtf8Printable(describe(found)));
        QCOMPARE(m_server->requests(), QList{expected("GET", "/templates/search?" + sent, "secret-value")});
    }

    // Signing in

    void shouldSignIn()
    {
        storeCredential(); // another one, which must not be sent
        m_server->answerAll(FaultServer::whole(200, userJson(),
            "Set-Cookie: other=1\r\nSet-Cookie: orbitledge_user_session=abc; Path=/; HttpOnly; "
            "Expires=Wed, 25 Mar 2026 12:00:00 GMT\r\nSet-Cookie: orbitledge_user_session=second\r\n"));
        const auto profile = QCoro::waitFor(m_client->signIn(u"ada@example.com"_s, u"p\u00e4ss \"word\" "_s));
        QVERIFY2(profile, qUtf8Printable(describe(profile)));
        QVERIFY(*profile == sampleProfile());
        QCOMPARE(m_server->requests(),
            QList{expected("POST", "/auth/login", nullptr,
                "{\"email\":\"ada@example.com\",\"password\":\"p\u00e4ss \\\"word\\\" \"}"_ba)});
        QVERIFY(stored() == (SessionCredential{u"abc"_s, *Instant::fromText("2026-03-25T12:00:00Z")}));
    }

    void shouldKeepACookieWithoutExpiryForSevenDays()
    {
        m_server->answerAll(
            FaultServer::whole(200, userJson(), "Set-Cookie: orbitledge_user_session=abc\r\n"));
        QVERIFY(QCoro::waitFor(m_client->signIn(u"a@b"_s, u"p"_s)));
        QVERIFY(stored() == (SessionCredential{u"abc"_s, *Instant::fromText("2026-03-25T12:00:00Z")}));
    }

    void shouldRefuseASignInWithoutTheCookie_data()
    {
        QTest::addColumn<QByteArray>("headers");
        const auto row
            = [](const char *name, const char *headers) { QTest::newRow(name) << QByteArray(headers); };
        row("no cookie", "");
        row("another cookie", "Set-Cookie: session=abc\r\n");
        row("another letter case", "Set-Cookie: Orbitledge_User_Session=abc\r\n");
        row("no value", "Set-Cookie: orbitledge_user_session=; Path=/\r\n");
        row("the first one has no value",
            "Set-Cookie: orbitledge_user_session=\r\nSet-Cookie: orbitledge_user_session=abc\r\n");
        row("for another domain", "Set-Cookie: orbitledge_user_session=abc; Domain=example.com\r\n");
        row("a value that could not be sent back", "Set-Cookie: orbitledge_user_session=a\tb\r\n");
        row("malformed", "Set-Cookie: orbitledge_user_session\r\nSet-Cookie: ;;;=\r\n");
    }
    void shouldRefuseASignInWithoutTheCookie()
    {
        QFETCH(QByteArray, headers);
        m_server->answerAll(FaultServer::whole(200, userJson(), headers));
        const auto profile = QCoro::waitFor(m_client->signIn(u"a@b"_s, u"p"_s));
        QCOMPARE(describe(profile), u"The server returned an invalid response."_s);
        QVERIFY(profile.error() == APIError(APIError::InvalidResponse{}));
        QVERIFY(!stored());
    }

    void shouldFindTheCookieAmongThousands()
    {
        QByteArray headers;
        for (int i = 0; i < 2000; ++i)
            headers += "Set-Cookie: c" + QByteArray::number(i) + "=,;=;Expires=x;;Domain\r\n";
        m_server->answerAll(FaultServer::whole(
            200, userJson(), headers + "set-cookie: orbitledge_user_session=abc; Max-Age=60\r\n"));
        QVERIFY(QCoro::waitFor(m_client->signIn(u"a@b"_s, u"p"_s)));
        QVERIFY(stored() == (SessionCredential{u"abc"_s, *Instant::fromText("2026-03-18T12:01:00Z")}));
    }

    void shouldKeepNothingOfASignInThatCannotBeRead()
    {
        m_server->answerAll(
            FaultServer::whole(200, "{\"user\":{}}", "Set-Cookie: orbitledge_user_session=abc\r\n"));
        const auto profile = QCoro::waitFor(m_client->signIn(u"a@b"_s, u"p"_s));
        QVERIFY(profile.error()
            == APIError(APIError::Decoding{u"The data couldn\u2019t be read because it is missing."_s}));
        QVERIFY(!stored());
        QVERIFY(m_keychain->removals == QList{KeychainPrompt::Forbidden});
    }

    void shouldTellThatTheStoreFailed()
    {
        m_keychain->failure = KeychainStatus::UserCanceled;
        m_server->answerAll(
            FaultServer::whole(200, userJson(), "Set-Cookie: orbitledge_user_session=abc\r\n"));
        const auto profile = QCoro::waitFor(m_client->signIn(u"a@b"_s, u"p"_s));
        QCOMPARE(describe(profile),
            u"The session could not be stored securely: Keychain error: Unlocking the keyring was cancelled."_s);
        m_keychain->failure.reset();
        QVERIFY(!stored());
    }

    // The session

    void shouldSendNothingOfAnExpiredSession()
    {
        storeCredential({u"old"_s, m_clock->now()});
        m_server->answerAll(FaultServer::whole(200, encodeJson(sampleProfile())));
        QVERIFY(QCoro::waitFor(m_client->fetchProfile()));
        QCOMPARE(m_server->requests(), QList{expected("GET", "/auth/profile", nullptr)});
        QVERIFY(!stored());
    }

    void shouldSendASessionUntilItsLastMoment()
    {
        storeCredential(
            {u"fresh"_s, Instant::fromMillisecondsSinceEpoch(m_clock->now().millisecondsSinceEpoch() + 1)});
        m_server->answerAll(FaultServer::whole(200, encodeJson(sampleProfile())));
        QVERIFY(QCoro::waitFor(m_client->fetchProfile()));
        QCOMPARE(m_server->requests(), QList{expected("GET", "/auth/profile", "fresh")});
    }

    void shouldAskWithoutASessionWhereThereIsNone()
    {
        m_server->answerAll(FaultServer::whole(401, "{\"error\":\"Sign in first.\"}"));
        const auto profile = QCoro::waitFor(m_client->fetchProfile());
        QVERIFY(profile.error() == APIError(APIError::Unauthorized{u"Sign in first."_s}));
        QCOMPARE(m_server->requests(), QList{expected("GET", "/auth/profile", nullptr)});
    }

    void shouldForgetASessionThatTheServiceDoesNotKnow()
    {
        storeCredential();
        m_server->answerAll(FaultServer::whole(401, ""));
        const auto profile = QCoro::waitFor(m_client->fetchProfile());
        QVERIFY(profile.error() == APIError(APIError::Unauthorized{u"unauthorized"_s}));
        QVERIFY(!stored());
        QVERIFY(m_keychain->removals == QList{KeychainPrompt::Forbidden});
    }

    void shouldKeepTheSessionThroughEveryOtherFailure()
    {
        storeCredential();
        for (const int status : {302, 400, 403, 404, 429, 500, 503}) {
            m_server->answerNext(FaultServer::whole(status, "<html>"));
            QVERIFY(!QCoro::waitFor(m_client->fetchProfile()));
        }
        m_server->answerNext(FaultServer::whole(200, "<html>Welcome to the airport</html>"));
        const auto portal = QCoro::waitFor(m_client->fetchSubscriptions());
        QVERIFY(portal.error()
            == APIError(APIError::Decoding{
                u"The data couldn\u2019t be read because it isn\u2019t in the correct format."_s}));
        m_server->answerNext({FaultServer::Close{}});
        QVERIFY(QCoro::waitFor(m_client->fetchProfile()).error().is<APIError::Transport>());
        QVERIFY(stored() == credential);
    }

    void shouldNotAskWhereTheStoreFails()
    {
        m_keychain->failure = KeychainStatus::TimedOut;
        const auto profile = QCoro::waitFor(m_client->fetchProfile());
        QVERIFY(profile.error()
            == APIError(APIError::SessionStorage{u"Keychain error: The keyring did not answer in time."_s}));
        QCOMPARE(m_server->connectionCount(), 0);
    }

    void shouldTellWhetherThereIsASession()
    {
        QVERIFY(!QCoro::waitFor(m_client->hasValidSession()));
        QVERIFY(m_keychain->removals.isEmpty());
        storeCredential();
        QVERIFY(QCoro::waitFor(m_client->hasValidSession()));
        QVERIFY(stored() == credential);

        m_clock->set(credential.expiresAt);
        QVERIFY(!QCoro::waitFor(m_client->hasValidSession()));
        QVERIFY(!stored());

        m_keychain->items[{u"app.example"_s, u"session"_s}] = "{}";
        QVERIFY(!QCoro::waitFor(m_client->hasValidSession()));
        QVERIFY(m_keychain->items.isEmpty());

        m_keychain->failure = KeychainStatus::AuthFailed;
        QVERIFY(!QCoro::waitFor(m_client->hasValidSession()));
        QVERIFY(!m_keychain->removals.contains(KeychainPrompt::Allowed));
        QCOMPARE(m_server->connectionCount(), 0);
    }

    void shouldNotForgetWhatWasStoredMeanwhile_data()
    {
        QTest::addColumn<bool>("isExpired");
        QTest::addColumn<bool>("isRequest");
        QTest::newRow("looking, the store failed") << false << false;
        QTest::newRow("looking, it has run out") << true << false;
        QTest::newRow("a request, it has run out") << true << true;
    }
    void shouldNotForgetWhatWasStoredMeanwhile()
    {
        QFETCH(const bool, isExpired);
        QFETCH(const bool, isRequest);
        storeCredential();
        if (isExpired)
            m_clock->set(credential.expiresAt);
        else
            m_keychain->failure = KeychainStatus::TimedOut;
        m_keychain->hold = std::make_shared<Completion>();
        const auto hold = m_keychain->hold;
        m_server->answerAll(FaultServer::whole(
            200, userJson(), "Set-Cookie: orbitledge_user_session=new; Max-Age=86400\r\n"));
        std::optional<QCoro::Task<bool>> looking;
        std::optional<APITask<UserProfile>> fetching;
        if (isRequest)
            fetching.emplace(m_client->fetchProfile());
        else
            looking.emplace(m_client->hasValidSession());
        QVERIFY(!m_keychain->hold);
        m_keychain->failure.reset();
        QVERIFY(QCoro::waitFor(m_client->signIn(u"ada@example.com"_s, u"password"_s)));
        hold->complete();
        if (isRequest)
            (void)QCoro::waitFor(*std::move(fetching));
        else
            QVERIFY(!QCoro::waitFor(*std::move(looking)));
        QVERIFY(stored());
        QCOMPARE(stored()->value, u"new"_s);
        QVERIFY(m_keychain->removals.isEmpty());
    }

    void shouldNotForgetWhatWasStoredSinceTheServiceWasAsked_data()
    {
        QTest::addColumn<bool>("isExpired");
        QTest::newRow("another one") << false;
        QTest::newRow("one that has run out") << true;
    }
    void shouldNotForgetWhatWasStoredSinceTheServiceWasAsked()
    {
        QFETCH(const bool, isExpired);
        storeCredential();
        if (isExpired)
            m_clock->set(credential.expiresAt);
        m_server->answerWith([](const QByteArray &request) {
            if (request.startsWith("POST /auth/login "))
                return FaultServer::whole(
                    200, userJson(), "Set-Cookie: orbitledge_user_session=new; Max-Age=86400\r\n");
            if (request.contains("\r\nCookie: orbitledge_user_session=new\r\n"))
                return FaultServer::whole(200, encodeJson(sampleProfile()));
            FaultServer::Answer late = FaultServer::whole(401, "{}");
            late.insert(late.begin(), FaultServer::Wait{300ms});
            return late;
        });
        auto fetching = m_client->fetchProfile();
        QTRY_COMPARE(m_server->requests().size(), 1);
        QVERIFY(QCoro::waitFor(m_client->signIn(u"ada@example.com"_s, u"password"_s)));
        const auto old = QCoro::waitFor(std::move(fetching));
        QVERIFY(!old && old.error().is<APIError::Unauthorized>());
        QVERIFY(stored());
        QCOMPARE(stored()->value, u"new"_s);
        QVERIFY(QCoro::waitFor(m_client->fetchProfile()));
    }

    void shouldAskForWhoHasSignedInMeanwhile()
    {
        storeCredential();
        m_server->answerAll(FaultServer::whole(
            200, userJson(), "Set-Cookie: orbitledge_user_session=new; Max-Age=86400\r\n"));
        m_keychain->hold = std::make_shared<Completion>();
        const auto hold = m_keychain->hold;
        auto fetching = m_client->fetchProfile();
        QVERIFY(QCoro::waitFor(m_client->signIn(u"ada@example.com"_s, u"password"_s)));
        hold->complete();
        (void)QCoro::waitFor(std::move(fetching));
        QCOMPARE(m_server->requests().last(), expected("GET", "/auth/profile", "new"));
    }

    void shouldSignOut()
    {
        storeCredential();
        m_server->answerAll(FaultServer::whole(204, ""));
        QCoro::waitFor(m_client->signOut());
        QCOMPARE(m_server->requests(), QList{expected("POST", "/auth/logout", "secret-value", "{}"_ba)});
        QVERIFY(!stored());
        QVERIFY(m_keychain->removals == QList{KeychainPrompt::Allowed});
    }

    void shouldForgetTheSessionAlsoWhereTheServerIsDown()
    {
        storeCredential();
        m_server->answerAll({FaultServer::Reset{}});
        QCoro::waitFor(m_client->signOut());
        QVERIFY(!stored());

        storeCredential();
        const QUrl url = m_server->url();
        m_server.reset();
        makeClient(url);
        QCoro::waitFor(m_client->signOut());
        QVERIFY(!stored());
        // Whoever signs out may be asked to unlock the store for it.
        QVERIFY(m_keychain->removals == (QList{KeychainPrompt::Allowed, KeychainPrompt::Allowed}));
    }

    void shouldNotAskAgainWhoHasJustDeclinedToUnlockTheStore()
    {
        m_keychain->failure = KeychainStatus::UserCanceled;
        QCoro::waitFor(m_client->signOut());
        QVERIFY(m_keychain->removals == QList{KeychainPrompt::Forbidden});
    }

    // Addresses

    void shouldDropThePathOfTheBase_data()
    {
        QTest::addColumn<QString>("base");
        for (const char *base : {"", "/", "/api", "/api/", "/api/v1/?query=1", "/a%20b#fragment"})
            QTest::newRow(*base != '\0' ? base : "(none)") << QString::fromLatin1(base);
    }
    void shouldDropThePathOfTheBase()
    {
        QFETCH(QString, base);
        makeClient(QUrl(u"http://127.0.0.1:%1%2"_s.arg(m_server->port()).arg(base)));
        m_server->answerAll(FaultServer::whole(200, "[]"));
        QVERIFY(QCoro::waitFor(m_client->searchTemplates(u"ab"_s, 1)));
        QCOMPARE(m_server->requests(), QList{expected("GET", "/templates/search?q=ab&limit=1", nullptr)});
    }

    void shouldFailWhereThereIsNoAddress()
    {
        makeClient(QUrl());
        QVERIFY(QCoro::waitFor(m_client->fetchProfile()).error() == APIError(APIError::InvalidResponse{}));
    }

    void shouldFailWhereTheAnswerIsNoHttp()
    {
        APIClient client(
            QUrl(u"https://example.com/"_s), std::make_shared<SessionThatIsNoHttp>(), m_store, m_clock);
        QCOMPARE(
            describe(QCoro::waitFor(client.fetchProfile())), u"The server returned an invalid response."_s);
    }

    void shouldKeepTheCookieAtHome()
    {
        storeCredential();
        FaultServer thief;
        thief.answerAll(FaultServer::whole(200, encodeJson(sampleProfile())));
        for (const QByteArray &target :
            {QByteArray("http://localhost:") + QByteArray::number(thief.port()) + "/",
                QByteArray("http://127.0.0.1:") + QByteArray::number(thief.port()) + "/auth/profile",
                QByteArray("https://127.0.0.1:") + QByteArray::number(m_server->port()) + "/"}) {
            m_server->answerNext(FaultServer::whole(307, "", "Location: " + target + "\r\n"));
            QVERIFY(QCoro::waitFor(m_client->fetchProfile()).error()
                == APIError(APIError::RequestFailed{307, u"temporarily redirected"_s}));
        }
        QCOMPARE(thief.connectionCount(), 0);
        // Home, it goes along.
        m_server->answerNext(FaultServer::whole(307, "", "Location: /moved\r\n"));
        m_server->answerNext(FaultServer::whole(200, encodeJson(sampleProfile())));
        QVERIFY(QCoro::waitFor(m_client->fetchProfile()));
        QCOMPARE(m_server->requests().last(), expected("GET", "/moved", "secret-value"));
    }

    // All statuses, and everything that goes wrong on the way

    void shouldTurnEveryStatusIntoItsError()
    {
        for (int status = 200; status <= 599; ++status) {
            storeCredential();
            m_server->answerNext(FaultServer::whole(
                status, "{\"message\":\"Because.\"}", "Retry-After: 2.1\r\nWWW-Authenticate: Basic\r\n"));
            const auto profile = QCoro::waitFor(m_client->fetchProfile());
            QVERIFY(!profile);
            APIError expectedError = APIError::RequestFailed{status, u"Because."_s};
            if (status < 300)
                expectedError
                    = APIError::Decoding{u"The data couldn\u2019t be read because it is missing."_s};
            else if (status == 401)
                expectedError = APIError::Unauthorized{u"Because."_s};
            else if (status == 403)
                expectedError = APIError::Forbidden{u"Because."_s};
            else if (status == 429)
                expectedError = APIError::RateLimited{2.1, u"Because."_s};
            // These have no body (RFC 9110, sections 15.3.5 and 15.4.5).
            if (status == 304)
                expectedError = APIError::RequestFailed{304, u"not modified"_s};
            if (status == 204)
                expectedError = APIError::Decoding{
                    u"The data couldn\u2019t be read because it isn\u2019t in the correct format."_s};
            QVERIFY2(profile.error() == expectedError,
                qUtf8Printable(u"%1: %2"_s.arg(status).arg(profile.error().errorDescription())));
            QCOMPARE(stored().has_value(), status != 401);
        }
        QCOMPARE(m_server->connectionCount(), 400);
    }

    void shouldWaitForWhatFollowsAnInterimStatus()
    {
        // From 100 to 199 it is never the answer, but one may follow (RFC 9110, section 15.2).
        storeCredential();
        for (int status = 100; status <= 199; ++status) {
            const QByteArray interim = "HTTP/1.1 " + QByteArray::number(status) + " Wait\r\n\r\n";
            m_server->answerNext({FaultServer::Send{interim}});
            QVERIFY(QCoro::waitFor(m_client->fetchProfile()).error()
                == APIError(APIError::Transport{u"The network connection was lost."_s}));
            if (status == 101) // which would be the end of HTTP on this connection
                continue;
            m_server->answerNext({FaultServer::Send{interim},
                FaultServer::Send{FaultServer::response(200, encodeJson(sampleProfile()))}});
            QVERIFY2(QCoro::waitFor(m_client->fetchProfile()), QByteArray::number(status).constData());
        }
    }

    void shouldTurnFaultsIntoTransportErrors_data()
    {
        QTest::addColumn<FaultServer::Answer>("answer");
        QTest::addColumn<QString>("message");
        const auto row = [](const char *name, FaultServer::Answer answer, const QString &message) {
            QTest::newRow(name) << std::move(answer) << message;
        };
        const QString lost = u"The network connection was lost."_s;
        const QString timedOut = u"The request timed out."_s;
        const QString damaged = u"The server\u2019s answer is damaged."_s;
        row("closed", {FaultServer::Close{}}, lost);
        row("reset", {FaultServer::Reset{}}, lost);
        row("mute", {FaultServer::StayMute{}}, timedOut);
        row("too slow", {FaultServer::Drip{FaultServer::response(200, encodeJson(sampleProfile())), 50ms}},
            timedOut);
        row("cut off",
            {FaultServer::Send{FaultServer::response(200, encodeJson(sampleProfile())).chopped(1)}}, lost);
        row("bad chunk", {FaultServer::Send{"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nx\r\n"}},
            lost);
        row("bad gzip", FaultServer::whole(200, "{}", "Content-Encoding: gzip\r\n"), damaged);
        row("no HTTP", {FaultServer::Send{"Hello\r\n\r\n"}}, damaged);
        row("circles", {}, u"The server redirects in circles."_s);
        row("too large", {FaultServer::Send{"HTTP/1.1 200 OK\r\nContent-Length: 134217729\r\n\r\n"}},
            u"The server\u2019s answer is too large."_s);
    }
    void shouldTurnFaultsIntoTransportErrors()
    {
        QFETCH(FaultServer::Answer, answer);
        QFETCH(QString, message);
        storeCredential();
        m_server->answerAll(
            answer.empty() ? FaultServer::whole(302, "", "Location: /subscriptions\r\n") : answer);
        const double stretch = longestStretch([&] {
            const auto list = QCoro::waitFor(m_client->fetchSubscriptions());
            QVERIFY(!list);
            QVERIFY2(list.error() == APIError(APIError::Transport{message}), qUtf8Printable(describe(list)));
        });
        QVERIFY2(stretch < 50, QByteArray::number(stretch).constData());
        QVERIFY(stored() == credential);
    }

    void shouldNotTellSecretsInErrors()
    {
        // Whatever goes wrong, and even where the server sends them back.
        storeCredential({u"cookie-secret"_s, credential.expiresAt});
        QStringList texts;
        const QList<FaultServer::Answer> answers{{FaultServer::Close{}},
            {FaultServer::Send{"password-secret"}},
            FaultServer::whole(200, "{\"user\":{\"id\":\"password-secret\"}}",
                "Set-Cookie: orbitledge_user_session=cookie-secret\r\n"),
            FaultServer::whole(200, "password-secret"),
            FaultServer::whole(307, "", "Location: http://cookie-secret/\r\n")};
        for (const auto &answer : answers) {
            m_server->answerNext(answer);
            texts.append(
                describe(QCoro::waitFor(m_client->signIn(u"ada@example.com"_s, u"password-secret"_s))));
            m_server->answerNext(answer);
            texts.append(describe(QCoro::waitFor(m_client->fetchProfile())));
        }
        QCOMPARE(texts.size(), 10);
        for (const QString &text : std::as_const(texts)) {
            QVERIFY(text != u"success"_s && !text.isEmpty());
            QVERIFY2(!text.contains(u"secret"), qUtf8Printable(text));
        }
    }

    // Waiting

    void shouldFetchProfileAndListAtOnce()
    {
        storeCredential();
        m_server->answerWith([](const QByteArray &request) {
            return FaultServer::whole(
                200, request.startsWith("GET /auth/profile ") ? encodeJson(sampleProfile()) : listJson(2));
        });
        const auto data = QCoro::waitFor(fetchAccountData(m_client));
        QVERIFY2(data, qUtf8Printable(describe(data)));
        QVERIFY(data->profile == sampleProfile());
        QCOMPARE(data->subscriptions.size(), 2);

        // The second is asked for although the first is not answered, and long before it is given up.
        m_client = std::make_shared<APIClient>(
            m_server->url(), std::make_shared<CurlHttpSession>("Agent/1"), m_store, m_clock);
        const qsizetype before = m_server->requests().size();
        m_server->answerWith(
            [](const QByteArray & /*request*/) -> FaultServer::Answer { return {FaultServer::StayMute{}}; });
        auto unanswered = fetchAccountData(m_client);
        QTRY_COMPARE_WITH_TIMEOUT(m_server->requests().size(), before + 2, 10'000);
        QVERIFY(!unanswered.isReady());
        m_server.reset();
        QVERIFY(!QCoro::waitFor(unanswered));
    }

    void shouldTellTheProfilesFailureFirst()
    {
        m_server->answerWith([](const QByteArray &request) {
            return FaultServer::whole(request.startsWith("GET /auth/profile ") ? 500 : 503, "");
        });
        QVERIFY(QCoro::waitFor(fetchAccountData(m_client)).error()
            == APIError(APIError::RequestFailed{500, u"internal server error"_s}));
        m_server->answerWith([](const QByteArray &request) {
            return request.startsWith("GET /auth/profile ")
                ? FaultServer::whole(200, encodeJson(sampleProfile()))
                : FaultServer::whole(503, "");
        });
        QVERIFY(QCoro::waitFor(fetchAccountData(m_client)).error()
            == APIError(APIError::RequestFailed{503, u"service unavailable"_s}));
    }

    void shouldEndWhatIsUnderWayWhenItGoes()
    {
        storeCredential();
        m_server->answerAll(
            {FaultServer::Wait{100ms}, FaultServer::Send{FaultServer::response(200, listJson(1))}});
        auto task = m_client->fetchSubscriptions();
        m_client.reset();
        QVERIFY(QCoro::waitFor(task));
    }

    void shouldNotHoldUpTheThreadWithALongList()
    {
        storeCredential();
        m_server->answerAll(FaultServer::whole(200, listJson(20'000)));
        const double stretch = longestStretch([&] {
            const auto list = QCoro::waitFor(m_client->fetchSubscriptions());
            QVERIFY(list);
            QCOMPARE(list->size(), 20'000);
        });
        QVERIFY2(stretch < 50, QByteArray::number(stretch).constData());
    }
};

ORBITLEDGE_TEST_MAIN(APIClientTest)
#include "APIClientTest.moc"
