#include "service/Cookies.h"

#include "support/ProcessorTime.h"
#include "support/TestMain.h"

using namespace orbitledge;
using namespace Qt::StringLiterals;

using Cookies = std::vector<Cookie>;
Q_DECLARE_METATYPE(Cookies)

class CookiesTest : public QObject {
    Q_OBJECT

private:
    const Instant m_now = *Instant::fromText("2026-03-18T12:00:00Z");

    [[nodiscard]] Cookies cookies(
        const QList<QByteArray> &fields, const QString &url = u"https://api.example.com/v1/"_s) const
    {
        QList<HttpHeader> headers;
        for (const QByteArray &field : fields)
            headers.append(HttpHeader{"set-cookie", field});
        return cookiesOf(headers, QUrl(url), m_now);
    }

private Q_SLOTS:
    void shouldReadNamesAndValues_data()
    {
        QTest::addColumn<QByteArray>("field");
        QTest::addColumn<Cookies>("expected");
        const auto row = [](const char *name, const QByteArray &field, const Cookies &expected) {
            QTest::newRow(name) << field << expected;
        };
        const auto one
            = [](const QString &name, const QString &value) { return Cookies{{name, value, std::nullopt}}; };
        row("plain", "a=1", one(u"a"_s, u"1"_s));
        row("with attributes", "a=1; Path=/; HttpOnly; Secure; SameSite=Lax", one(u"a"_s, u"1"_s));
        row("blanks around everything", " a  =  1 ;Path=/", one(u"a"_s, u"1"_s));
        row("quotes are kept", "a=\"1\"", one(u"a"_s, u"\"1\""_s));
        row("equals signs in the value", "a=b=c==", one(u"a"_s, u"b=c=="_s));
        row("an empty value", "a=; Path=/", one(u"a"_s, QString()));
        row("a comma in the value", "a=1,2", one(u"a"_s, u"1,2"_s));
        row("two in one field", "a=1,b=2", {{u"a"_s, u"1"_s, std::nullopt}, {u"b"_s, u"2"_s, std::nullopt}});
        row("three in one field", "a=1,b=2,c=3",
            {{u"a"_s, u"1"_s, std::nullopt}, {u"b"_s, u"2"_s, std::nullopt}, {u"c"_s, u"3"_s, std::nullopt}});
        row("two in one field with attributes", "a=1; Path=/, b=2; Path=/",
            {{u"a"_s, u"1"_s, std::nullopt}, {u"b"_s, u"2"_s, std::nullopt}});
        row("no name", "=1", {});
        row("no equals sign", "a; Path=/", {});
        row("nothing", "", {});
        row("bytes beyond ASCII", "a=\xe4", one(u"a"_s, u"\u00e4"_s));
        row("a tab in the value", "a=1\t2", {});
        row("a tab around the value", "a=\t1\t", one(u"a"_s, u"1"_s));
        row("a zero byte in the value", QByteArray("a=1\0002", 5), {});
        row("a delete character in the value", "a=1\x7f", {});
        row("a control character in the name", "a\x01=1", {});
        row("a control character in an attribute", "a=1; Path=\x01", one(u"a"_s, u"1"_s));
        row("a path of another place", "a=1; Path=/elsewhere", one(u"a"_s, u"1"_s));
        row("the own domain", "a=1; Domain=api.example.com", one(u"a"_s, u"1"_s));
        row("the domain above", "a=1; domain=.Example.COM", one(u"a"_s, u"1"_s));
        row("another domain", "a=1; Domain=example.org", {});
        row("a domain below", "a=1; Domain=deep.api.example.com", {});
        row("a domain that ends alike", "a=1; Domain=ample.com", {});
        row("an empty domain", "a=1; Domain=", one(u"a"_s, u"1"_s));
        row("a dot for a domain", "a=1; Domain=.", one(u"a"_s, u"1"_s));
        row("a semicolon first", ";a=1", {});
        row("a blank in the value", "a=1 2", one(u"a"_s, u"1 2"_s));
        row("a tilde in the value", "a=~", one(u"a"_s, u"~"_s));
        row("the last control character in the value",
            "a=1\x1F"
            "2",
            {});
        row("the first byte beyond ASCII", "a=\x80", one(u"a"_s, u"\u0080"_s));
        row("blanks between two in one field", "a=1, \t b=2",
            {{u"a"_s, u"1"_s, std::nullopt}, {u"b"_s, u"2"_s, std::nullopt}});
        row("a comma before an equals sign", "a=1,=2", one(u"a"_s, u"1,=2"_s));
        row("a comma before a name alone", "a=1,b", one(u"a"_s, u"1,b"_s));
        row("a comma first", ",a=1", one(u"a"_s, u"1"_s));
        row("a comma at the end", "a=1,", one(u"a"_s, u"1,"_s));
    }
    void shouldReadNamesAndValues()
    {
        QFETCH(QByteArray, field);
        QFETCH(Cookies, expected);
        QVERIFY(cookies({field}) == expected);
    }

