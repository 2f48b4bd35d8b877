#include "support/Browser.h"

#include "model/RecordCodecs.h"
#include "support/DemoService.h"
#include "support/HttpExchange.h"
#include "support/TestMain.h"

#include <algorithm>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

/// What a person does on the pages, with a real browser.
class BrowserTest : public QObject {
    Q_OBJECT

    DemoService m_service;
    Browser m_browser;

    QUrl at(const QString &path) const { return m_service.baseUrl().resolved(QUrl(path)); }

    void signIn(const QString &path)
    {
        QVERIFY2(m_browser.open(at(path)), qPrintable(m_browser.problem()));
        QCOMPARE(m_browser.path(), u"/login"_s);
        QVERIFY(m_browser.type(u"#email"_s, DemoService::email));
        QVERIFY(m_browser.type(u"#password"_s, DemoService::password));
        QVERIFY(m_browser.follow(u"#sign-in"_s));
    }

    QList<Subscription> subscriptionsOfAnotherSession() const
    {
        HttpExchange http(m_service.port());
        const QByteArray cookie = http.signIn(DemoService::email, DemoService::password);
        const auto answer = http.get("/subscriptions", cookie);
        return decodeJson<QList<Subscription>>(answer.body).value_or(QList<Subscription>());
    }

    Subscription named(const QString &name) const
    {
        const auto all = subscriptionsOfAnotherSession();
        const auto found = std::ranges::find(all, name, &Subscription::name);
        return found == all.end() ? Subscription() : *found;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(Browser::isInstalled(), "the packages chromium and chromium-driver are needed");
        // In the middle of a month, so that its renewals are all on one page.
        QVERIFY2(m_service.start({}, {u"--today"_s, u"2026-03-11"_s}), qPrintable(m_service.problem()));
        QVERIFY2(m_browser.start(), qPrintable(m_browser.problem()));
    }

    void shouldLeadFromTheCalendarToAnEditThatOthersSee()
    {
        signIn(u"/calendar"_s);
        QCOMPARE(m_browser.path(), u"/calendar"_s);
        QCOMPARE(m_browser.textOf(u"h1"_s), u"March 2026"_s);
        QVERIFY(m_browser.textOf(u"td.today"_s).value_or(QString()).contains(u"Northlight Video"_s));

        QVERIFY(m_browser.follow(u"td.today a.chip"_s));
        QVERIFY(m_browser.path().endsWith(u"/edit"_s));
        QCOMPARE(m_browser.propertyOf(u"#cost"_s, u"value"_s), u"15.99"_s);
        QVERIFY(m_browser.replace(u"#cost"_s, u"17,49"_s));
        QVERIFY(m_browser.follow(u"#save"_s));
        QCOMPARE(m_browser.textOf(u"#message"_s), u"Saved."_s);
        QCOMPARE(m_browser.propertyOf(u"#cost"_s, u"value"_s), u"17.49"_s);

        QCOMPARE(named(u"Northlight Video"_s).cost, *Decimal::fromText("17.49"));
    }

    void shouldKeepWhatWasTypedWhereItIsWrong()
    {
        const QString id = named(u"Cloud Attic"_s).id.toString(QUuid::WithoutBraces);
        QVERIFY(m_browser.open(at(u"/subscriptions/"_s + id.toUpper() + u"/edit"_s)));
        QVERIFY(m_browser.replace(u"#name"_s, u"Cloud <Attic> & Söhne"_s));
        QVERIFY(m_browser.replace(u"#cost"_s, u"much"_s));
        QVERIFY(m_browser.follow(u"#save"_s));
        QCOMPARE(m_browser.propertyOf(u"#cost"_s, u"value"_s), u"much"_s);
        QCOMPARE(m_browser.propertyOf(u"#name"_s, u"value"_s), u"Cloud <Attic> & Söhne"_s);
        QCOMPARE(m_browser.attributeOf(u"#cost"_s, u"aria-describedby"_s), u"cost-note"_s);
        QVERIFY(m_browser.textOf(u"#cost-note"_s).value_or(QString()).contains(u"9.99"_s));
        QCOMPARE(named(u"Cloud Attic"_s).cost, *Decimal::fromText("2.99"));

        QVERIFY(m_browser.replace(u"#cost"_s, u"3.25"_s));
        QVERIFY(m_browser.follow(u"#save"_s));
        QCOMPARE(m_browser.textOf(u"#message"_s), u"Saved."_s);
        QCOMPARE(m_browser.textOf(u"h1"_s), u"Cloud <Attic> & Söhne"_s);
        QCOMPARE(named(u"Cloud <Attic> & Söhne"_s).cost, *Decimal::fromText("3.25"));
    }

    void shouldCancelAndTakeBack()
    {
        const QString id = named(u"Kettle & Bean"_s).id.toString(QUuid::WithoutBraces);
        QVERIFY(m_browser.open(at(u"/subscriptions/"_s + id + u"/edit"_s)));
        QVERIFY(m_browser.follow(u"#cancel"_s));
        QCOMPARE(m_browser.textOf(u"#message"_s), u"Marked as cancelled."_s);
        QCOMPARE(named(u"Kettle & Bean"_s).status, u"cancelled"_s);
        QVERIFY(m_browser.follow(u"#uncancel"_s));
        QCOMPARE(m_browser.count(u"#uncancel"_s), 0);
        QCOMPARE(named(u"Kettle & Bean"_s).status, u"active"_s);
    }

    void shouldFitNarrowScreensInBothColourSchemes_data()
    {
        QTest::addColumn<QString>("path");
        for (const char *path : {"/", "/calendar", "/download", "/nowhere"})
            QTest::newRow(path) << QString::fromLatin1(path);
    }
    void shouldFitNarrowScreensInBothColourSchemes()
    {
        QFETCH(QString, path);
        QVERIFY(m_browser.open(at(path)));
        QStringList backgrounds;
        for (const bool dark : {false, true}) {
            QVERIFY(m_browser.show(360, 740, dark));
            const auto overhang
                = m_browser.evaluate(u"return document.documentElement.scrollWidth - innerWidth"_s);
            QVERIFY(overhang);
            QVERIFY2(overhang->toInt() <= 0, "the page is wider than the screen");
            backgrounds.append(
                m_browser.evaluate(u"return getComputedStyle(document.body).backgroundColor"_s)->toString());
        }
        QCOMPARE(backgrounds, QStringList({u"rgb(239, 239, 242)"_s, u"rgb(16, 16, 16)"_s}));
        QVERIFY(m_browser.show(1100, 800));
    }

    void shouldSignOut()
    {
        QVERIFY(m_browser.open(at(u"/"_s)));
        QVERIFY(m_browser.cookie(u"orbitledge_user_session"_s));
        QVERIFY(m_browser.follow(u"header button"_s));
        QCOMPARE(m_browser.path(), u"/"_s);
        QVERIFY(!m_browser.cookie(u"orbitledge_user_session"_s));
        QVERIFY(m_browser.open(at(u"/calendar"_s)));
        QCOMPARE(m_browser.path(), u"/login"_s);
    }

    void cleanupTestCase()
    {
        m_browser.stop();
        QCOMPARE(m_service.stop(), std::optional(0));
    }
};

ORBITLEDGE_TEST_MAIN(BrowserTest)
#include "BrowserTest.moc"
