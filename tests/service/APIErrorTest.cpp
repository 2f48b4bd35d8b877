#include "service/APIError.h"

#include "support/TestMain.h"

using namespace orbitledge;
using namespace Qt::StringLiterals;

class APIErrorTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldDescribeItself_data()
    {
        QTest::addColumn<APIError>("error");
        QTest::addColumn<QString>("description");
        const auto row = [](const char *name, const APIError &error, const QString &text) {
            QTest::newRow(name) << error << text;
        };
        row("unauthorized", APIError::Unauthorized{u"Who?"_s}, u"Who?"_s);
        row("unauthorized without a word", APIError::Unauthorized{}, QString());
        row("forbidden", APIError::Forbidden{u"Not you."_s}, u"Not you."_s);
        row("rate limited", APIError::RateLimited{std::nullopt, u"Slow down."_s}, u"Slow down."_s);
        const auto limited = [&row](const char *name, double seconds, const char *shown) {
            row(name, APIError::RateLimited{seconds, u"Slow down."_s},
                u"Slow down. Try again in "_s + QLatin1StringView(shown) + u" seconds."_s);
        };
        limited("rate limited for a while", 30, "30");
        limited("rate limited, rounded up", 2.1, "3");
        limited("rate limited for no time", 0, "0");
        limited("rate limited for less than a second", 0.001, "1");
        limited("rate limited until before", -1.5, "-1");
        limited("rate limited for ever", 1e300, "9007199254740992");
        row("request failed", APIError::RequestFailed{500, u"E1"_s}, u"E1"_s);
        row("decoding", APIError::Decoding{u"No."_s}, u"The server response could not be read: No."_s);
        row("transport", APIError::Transport{u"cancelled"_s}, u"cancelled"_s);
        row("session storage", APIError::SessionStorage{u"No."_s},
            u"The session could not be stored securely: No."_s);
        row("invalid response", APIError::InvalidResponse{}, u"The server returned an invalid response."_s);
    }
    void shouldDescribeItself()
    {
        QFETCH(APIError, error);
        QFETCH(QString, description);
        QCOMPARE(error.errorDescription(), description);
    }

    void shouldBeEqualWhereCaseAndPayloadAre()
    {
        const APIError limited = APIError::RateLimited{2.0, u"a"_s};
        QVERIFY(limited == APIError(APIError::RateLimited{2.0, u"a"_s}));
        QVERIFY(limited != APIError(APIError::RateLimited{std::nullopt, u"a"_s}));
        QVERIFY(limited != APIError(APIError::RateLimited{2.0, u"b"_s}));
        QVERIFY(APIError(APIError::Forbidden{u"a"_s}) != APIError(APIError::Unauthorized{u"a"_s}));
        QVERIFY(
            APIError(APIError::RequestFailed{404, u"a"_s}) != APIError(APIError::RequestFailed{405, u"a"_s}));
        QVERIFY(APIError(APIError::InvalidResponse{}) == APIError(APIError::InvalidResponse{}));
    }

    void shouldTellItsCase()
    {
        const APIError error = APIError::RequestFailed{404, u"a"_s};
        QVERIFY(error.is<APIError::RequestFailed>());
        QVERIFY(!error.is<APIError::Transport>());
        QCOMPARE(error.as<APIError::RequestFailed>()->statusCode, 404);
        QCOMPARE(error.kind().index(), std::size_t{3});
    }
};

ORBITLEDGE_TEST_MAIN(APIErrorTest)
#include "APIErrorTest.moc"