    void shouldSplitAtACommaBeforeANameOnly()
    {
        for (const char c : QByteArrayView("!#$%&'*+-.^_`|~0123456789AMZamz")) {
            const Cookies found = cookies({QByteArray("a=1,") + c + "=2"});
            QVERIFY2(found.size() == 2 && found[1].name == QLatin1Char(c), &c);
        }
        for (const char c : QByteArrayView("\"(),/:<=>?@[\\]{}\xe4")) {
            const Cookies found = cookies({QByteArray("a=1,") + c + "=2"});
            QCOMPARE(found.size(), std::size_t{1});
            QCOMPARE(found[0].value, u"1,"_s + QLatin1Char(c) + u"=2"_s);
        }
    }

    void shouldReadEveryMonth()
    {
        const QList<QByteArray> months{
            "jan", "FEB", "Mar", "April", "may", "JUNE", "Jul", "Aug", "Sept", "Oct", "Nov", "December"};
        for (int i = 0; i < months.size(); ++i) {
            const Cookies found = cookies({"a=1; Expires=Wed, 09 " + months[i] + " 2029 09:29:59 GMT"});
            const auto expected = QByteArray("2029-") + QByteArray::number(i + 1).rightJustified(2, '0');
            QCOMPARE(found.at(0).expiresAt->text(), expected + "-09T09:29:59Z");
        }
    }

    void shouldTakeAnyPunctuationBetweenThePartsOfADate()
    {
        for (const char c : QByteArrayView(" \t!\"#$%&'()*+,-./<=>?@[\\]^_`{|}~")) {
            QByteArray date("21_Oct_2026_07:28:00");
            date.replace('_', c);
            const Cookies found = cookies({"a=1; Expires=" + date});
            QVERIFY2(found.at(0).expiresAt == Instant::fromText("2026-10-21T07:28:00Z"), date.constData());
        }
    }

