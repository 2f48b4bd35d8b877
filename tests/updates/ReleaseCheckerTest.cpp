#include "updates/ReleaseChecker.h"

#include "platform/curl/CurlHttpSession.h"
#include "support/FaultServer.h"
#include "support/TestCertificate.h"
#include "support/TestMain.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

namespace {

const QUrl releaseHost(u"https://releases.example.com/"_s);

QJsonObject manifestJson()
{
    return {{u"version"_s, u"1.4.2"_s}, {u"build"_s, u"121"_s}, {u"minimumSystemVersion"_s, u"14.0"_s},
        {u"publishedAt"_s, u"2026-03-05T08:00:00Z"_s}, {u"url"_s, u"https://example.com/download"_s},
        {u"size"_s, 12'345'678}, {u"sha256"_s, u"abc123"_s},
        {u"architectures"_s, QJsonArray{u"x86_64"_s, u"arm64"_s}}, {u"comingSoon"_s, false}, {u"more"_s, 1}};
}

QByteArray bytesOf(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

class UnreachableSession final : public HttpSession {
public:
    QCoro::Task<tl::expected<HttpResponse, TransportFailure>> send(HttpRequest request) override
    {
        requests.append(request);
        co_return tl::make_unexpected(TransportFailure{TransportFailure::Kind::Offline});
    }
    QList<HttpRequest> requests;
};

} // namespace

class ReleaseCheckerTest : public QObject {
    Q_OBJECT

private:
    const TestCertificate m_certificate;
    std::unique_ptr<FaultServer> m_server;
    std::unique_ptr<ReleaseChecker> m_checker;

private Q_SLOTS:
    void init()
    {
        m_server = std::make_unique<FaultServer>(m_certificate.forServer());
        HttpSessionConfiguration configuration;
        configuration.certificateAuthorities = m_certificate.file();
        m_checker = std::make_unique<ReleaseChecker>(
            m_server->url().resolved(QUrl(u"/latest.json?a=b"_s)).toString(), releaseHost,
            std::make_shared<CurlHttpSession>("Agent/1", configuration));
    }

    void shouldFetchTheManifest()
    {
        m_server->answerAll(FaultServer::whole(200, bytesOf(manifestJson())));
        const auto manifest = QCoro::waitFor(m_checker->fetchLatest());
        QVERIFY2(manifest, manifest ? "" : qUtf8Printable(manifest.error().errorDescription));
        const ReleaseManifest expected{
            .version = u"1.4.2"_s,
            .build = u"121"_s,
            .minimumSystemVersion = u"14.0"_s,
            .publishedAt = *Instant::fromText("2026-03-05T08:00:00Z"),
            .url = QUrl(u"https://example.com/download"_s),
            .size = 12'345'678,
            .sha256 = u"abc123"_s,
            .architectures = {u"x86_64"_s, u"arm64"_s},
            .comingSoon = false,
        };
        QVERIFY(*manifest == expected);
        QCOMPARE(m_server->requests(),
            QList{"GET /latest.json?a=b HTTP/1.1\r\nHost: 127.0.0.1:" + QByteArray::number(m_server->port())
                + "\r\nAccept-Encoding: gzip\r\nAccept: application/json\r\nUser-Agent: Agent/1\r\n\r\n"});
    }

    void shouldReadTheMomentWithAndWithoutFractions()
    {
        QJsonObject object = manifestJson();
        object[u"publishedAt"_s] = u"2026-03-05T09:00:00.250+01:00"_s;
        const auto manifest = decodeReleaseManifest(bytesOf(object));
        QVERIFY(manifest);
        QCOMPARE(manifest->publishedAt.millisecondsSinceEpoch(),
            Instant::fromText("2026-03-05T08:00:00Z")->millisecondsSinceEpoch() + 250);
    }

    void shouldRequireEveryKey()
    {
        const QJsonObject whole = manifestJson();
        for (const QString &key : whole.keys()) {
            if (key == u"more")
                continue;
            QJsonObject object = whole;
            object.remove(key);
            QVERIFY2(!decodeReleaseManifest(bytesOf(object)), qUtf8Printable(key));
            object[key] = QJsonValue::Null;
            QVERIFY2(!decodeReleaseManifest(bytesOf(object)), qUtf8Printable(key));
            object[key] = QJsonObject();
            QVERIFY2(!decodeReleaseManifest(bytesOf(object)), qUtf8Printable(key));
        }
        QVERIFY(decodeReleaseManifest(bytesOf(whole)));
    }

    void shouldTellWhyThereIsNone_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("reason");
        QTest::newRow("not found") << 404 << "{}"_ba << u"not found"_s;
        QTest::newRow("server error") << 503 << ""_ba << u"service unavailable"_s;
        QTest::newRow("HTML")
            << 200 << "<html>"_ba
            << u"The data couldn\u2019t be read because it isn\u2019t in the correct format."_s;
        QTest::newRow("nothing in it")
            << 200 << "{}"_ba << u"The data couldn\u2019t be read because it is missing."_s;
    }
    void shouldTellWhyThereIsNone()
    {
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        QFETCH(QString, reason);
        m_server->answerAll(FaultServer::whole(status, body));
        const auto manifest = QCoro::waitFor(m_checker->fetchLatest());
        QVERIFY(!manifest);
        QCOMPARE(manifest.error().errorDescription, reason);
    }

    void shouldWaitForTenSecondsAtMost()
    {
        auto session = std::make_shared<UnreachableSession>();
        ReleaseChecker checker(QString(), releaseHost, session);
        const auto manifest = QCoro::waitFor(checker.fetchLatest());
        QCOMPARE(manifest.error().errorDescription, u"The Internet connection appears to be offline."_s);
        QCOMPARE(session->requests.size(), 1);
        QCOMPARE(session->requests[0].idleTimeout.count(), 10'000);
        QVERIFY(!session->requests[0].body);
    }

    void shouldTakeTheConfiguredAddressOnlyWhereItIsSafe_data()
    {
        QTest::addColumn<QString>("configured");
        QTest::addColumn<QString>("used");
        const QString usual = u"https://releases.example.com/mac/latest.json"_s;
        QTest::newRow("none") << QString() << usual;
        QTest::newRow("another") << u"https://example.com/a.json"_s << u"https://example.com/a.json"_s;
        QTest::newRow("with blanks") << u" https://example.com/a.json\n"_s << u"https://example.com/a.json"_s;
        QTest::newRow("http") << u"http://example.com/a.json"_s << usual;
        QTest::newRow("in capitals") << u"HTTPS://example.com/a.json"_s << usual;
        QTest::newRow("no host") << u"https:///a.json"_s << usual;
        QTest::newRow("no scheme") << u"example.com/a.json"_s << usual;
        QTest::newRow("nonsense") << u"https://[/"_s << usual;
    }
    void shouldTakeTheConfiguredAddressOnlyWhereItIsSafe()
    {
        QFETCH(QString, configured);
        QFETCH(QString, used);
        const ReleaseChecker checker(configured, releaseHost, std::make_shared<UnreachableSession>());
        QCOMPARE(checker.manifestURL().toString(), used);
    }
};

ORBITLEDGE_TEST_MAIN(ReleaseCheckerTest)
#include "ReleaseCheckerTest.moc"
