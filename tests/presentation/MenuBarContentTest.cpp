#include "presentation/MenuBarContent.h"

#include "support/SampleSubscriptions.h"
#include "support/TestMain.h"
#include "support/Times.h"
#include "timeline/TimelineBuilder.h"

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

class MenuBarContentTest : public QObject {
    Q_OBJECT

private:
    static MenuBarContent content(const TimelineSnapshot &snapshot, bool showsBadge = true)
    {
        MoneyFormatter money(localeNamed("en_US"));
        return menuBarOf(AuthState::SignedIn, snapshot, u"USD"_s, showsBadge, money);
    }

private Q_SLOTS:
    void shouldCountUpToNine_data()
    {
        QTest::addColumn<qint64>("count");
        QTest::addColumn<QString>("badge");
        QTest::addColumn<QString>("label");
        const auto row = [](qint64 count, const QString &badge, const QString &label) {
            QTest::addRow("%lld", count) << count << badge << label;
        };
        row(-1, QString(), QString());
        row(0, QString(), QString());
        row(1, u"1"_s, u"1 renewals due soon"_s);
        row(9, u"9"_s, u"9 renewals due soon"_s);
        row(10, u"9+"_s, u"10 renewals due soon"_s);
        row(42, u"9+"_s, u"42 renewals due soon"_s);
    }
    void shouldCountUpToNine()
    {
        QFETCH(qint64, count);
        QFETCH(QString, badge);
        QFETCH(QString, label);
        TimelineSnapshot snapshot;
        snapshot.badgeCount = count;
        QCOMPARE(content(snapshot).badge, badge);
        QCOMPARE(content(snapshot).badgeLabel, label);
    }

    void shouldShowNoBadgeWhereNoneIsWished()
    {
        TimelineSnapshot snapshot;
        snapshot.badgeCount = 5;
        QCOMPARE(content(snapshot, false).badge, QString());
        QCOMPARE(content(snapshot, false).badgeLabel, QString());
    }

    void shouldNotSpeakOfRenewalsThatNobodyKnows()
    {
        MoneyFormatter money(localeNamed("en_US"));
        const auto textFor = [&money](AuthState authState) {
            return menuBarOf(authState, TimelineSnapshot(), u"USD"_s, true, money).nextRenewal;
        };
        QCOMPARE(textFor(AuthState::Checking), QString());
        QCOMPARE(textFor(AuthState::SignedOut), u"Not signed in"_s);
        QCOMPARE(textFor(AuthState::SignedIn), u"No renewals"_s);
    }

    void shouldNameTheNextRenewal()
    {
        const auto textFor = [](const QList<Subscription> &subscriptions) {
            return content(
                buildTimeline(subscriptions, u"USD"_s, at("2026-03-18T12:00:00Z"), calendarIn("UTC")))
                .nextRenewal;
        };
        QCOMPARE(textFor({}), u"No renewals"_s);
        const Subscription overdue = SampleSubscription(u"Late"_s).renewsOn({2026, 3, 17});
        QCOMPARE(textFor({overdue}), u"No renewals"_s);
        const Subscription far = SampleSubscription(u"Far"_s).renewsOn({2026, 9, 1}).costs(u"7.5"_s);
        QCOMPARE(textFor({overdue, far}), u"Far · in 167 days · $7.50"_s);
        const Subscription near = SampleSubscription(u"Near"_s).renewsOn({2026, 3, 19});
        QCOMPARE(textFor({far, near, overdue}), u"Near · tomorrow · $10.00"_s);
    }
};

ORBITLEDGE_TEST_MAIN(MenuBarContentTest)
#include "MenuBarContentTest.moc"
