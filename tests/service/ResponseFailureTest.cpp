#include "service/ResponseFailure.h"

#include "platform/HttpStatusPhrase.h"
#include "support/TestMain.h"

using namespace orbitledge;
using namespace Qt::StringLiterals;

class ResponseFailureTest : public QObject {
    Q_OBJECT

private:
    static std::optional<APIError> failure(
        int status, const QByteArray &body, const QList<HttpHeader> &headers = {})
    {
        return failureOf({.statusCode = status, .headers = headers, .body = body});
    }

private Q_SLOTS:
    void shouldClassifyEveryStatus_data()
    {
        QTest::addColumn<int>("status");
        for (int status = 100; status <= 599; ++status)
            QTest::addRow("%d", status) << status;
    }
    void shouldClassifyEveryStatus()
    {
        QFETCH(int, status);
        const QString message = u"Because."_s;
        std::optional<APIError> expected;
        if (status == 429)
            expected = APIError::RateLimited{7.5, message};
        else if (status == 403)
            expected = APIError::Forbidden{message};
        else if (status == 401)
            expected = APIError::Unauthorized{message};
        else if (status < 200 || status > 299)
            expected = APIError::RequestFailed{status, message};
        QVERIFY(failure(status, "{\"error\":\"Because.\"}", {{"Retry-After", "7.5"}}) == expected);
    }

    void shouldHaveWordsForEveryStatus()
    {
        for (int status = 100; status <= 599; ++status) {
            if (status >= 200 && status <= 299)
                continue;
            const QString message = failure(status, "")->errorDescription();
            QVERIFY2(!message.isEmpty(), QByteArray::number(status).constData());
            QCOMPARE(message, httpStatusPhrase(status));
        }
    }

    void shouldKnowTheUsualPhrases_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("phrase");
        const auto row = [](int status, const char *phrase) {
            QTest::addRow("%d", status) << status << QString::fromLatin1(phrase);
        };
        row(100, "informational");
        row(103, "informational");
        row(199, "informational");
        row(200, "no error");
        row(201, "created");
        row(202, "accepted");
        row(203, "success");
        row(204, "no content");
        row(299, "success");
        row(300, "multiple choices");
        row(301, "moved permanently");
        row(302, "found");
        row(303, "see other");
        row(304, "not modified");
        row(305, "needs proxy");
        row(306, "redirected");
        row(307, "temporarily redirected");
        row(308, "redirected");
        row(399, "redirected");
        row(400, "bad request");
        row(401, "unauthorized");
        row(402, "payment required");
        row(403, "forbidden");
        row(404, "not found");
        row(405, "method not allowed");
        row(406, "unacceptable");
        row(407, "proxy authentication required");
        row(408, "request timed out");
        row(409, "conflict");
        row(410, "no longer exists");
        row(411, "length required");
        row(412, "precondition failed");
        row(413, "request too large");
        row(414, "requested URL too long");
        row(415, "unsupported media type");
        row(416, "requested range not satisfiable");
        row(417, "expectation failed");
        row(418, "client error");
        row(422, "client error");
        row(429, "client error");
        row(499, "client error");
        row(500, "internal server error");
        row(501, "unimplemented");
        row(502, "bad gateway");
        row(503, "service unavailable");
        row(504, "gateway timed out");
        row(505, "unsupported version");
        row(506, "server error");
        row(599, "server error");
    }
    void shouldKnowTheUsualPhrases()
    {
        QFETCH(int, status);
        QFETCH(QString, phrase);
        QCOMPARE(httpStatusPhrase(status), phrase);
    }

    void shouldFindTheMessage_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("message");
        const QString phrase = u"internal server error"_s;
        const auto row = [](const char *name, const QByteArray &body, const QString &message) {
            QTest::newRow(name) << body << message;
        };
        row("error before message", R"({"message":"Down","error":"E1"})", u"E1"_s);
        row("message before details", R"({"details":"D","message":"Down"})", u"Down"_s);
        row("details alone", R"({"details":"D"})", u"D"_s);
        row("null counts as missing", R"({"error":null,"message":"Down"})", u"Down"_s);
        row("an empty text counts", R"({"error":"","message":"Down"})", QString());
        row("the code is never shown", R"({"error_code":"E42"})", phrase);
        row("nothing in it", "{}", phrase);
        row("nothing at all", "", phrase);
        row("a wrong type spoils all", R"({"error":"E1","details":7})", phrase);
        row("a wrong type of the code, too", R"({"error":"E1","error_code":7})", phrase);
        row("a list", R"(["error"])", phrase);
        row("HTML", "<html><body>Down</body></html>", phrase);
        row("cut off", R"({"error":"E1")", phrase);
        row("not UTF-8", "{\"error\":\"\xff\"}", phrase);
        row("another language", "{\"error\":\"B\xc3\xa4h\"}", u"B\u00e4h"_s);
    }
    void shouldFindTheMessage()
    {
        QFETCH(QByteArray, body);
        QFETCH(QString, message);
        QVERIFY(failure(500, body) == APIError(APIError::RequestFailed{500, message}));
    }

    void shouldReadTheTimeToWait_data()
    {
        QTest::addColumn<QByteArray>("header");
        QTest::addColumn<std::optional<double>>("seconds");
        const auto row = [](const char *header, std::optional<double> seconds) {
            QTest::newRow(*header != '\0' ? header : "(empty)") << QByteArray(header) << seconds;
        };
        row("30", 30.0);
        row("2.1", 2.1);
        row("0", 0.0);
        row("-5", -5.0);
        row("+5", 5.0);
        row("9", 9.0);
        row("-.9", -0.9);
        row("+.5", 0.5);
        row(".5", 0.5);
        row("5.", 5.0);
        row("1e2", 100.0);
        row("", std::nullopt);
        row(" 30", std::nullopt);
        row("30 ", std::nullopt);
        row("30s", std::nullopt);
        row("30, 40", std::nullopt);
        row("Fri, 31 Dec 1999 23:59:59 GMT", std::nullopt);
        row("inf", std::nullopt);
        row("-inf", std::nullopt);
        row("nan", std::nullopt);
        row("0x10", std::nullopt);
        row("+-5", std::nullopt);
        row("--5", std::nullopt);
        row("1e999", std::nullopt);
        row("+", std::nullopt);
        row("-", std::nullopt);
        row("/5", std::nullopt);
        row(":5", std::nullopt);
        row("e5", std::nullopt);
        row(".", std::nullopt);
    }
    void shouldReadTheTimeToWait()
    {
        QFETCH(QByteArray, header);
        QFETCH(std::optional<double>, seconds);
        QCOMPARE(retryAfterSeconds(header), seconds);
    }

    void shouldNotWaitWhereNothingIsSaid()
    {
        const auto limited = failure(429, "{\"message\":\"Slow down.\"}");
        QVERIFY(limited == APIError(APIError::RateLimited{std::nullopt, u"Slow down."_s}));
        QCOMPARE(limited->errorDescription(), u"Slow down."_s);
    }

    void shouldFindNoFailureInWhatIsNoHttp()
    {
        QVERIFY(failureOf({.statusCode = std::nullopt, .headers = {}, .body = "{}"})
            == APIError(APIError::InvalidResponse{}));
    }
};

ORBITLEDGE_TEST_MAIN(ResponseFailureTest)
#include "ResponseFailureTest.moc"
