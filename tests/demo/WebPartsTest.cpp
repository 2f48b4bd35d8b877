#include "demo/Html.h"
#include "demo/HttpMessages.h"
#include "demo/Options.h"
#include "demo/SignInThrottle.h"
#include "support/TestMain.h"

using namespace orbitledge::demo;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

/// The small parts between HTTP and pages, each by itself.
class WebPartsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldEscapeTextsAndAttributes()
    {
        const Html html
            = element("a"_L1, {{"title"_L1, u"\"'<&>"_s}, flag("hidden"_L1), {"id"_L1, {}, false}},
                Html(u"<b> & 'c' \u0007"_s) + element("i"_L1, {}, u"x"_s));
        QCOMPARE(html.markup(),
            u"<a title=\"&quot;&#39;&lt;&amp;&gt;\" hidden>&lt;b&gt; &amp; &#39;c&#39; \uFFFD<i>x</i></a>"_s);
        QCOMPARE(voidElement("br"_L1, {}).markup(), u"<br>"_s);
    }

    void shouldLeadToLocalPlacesOnly_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QByteArray>("place");
        QTest::newRow("page") << u"/calendar"_s << "/calendar"_ba;
        QTest::newRow("with a query") << u"/calendar?month=2026-03"_s << "/calendar?month=2026-03"_ba;
        QTest::newRow("empty") << QString() << "/"_ba;
        QTest::newRow("other site") << u"https://evil.example/"_s << "/"_ba;
        QTest::newRow("no scheme") << u"//evil.example/"_s << "/"_ba;
        QTest::newRow("backslash") << u"/\\evil.example"_s << "/"_ba;
        QTest::newRow("backslash first") << u"\\/evil.example"_s << "/"_ba;
        QTest::newRow("tab between") << u"/\t/evil.example"_s << "/"_ba;
        QTest::newRow("new header") << u"/x\r\nSet-Cookie: a=b"_s << "/"_ba;
        QTest::newRow("script") << u"javascript:alert(1)"_s << "/"_ba;
        QTest::newRow("relative") << u"calendar"_s << "/"_ba;
        QTest::newRow("endless") << QString(u'/' + QString(2'000, u'x')) << "/"_ba;
    }
    void shouldLeadToLocalPlacesOnly()
    {
        QFETCH(QString, path);
        QFETCH(QByteArray, place);
        QCOMPARE(localPathOrRoot(path), place);
    }

    void shouldReadForms()
    {
        const FormFields form = FormFields::parse("a=1+2&b=%C3%A4%26&c&=x&a=3&d=%zz&&e==");
        QCOMPARE(form.find("a"_L1), u"1 2"_s);
        QCOMPARE(form.find("b"_L1), u"ä&"_s);
        QCOMPARE(form.find("c"_L1), QString());
        QCOMPARE(form.find("e"_L1), u"="_s);
        QVERIFY(form.find("d"_L1));
        QVERIFY(!form.find("f"_L1));
        QCOMPARE(form.value("f"_L1), QString());
    }

    void shouldFindACookieAmongOthers()
    {
        Request request;
        request.headers = {{"Cookie", "a=1; session=x=y ;b=2"}, {"COOKIE", "late=3"}};
        QCOMPARE(request.cookie("session"), "x=y"_ba);
        QCOMPARE(request.cookie("late"), "3"_ba);
        QVERIFY(!request.cookie("sess"));
    }

    void shouldSlowDownGuessesOfOneEmailOnly()
    {
        SignInThrottle throttle;
        const SignInThrottle::Time start{1h};
        for (int i = 0; i < SignInThrottle::failuresAllowed; ++i) {
            QVERIFY(!throttle.waitFor(u"ada"_s, start + i * 1s));
            throttle.recordFailure(u"ada"_s, start + i * 1s);
        }
        QCOMPARE(throttle.waitFor(u"ada"_s, start + 5s), 55s);
        QCOMPARE(throttle.waitFor(u"ada"_s, start + 59'500ms), 1s);
        QVERIFY(!throttle.waitFor(u"ben"_s, start + 5s));
        // One more each time that one failure leaves the window.
        QVERIFY(!throttle.waitFor(u"ada"_s, start + 60s));
        throttle.recordFailure(u"ada"_s, start + 60s);
        QCOMPARE(throttle.waitFor(u"ada"_s, start + 60s), 1s);
        QVERIFY(!throttle.waitFor(u"ada"_s, start + 200s));
    }

    void shouldReadItsOptions_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("problem");
        const QString none;
        QTest::newRow("nothing") << QStringList() << none;
        QTest::newRow("all") << QStringList({u"--port=0"_s, u"--data"_s, u"/x"_s, u"--session-lifetime"_s,
            u"2"_s, u"--today"_s, u"2026-03-18"_s, u"--populate=10"_s})
                             << none;
        QTest::newRow("port too large") << QStringList({u"--port"_s, u"65536"_s}) << u"65536"_s;
        QTest::newRow("port no number") << QStringList({u"--port=x"_s}) << u"\"x\""_s;
        QTest::newRow("no value") << QStringList({u"--data"_s}) << u"needs a value"_s;
        QTest::newRow("empty folder") << QStringList({u"--data="_s}) << u"folder"_s;
        QTest::newRow("unknown") << QStringList({u"--prot"_s}) << u"--prot"_s;
        QTest::newRow("a word") << QStringList({u"start"_s}) << u"start"_s;
        QTest::newRow("no such day") << QStringList({u"--today=2026-02-30"_s}) << u"2026-02-30"_s;
        QTest::newRow("lifetime of nothing") << QStringList({u"--session-lifetime=0"_s}) << u"\"0\""_s;
        QTest::newRow("alone") << QStringList({u"--unverified"_s}) << u"--add-account"_s;
        QTest::newRow("not together")
            << QStringList({u"--add-account=a@b"_s, u"--populate=3"_s}) << u"--populate"_s;
    }
    void shouldReadItsOptions()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, problem);
        const auto options = parseOptions(arguments, u"/home/ada/.local/share/demo"_s);
        QCOMPARE(options.has_value(), problem.isNull());
        if (!options) {
            QVERIFY2(options.error().contains(problem), qPrintable(options.error()));
            QVERIFY(!options.error().contains(u'\n'));
        }
    }
};

ORBITLEDGE_TEST_MAIN(WebPartsTest)
#include "WebPartsTest.moc"
