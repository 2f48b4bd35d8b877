#include "demo/Renewals.h"

#include "support/Printing.h"
#include "support/TestMain.h"

#include <rapidcheck.h>

using namespace orbitledge;
using namespace orbitledge::demo;
using namespace Qt::StringLiterals;

class RenewalsTest : public QObject {
    Q_OBJECT

    static LocalDate date(const char *text) { return LocalDate::fromText(text).value_or(LocalDate{0, 0, 0}); }

private Q_SLOTS:
    void shouldReadCyclesInAnyCaseAndNoOthers_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("cycle");
        QTest::newRow("monthly") << u"monthly"_s << u"monthly"_s;
        QTest::newRow("upper case") << u"WEEKLY"_s << u"weekly"_s;
        QTest::newRow("annual") << u"Annual"_s << u"yearly"_s;
        QTest::newRow("annually") << u"annually"_s << u"yearly"_s;
        QTest::newRow("quarterly") << u"quarterly"_s << u"quarterly"_s;
        QTest::newRow("another") << u"biweekly"_s << QString();
        QTest::newRow("empty") << QString() << QString();
    }
    void shouldReadCyclesInAnyCaseAndNoOthers()
    {
        QFETCH(QString, text);
        QFETCH(QString, cycle);
        const auto read = cycleFromText(text);
        QCOMPARE(read ? QString(cycleText(*read)) : QString(), cycle);
    }

    void shouldRollForwardKeepingTheDay_data()
    {
        QTest::addColumn<QString>("anchor");
        QTest::addColumn<QString>("next");
        QTest::addColumn<QString>("cycle");
        QTest::addColumn<QString>("today");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const char *anchor, const char *next, const char *cycle,
                             const char *today, const char *expected) {
            QTest::newRow(name) << QString::fromLatin1(anchor) << QString::fromLatin1(next)
                                << QString::fromLatin1(cycle) << QString::fromLatin1(today)
                                << QString::fromLatin1(expected);
        };
        row("future stays", "2026-03-18", "2026-03-18", "monthly", "2026-03-01", "2026-03-18");
        row("today stays", "2026-03-18", "2026-03-18", "monthly", "2026-03-18", "2026-03-18");
        row("yesterday stays", "2026-03-18", "2026-03-18", "monthly", "2026-03-19", "2026-03-18");
        row("the day before moves", "2026-03-18", "2026-03-18", "monthly", "2026-03-20", "2026-04-18");
        row("31st in February", "2026-01-31", "2026-01-31", "monthly", "2026-02-05", "2026-02-28");
        row("31st after February", "2026-01-31", "2026-02-28", "monthly", "2026-03-05", "2026-03-31");
        row("31st in April", "2026-01-31", "2026-03-31", "monthly", "2026-04-02", "2026-04-30");
        row("31st in a leap year", "2024-01-31", "2024-01-31", "monthly", "2024-02-10", "2024-02-29");
        row("leap day yearly", "2024-02-29", "2024-02-29", "yearly", "2024-03-10", "2025-02-28");
        row("leap day comes back", "2024-02-29", "2027-02-28", "yearly", "2027-03-10", "2028-02-29");
        row("century without leap day", "2096-02-29", "2096-02-29", "yearly", "2100-01-01", "2100-02-28");
        row("quarter over the year", "2025-11-30", "2025-11-30", "quarterly", "2026-02-01", "2026-02-28");
        row("weeks over the year", "2025-12-29", "2025-12-29", "weekly", "2026-01-08", "2026-01-12");
        row("long asleep", "2019-08-31", "2019-08-31", "monthly", "2026-06-15", "2026-06-30");
        row("many weeks", "2019-08-31", "2019-08-31", "weekly", "2026-06-15", "2026-06-20");
    }
    void shouldRollForwardKeepingTheDay()
    {
        QFETCH(QString, anchor);
        QFETCH(QString, next);
        QFETCH(QString, cycle);
        QFETCH(QString, today);
        QFETCH(QString, expected);
        const auto at = [](const QString &text) { return *LocalDate::fromText(text.toStdString()); };
        QCOMPARE(rolledForward(at(next), at(today), at(anchor), *cycleFromText(cycle)).text(), expected);
    }

    void shouldListTheRenewalsOfAMonth()
    {
        const auto texts = [](const QList<LocalDate> &dates) {
            QStringList result;
            for (const LocalDate &day : dates)
                result.append(day.text());
            return result;
        };
        QCOMPARE(texts(renewalsBetween(
                     date("2026-03-01"), date("2026-03-31"), date("2026-03-11"), BillingCycle::Weekly)),
            QStringList({u"2026-03-11"_s, u"2026-03-18"_s, u"2026-03-25"_s}));
        QCOMPARE(texts(renewalsBetween(
                     date("2026-02-01"), date("2026-02-28"), date("2026-01-31"), BillingCycle::Monthly)),
            QStringList({u"2026-02-28"_s}));
        QCOMPARE(texts(renewalsBetween(
                     date("2026-01-01"), date("2026-01-30"), date("2026-01-31"), BillingCycle::Monthly)),
            QStringList());
    }

    void shouldFindTheFirstRenewalWhateverTheDays()
    {
        const bool held = rc::check("the first renewal from a day", [] {
            const LocalDate anchor = LocalDate::fromDaysSinceEpoch(*rc::gen::inRange<qint64>(10'957, 40'000));
            const LocalDate day = LocalDate::fromDaysSinceEpoch(*rc::gen::inRange<qint64>(10'957, 60'000));
            const BillingCycle cycle = *rc::gen::elementOf(billingCycles);
            const LocalDate found = firstRenewalFrom(day, anchor, cycle);
            RC_ASSERT(found.isValid());
            RC_ASSERT(found >= day);
            RC_ASSERT(found >= anchor);
            // One by one, from the anchor on.
            qint64 index = 0;
            while (renewal(anchor, cycle, index) < day)
                ++index;
            RC_ASSERT(found == renewal(anchor, cycle, index));
        });
        QVERIFY(held);
    }
};

ORBITLEDGE_TEST_MAIN(RenewalsTest)
#include "RenewalsTest.moc"