    void shouldReadTheExpiry_data()
    {
        QTest::addColumn<QByteArray>("attributes");
        QTest::addColumn<QByteArray>("expiry");
        const auto row = [](const char *name, const QByteArray &attributes, const QByteArray &expiry) {
            QTest::newRow(name) << attributes << expiry;
        };
        row("none", "Path=/", "");
        row("RFC 1123", "Expires=Wed, 21 Oct 2026 07:28:00 GMT", "2026-10-21T07:28:00Z");
        row("RFC 850", "expires=Wednesday, 21-Oct-26 07:28:00 GMT", "2026-10-21T07:28:00Z");
        row("asctime", "EXPIRES=Wed Oct 21 07:28:00 2026", "2026-10-21T07:28:00Z");
        row("asctime with one digit", "Expires=Sun Nov  6 08:49:37 2026", "2026-11-06T08:49:37Z");
        row("hyphens and four digits", "Expires=Wed, 21-Oct-2026 07:28:00 GMT", "2026-10-21T07:28:00Z");
        row("last century", "Expires=Thu, 01-Jan-70 00:00:00 GMT", "1970-01-01T00:00:00Z");
        row("long past", "Expires=Thu, 01 Jan 1970 00:00:00 GMT", "1970-01-01T00:00:00Z");
        row("29 February", "Expires=Tue, 29 Feb 2028 00:00:00 GMT", "2028-02-29T00:00:00Z");
        row("30 February", "Expires=Wed, 30 Feb 2028 00:00:00 GMT", "");
        row("hour 24", "Expires=Wed, 21 Oct 2026 24:00:00 GMT", "");
        row("no time", "Expires=Wed, 21 Oct 2026", "");
        row("no month", "Expires=Wed, 21 2026 07:28:00 GMT", "");
        row("a word", "Expires=never", "");
        row("empty", "Expires=", "");
        row("an ISO date", "Expires=2026-10-21T07:28:00Z", "");
        row("one digit for each part of the time", "Expires=Wed, 21 Oct 2026 7:8:9 GMT",
            "2026-10-21T07:08:09Z");
        row("three digits for the hour", "Expires=Wed, 21 Oct 2026 007:28:00 GMT", "");
        row("three digits for the minute", "Expires=Wed, 21 Oct 2026 07:028:00 GMT", "");
        row("three digits for the second", "Expires=Wed, 21 Oct 2026 07:28:000 GMT", "");
        row("a letter behind the hour", "Expires=Wed, 21 Oct 2026 7x:28:00 GMT", "");
        row("a letter behind two digits of the hour", "Expires=Wed, 21 Oct 2026 07x:28:00 GMT", "");
        row("a letter behind the minute", "Expires=Wed, 21 Oct 2026 07:2x:00 GMT", "");
        row("no seconds", "Expires=Wed, 21 Oct 2026 07:28 GMT", "");
        row("no hour", "Expires=Wed, 21 Oct 2026 :28:00 GMT", "");
        row("letters behind the time", "Expires=Wed, 21 Oct 2026 07:28:00Z", "2026-10-21T07:28:00Z");
        row("minute 60", "Expires=Wed, 21 Oct 2026 07:60:00 GMT", "");
        row("second 60", "Expires=Wed, 21 Oct 2026 07:28:60 GMT", "");
        row("the last second", "Expires=Wed, 21 Oct 2026 23:59:59 GMT", "2026-10-21T23:59:59Z");
        row("one digit for the day", "Expires=Wed, 1 Oct 2026 07:28:00 GMT", "2026-10-01T07:28:00Z");
        row("three digits for the day", "Expires=Wed, 021 Oct 2026 07:28:00 GMT", "");
        row("one digit for the year", "Expires=Wed, 21 Oct 6 07:28:00 GMT", "");
        row("five digits for the year", "Expires=Wed, 21 Oct 20260 07:28:00 GMT", "");
        row("two letters for the month", "Expires=Wed, 21 Oc 2026 07:28:00 GMT", "");
        row("A before the month", "Expires=Wed, 21 AOct 2026 07:28:00 GMT", "");
        row("Z before the month", "Expires=Wed, 21 ZOct 2026 07:28:00 GMT", "");
        row("a before the month", "Expires=Wed, 21 aOct 2026 07:28:00 GMT", "");
        row("z before the month", "Expires=Wed, 21 zOct 2026 07:28:00 GMT", "");
        row("the first time counts", "Expires=21 Oct 2026 07:28:00 08:29:01", "2026-10-21T07:28:00Z");
        row("the first month counts", "Expires=21 Oct Nov 2026 07:28:00", "2026-10-21T07:28:00Z");
        row("the first day counts", "Expires=21 22 Oct 2026 07:28:00", "2022-10-21T07:28:00Z");
        row("the first year counts", "Expires=21 Oct 2026 2027 07:28:00", "2026-10-21T07:28:00Z");
        row("the year 69", "Expires=21-Oct-69 07:28:00", "2069-10-21T07:28:00Z");
        row("the year 70", "Expires=21-Oct-70 07:28:00", "1970-10-21T07:28:00Z");
        row("the year 99", "Expires=21-Oct-99 07:28:00", "1999-10-21T07:28:00Z");
        row("the year 0", "Expires=21-Oct-00 07:28:00", "2000-10-21T07:28:00Z");
        row("the year 100", "Expires=21-Oct-100 07:28:00", "");
        row("the first year that a cookie can have", "Expires=Sun, 21 Oct 1601 07:28:00 GMT",
            "1601-10-21T07:28:00Z");
        row("the year 1600", "Expires=Wed, 21 Oct 1600 07:28:00 GMT", "");
        row("seconds from now", "Max-Age=60", "2026-03-18T12:01:00Z");
        row("no seconds from now", "Max-Age=0", "2026-03-18T12:00:00Z");
        row("a second from now", "Max-Age=1", "2026-03-18T12:00:01Z");
        row("a minus sign alone", "Max-Age=-", "");
        row("no age", "Max-Age=", "");
        row("a minus sign between", "Max-Age=1-1", "");
        row("long before now", "Max-Age=-99999999999999999999999", "2026-03-18T12:00:00Z");
        row("before now", "max-age=-60", "2026-03-18T12:00:00Z");
        row("seconds win over a date", "Max-Age=60; Expires=Wed, 21 Oct 2026 07:28:00 GMT",
            "2026-03-18T12:01:00Z");
        row("seconds win wherever they stand", "Expires=Wed, 21 Oct 2026 07:28:00 GMT; Max-Age=60",
            "2026-03-18T12:01:00Z");
        row("seconds that are none do not", "Max-Age=1h; Expires=Wed, 21 Oct 2026 07:28:00 GMT",
            "2026-10-21T07:28:00Z");
        row("a plus sign is none", "Max-Age=+60", "");
        row("a fraction is none", "Max-Age=1.5", "");
        row("the last one counts", "Max-Age=60; Max-Age=120", "2026-03-18T12:02:00Z");
    }
    void shouldReadTheExpiry()
    {
        QFETCH(QByteArray, attributes);
        QFETCH(QByteArray, expiry);
        const Cookies found = cookies({"a=1; " + attributes});
        QCOMPARE(found.size(), std::size_t{1});
        const auto expected = expiry.isEmpty() ? std::nullopt : Instant::fromText(expiry.toStdString());
        QVERIFY2(found[0].expiresAt == expected,
            found[0].expiresAt ? found[0].expiresAt->text().constData() : "none");
    }

