#include "presentation/SettingsContent.h"

#include "support/SampleRecords.h"
#include "support/TestMain.h"
#include "support/Times.h"

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

class SettingsContentTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldNameTheAppearances()
    {
        QStringList titles;
        for (const Appearance appearance : appearances)
            titles.append(titleOf(appearance));
        QCOMPARE(titles, (QStringList{u"Match System"_s, u"Light"_s, u"Dark"_s}));
    }

    void shouldSayDayForOneOnly_data()
    {
        QTest::addColumn<qint64>("days");
        QTest::addColumn<QString>("suffix");
        QTest::newRow("none") << qint64{0} << u" days before"_s;
        QTest::newRow("one") << qint64{1} << u" day before"_s;
        QTest::newRow("two") << qint64{2} << u" days before"_s;
        QTest::newRow("most") << qint64{14} << u" days before"_s;
    }
    void shouldSayDayForOneOnly()
    {
        QFETCH(qint64, days);
        QTEST(leadDaysSuffix(days), "suffix");
    }

    void shouldTellOfRemindersThatWaitForRoom()
    {
        QVERIFY(!budgetNote(0));
        QVERIFY(!budgetNote(-1));
        QCOMPARE(budgetNote(1),
            u"macOS limits how many reminders an app can queue, so the 1 furthest-out renewals are "
            "scheduled later, as nearer ones pass."_s);
        QVERIFY(budgetNote(12)->contains(u" the 12 furthest-out "_s));
    }

    void shouldTellWhyNoRemindersAppear()
    {
        const auto undecided = authorizationNote(NotificationAuthorization::NotDetermined);
        QCOMPARE(undecided->text,
            u"macOS has not granted notification permission yet, so no reminders will appear."_s);
        QVERIFY(!undecided->offersSettings);
        const auto denied = authorizationNote(NotificationAuthorization::Denied);
        QCOMPARE(
            denied->text, u"macOS is blocking notifications for Orbitledge, so no reminders will appear."_s);
        QVERIFY(denied->offersSettings);
        QVERIFY(!authorizationNote(NotificationAuthorization::Authorized));
        QVERIFY(!authorizationNote(NotificationAuthorization::Provisional));
    }

    void shouldTellWhoIsSignedIn()
    {
        AppState state;
        // What could not be checked can be left.
        QCOMPARE(accountOf(state), (AccountContent{.email = std::nullopt, .canSignOut = true}));
        state.user = sampleProfile();
        state.authState = AuthState::SignedIn;
        QCOMPARE(accountOf(state), (AccountContent{.email = sampleProfile().email, .canSignOut = true}));
        state.user.reset();
        state.authState = AuthState::SignedOut;
        QCOMPARE(accountOf(state), AccountContent{});
    }

    void shouldNameWhatIsRunningAndWhomItTalksTo()
    {
        AboutProgram about{.version = u"1.4.2"_s, .build = u"900"_s, .api = {}};
        QCOMPARE(versionText(about), u"1.4.2 (900)"_s);
        about.version.clear();
        QCOMPARE(versionText(about), u"1.0 (900)"_s);
        about.api = QUrl(u"https://api.example.com:8443/v1/?key=value"_s);
        QCOMPARE(apiText(about), u"api.example.com"_s);
    }

    void shouldOfferANewerVersion()
    {
        AppState state;
        QVERIFY(!updateOfferOf(state));
        state.availableUpdate.emplace();
        state.availableUpdate->version = u"1.4.2"_s;
        QCOMPARE(updateOfferOf(state),
            (UpdateOffer{.text = u"Version 1.4.2 is ready to download."_s, .buttonLabel = u"Get 1.4.2"_s}));
    }

    void shouldTellWhenItLookedForOneLast()
    {
        const Locale locale = localeNamed("en_US");
        DateFormatter dates(locale);
        const Calendar calendar(*TimeZone::named("Asia/Tokyo"), locale);
        QVERIFY(!lastCheckText(std::nullopt, dates, calendar));
        // It is tomorrow there.
        QCOMPARE(lastCheckText(at("2026-03-18T18:41:00Z"), dates, calendar),
            u"Last checked Mar 19, 3:41\u202fAM"_s);
    }
};

ORBITLEDGE_TEST_MAIN(SettingsContentTest)
#include "SettingsContentTest.moc"
