#include "presentation/WeekContent.h"

#include "support/SampleSubscriptions.h"
#include "support/TestMain.h"
#include "support/Times.h"
#include "timeline/TimelineBuilder.h"

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

class WeekContentTest : public QObject {
    Q_OBJECT

private:
    static QList<WeekDayContent> week(const QList<Subscription> &subscriptions, const char *locale)
    {
        const Calendar calendar(*TimeZone::named("Europe/Berlin"), localeNamed(locale));
        DateFormatter dates(localeNamed(locale));
        return weekOf(buildTimeline(subscriptions, u"USD"_s, at("2026-03-18T12:00:00Z"), calendar), dates);
    }

private Q_SLOTS:
    void shouldShowSevenDaysInTheOrderOfTheRegion()
    {
        const QList<WeekDayContent> american = week({}, "en_US");
        QCOMPARE(american.size(), 7);
        QString weekdays;
        QStringList days;
        for (const WeekDayContent &day : american) {
            weekdays += day.weekday;
            days += day.day;
            QCOMPARE(day.isToday, day.day == u"18");
        }
        QCOMPARE(weekdays, u"SMTWTFS"_s);
        QCOMPARE(days.join(u' '), u"15 16 17 18 19 20 21"_s);
        QCOMPARE(week({}, "de_DE").constFirst().day, u"16"_s);
        QCOMPARE(week({}, "ar_EG").constFirst().day, u"١٤"_s);
        QCOMPARE(week({}, "fa_IR").constFirst().weekday, u"ش"_s);
    }

    void shouldWriteWeekdaysInCapitals()
    {
        QCOMPARE(week({}, "nn_NO").constFirst().weekday, u"M"_s);
        QCOMPARE(week({}, "vi_VN").constFirst().weekday, u"T2"_s);
        // Where the small form is the usual one.
        QCOMPARE(week({}, "sl_SI").constFirst().weekday, u"P"_s);
    }

    void shouldCountAllRenewalsBeyondTheDots()
    {
        QList<Subscription> subscriptions;
        for (int i = 0; i < 5; ++i)
            subscriptions.append(SampleSubscription(QString::number(i)).renewsOn({2026, 3, 20}));
        subscriptions.append(SampleSubscription(u"paused"_s).renewsOn({2026, 3, 20}).withStatus(u"paused"_s));
        subscriptions.append(SampleSubscription(u"other day"_s).renewsOn({2026, 3, 16}));
        const QList<WeekDayContent> days = week(subscriptions, "en_US");
        QCOMPARE(days[5].dots.size(), 3);
        QCOMPARE(days[5].label, u"Friday, March 20, 2026, 5 renewal"_s);
        QCOMPARE(days[1].dots.size(), 1);
        QCOMPARE(days[1].label, u"Monday, March 16, 2026, 1 renewal"_s);
        QVERIFY(days[3].dots.isEmpty());
        QCOMPARE(days[3].label, u"Wednesday, March 18, 2026, 0 renewal"_s);
    }
};

ORBITLEDGE_TEST_MAIN(WeekContentTest)
#include "WeekContentTest.moc"