    void shouldNotOverflowWhateverTheAge()
    {
        for (const char *age : {"9223372036854775807", "99999999999999999999999999", "31622400000"}) {
            const Cookies found = cookies({"a=1; Max-Age=" + QByteArray(age)});
            QVERIFY(found.at(0).expiresAt > *Instant::fromText("3000-01-01T00:00:00Z"));
        }
    }

    void shouldTakeAThousandYearsForEver()
    {
        const Instant end = Instant::fromMillisecondsSinceEpoch(
            m_now.millisecondsSinceEpoch() + qint64{1000} * 366 * 24 * 60 * 60 * 1000);
        for (const char *age : {"31622400000", "31622400001", "99999999999999999999999999"})
            QVERIFY(cookies({"a=1; Max-Age=" + QByteArray(age)}).at(0).expiresAt == end);
        const Instant before = *cookies({"a=1; Max-Age=31622399999"}).at(0).expiresAt;
        QCOMPARE(end.millisecondsSinceEpoch() - before.millisecondsSinceEpoch(), qint64{1000});
    }

    void shouldPassOverEmptyAttributes()
    {
        QVERIFY(cookies({"a=1;;Max-Age=60"}).at(0).expiresAt == Instant::fromText("2026-03-18T12:01:00Z"));
        QVERIFY(cookies({"a=1;=;Max-Age=60;"}).at(0).expiresAt == Instant::fromText("2026-03-18T12:01:00Z"));
    }

    void shouldGiveNothingOfADomainToAnAddressWithoutAHost()
    {
        QCOMPARE(cookies({"a=1; Domain=example.com"}, u"file:///a"_s).size(), std::size_t{0});
        QCOMPARE(cookies({"a=1"}, u"file:///a"_s).size(), std::size_t{1});
    }

    void shouldKeepTheOrderOfTheFields()
    {
        const Cookies found = cookies({"b=1", "a=2", ";;;", "b=3"});
        QCOMPARE(found.size(), std::size_t{3});
        QCOMPARE(found[0].name + found[1].name + found[2].name, u"bab"_s);
        QCOMPARE(found[2].value, u"3"_s);
    }

    void shouldMatchDomainsOfAddressesAsAWhole()
    {
        QCOMPARE(cookies({"a=1; Domain=127.0.0.1"}, u"http://127.0.0.1:80/"_s).size(), std::size_t{1});
        QCOMPARE(cookies({"a=1; Domain=0.0.1"}, u"http://127.0.0.1:80/"_s).size(), std::size_t{0});
    }

    void shouldLookAtNoOtherField()
    {
        QVERIFY(cookiesOf({{"Cookie", "a=1"}, {"Set-Cookie2", "a=1"}}, QUrl(u"https://a/"_s), m_now).empty());
    }

    void shouldSurviveThousandsOfFields()
    {
        QList<QByteArray> fields(5000, ";=,=;,a,=;;Max-Age;Expires=;Domain=;=");
        fields.append("last=1" + QByteArray(5000, ';'));
        QCOMPARE(cookies(fields).back().name, u"last"_s);
    }

    void shouldTakeNoLongerForBlanksBehindCommas()
    {
        // Looking through all the blanks for each comma would take minutes.
        const QByteArray field = "a=1" + QByteArray(300'000, ',') + QByteArray(300'000, ' ');
        const testing::WorkTimer timer;
        QCOMPARE(cookies({field}).size(), std::size_t{1});
        QVERIFY(timer.elapsed() < 2000);
    }
};

ORBITLEDGE_TEST_MAIN(CookiesTest)
#include "CookiesTest.moc"
