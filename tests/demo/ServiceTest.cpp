#include "model/RecordCodecs.h"
#include "support/DemoService.h"
#include "support/HttpExchange.h"
#include "support/TestMain.h"

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QThread>

#include <algorithm>
#include <set>
#include <thread>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

using Answer = HttpExchange::Answer;

/// The real service in its own process, spoken to byte by byte.
class ServiceTest : public QObject {
    Q_OBJECT

    DemoService m_service;
    QByteArray m_cookie;

    HttpExchange http() const { return HttpExchange(m_service.port()); }

    /// JSON as it is easily read here: with single quotes.
    static QByteArray json(const char *text) { return QByteArray(text).replace('\'', '"'); }

    static QJsonObject object(const Answer &answer) { return QJsonDocument::fromJson(answer.body).object(); }

    /// The subscriptions of a session, read by the codec of the client.
    QList<Subscription> list(const QByteArray &cookie) const
    {
        const Answer answer = http().get("/subscriptions", cookie);
        return answer.status == 200
            ? decodeJson<QList<Subscription>>(answer.body).value_or(QList<Subscription>())
            : QList<Subscription>();
    }

    static Subscription named(const QList<Subscription> &all, const QString &name)
    {
        const auto found = std::ranges::find(all, name, &Subscription::name);
        return found == all.end() ? Subscription() : *found;
    }

    Subscription create(const QByteArray &cookie, const QByteArray &body) const
    {
        const Answer answer = http().post("/subscriptions", body, cookie);
        return answer.status == 201 ? decodeJson<Subscription>(answer.body).value_or(Subscription())
                                    : Subscription();
    }

    static QByteArray idText(const Subscription &subscription)
    {
        return subscription.id.toString(QUuid::WithoutBraces).toUtf8();
    }

    /// A form's own token, out of its page.
    static QByteArray formToken(const QByteArray &html)
    {
        static const QRegularExpression field(u"name=\"form_token\" value=\"([^\"]*)\""_s);
        return field.match(QString::fromUtf8(html)).captured(1).toUtf8();
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(m_service.start({}, {u"--today"_s, u"2026-03-18"_s}), qPrintable(m_service.problem()));
        m_cookie = http().signIn(DemoService::email, DemoService::password);
        QVERIFY(!m_cookie.isEmpty());
        QVERIFY(m_service.addAccount(u"ben@example.com"_s, "a long password", {u"--currency"_s, u"usd"_s}));
    }

    // Signing in and out

    void shouldHandOutASessionThatBrowsersKeepToThemselves()
    {
        const Answer answer
            = http().post("/auth/login", json("{'email':' ADA@example.com','password':'orbit-ledger'}"));
        QCOMPARE(answer.status, 200);
        const auto decoded = decodeJson<AuthenticationResponse>(answer.body);
        QVERIFY(decoded);
        QCOMPARE(decoded->user.email, u"ada@example.com"_s);
        QCOMPARE(decoded->user.defaultCurrency, u"EUR"_s);
        const QByteArray cookie = answer.header("Set-Cookie");
        static const QRegularExpression form(
            u"^orbitledge_user_session=[A-Za-z0-9_-]{43}; Path=/; Max-Age=604800; Expires=[A-Z][a-z]{2}, "
            "\\d\\d [A-Z][a-z]{2} \\d{4} \\d\\d:\\d\\d:\\d\\d GMT; HttpOnly; SameSite=Lax$"_s);
        QVERIFY2(form.match(QString::fromLatin1(cookie)).hasMatch(), cookie.constData());

        const auto profile = decodeJson<UserProfile>(http().get("/auth/profile", answer.cookie()).body);
        QVERIFY(profile);
        QCOMPARE(*profile, decoded->user);
    }

    void shouldEndASessionForGood()
    {
        const QByteArray cookie = http().signIn(DemoService::email, DemoService::password);
        const Answer answer = http().post("/auth/logout", "{}", cookie);
        QCOMPARE(answer.status, 200);
        QVERIFY(answer.header("Set-Cookie").contains("Max-Age=0"));
        QCOMPARE(http().get("/auth/profile", cookie).status, 401);
        QCOMPARE(http().get("/auth/profile", m_cookie).status, 200);
    }

    void shouldNotTellAWrongPasswordFromAnUnknownEmail()
    {
        const Answer wrong
            = http().post("/auth/login", json("{'email':'ada@example.com','password':'guess'}"));
        const Answer unknown
            = http().post("/auth/login", json("{'email':'nobody@example.com','password':'guess'}"));
        QCOMPARE(wrong.status, 401);
        QCOMPARE(unknown.status, 401);
        QCOMPARE(wrong.body, unknown.body);
        QCOMPARE(object(wrong)[u"error"_s].toString(), u"The e-mail or the password is wrong."_s);
        QVERIFY(wrong.header("Set-Cookie").isEmpty());
    }

