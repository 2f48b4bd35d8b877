#include "logos/Freshness.h"

#include "support/TestMain.h"

using namespace orbitledge;
using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(QList<orbitledge::HttpHeader>)

namespace {

const Instant now = *Instant::fromText("2026-03-18T12:00:00Z");
constexpr qint64 hour = 3600;
constexpr qint64 week = 7 * 24 * hour;
constexpr qint64 year = 31'556'952;

using Headers = QList<HttpHeader>;

} // namespace

class FreshnessTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { qputenv("TZ", "America/New_York"); }

    void shouldDoAsTheServerSays_data()
    {
        QTest::addColumn<Headers>("headers");
        QTest::addColumn<qint64>("seconds");
        QTest::addColumn<bool>("mayBeKept");
        const auto control = [](const char *value) { return Headers{{"cache-control", value}}; };
        QTest::newRow("nothing said") << Headers{} << week << true;
        QTest::newRow("nothing of it said") << control("public, immutable") << week << true;
        QTest::newRow("an hour") << control("public, max-age=3600") << hour << true;
        QTest::newRow("in capitals") << control("Max-Age=3600") << hour << true;
        QTest::newRow("in quotes") << control("max-age=\"3600\"") << hour << true;
        QTest::newRow("zero") << control("max-age=0") << qint64{0} << true;
        QTest::newRow("twice") << control("max-age=7200, max-age=3600") << hour << true;
        QTest::newRow("for others") << control("s-maxage=60") << week << true;
        QTest::newRow("on two lines")
            << Headers{{"Cache-Control", "public"}, {"Cache-Control", "max-age=3600"}} << hour << true;
        QTest::newRow("a year at most") << control("max-age=99999999") << year << true;
        QTest::newRow("beyond numbers") << control("max-age=99999999999999999999999") << year << true;
        QTest::newRow("less than nothing") << control("max-age=-1") << qint64{0} << true;
        QTest::newRow("no number") << control("max-age=soon") << qint64{0} << true;
        QTest::newRow("no-cache") << control("no-cache, max-age=3600") << qint64{0} << true;
        QTest::newRow("no-store") << control("no-store") << week << false;
        QTest::newRow("old already") << Headers{{"Cache-Control", "max-age=3600"}, {"Age", "600"}}
                                     << hour - 600 << true;
        QTest::newRow("over already")
            << Headers{{"Cache-Control", "max-age=3600"}, {"Age", "6000"}} << qint64{0} << true;
        QTest::newRow("expires") << Headers{{"Expires", "Wed, 18 Mar 2026 13:00:00 GMT"}} << hour << true;
        QTest::newRow("expires by the server's clock")
            << Headers{{"Expires", "Wed, 18 Mar 2026 15:00:00 GMT"},
                   {"Date", "Wed, 18 Mar 2026 14:00:00 GMT"}}
            << hour << true;
        QTest::newRow("has expired") << Headers{{"Expires", "Thu, 01 Jan 1970 00:00:00 GMT"}} << qint64{0}
                                     << true;
        QTest::newRow("expires 0") << Headers{{"Expires", "0"}} << qint64{0} << true;
        QTest::newRow("max-age comes first")
            << Headers{{"Expires", "0"}, {"Cache-Control", "max-age=3600"}} << hour << true;
    }
    void shouldDoAsTheServerSays()
    {
        QFETCH(Headers, headers);
        QFETCH(qint64, seconds);
        QFETCH(bool, mayBeKept);
        const Freshness freshness = freshnessOf(headers, now);
        QCOMPARE((freshness.until.millisecondsSinceEpoch() - now.millisecondsSinceEpoch()) / 1000, seconds);
        QCOMPARE(freshness.mayBeKept, mayBeKept);
    }

    void shouldReadDatesAsTheyAreWritten()
    {
        QCOMPARE(instantOfHttpDate("Sun, 06 Nov 1994 08:49:37 GMT"),
            std::optional(*Instant::fromText("1994-11-06T08:49:37Z")));
        // An hour that this zone skips.
        QCOMPARE(instantOfHttpDate("Sun, 08 Mar 2026 02:30:00 GMT"),
            std::optional(*Instant::fromText("2026-03-08T02:30:00Z")));
        for (const char *text :
            {"", "0", "now", "Sun, 06 Nov 1994 08:49:37", "Sun, 31 Feb 2026 00:00:00 GMT"})
            QVERIFY2(!instantOfHttpDate(text), text);
    }
};

ORBITLEDGE_TEST_MAIN(FreshnessTest)
#include "FreshnessTest.moc"
