#include "platform/linux/notifications/NotificationQueue.h"

#include "support/NotificationDesk.h"
#include "support/TestMain.h"

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

namespace {

const QString screen = u"bus:1.1"_s;

NotificationQueue reread(const NotificationQueue &queue)
{
    auto decoded = NotificationQueue::decoded(queue.encoded());
    if (!decoded)
        qFatal("%s", qPrintable(decoded.error()));
    return *std::move(decoded);
}

QStringList identifiersOf(const NotificationQueue &queue, Instant now)
{
    QStringList identifiers;
    for (const PendingNotification &pending : queue.pending(now))
        identifiers.append(pending.request.identifier);
    return identifiers;
}

/// Shows everything that is due; how many notifications that took.
int showAll(NotificationQueue &queue, Instant now, Instant startOfRun)
{
    int count = 0;
    while (const auto batch = queue.nextBatch(now, startOfRun)) {
        if (!queue.recordShown(*batch, now, screen, static_cast<quint32>(++count)))
            qFatal("what was shown is not wanted");
    }
    return count;
}

} // namespace

class NotificationQueueTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldFireAtTheWallClockOfTheZone_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<LocalDate>("date");
        QTest::addColumn<int>("hour");
        QTest::addColumn<QByteArray>("instant");
        QTest::newRow("winter") << QByteArray("Europe/Berlin") << LocalDate{2026, 3, 28} << 9
                                << QByteArray("2026-03-28T08:00:00Z");
        QTest::newRow("the day the clocks go forward")
            << QByteArray("Europe/Berlin") << LocalDate{2026, 3, 29} << 9
            << QByteArray("2026-03-29T07:00:00Z");
        QTest::newRow("the day the clocks go back") << QByteArray("Europe/Berlin") << LocalDate{2026, 10, 25}
                                                    << 9 << QByteArray("2026-10-25T08:00:00Z");
        QTest::newRow("a skipped time fires at the end of the gap") << QByteArray(
            "Europe/Berlin") << LocalDate{2026, 3, 29} << 2 << QByteArray("2026-03-29T01:00:00Z");
        QTest::newRow("a repeated time fires the first time") << QByteArray(
            "Europe/Berlin") << LocalDate{2026, 10, 25} << 2 << QByteArray("2026-10-25T00:00:00Z");
        QTest::newRow("half an hour off") << QByteArray("Asia/Kolkata") << LocalDate{2026, 3, 18} << 9
                                          << QByteArray("2026-03-18T03:30:00Z");
    }

    void shouldFireAtTheWallClockOfTheZone()
    {
        QFETCH(const QByteArray, zone);
        QFETCH(const LocalDate, date);
        QFETCH(const int, hour);
        QFETCH(const QByteArray, instant);
        const auto fires = fireInstant({.timeZone = zone, .date = date, .hour = hour, .minute = 0});
        QVERIFY(fires);
        QCOMPARE(fires->text(), instant);
    }

    void shouldRefuseTimesThatAreNone_data()
    {
        QTest::addColumn<LocalDate>("date");
        QTest::addColumn<int>("hour");
        QTest::addColumn<int>("minute");
        QTest::newRow("30 February") << LocalDate{2026, 2, 30} << 9 << 0;
        QTest::newRow("hour 24") << LocalDate{2026, 2, 3} << 24 << 0;
        QTest::newRow("hour -1") << LocalDate{2026, 2, 3} << -1 << 0;
        QTest::newRow("minute 60") << LocalDate{2026, 2, 3} << 9 << 60;
        QTest::newRow("minute -1") << LocalDate{2026, 2, 3} << 9 << -1;
        QTest::newRow("a year beyond all files") << LocalDate{10'000, 1, 1} << 9 << 0;
    }

    void shouldRefuseTimesThatAreNone()
    {
        QFETCH(const LocalDate, date);
        QFETCH(const int, hour);
        QFETCH(const int, minute);
        NotificationRequest request = reminderOn(date);
        request.trigger = CalendarTrigger{.timeZone = "UTC", .date = date, .hour = hour, .minute = minute};
        NotificationQueue queue;
        QVERIFY(!queue.add(request, at("2026-01-01T00:00:00Z")));
        QCOMPARE(queue, NotificationQueue());
    }

    void shouldTakeTheMachinesZoneForAnUnknownOne()
    {
        const CalendarTrigger trigger{
            .timeZone = "Mars/Olympus", .date = {2026, 3, 18}, .hour = 9, .minute = 0};
        CalendarTrigger here = trigger;
        here.timeZone = TimeZone::system().id();
        QCOMPARE(fireInstant(trigger), fireInstant(here));
        QVERIFY(fireInstant(trigger));
    }

    void shouldNeverFireWhenTheMinuteWasOver_data()
    {
        QTest::addColumn<QByteArray>("now");
        QTest::addColumn<int>("pending");
        QTest::newRow("before") << QByteArray("2026-03-18T07:59:59Z") << 1;
        QTest::newRow("in its minute") << QByteArray("2026-03-18T08:00:59.999Z") << 1;
        QTest::newRow("after") << QByteArray("2026-03-18T08:01:00Z") << 0;
        QTest::newRow("days after") << QByteArray("2026-03-20T08:00:00Z") << 0;
    }

    void shouldNeverFireWhenTheMinuteWasOver()
    {
        QFETCH(const QByteArray, now);
        QFETCH(const int, pending);
        NotificationQueue queue;
        QVERIFY(queue.add(reminderOn({2026, 3, 18}), at(now)));
        QCOMPARE(queue.pending(at(now)).size(), pending);
    }

    void shouldReplaceAPendingRequestOfTheSameIdentifier()
    {
        const Instant now = at("2026-03-17T12:00:00Z");
        NotificationQueue queue;
        queue.add(reminderOn({2026, 3, 18}), now);
        NotificationRequest later = reminderOn({2026, 3, 19});
        later.content.body = u"Later."_s;
        queue.add(later, now);
        QCOMPARE(queue.pending(now), (QList<PendingNotification>{{later, false}}));
        QCOMPARE(queue.nextDue(now), at("2026-03-19T08:00:00Z"));
    }

    void shouldSayWhatIsOnItsWay()
    {
        const Instant now = at("2026-03-18T07:00:00Z");
        NotificationQueue queue;
        queue.add(reminderOn({2026, 3, 18}), now);
        queue.add(reminderAtOnce(u"b"_s), now);
        QCOMPARE(queue.pending(now)[0].isOnItsWay, false);
        QCOMPARE(queue.pending(now)[1].isOnItsWay, true);
        QCOMPARE(queue.pending(at("2026-03-18T08:00:00Z"))[0].isOnItsWay, true);
    }

    void shouldKeepTheTimeOfWhatIsOnItsWay()
    {
        // Planned anew while it waits for somebody to show it, it must not be put off.
        NotificationQueue queue;
        queue.add(reminderAtOnce(), at("2026-03-18T07:00:00Z"));
        NotificationRequest again = reminderAtOnce();
        again.content.body = u"Other words."_s;
        queue.add(again, at("2026-03-18T07:00:01Z"));
        QCOMPARE(queue.nextDue(at("2026-03-18T07:00:01Z")), at("2026-03-18T07:00:02Z"));
        const auto batch = queue.nextBatch(at("2026-03-18T07:00:02Z"), at("2026-03-18T07:00:00Z"));
        QVERIFY(batch);
        QCOMPARE(batch->content.body, u"Other words."_s);
    }

    void shouldShowInTheOrderOfTheirTimes()
    {
        const Instant start = at("2026-03-17T12:00:00Z");
        NotificationQueue queue;
        queue.add(reminderOn({2026, 3, 19}, u"second"_s), start);
        queue.add(reminderOn({2026, 3, 18}, u"first"_s), start);
        queue.add(reminderOn({2026, 3, 19}, u"third"_s), start);
        QStringList titles;
        const Instant now = at("2026-03-19T08:00:00Z");
        while (const auto batch = queue.nextBatch(now, start)) {
            titles.append(batch->content.title);
            queue.recordShown(*batch, now, screen, static_cast<quint32>(titles.size()));
        }
        QCOMPARE(titles, (QStringList{u"first"_s, u"second"_s, u"third"_s}));
    }

    void shouldDropWhatIsOverBeforeItWasShown()
    {
        NotificationQueue queue;
        queue.add(reminderOn({2026, 3, 18}), at("2026-03-17T12:00:00Z")); // renews on the 21st
        queue.expire(at("2026-03-21T22:00:00Z"), {2026, 3, 21});
        QVERIFY(queue.hasDue(at("2026-03-21T22:00:00Z")));
        queue.expire(at("2026-03-21T23:00:00Z"), {2026, 3, 22});
        QVERIFY(!queue.hasDue(at("2026-03-21T23:00:00Z")));
        QVERIFY(queue.pending(at("2026-03-21T23:00:00Z")).isEmpty());
    }

    void shouldNotAnnounceTwice()
    {
        const Instant now = at("2026-03-18T08:00:00Z");
        NotificationQueue queue;
        queue.add(reminderOn({2026, 3, 18}), now);
        QCOMPARE(showAll(queue, now, now), 1);
        queue.recordClosed(screen, 1);
        queue.add(reminderAtOnce(), now);
        QVERIFY(queue.pending(now).isEmpty());
        QCOMPARE(showAll(queue, later(now, hour), now), 0);
        // Nor after another start, where nobody knows whether it is still on the screen.
        NotificationQueue next = reread(queue);
        next.add(reminderAtOnce(), now);
        QVERIFY(next.pending(now).isEmpty());
    }

    void shouldReplaceTheTextOfWhatIsStillShown()
    {
        const Instant now = at("2026-03-18T08:00:00Z");
        NotificationQueue queue;
        queue.add(reminderOn({2026, 3, 18}), now);
        QCOMPARE(showAll(queue, now, now), 1);
        NotificationRequest again = reminderAtOnce();
        again.content.body = u"Other words."_s;
        queue.add(again, now);
        const auto batch = queue.nextBatch(later(now, 2 * second), now);
        QVERIFY(batch);
        QVERIFY(batch->replaced);
        QCOMPARE(batch->replaced->number, 1U);
        QVERIFY(queue.recordShown(*batch, now, screen, 1));
        QVERIFY(queue.shown(screen, 1));
        QVERIFY(queue.pending(now).isEmpty());
    }

    void shouldNotReplaceWhatWasClosedMeanwhile()
    {
        const Instant now = at("2026-03-18T08:00:00Z");
        NotificationQueue queue;
        queue.add(reminderOn({2026, 3, 18}), now);
        showAll(queue, now, now);
        queue.add(reminderAtOnce(), now); // waits, as it is still shown
        QCOMPARE(queue.pending(now).size(), 1);
        queue.recordClosed(screen, 1);
        queue.expire(later(now, 2 * second), {2026, 3, 18});
        QVERIFY(!queue.nextBatch(later(now, 2 * second), now));
    }

    void shouldTakeASecondRequestWithTheSameTextForDoneWhileTheFirstIsBeingShown()
    {
        const Instant now = at("2026-03-18T08:00:00Z");
        NotificationQueue queue;
        queue.add(reminderOn({2026, 3, 18}), now);
        const auto batch = queue.nextBatch(now, now);
        queue.add(reminderAtOnce(), now);
        QVERIFY(queue.recordShown(*batch, now, screen, 1));
        QVERIFY(queue.pending(now).isEmpty());
    }

    void shouldNotWantWhatWasRemovedWhileItWasBeingShown()
    {
        const Instant now = at("2026-03-18T08:00:00Z");
        NotificationQueue queue;
        queue.add(reminderOn({2026, 3, 18}), now);
        const auto batch = queue.nextBatch(now, now);
        queue.forget(u"orbitledge.renewal."_s);
        QVERIFY(!queue.recordShown(*batch, now, screen, 1));
        QCOMPARE(queue.encoded(), NotificationQueue().encoded());
    }

    void shouldGatherLateOnesOnlyWhereTheyAreMany_data()
    {
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("notifications");
        QTest::newRow("one") << 1 << 1;
        QTest::newRow("three") << 3 << 3;
        QTest::newRow("four") << 4 << 1;
        QTest::newRow("sixty") << 60 << 1;
    }

    void shouldGatherLateOnesOnlyWhereTheyAreMany()
    {
        QFETCH(const int, count);
        QFETCH(const int, notifications);
        NotificationQueue before;
        for (int i = 0; i < count; ++i)
            before.add(reminderOn({2026, 3, 18}, QString::number(i)), at("2026-03-17T12:00:00Z"));
        NotificationQueue queue = reread(before);
        const Instant start = at("2026-03-18T10:00:00Z");
        const auto batch = queue.nextBatch(start, start);
        QVERIFY(batch);
        if (count > 3) {
            QCOMPARE(batch->content.title, u"Orbitledge"_s);
            QCOMPARE(batch->content.body,
                QString::number(count) + u" reminders came due while Orbitledge was not running."_s);
            QVERIFY(batch->content.userInfo.isEmpty());
        }
        QCOMPARE(showAll(queue, start, start), notifications);
        // Each of them counts as told.
        NotificationQueue next = reread(queue);
        for (int i = 0; i < count; ++i)
            next.add(reminderAtOnce(QString::number(i)), start);
        QVERIFY(next.pending(start).isEmpty());
    }

    void shouldNotGatherWhatComesDueAtTheStartOrAfterIt()
    {
        NotificationQueue before;
        for (int i = 0; i < 5; ++i)
            before.add(reminderOn({2026, 3, 18}, QString::number(i)), at("2026-03-17T12:00:00Z"));
        // Started for them, some seconds late.
        NotificationQueue started = reread(before);
        const Instant justAfter = at("2026-03-18T08:00:40Z");
        QCOMPARE(showAll(started, justAfter, justAfter), 5);
        // Running, but nobody was there to show them for hours.
        NotificationQueue running = reread(before);
        QCOMPARE(showAll(running, at("2026-03-18T12:00:00Z"), at("2026-03-18T06:00:00Z")), 5);
    }

    void shouldNotGatherWhatWasMadeInThisRun()
    {
        const Instant start = at("2026-03-18T06:00:00Z");
        NotificationQueue queue;
        for (int i = 0; i < 5; ++i)
            queue.add(reminderOn({2026, 3, 18}, QString::number(i)), start);
        QCOMPARE(showAll(queue, at("2026-03-19T12:00:00Z"), start), 5);
    }

    void shouldShowATestBesideWhatIsGathered()
    {
        NotificationQueue before;
        for (int i = 0; i < 4; ++i)
            before.add(reminderOn({2026, 3, 18}, QString::number(i)), at("2026-03-17T12:00:00Z"));
        NotificationRequest test = reminderAtOnce();
        test.identifier = u"orbitledge.test.1"_s;
        test.lastDay.reset();
        before.add(test, at("2026-03-17T12:00:00Z"));
        NotificationQueue queue = reread(before);
        const Instant start = at("2026-03-18T10:00:00Z");
        QCOMPARE(queue.nextBatch(start, start)->identifiers.size(), 4);
        QCOMPARE(showAll(queue, start, start), 2);
    }

    void shouldForgetByPrefix()
    {
        const Instant now = at("2026-03-18T08:00:00Z");
        NotificationQueue queue;
        queue.add(reminderOn({2026, 3, 18}, u"shown"_s), now);
        showAll(queue, now, now);
        queue.add(reminderOn({2026, 3, 19}, u"pending"_s), now);
        queue.add(reminderAtOnce(u"on its way"_s), now);
        NotificationRequest test = reminderAtOnce();
        test.identifier = u"orbitledge.test.1"_s;
        queue.add(test, now);

        const auto takenBack = queue.forget(u"orbitledge.renewal."_s);
        QCOMPARE(takenBack.size(), 1);
        QCOMPARE(takenBack[0].number, 1U);
        QCOMPARE(identifiersOf(queue, now), QStringList{u"orbitledge.test.1"_s});
        queue.add(reminderAtOnce(u"shown"_s), now);
        QCOMPARE(queue.pending(now).size(), 2);
    }

    void shouldRememberForSixtyDaysAfterTheRenewal()
    {
        const Instant now = at("2026-03-18T08:00:00Z");
        NotificationQueue queue;
        queue.add(reminderOn({2026, 3, 18}), now); // renews on the 21st
        showAll(queue, now, now);
        queue.recordClosed(screen, 1);
        const auto isRemembered = [&](const LocalDate &today) {
            NotificationQueue copy = reread(queue);
            copy.expire(at("2026-05-21T08:00:00Z"), today);
            copy.add(reminderAtOnce(), at("2026-05-21T08:00:00Z"));
            return copy.pending(at("2026-05-21T08:00:00Z")).isEmpty();
        };
        QVERIFY(isRemembered({2026, 5, 20}));
        QVERIFY(!isRemembered({2026, 5, 21}));
    }

    void shouldKnowItsOwnNumbersOnly()
    {
        const Instant now = at("2026-03-18T08:00:00Z");
        NotificationQueue queue;
        queue.add(reminderOn({2026, 3, 18}), now);
        showAll(queue, now, now);
        QCOMPARE(queue.shown(screen, 1)->userInfo[u"url"_s], u"https://example.com/a"_s);
        QVERIFY(!queue.shown(screen, 2));
        QVERIFY(!queue.shown(u"bus:1.2"_s, 1));
        // Also after another start, as long as it is the same daemon.
        NotificationQueue next = reread(queue);
        QVERIFY(next.shown(screen, 1));
        next.recordDisplay(u"bus:1.2"_s);
        QVERIFY(!next.hasShown());
    }

    void shouldComeBackFromTheFileAsItWas()
    {
        const Instant now = at("2026-03-18T08:00:00.123Z");
        NotificationQueue queue;
        queue.setAsked();
        queue.add(reminderOn({2026, 3, 18}, u"shown \u20ac \"quoted\"\n"_s), now);
        showAll(queue, now, now);
        queue.add(reminderOn({2026, 3, 19}, u"pending"_s), now);
        queue.add(reminderAtOnce(u"soon"_s), now);
        const NotificationQueue next = reread(queue);
        QVERIFY(next.wasAsked());
        QCOMPARE(next.encoded(), queue.encoded());
        QCOMPARE(next.nextDue(now), at("2026-03-18T08:00:02.123Z"));
        QCOMPARE(next.pending(now).first(), queue.pending(now).first());
    }

    void shouldRefuseFilesThatAreNotItsOwn_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("garbage") << QByteArray("\x00\xff{", 3);
        QTest::newRow("cut off") << NotificationQueue().encoded().chopped(3);
        QTest::newRow("an array") << QByteArray("[]");
        QTest::newRow("without version") << QByteArray("{}");
        QTest::newRow("a later version") << QByteArray(R"({"version": 2})");
        QTest::newRow("a version that is a text") << QByteArray(R"({"version": "1"})");
    }

    void shouldRefuseFilesThatAreNotItsOwn()
    {
        QFETCH(const QByteArray, content);
        const auto decoded = NotificationQueue::decoded(content);
        QVERIFY(!decoded);
        QVERIFY(!decoded.error().isEmpty());
    }

    void shouldPassOverEntriesThatAreNotItsOwn()
    {
        const auto decoded = NotificationQueue::decoded(R"({"version": 1, "wasAsked": 3,
            "requests": [7, {}, {"identifier": "x"},
                {"identifier": "bad hour", "trigger": {"date": "2026-03-18", "hour": 24, "minute": 0}},
                {"identifier": "half a minute", "trigger": {"date": "2026-03-18", "hour": 9, "minute": 0.5}},
                {"identifier": "no day", "trigger": {"date": "2026-02-30", "hour": 9, "minute": 0}},
                {"identifier": "good", "trigger": {"at": "2026-03-18T08:00:00Z"}},
                {"identifier": "good", "trigger": {"at": "2026-03-19T08:00:00Z"}}],
            "delivered": [7, {}, {"identifier": "x"}, {"at": "2026-03-18T08:00:00Z"}],
            "shown": [7, {}, {"number": 1}, {"number": -1, "display": "x", "identifiers": ["x"]},
                {"number": 1e99, "display": "x", "identifiers": ["x"]}]})");
        QVERIFY(decoded);
        const Instant now = at("2026-03-18T07:00:00Z");
        QCOMPARE(identifiersOf(*decoded, now), QStringList{u"good"_s});
        QCOMPARE(decoded->nextDue(now), at("2026-03-18T08:00:00Z"));
        QVERIFY(!decoded->hasShown());
        QVERIFY(!decoded->wasAsked());
    }
};

ORBITLEDGE_TEST_MAIN(NotificationQueueTest)
#include "NotificationQueueTest.moc"