    void shouldForgetSessionsWhenTheirTimeIsOver()
    {
        DemoService brief;
        QVERIFY2(brief.start({}, {u"--session-lifetime"_s, u"4"_s}), qPrintable(brief.problem()));
        const HttpExchange other(brief.port());
        const QByteArray cookie = other.signIn(DemoService::email, DemoService::password);
        QCOMPARE(other.get("/auth/profile", cookie).status, 200);
        Answer answer;
        QTRY_VERIFY_WITH_TIMEOUT((answer = other.get("/auth/profile", cookie)).status == 401, 20'000);
        QCOMPARE(object(answer)[u"error_code"_s].toString(), u"session_expired"_s);
        // A page leads to the sign-in, and says why.
        const Answer page = other.get("/calendar", cookie);
        QCOMPARE(page.status, 303);
        QCOMPARE(page.header("Location"), "/login?next=/calendar&expired=1"_ba);
    }

    void shouldSlowDownGuessesButCountNoSuccess()
    {
        QVERIFY(m_service.addAccount(u"cleo@example.com"_s, "another password"));
        for (int i = 0; i < 8; ++i)
            QVERIFY(!http().signIn(u"cleo@example.com"_s, u"another password"_s).isEmpty());
        for (int i = 0; i < 5; ++i)
            QCOMPARE(
                http().post("/auth/login", json("{'email':'Cleo@example.com','password':'x'}")).status, 401);
        const Answer refused
            = http().post("/auth/login", json("{'email':'cleo@example.com','password':'another password'}"));
        QCOMPARE(refused.status, 429);
        const int wait = refused.header("Retry-After").toInt();
        QVERIFY(wait > 0 && wait <= 60);
        // Nobody else has to wait, whether there is such an account or not.
        QVERIFY(!http().signIn(DemoService::email, DemoService::password).isEmpty());
        for (int i = 0; i < 5; ++i)
            QCOMPARE(
                http().post("/auth/login", json("{'email':'ghost@example.com','password':'x'}")).status, 401);
        QCOMPARE(
            http().post("/auth/login", json("{'email':'ghost@example.com','password':'x'}")).status, 429);
    }

    void shouldRefuseWhoIsNotSignedIn_data()
    {
        QTest::addColumn<QByteArray>("method");
        QTest::addColumn<QByteArray>("path");
        QTest::newRow("profile") << "GET"_ba << "/auth/profile"_ba;
        QTest::newRow("list") << "GET"_ba << "/subscriptions"_ba;
        QTest::newRow("search") << "GET"_ba << "/templates/search?q=tide"_ba;
        QTest::newRow("create") << "POST"_ba << "/subscriptions"_ba;
        QTest::newRow("cancel") << "POST"_ba
                                << "/subscriptions/0fbf5658-8245-5942-a253-a5137740b2c9/cancel"_ba;
        QTest::newRow("log out") << "POST"_ba << "/auth/logout"_ba;
    }
    void shouldRefuseWhoIsNotSignedIn()
    {
        QFETCH(QByteArray, method);
        QFETCH(QByteArray, path);
        for (const QByteArray &cookie : {""_ba, "orbitledge_user_session=made-up"_ba,
                 "orbitledge_user_session="_ba, "orbitledge_user_session=" + QByteArray(5'000, 'x')}) {
            const Answer answer
                = method == "GET" ? http().get(path, cookie) : http().post(path, "{}", cookie);
            QCOMPARE(answer.status, 401);
            QVERIFY(!object(answer)[u"error"_s].toString().isEmpty());
        }
    }

    // The list

    void shouldLayTheSampleOutAroundToday()
    {
        const QList<Subscription> all = list(m_cookie);
        QCOMPARE(all.size(), 16);
        const auto next = [&all](const QString &name) { return named(all, name).nextBillingDate.text(); };
        QCOMPARE(next(u"Quiet Meadow"_s), u"2026-03-17"_s);
        QCOMPARE(next(u"Northlight Video"_s), u"2026-03-18"_s);
        QCOMPARE(next(u"Tidewater Music"_s), u"2026-03-19"_s);
        const Subscription foreign = named(all, u"Cloud Attic"_s);
        QCOMPARE(foreign.currency, u"USD"_s);
        QCOMPARE(foreign.convertedCurrency, u"EUR"_s);
        QCOMPARE(foreign.convertedCost, *Decimal::fromText("2.75"));
        QVERIFY(!named(all, u"Northlight Video"_s).convertedCost);
        QVERIFY(named(all, u"Old Gazette"_s).cancellationDate);
        QCOMPARE(named(all, u"Puzzle Club"_s).status, u"paused"_s);
        QVERIFY(named(all, u"Arcade Cellar"_s).trialEndDate);
    }

    void shouldMoveRenewalsOnAsDaysPass()
    {
        DemoService service;
        QVERIFY2(service.start({}, {u"--today"_s, u"2026-01-30"_s}), qPrintable(service.problem()));
        QByteArray cookie = HttpExchange(service.port()).signIn(DemoService::email, DemoService::password);
        const Answer created = HttpExchange(service.port())
                                   .post("/subscriptions",
                                       json("{'name':'Month\\u0027s end','cost':1,'billing_cycle':'monthly',"
                                            "'next_billing_date':'2026-01-31'}"),
                                       cookie);
        QCOMPARE(created.status, 201);
        const auto renewalOn = [&](const QString &today) -> QString {
            if (!service.start(service.dataFolder(), {u"--today"_s, today}))
                return service.problem();
            const Answer answer = HttpExchange(service.port()).get("/subscriptions", cookie);
            const auto all = decodeJson<QList<Subscription>>(answer.body);
            return all ? named(*all, u"Month's end"_s).nextBillingDate.text() : QString();
        };
        QCOMPARE(renewalOn(u"2026-02-01"_s), u"2026-01-31"_s);
        QCOMPARE(renewalOn(u"2026-02-02"_s), u"2026-02-28"_s);
        QCOMPARE(renewalOn(u"2026-03-02"_s), u"2026-03-31"_s);
        QCOMPARE(renewalOn(u"2026-05-05"_s), u"2026-05-31"_s);
        // Cancelled ones stay where they ended.
        const auto all = decodeJson<QList<Subscription>>(
            HttpExchange(service.port()).get("/subscriptions", cookie).body);
        QVERIFY(all);
        QCOMPARE(named(*all, u"Old Gazette"_s).nextBillingDate.text(), u"2026-02-09"_s);
    }

    void shouldCreateWhatItThenLists()
    {
        const Answer answer = http().post("/subscriptions",
            json("{'name':' Łódź \\'Laundry\\' 日本 "
                 "','cost':1234.50,'currency':'pln','billing_cycle':'QUARTERLY',"
                 "'next_billing_date':'2026-04-01','trial_end_date':'2026-03-25','trial_notification_days':"
                 "3}"),
            m_cookie);
        QCOMPARE(answer.status, 201);
        const auto created = decodeJson<Subscription>(answer.body);
        QVERIFY(created);
        QCOMPARE(created->name, u"Łódź \"Laundry\" 日本"_s);
        QCOMPARE(created->cost, *Decimal::fromText("1234.5"));
        QCOMPARE(created->currency, u"PLN"_s);
        QCOMPARE(created->billingCycle, u"quarterly"_s);
        QCOMPARE(created->status, u"active"_s);
        QCOMPARE(created->convertedCurrency, u"EUR"_s);
        QCOMPARE(created->trialNotificationDays, 3);
        QCOMPARE(named(list(m_cookie), created->name), *created);
    }

    void shouldFillInTheProfilesCurrencyAndTheNextRenewal()
    {
        const QByteArray ben = http().signIn(u"ben@example.com"_s, u"a long password"_s);
        const Subscription created = create(ben, json("{'name':'Plain','cost':5,'billing_cycle':'weekly'}"));
        QCOMPARE(created.currency, u"USD"_s);
        QCOMPARE(created.nextBillingDate.text(), u"2026-03-25"_s);
        QVERIFY(!created.convertedCost);
    }

    void shouldCancelAndTakeBackWithIdsInAnyCase()
    {
        const Subscription made = create(m_cookie,
            json("{'name':'To cancel','cost':5,'billing_cycle':'monthly','next_billing_date':'2026-04-02'}"));
        const QByteArray path = "/subscriptions/" + idText(made).toUpper();
        const Answer cancelled = http().post(path + "/cancel", "{}", m_cookie);
        QCOMPARE(cancelled.status, 200);
        const auto response = decodeJson<SubscriptionMutationResponse>(cancelled.body);
        QVERIFY(response);
        QVERIFY(!response->message.isEmpty());
        QCOMPARE(response->subscription.status, u"cancelled"_s);
        QCOMPARE(response->subscription.cancellationDate, (LocalDate{2026, 4, 2}));
        QVERIFY(response->subscription.cancelledAt);
        QCOMPARE(named(list(m_cookie), u"To cancel"_s), response->subscription);

        QCOMPARE(http().post(path + "/cancel", "{}", m_cookie).status, 409);
        const auto back = decodeJson<SubscriptionMutationResponse>(
            http().post("/subscriptions/" + idText(made).toLower() + "/uncancel", "{}", m_cookie).body);
        QVERIFY(back);
        QCOMPARE(back->subscription.status, u"active"_s);
        QVERIFY(!back->subscription.cancelledAt && !back->subscription.cancellationDate);
        const Answer again = http().post(path + "/uncancel", "{}", m_cookie);
        QCOMPARE(again.status, 409);
        QCOMPARE(object(again)[u"error_code"_s].toString(), u"not_cancelled"_s);
    }

    void shouldKeepAccountsApart()
    {
        const QByteArray ben = http().signIn(u"ben@example.com"_s, u"a long password"_s);
        const QByteArray id = idText(named(list(m_cookie), u"Northlight Video"_s));
        QCOMPARE(http().post("/subscriptions/" + id + "/cancel", "{}", ben).status, 404);
        QCOMPARE(http().get("/subscriptions/" + id + "/edit", ben).status, 404);
        QCOMPARE(named(list(m_cookie), u"Northlight Video"_s).status, u"active"_s);
        QVERIFY(named(list(ben), u"Northlight Video"_s).id.isNull());
    }

    void shouldLetUnverifiedAccountsReadOnly()
    {
        QVERIFY(m_service.addAccount(u"dora@example.com"_s, "a long password", {u"--unverified"_s}));
        const QByteArray dora = http().signIn(u"dora@example.com"_s, u"a long password"_s);
        QCOMPARE(http().get("/subscriptions", dora).body, "[]"_ba);
        const Answer answer
            = http().post("/subscriptions", json("{'name':'x','cost':1,'billing_cycle':'monthly'}"), dora);
        QCOMPARE(answer.status, 403);
        QCOMPARE(object(answer)[u"error_code"_s].toString(), u"email_not_verified"_s);
        QCOMPARE(http().get("/subscriptions", dora).body, "[]"_ba);
    }

    void shouldSayWhichFieldItDoesNotAccept_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("field");
        const auto row = [](const char *name, const QByteArray &body, const char *field) {
            QTest::newRow(name) << body << QString::fromLatin1(field);
        };
        row("no name", json("{'cost':1,'billing_cycle':'monthly'}"), "name");
        row("blank name", json("{'name':'  ','cost':1,'billing_cycle':'monthly'}"), "name");
        row("long name",
            json("{'name':'") + QByteArray(201, 'x') + json("','cost':1,'billing_cycle':'monthly'}"), "name");
        row("name null", json("{'name':null,'cost':1,'billing_cycle':'monthly'}"), "name");
        row("cost as text", json("{'name':'x','cost':'9.99','billing_cycle':'monthly'}"), "cost");
        row("cost missing", json("{'name':'x','billing_cycle':'monthly'}"), "cost");
        row("cost negative", json("{'name':'x','cost':-1,'billing_cycle':'monthly'}"), "cost");
        row("cost absurd", json("{'name':'x','cost':1e30,'billing_cycle':'monthly'}"), "cost");
        row("cost beyond numbers", json("{'name':'x','cost':1e999,'billing_cycle':'monthly'}"), "cost");
        row("too many digits", json("{'name':'x','cost':1.001,'billing_cycle':'monthly'}"), "cost");
        row("unknown currency", json("{'name':'x','cost':1,'currency':'ZZZ','billing_cycle':'monthly'}"),
            "currency");
        row("unknown cycle", json("{'name':'x','cost':1,'billing_cycle':'daily'}"), "billing_cycle");
        row("no cycle", json("{'name':'x','cost':1}"), "billing_cycle");
        row("no such day",
            json("{'name':'x','cost':1,'billing_cycle':'monthly','next_billing_date':'2026-02-30'}"),
            "next_billing_date");
        row("far away",
            json("{'name':'x','cost':1,'billing_cycle':'monthly','next_billing_date':'9999-01-01'}"),
            "next_billing_date");
        row("trial", json("{'name':'x','cost':1,'billing_cycle':'monthly','trial_end_date':'soon'}"),
            "trial_end_date");
        row("category", json("{'name':'x','cost':1,'billing_cycle':'monthly','category_id':'x'}"),
            "category_id");
        row("unknown category",
            json("{'name':'x','cost':1,'billing_cycle':'monthly',"
                 "'category_id':'0fbf5658-8245-5942-a253-a5137740b2c9'}"),
            "category_id");
        row("notice without a trial",
            json("{'name':'x','cost':1,'billing_cycle':'monthly','trial_notification_days':2}"),
            "trial_notification_days");
    }
    void shouldSayWhichFieldItDoesNotAccept()
    {
        QFETCH(QByteArray, body);
        QFETCH(QString, field);
        const qsizetype before = list(m_cookie).size();
        const Answer answer = http().post("/subscriptions", body, m_cookie);
        QCOMPARE(answer.status, 422);
        const QJsonObject error = object(answer);
        QVERIFY2(error[u"details"_s].toString().startsWith(field + u": "_s), answer.body.constData());
        QVERIFY(error[u"error"_s].toString().endsWith(u'.'));
        QCOMPARE(error[u"error_code"_s].toString(), u"validation_failed"_s);
        QCOMPARE(list(m_cookie).size(), before);
    }

    void shouldRefuseWhatIsNoJsonObject_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("nothing") << ""_ba;
        QTest::newRow("broken") << json("{'name':");
        QTest::newRow("array") << "[]"_ba;
        QTest::newRow("more behind") << json("{'name':'x'} {}");
        QTest::newRow("half a character") << "{\"name\":\"\xC3\"}"_ba;
        QTest::newRow("deep") << QByteArray(100'000, '[');
    }
    void shouldRefuseWhatIsNoJsonObject()
    {
        QFETCH(QByteArray, body);
        for (const char *path : {"/subscriptions", "/auth/login"}) {
            const Answer answer = http().post(path, body, m_cookie);
            QCOMPARE(answer.status, 400);
            QCOMPARE(object(answer)[u"error_code"_s].toString(), u"malformed_json"_s);
        }
    }

    void shouldSearchTheCatalogue()
    {
        const auto search = [this](const QByteArray &query) {
            return decodeJson<QList<SubscriptionTemplate>>(
                http().get("/templates/search?" + query, m_cookie).body)
                .value_or(QList<SubscriptionTemplate>());
        };
        QCOMPARE(search("q=tidewater&limit=5").value(0).name, u"Tidewater Music"_s);
        QCOMPARE(search("q=TIDEWATER%20MUSIC").size(), 1);
        QCOMPARE(search("q=cin%C3%A9ma+etoile").value(0).name, u"Cinéma Étoile"_s);
        QCOMPARE(search("q=northlihgt").value(0).name, u"Northlight Video"_s);
        QCOMPARE(search("q=e&limit=20").size(), 20);
        QCOMPARE(search("q=e&limit=1").size(), 1);
        QCOMPARE(search("q=zzzzzz").size(), 0);
        for (const char *query : {"q=e&limit=0", "q=e&limit=21", "q=e&limit=x", "limit=3", "q=%20", ""})
            QCOMPARE(http().get(QByteArray("/templates/search?") + query, m_cookie).status, 422);
    }

    // What HTTP itself allows

    void shouldRefuseByMethodPathAndType()
    {
        QCOMPARE(http().get("/nothing", m_cookie).status, 404);
        QCOMPARE(http().get("/subscriptions/", m_cookie).status, 404);
        QCOMPARE(http().post("/subscriptions/not-an-id/cancel", "{}", m_cookie).status, 404);
        const Answer missing
            = http().post("/subscriptions/0fbf5658-8245-5942-a253-a5137740b2c9/cancel", "{}", m_cookie);
        QCOMPARE(missing.status, 404);
        QCOMPARE(object(missing)[u"error_code"_s].toString(), u"subscription_not_found"_s);

        const Answer method = http().get("/auth/login");
        QCOMPARE(method.status, 405);
        QCOMPARE(method.header("Allow"), "POST"_ba);
        const Answer both
            = http().raw("PUT /subscriptions HTTP/1.1\r\nHost: localhost\r\nContent-Length: 0\r\n\r\n");
        QCOMPARE(both.status, 405);
        QCOMPARE(both.header("Allow"), "GET, HEAD, POST"_ba);
        QCOMPARE(http().raw("BREW /subscriptions HTTP/1.1\r\nHost: localhost\r\n\r\n").status, 405);

        QCOMPARE(http().post("/subscriptions", "name=x", m_cookie, "text/plain").status, 415);
        QCOMPARE(http().post("/auth/login", "{}", {}, "application/x-www-form-urlencoded").status, 415);
        QCOMPARE(http().post("/auth/login", "{}", {}, "application/json; charset=utf-8").status, 422);
    }

    void shouldAnswerHeadWithoutABody()
    {
        const Answer answer = http().raw("HEAD /auth/profile HTTP/1.1\r\nHost: localhost\r\nCookie: "
                + m_cookie + "\r\nConnection: close\r\n\r\n",
            true);
        QCOMPARE(answer.status, 200);
        QVERIFY(answer.header("Content-Length").toInt() > 100);
        QVERIFY(answer.body.isEmpty());
    }

    void shouldServeLoopbackNamesOnly_data()
    {
        QTest::addColumn<QByteArray>("hosts");
        QTest::addColumn<int>("status");
        QTest::newRow("address") << "Host: 127.0.0.1:8420\r\n"_ba << 200;
        QTest::newRow("name") << "Host: LOCALHOST\r\n"_ba << 200;
        QTest::newRow("version 6") << "Host: [::1]:1\r\n"_ba << 200;
        QTest::newRow("other site") << "Host: evil.example\r\n"_ba << 421;
        QTest::newRow("looks alike") << "Host: 127.0.0.1.evil.example\r\n"_ba << 421;
        QTest::newRow("also alike") << "Host: localhost@evil.example\r\n"_ba << 421;
        QTest::newRow("none") << ""_ba << 400;
        QTest::newRow("two") << "Host: localhost\r\nHost: localhost\r\n"_ba << 400;
    }
    void shouldServeLoopbackNamesOnly()
    {
        QFETCH(QByteArray, hosts);
        QFETCH(int, status);
        const Answer answer = http().raw("GET / HTTP/1.1\r\n" + hosts + "\r\n");
        QCOMPARE(answer.status, status);
    }

    void shouldBoundWhatItReads()
    {
        const QByteArray megabyte(1 << 20, ' ');
        QCOMPARE(http().post("/auth/login", megabyte.chopped(2) + "{}").status, 422);
        QCOMPARE(http().post("/auth/login", megabyte + "{}").status, 413);
        const Answer far = http().raw("POST /auth/login HTTP/1.1\r\nHost: localhost\r\n"
                                      "Content-Length: 900000000\r\n\r\n"
            + megabyte + megabyte);
        QCOMPARE(far.status, 413);
        QCOMPARE(object(far)[u"error_code"_s].toString(), u"payload_too_large"_s);
        QCOMPARE(http().get("/" + QByteArray(9'000, 'x'), m_cookie).status, 414);
        QCOMPARE(http().get("/auth/profile", m_cookie).status, 200);
    }

    void shouldRefuseUnclearLengths_data()
    {
        QTest::addColumn<QByteArray>("headers");
        QTest::newRow("two lengths") << "Content-Length: 2\r\nContent-Length: 20\r\n"_ba;
        QTest::newRow("no number") << "Content-Length: two\r\n"_ba;
        QTest::newRow("negative") << "Content-Length: -2\r\n"_ba;
        QTest::newRow("endless") << "Content-Length: 99999999999999999999999\r\n"_ba;
        QTest::newRow("and chunks") << "Content-Length: 2\r\nTransfer-Encoding: chunked\r\n"_ba;
    }
    void shouldRefuseUnclearLengths()
    {
        QFETCH(QByteArray, headers);
        QTcpSocket socket;
        socket.connectToHost(u"127.0.0.1"_s, m_service.port());
        QVERIFY(socket.waitForConnected());
        socket.write("POST /auth/login HTTP/1.1\r\nHost: localhost\r\nContent-Type: application/json\r\n"
            + headers + "\r\n2\r\n{}\r\n0\r\n\r\nGET /download HTTP/1.1\r\nHost: localhost\r\n\r\n");
        QCOMPARE(HttpExchange::read(socket).status, 400);
        // What follows must not be taken for another request.
        QCOMPARE(HttpExchange::read(socket).status, 0);
    }

    void shouldReadChunksAndAnswerInOrder()
    {
        QTcpSocket socket;
        socket.connectToHost(u"127.0.0.1"_s, m_service.port());
        QVERIFY(socket.waitForConnected());
        // Signing in takes longest, and still is answered first.
        socket.write("POST /auth/login HTTP/1.1\r\nHost: localhost\r\nContent-Type: application/json\r\n"
                     "Transfer-Encoding: chunked\r\n\r\n"
                     "19\r\n{\"email\":\"ada@example.com\r\n"
                     "1c\r\n\",\"password\":\"orbit-ledger\"}\r\n0\r\n\r\n"
                     "GET /download HTTP/1.1\r\nHost: localhost\r\n\r\n"
                     "GET /nothing HTTP/1.1\r\nHost: localhost\r\n\r\n");
        const Answer first = HttpExchange::read(socket);
        QCOMPARE(first.status, 200);
        QVERIFY(!first.header("Set-Cookie").isEmpty());
        QCOMPARE(HttpExchange::read(socket).status, 200);
        QCOMPARE(HttpExchange::read(socket).status, 404);
    }

    void shouldOutliveClientsThatHangUp()
    {
        for (int i = 0; i < 20; ++i) {
            QTcpSocket socket;
            socket.connectToHost(u"127.0.0.1"_s, m_service.port());
            QVERIFY(socket.waitForConnected());
            socket.write(
                "POST /auth/login HTTP/1.1\r\nHost: localhost\r\nContent-Type: application/json\r\n"
                "Content-Length: 52\r\n\r\n{\"email\":\"ada@example.com\",\"password\":\"orbit-ledger\"}");
            QVERIFY(socket.waitForBytesWritten());
            socket.abort();
        }
        QCOMPARE(http().get("/auth/profile", m_cookie).status, 200);
        QCOMPARE(m_service.errorOutput(), ""_ba);
    }

    void shouldCloseWhereAskedTo()
    {
        QTcpSocket socket;
        socket.connectToHost(u"127.0.0.1"_s, m_service.port());
        QVERIFY(socket.waitForConnected());
        socket.write("GET /download HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n");
        const Answer answer = HttpExchange::read(socket);
        QCOMPARE(answer.header("Connection"), "close"_ba);
        QVERIFY(socket.state() == QTcpSocket::UnconnectedState || socket.waitForDisconnected());
    }

    // Pages

    void shouldProtectItsPages()
    {
        const Answer page = http().get("/", m_cookie);
        QCOMPARE(page.status, 200);
        QCOMPARE(page.header("Content-Type"), "text/html; charset=utf-8"_ba);
        QCOMPARE(page.header("X-Content-Type-Options"), "nosniff"_ba);
        QCOMPARE(page.header("Referrer-Policy"), "same-origin"_ba);
        QCOMPARE(page.header("Cache-Control"), "no-store"_ba);
        const QByteArray policy = page.header("Content-Security-Policy");
        QVERIFY(policy.contains("default-src 'none'") && policy.contains("form-action 'self'")
            && policy.contains("frame-ancestors 'none'") && !policy.contains("script"));
        QVERIFY(page.body.contains("<html lang=\"en\">"));
        QVERIFY(!page.body.contains("<script"));
        QVERIFY(!page.body.contains("style=\""));
        QCOMPARE(http().get("/style.css").header("Content-Type"), "text/css; charset=utf-8"_ba);
        QCOMPARE(http().get("/icon.svg").status, 200);
    }

    void shouldShowTextsAsTexts()
    {
        const Subscription made = create(m_cookie,
            json("{'name':'<script>alert(\\u0027x\\u0027)</"
                 "script>&\\'','cost':3,'billing_cycle':'monthly','next_billing_date':'2026-03-20'}"));
        QVERIFY(!made.id.isNull());
        for (const QByteArray &path :
            {"/"_ba, "/calendar"_ba, QByteArray("/subscriptions/" + idText(made) + "/edit")}) {
            const QByteArray body = http().get(path, m_cookie).body;
            QVERIFY2(!body.contains("<script"), path.constData());
            QVERIFY2(body.contains("&lt;script&gt;alert(&#39;x&#39;)&lt;/script&gt;&amp;&quot;"),
                path.constData());
        }
        // Also what was typed and is not accepted.
        const QByteArray path = "/subscriptions/" + idText(made) + "/edit";
        const QByteArray token = formToken(http().get(path, m_cookie).body);
        const Answer refused = http().postForm(path,
            "form_token=" + token
                + "&action=save&name=%22%3E%3Cscript%3E&cost=%3Cb%3E&currency=%22%3E%3Ci%3E",
            m_cookie);
        QCOMPARE(refused.status, 422);
        QVERIFY(refused.body.contains("value=\"&quot;&gt;&lt;script&gt;\""));
        QVERIFY(refused.body.contains("value=\"&lt;b&gt;\""));
        QVERIFY(!refused.body.contains("<script") && !refused.body.contains("<i>")
            && !refused.body.contains("<b>\""));
    }

    void shouldAskPagesVisitorsToSignInFirstAndLeadThemBack()
    {
        const Answer asked = http().get("/calendar");
        QCOMPARE(asked.status, 303);
        QCOMPARE(asked.header("Location"), "/login?next=/calendar"_ba);
        const Answer page = http().get(asked.header("Location"));
        QCOMPARE(page.status, 200);
        const QByteArray cookie = page.cookie();
        QVERIFY(page.header("Set-Cookie").contains("HttpOnly; SameSite=Strict"));
        const QByteArray token = formToken(page.body);
        QCOMPARE(token.size(), 64);

        const auto logIn = [&](const QByteArray &fields, const QByteArray &with) {
            return http().postForm(
                "/login", "form_token=" + token + "&email=ada%40example.com" + fields, with);
        };
        const Answer wrong = logIn("&password=guess&next=/calendar", cookie);
        QCOMPARE(wrong.status, 401);
        QVERIFY(wrong.body.contains("The e-mail or the password is wrong."));
        QVERIFY(wrong.body.contains("value=\"ada@example.com\""));
        QVERIFY(!wrong.body.contains("guess"));
        QCOMPARE(logIn("&password=", cookie).status, 422);

        const Answer right = logIn("&password=orbit-ledger&next=%2Fcalendar", cookie);
        QCOMPARE(right.status, 303);
        QCOMPARE(right.header("Location"), "/calendar"_ba);
        QCOMPARE(http().get("/calendar", right.cookie()).status, 200);
        // Who is signed in already goes on at once.
        QCOMPARE(http().get("/login?next=/download", right.cookie()).header("Location"), "/download"_ba);

        for (const char *elsewhere :
            {"https%3A%2F%2Fevil.example", "%2F%2Fevil.example", "%2F%5Cevil.example"}) {
            const Answer away = logIn(QByteArray("&password=orbit-ledger&next=") + elsewhere, cookie);
            QCOMPARE(away.header("Location"), "/"_ba);
        }
        // Without the cookie that the page came with, the form is somebody else's.
        QCOMPARE(logIn("&password=orbit-ledger", {}).status, 403);
        QCOMPARE(
            http().postForm("/login", "email=ada%40example.com&password=orbit-ledger", cookie).status, 403);
    }

    void shouldAcceptItsOwnFormsOnly()
    {
        const Subscription made
            = create(m_cookie, json("{'name':'Guarded','cost':3,'billing_cycle':'monthly'}"));
        const QByteArray path = "/subscriptions/" + idText(made) + "/edit";
        QCOMPARE(http().postForm(path, "action=cancel", m_cookie).status, 403);
        QCOMPARE(
            http().postForm(path, "action=cancel&form_token=" + QByteArray(64, 'a'), m_cookie).status, 403);
        const QByteArray ben = http().signIn(u"ben@example.com"_s, u"a long password"_s);
        const QByteArray bens = formToken(http().get("/", ben).body);
        QCOMPARE(http().postForm(path, "action=cancel&form_token=" + bens, m_cookie).status, 403);
        QCOMPARE(http().post(path, "{}", m_cookie).status, 415);
        QCOMPARE(http().postForm("/logout", "", m_cookie).status, 403);
        const QByteArray token = formToken(http().get(path, m_cookie).body);
        QCOMPARE(http()
                     .post(path, "action=cancel&form_token=" + token, m_cookie,
                         "application/x-www-form-urlencoded", "Origin: https://evil.example\r\n")
                     .status,
            403);
        QCOMPARE(http()
                     .post("/subscriptions/" + idText(made) + "/cancel", "{}", m_cookie, "application/json",
                         "Origin: null\r\n")
                     .status,
            403);
        QCOMPARE(named(list(m_cookie), u"Guarded"_s).status, u"active"_s);

        const Answer done = http().postForm(path, "action=cancel&form_token=" + token, m_cookie);
        QCOMPARE(done.status, 303);
        QCOMPARE(done.header("Location"), path + "?done=cancelled");
        QCOMPARE(http().postForm(path, "action=cancel&form_token=" + token, m_cookie).status, 409);
        QCOMPARE(named(list(m_cookie), u"Guarded"_s).status, u"cancelled"_s);
    }

    void shouldKeepTheRhythmOfWhatIsEdited()
    {
        const Subscription made = create(m_cookie,
            json("{'name':'Rhythm','cost':3,'billing_cycle':'monthly','next_billing_date':'2026-01-31',"
                 "'trial_end_date':'2026-04-01','trial_notification_days':2}"));
        QCOMPARE(made.nextBillingDate.text(), u"2026-03-31"_s);
        const QByteArray path = "/subscriptions/" + idText(made) + "/edit";
        const QByteArray token = formToken(http().get(path, m_cookie).body);
        const Answer saved = http().postForm(path,
            "form_token=" + token
                + "&action=save&name=Rhythm&cost=4%2C50&currency=EUR&billing_cycle=monthly"
                  "&next_billing_date=2026-03-31&trial_end_date=2026-04-01",
            m_cookie);
        QCOMPARE(saved.status, 303);
        const Subscription edited = named(list(m_cookie), u"Rhythm"_s);
        QCOMPARE(edited.cost, *Decimal::fromText("4.5"));
        QCOMPARE(edited.trialNotificationDays, 2);
        QVERIFY(http().get("/calendar?month=2026-04", m_cookie).body.contains("2026-04-30"));
        const QByteArray may = http().get("/calendar?month=2026-05", m_cookie).body;
        // The 31st comes back after April.
        const auto lastDay = may.indexOf("datetime=\"2026-05-31\"");
        QVERIFY(lastDay > 0 && may.indexOf("Rhythm", lastDay) > 0);
    }

    void shouldShowAnyMonthOfTheCalendar()
    {
        const QByteArray march = http().get("/calendar", m_cookie).body;
        QVERIFY(march.contains("<h1>March 2026</h1>"));
        QVERIFY(march.contains("href=\"/calendar?month=2026-02\"")
            && march.contains("href=\"/calendar?month=2026-04\""));
        QCOMPARE(march.count("<time "), 31);
        QCOMPARE(http().get("/calendar?month=2024-02", m_cookie).body.count("<time "), 29);
        QCOMPARE(http().get("/calendar?month=2000-01", m_cookie).body.count("rel=\"prev\""), 0);
        for (const char *month : {"2026-13", "1999-12", "2200-01", "x", ""})
            QCOMPARE(http().get(QByteArray("/calendar?month=") + month, m_cookie).status, 422);
    }

    void shouldBeFriendlyAboutWhatIsNotThere()
    {
        const Answer page = http().get("/nowhere", m_cookie, "Accept: text/html\r\n");
        QCOMPARE(page.status, 404);
        // The first Accept header, which asks for JSON, is the one that counts.
        QVERIFY(page.header("Content-Type").startsWith("application/json"));
        const Answer browsers = http().raw("GET /nowhere HTTP/1.1\r\nHost: localhost\r\n"
                                           "Accept: text/html,application/xhtml+xml,*/*;q=0.8\r\n\r\n");
        QCOMPARE(browsers.status, 404);
        QVERIFY(browsers.body.contains("<h1>Nothing here</h1>"));
        QCOMPARE(
            http().get("/subscriptions/0fbf5658-8245-5942-a253-a5137740b2c9/edit", m_cookie).status, 404);
    }

    // What must not get lost

    void shouldFindEveryConfirmedWriteAfterACrash()
    {
        DemoService service;
        QVERIFY2(service.start(), qPrintable(service.problem()));
        QByteArray cookie = HttpExchange(service.port()).signIn(DemoService::email, DemoService::password);
        for (int i = 0; i < 5; ++i) {
            const QByteArray name = "Confirmed " + QByteArray::number(i);
            const Answer made
                = HttpExchange(service.port())
                      .post("/subscriptions",
                          json("{'name':'") + name + json("','cost':1,'billing_cycle':'monthly'}"), cookie);
            QCOMPARE(made.status, 201);
            service.kill();
            QVERIFY2(service.start(service.dataFolder()), qPrintable(service.problem()));
            // The session outlives the crash as well.
            const auto all = decodeJson<QList<Subscription>>(
                HttpExchange(service.port()).get("/subscriptions", cookie).body);
            QVERIFY(all);
            QCOMPARE(named(*all, QString::fromLatin1(name)), *decodeJson<Subscription>(made.body));
        }
    }

    void shouldLoseNoWriteOfFiftyClientsAtOnce()
    {
        constexpr int clients = 50;
        constexpr int rounds = 4;
        QVERIFY(m_service.addAccount(u"many@example.com"_s, "a long password"));
        QElapsedTimer time;
        time.start();
        std::array<int, clients> unexpected{};
        std::vector<std::thread> threads;
        for (int client = 0; client < clients; ++client) {
            threads.emplace_back([this, client, &unexpected] {
                const HttpExchange own(m_service.port());
                const QByteArray cookie = own.signIn(u"many@example.com"_s, u"a long password"_s);
                for (int round = 0; round < rounds; ++round) {
                    const QByteArray name = QByteArray::number(client) + '/' + QByteArray::number(round);
                    const Answer made = own.post("/subscriptions",
                        json("{'name':'") + name + json("','cost':1.25,'billing_cycle':'monthly'}"), cookie);
                    const auto created = decodeJson<Subscription>(made.body);
                    if (made.status != 201 || !created) {
                        ++unexpected.at(static_cast<std::size_t>(client));
                        continue;
                    }
                    // Even rounds end cancelled, and of two cancellations exactly one is the first.
                    if (round % 2 == 0) {
                        const QByteArray path = "/subscriptions/" + idText(*created) + "/cancel";
                        const int first = own.post(path, "{}", cookie).status;
                        const int second = own.post(path, "{}", cookie).status;
                        unexpected.at(static_cast<std::size_t>(client))
                            += first == 200 && second == 409 ? 0 : 1;
                    }
                }
            });
        }
        for (std::thread &thread : threads)
            thread.join();
        qInfo("%d clients, %d creations and %d cancellations in %lld ms", clients, clients * rounds,
            clients * rounds, static_cast<long long>(time.elapsed()));
        QCOMPARE(std::ranges::count(unexpected, 0), clients);

        const auto all = list(http().signIn(u"many@example.com"_s, u"a long password"_s));
        QCOMPARE(all.size(), clients * rounds);
        std::set<QString> names;
        for (const Subscription &subscription : all) {
            QVERIFY(names.insert(subscription.name).second);
            const bool isEven = subscription.name.back().digitValue() % 2 == 0;
            QCOMPARE(subscription.status, isEven ? u"cancelled"_s : u"active"_s);
        }
    }

    void shouldCancelOnceHoweverManyAskAtOnce()
    {
        const Subscription made
            = create(m_cookie, json("{'name':'Contested','cost':1,'billing_cycle':'monthly'}"));
        const QByteArray path = "/subscriptions/" + idText(made) + "/cancel";
        std::array<int, 16> statuses{};
        std::vector<std::thread> threads;
        for (int &status : statuses)
            threads.emplace_back([&] { status = http().post(path, "{}", m_cookie).status; });
        for (std::thread &thread : threads)
            thread.join();
        QCOMPARE(std::ranges::count(statuses, 200), 1);
        QCOMPARE(std::ranges::count(statuses, 409), 15);
    }

    // The program

    void shouldKeepDataAndSecretsToTheirOwner()
    {
        QCOMPARE(QFileInfo(m_service.dataFolder()).permissions() & ~QFile::Permissions(0x7000),
            QFile::ReadUser | QFile::WriteUser | QFile::ExeUser);
        QByteArray everything;
        QDirIterator files(m_service.dataFolder(), QDir::Files);
        while (files.hasNext()) {
            QFile file(files.next());
            QCOMPARE(file.permissions() & ~QFile::Permissions(0x7000), QFile::ReadUser | QFile::WriteUser);
            QVERIFY(file.open(QIODevice::ReadOnly));
            everything += file.readAll();
        }
        QVERIFY(everything.contains("$argon2id$"));
        QVERIFY(!everything.contains(DemoService::password.data()));
        QVERIFY(!everything.contains(m_cookie.mid(m_cookie.indexOf('=') + 1)));
        QCOMPARE(m_service.errorOutput(), ""_ba);
    }

    void shouldTellEverythingInItsHelp()
    {
        const auto help = DemoService::run({u"--help"_s});
        QCOMPARE(help.complaint(), "");
        QCOMPARE(help.errors, ""_ba);
        for (const char *word : {"--port", "--data", "--session-lifetime", "--today", "--populate",
                 "--add-account", "--currency", "--unverified", "--version", "/auth/login", "/auth/profile",
                 "/auth/logout", "/subscriptions/<id>/cancel", "/subscriptions/<id>/uncancel",
                 "/templates/search", "/calendar", "/download", "ada@example.com", "orbit-ledger"})
            QVERIFY2(help.output.contains(word), word);
        const auto version = DemoService::run({u"--version"_s});
        QVERIFY(version.output.startsWith("orbitledge-demo-service ") && version.output.endsWith('\n'));
    }

    void shouldSayInOneLineWhatKeepsItFromStarting_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode");
        QTest::newRow("unknown option") << QStringList({u"--prot"_s, u"1"_s}) << 2;
        QTest::newRow("no such port") << QStringList({u"--port"_s, u"70000"_s}) << 2;
        QTest::newRow("folder is a file") << QStringList({u"--data"_s, u"/dev/null"_s}) << 1;
        QTest::newRow("folder cannot be made") << QStringList({u"--data"_s, u"/proc/nothing/here"_s}) << 1;
    }
    void shouldSayInOneLineWhatKeepsItFromStarting()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, exitCode);
        const auto answer = DemoService::run(arguments);
        QCOMPARE(answer.exitCode, exitCode);
        QCOMPARE(answer.output, ""_ba);
        QCOMPARE(answer.errors.count('\n'), 1);
        QVERIFY(answer.errors.startsWith("orbitledge-demo-service: "));
    }

    void shouldNotStartWhereThePortIsTakenOrTheDataAreNone()
    {
        const QTemporaryDir folder;
        const auto taken
            = DemoService::run({u"--port"_s, QString::number(m_service.port()), u"--data"_s, folder.path()});
        QCOMPARE(taken.exitCode, 1);
        QCOMPARE(taken.errors.count('\n'), 1);
        QVERIFY(taken.errors.contains(QByteArray::number(m_service.port())));

        QFile damaged(folder.filePath(u"orbitledge-demo.sqlite"_s));
        QVERIFY(damaged.open(QIODevice::WriteOnly | QIODevice::Truncate));
        damaged.write(QByteArray(8'192, 'x'));
        damaged.close();
        const auto unusable = DemoService::run({u"--port"_s, u"0"_s, u"--data"_s, folder.path()});
        QCOMPARE(unusable.exitCode, 1);
        QCOMPARE(unusable.errors.count('\n'), 1);
        QVERIFY(damaged.open(QIODevice::ReadOnly));
        QCOMPARE(damaged.readAll(), QByteArray(8'192, 'x'));
    }

    void shouldAddAccountsOnceEach()
    {
        QVERIFY(m_service.addAccount(u"eve@example.com"_s, "with trailing blank "));
        QVERIFY(!m_service.addAccount(u"EVE@example.com"_s, "another password"));
        QVERIFY(m_service.problem().contains(u"already"_s));
        QVERIFY(!m_service.addAccount(u"short@example.com"_s, "short"));
        QVERIFY(!m_service.addAccount(u"no address"_s, "a long password"));
        QVERIFY(!m_service.addAccount(u"f@example.com"_s, "a long password", {u"--currency"_s, u"ZZZ"_s}));
        QVERIFY(!http().signIn(u"eve@example.com"_s, u"with trailing blank "_s).isEmpty());
        QVERIFY(http().signIn(u"eve@example.com"_s, u"with trailing blank"_s).isEmpty());
    }

    void shouldAskForAPasswordWithoutShowingItAndGiveUpWhereItIsInterrupted()
    {
        const QTemporaryDir folder;
        QProcess terminal;
        QByteArray shown;
        const auto shows = [&](const QByteArray &text) {
            shown += terminal.readAll();
            return shown.contains(text);
        };
        for (const QByteArray &typed : {"a long password\n"_ba, "half\x03"_ba}) {
            shown.clear();
            terminal.start(u"script"_s,
                {u"-qec"_s,
                    u"trap : INT; '%1' --data '%2' --add-account hal@example.com; echo \"status $?\""_s.arg(
                        QStringLiteral(ORBITLEDGE_DEMO_SERVICE_PROGRAM), folder.filePath(u"demo"_s)),
                    u"/dev/null"_s});
            QTRY_VERIFY_WITH_TIMEOUT(shows("Password for hal@example.com: "), 20'000);
            terminal.write(typed);
            QTRY_VERIFY_WITH_TIMEOUT(shows(typed.endsWith('\n') ? "status 0" : "status 130"), 20'000);
            QTRY_COMPARE_WITH_TIMEOUT(terminal.state(), QProcess::NotRunning, 20'000);
            QVERIFY(!shown.contains(typed.chopped(1)));
        }
        DemoService service;
        QVERIFY2(service.start(folder.filePath(u"demo"_s)), qPrintable(service.problem()));
        QVERIFY(!HttpExchange(service.port()).signIn(u"hal@example.com"_s, u"a long password"_s).isEmpty());
    }

    void shouldNotTakeItsOwnFilesForInputThatIsClosed()
    {
        const QTemporaryDir folder;
        QProcess shell;
        shell.start(u"/bin/sh"_s,
            {u"-c"_s, u"exec \"$0\" --data \"$1\" --add-account ina@example.com <&- >&-"_s,
                QStringLiteral(ORBITLEDGE_DEMO_SERVICE_PROGRAM), folder.filePath(u"demo"_s)});
        QVERIFY(shell.waitForFinished());
        QCOMPARE(shell.exitCode(), 1);
        QCOMPARE(shell.readAllStandardError(),
            "orbitledge-demo-service: The password could not be read: Bad file descriptor\n"_ba);
    }

    void shouldKeepItsDataInTheUsersDataFolder()
    {
        const QString folder = qEnvironmentVariable("XDG_DATA_HOME") + u"/orbitledge-demo-service"_s;
        QCOMPARE(
            DemoService::run({u"--add-account"_s, u"gil@example.com"_s}, "a long password").complaint(), "");
        QVERIFY(QFileInfo::exists(folder + u"/orbitledge-demo.sqlite"_s));
        QVERIFY(QDir(folder).removeRecursively());
    }

    void shouldFillTheSampleAccountForMeasuring()
    {
        DemoService large;
        QElapsedTimer time;
        time.start();
        QVERIFY2(large.start({}, {u"--populate"_s, u"10000"_s}), qPrintable(large.problem()));
        const auto started = time.restart();
        const HttpExchange other(large.port());
        const QByteArray cookie = other.signIn(DemoService::email, DemoService::password);
        (void)time.restart();
        const Answer answer = other.get("/subscriptions", cookie);
        qInfo("10000 subscriptions: start %lld ms, list %lld ms, %lld bytes", static_cast<long long>(started),
            static_cast<long long>(time.elapsed()), static_cast<long long>(answer.body.size()));
        const auto all = decodeJson<QList<Subscription>>(answer.body);
        QVERIFY(all);
        QCOMPARE(all->size(), 10'000);
        QCOMPARE(other.get("/", cookie).status, 200);
        QCOMPARE(other.get("/calendar", cookie).status, 200);
    }

    void shouldEndInOrder()
    {
        QCOMPARE(m_service.errorOutput(), ""_ba);
        QCOMPARE(m_service.stop(), std::optional(0));
    }
};

ORBITLEDGE_TEST_MAIN(ServiceTest)
#include "ServiceTest.moc"
