#include "platform/linux/notifications/DesktopNotificationCenter.h"

#include "platform/linux/ProcessLock.h"
#include "support/FakeFileStore.h"
#include "support/NotificationDesk.h"
#include "support/TestMain.h"

#include <QSignalSpy>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// A store that says how often it wrote.
class CountingFileStore final : public FileStore {
public:
    tl::expected<QByteArray, FileError> read(const std::filesystem::path &path) override
    {
        return m_real.read(path);
    }
    tl::expected<void, FileError> replace(
        const std::filesystem::path &path, const QByteArray &content) override
    {
        ++writings;
        if (isFull)
            return tl::make_unexpected(FileError{FileError::Kind::NoSpace, u"No space left on device"_s});
        return m_real.replace(path, content);
    }
    tl::expected<void, FileError> remove(const std::filesystem::path &path) override
    {
        return m_real.remove(path);
    }

    std::atomic<int> writings = 0;
    std::atomic<bool> isFull = false;

private:
    PosixFileStore m_real;
};

QByteArray contentOf(const std::filesystem::path &path)
{
    QFile file(QString::fromStdString(path.string()));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class DesktopNotificationCenterTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldShowARequestAtItsMinute()
    {
        NotificationDesk desk("2026-03-17T12:00:00Z");
        desk.startCenter();
        desk.add({reminderOn({2026, 3, 18})});
        QCOMPARE(desk.alarm->target, at("2026-03-18T08:00:00Z"));
        desk.alarm->moveTo(at("2026-03-18T07:59:59.999Z"));
        desk.settle();
        QVERIFY(desk.display->shown.isEmpty());
        desk.alarm->moveTo(at("2026-03-18T08:00:00Z"));
        QTRY_COMPARE(desk.display->shown.size(), 1);
        QCOMPARE(desk.display->shown[0].content, reminderOn({2026, 3, 18}).content);
        QTRY_VERIFY(desk.pending().isEmpty());
        QVERIFY(!desk.alarm->target);
    }

    void shouldShowAnIntervalAfterItsTime()
    {
        NotificationDesk desk("2026-03-18T12:00:00Z");
        desk.startCenter();
        desk.add({reminderAtOnce()});
        QCOMPARE(desk.alarm->target, at("2026-03-18T12:00:02Z"));
        desk.alarm->moveTo(at("2026-03-18T12:00:02Z"));
        QTRY_COMPARE(desk.display->shown.size(), 1);
    }

    void shouldShowNothingBeforeItIsStarted()
    {
        NotificationDesk desk("2026-03-18T12:00:00Z");
        desk.makeCenter();
        desk.add({reminderAtOnce()});
        desk.alarm->moveTo(at("2026-03-18T13:00:00Z"));
        desk.settle();
        QVERIFY(!desk.alarm->target);
        QVERIFY(desk.display->shown.isEmpty());
    }

    void shouldKeepRequestsAcrossRuns()
    {
        NotificationDesk desk("2026-03-17T12:00:00Z");
        desk.startCenter();
        desk.add({reminderOn({2026, 3, 18}, u"a"_s), reminderOn({2026, 3, 19}, u"b"_s)});
        desk.startCenter();
        QCOMPARE(desk.pending(), (QStringList{u"orbitledge.renewal.a"_s, u"orbitledge.renewal.b"_s}));
        QTRY_COMPARE(desk.alarm->target, at("2026-03-18T08:00:00Z"));
        desk.alarm->moveTo(at("2026-03-18T08:00:00Z"));
        QTRY_COMPARE(desk.display->titles(), QStringList{u"a"_s});
        QTRY_COMPARE(desk.alarm->target, at("2026-03-19T08:00:00Z"));
    }

    void shouldLoseWhatWasNotSaved()
    {
        NotificationDesk desk("2026-03-17T12:00:00Z");
        desk.startCenter();
        desk.add({reminderOn({2026, 3, 18})});
        QCoro::waitFor(desk.center->removePendingRequests({u"orbitledge.renewal.a"_s}));
        QVERIFY(QCoro::waitFor(desk.center->add(reminderOn({2026, 3, 19}, u"b"_s))));
        QCOMPARE(desk.pending(), QStringList{u"orbitledge.renewal.b"_s});
        // As if it had been killed here: what was there before is whole.
        desk.startCenter();
        QCOMPARE(desk.pending(), QStringList{u"orbitledge.renewal.a"_s});
    }

    void shouldDeliverAtTheNextStartWhatCameDueMeanwhile()
    {
        NotificationDesk desk("2026-03-17T12:00:00Z");
        desk.startCenter();
        desk.add({reminderOn({2026, 3, 18}, u"a"_s), reminderOn({2026, 3, 19}, u"b"_s)});
        desk.center.reset();
        desk.clock->set(at("2026-03-20T12:00:00Z"));
        desk.startCenter();
        QTRY_COMPARE(desk.display->titles(), (QStringList{u"a"_s, u"b"_s}));
        desk.startCenter();
        QVERIFY(desk.pending().isEmpty());
        desk.settle();
        QCOMPARE(desk.display->shown.size(), 2);
    }

    void shouldNotDeliverWhatIsOver()
    {
        NotificationDesk desk("2026-03-17T12:00:00Z");
        desk.startCenter();
        desk.add({reminderOn({2026, 3, 18}, u"renews on the 21st"_s),
            reminderOn({2026, 3, 19}, u"renews on the 22nd"_s)});
        desk.center.reset();
        desk.clock->set(at("2026-03-22T12:00:00Z"));
        desk.startCenter();
        QTRY_COMPARE(desk.display->titles(), QStringList{u"renews on the 22nd"_s});
        QVERIFY(desk.pending().isEmpty());
    }

    void shouldGatherManyLateOnes()
    {
        NotificationDesk desk("2026-03-17T12:00:00Z");
        desk.startCenter();
        for (int i = 0; i < 7; ++i)
            desk.add({reminderOn({2026, 3, 18}, QString::number(i))});
        desk.center.reset();
        desk.clock->set(at("2026-03-18T12:00:00Z"));
        desk.startCenter();
        QTRY_VERIFY(desk.pending().isEmpty());
        QCOMPARE(desk.display->shown.size(), 1);
        QCOMPARE(
            desk.display->shown[0].content.body, u"7 reminders came due while Orbitledge was not running."_s);
        QSignalSpy chosen(desk.center.get(), &UserNotificationCenter::chosen);
        Q_EMIT desk.display->chosen(1, u"token"_s);
        QCOMPARE(chosen.size(), 1);
        QVERIFY(chosen[0][0].value<decltype(NotificationContent::userInfo)>().isEmpty());
    }

    // ---- who shows them ----

    void shouldWaitForADisplayThatIsNotThere()
    {
        NotificationDesk desk("2026-03-18T07:00:00Z");
        desk.display->isThere = false;
        desk.startCenter();
        desk.add({reminderOn({2026, 3, 18})});
        desk.alarm->moveTo(at("2026-03-18T08:00:00Z"));
        desk.settle();
        QCOMPARE(desk.pending().size(), 1);
        desk.clock->set(at("2026-03-18T11:00:00Z"));
        desk.display->restart();
        QTRY_COMPARE(desk.display->shown.size(), 1);
        QTRY_VERIFY(desk.pending().isEmpty());
    }

    void shouldShowAgainWhatADisplayDiedOver()
    {
        NotificationDesk desk("2026-03-18T07:00:00Z");
        desk.display->diesWhileShowing = true;
        desk.startCenter();
        desk.add({reminderOn({2026, 3, 18})});
        desk.alarm->moveTo(at("2026-03-18T08:00:00Z"));
        QTRY_COMPARE(desk.display->shown.size(), 1);
        desk.settle();
        QCOMPARE(desk.pending().size(), 1);
        desk.display->diesWhileShowing = false;
        desk.display->restart();
        QTRY_COMPARE(desk.display->shown.size(), 2);
        QTRY_VERIFY(desk.pending().isEmpty());
    }

    void shouldWaitForASlowDisplayWithoutBeingHeldUp()
    {
        NotificationDesk desk("2026-03-18T07:00:00Z");
        desk.display->isSlow = true;
        desk.startCenter();
        desk.add({reminderOn({2026, 3, 18}, u"a"_s), reminderOn({2026, 3, 18}, u"b"_s)});
        desk.alarm->moveTo(at("2026-03-18T08:00:00Z"));
        QTRY_COMPARE(desk.display->waitingCount(), 1);
        desk.add({reminderOn({2026, 3, 19}, u"c"_s)});
        QCOMPARE(desk.pending().size(), 3);
        Q_EMIT desk.alarm->rang(); // does not begin a second time
        desk.settle();
        QCOMPARE(desk.display->shown.size(), 1);
        desk.display->isSlow = false;
        desk.display->answerAll();
        QTRY_COMPARE(desk.display->titles(), (QStringList{u"a"_s, u"b"_s}));
        QTRY_COMPARE(desk.pending(), QStringList{u"orbitledge.renewal.c"_s});
    }

    void shouldTakeBackWhatWasRemovedWhileItWasBeingShown()
    {
        NotificationDesk desk("2026-03-18T07:00:00Z");
        desk.display->isSlow = true;
        desk.startCenter();
        desk.add({reminderOn({2026, 3, 18})});
        desk.alarm->moveTo(at("2026-03-18T08:00:00Z"));
        QTRY_COMPARE(desk.display->waitingCount(), 1);
        QVERIFY(QCoro::waitFor(desk.center->forget(u"orbitledge.renewal."_s)));
        desk.display->answerAll();
        QTRY_COMPARE(desk.display->closings, QList<quint32>{1});
        QVERIFY(desk.pending().isEmpty());
    }

    void shouldReplaceTheTextWhereItIsStillShown()
    {
        NotificationDesk desk("2026-03-18T08:00:00Z");
        desk.startCenter();
        desk.add({reminderAtOnce()});
        desk.alarm->moveTo(at("2026-03-18T08:00:02Z"));
        QTRY_COMPARE(desk.display->shown.size(), 1);
        NotificationRequest again = reminderAtOnce();
        again.content.body = u"Other words."_s;
        desk.add({again});
        desk.alarm->moveTo(at("2026-03-18T08:00:04Z"));
        QTRY_COMPARE(desk.display->shown.size(), 2);
        QCOMPARE(desk.display->shown[1].replaced, 1U);
        QCOMPARE(desk.display->shown[1].content.body, u"Other words."_s);

        desk.settle();
        Q_EMIT desk.display->closed(1);
        desk.add({reminderAtOnce()});
        QVERIFY(desk.pending().isEmpty());
        desk.settle();
        QCOMPARE(desk.display->shown.size(), 2);
    }

    void shouldNotAnnounceAgainWhereTheDisplayWentMeanwhile()
    {
        NotificationDesk desk("2026-03-18T08:00:00Z");
        desk.startCenter();
        desk.add({reminderAtOnce(u"a"_s)});
        desk.alarm->moveTo(at("2026-03-18T08:00:02Z"));
        QTRY_VERIFY(desk.pending().isEmpty());
        desk.settle();
        desk.display->isSlow = true;
        desk.add({reminderAtOnce(u"b"_s)});
        NotificationRequest again = reminderAtOnce(u"a"_s);
        again.content.body = u"Other words."_s;
        desk.add({again});
        desk.alarm->moveTo(at("2026-03-18T08:00:04Z"));
        QTRY_COMPARE(desk.display->waitingCount(), 1);
        desk.display->leave();
        desk.display->isSlow = false;
        desk.display->answerAll();
        QTRY_VERIFY(desk.pending().isEmpty());
        desk.settle();
        QCOMPARE(desk.display->titles(), (QStringList{u"a"_s, u"b"_s}));
    }

    // ---- choosing ----

    void shouldTellOfItsOwnNotificationsOnly()
    {
        NotificationDesk desk("2026-03-18T08:00:00Z");
        desk.startCenter();
        desk.add({reminderAtOnce()});
        desk.alarm->moveTo(at("2026-03-18T08:00:02Z"));
        QTRY_VERIFY(desk.pending().isEmpty());
        QSignalSpy chosen(desk.center.get(), &UserNotificationCenter::chosen);
        Q_EMIT desk.display->chosen(2, {});
        QCOMPARE(chosen.size(), 0);
        Q_EMIT desk.display->chosen(1, u"token"_s);
        QCOMPARE(chosen.size(), 1);
        QCOMPARE(chosen[0][0].value<decltype(NotificationContent::userInfo)>()[u"url"_s],
            u"https://example.com/a"_s);
        QCOMPARE(chosen[0][1].toString(), u"token"_s);
        Q_EMIT desk.display->closed(1);
        Q_EMIT desk.display->chosen(1, {});
        QCOMPARE(chosen.size(), 1);
    }

    void shouldTellOfNotificationsOfAnEarlierRun()
    {
        NotificationDesk desk("2026-03-18T08:00:00Z");
        desk.startCenter();
        desk.add({reminderAtOnce()});
        desk.alarm->moveTo(at("2026-03-18T08:00:02Z"));
        QTRY_VERIFY(desk.pending().isEmpty());
        desk.settle();
        desk.startCenter();
        desk.settle();
        QSignalSpy chosen(desk.center.get(), &UserNotificationCenter::chosen);
        Q_EMIT desk.display->chosen(1, {});
        QCOMPARE(chosen.size(), 1);
        // Another daemon gives the same numbers to others.
        desk.display->restart();
        desk.startCenter();
        desk.settle();
        QSignalSpy next(desk.center.get(), &UserNotificationCenter::chosen);
        Q_EMIT desk.display->chosen(1, {});
        QCOMPARE(next.size(), 0);
    }

    void shouldLeaveAClickToWhoHasShownItAsLongAsThatIsThere()
    {
        NotificationDesk desk("2026-03-18T08:00:00Z");
        desk.display->ownSender = u":1.7"_s;
        desk.startCenter();
        desk.add({reminderAtOnce()});
        desk.alarm->moveTo(at("2026-03-18T08:00:02Z"));
        QTRY_VERIFY(desk.pending().isEmpty());
        desk.settle();
        desk.display->ownSender = u":1.8"_s;
        desk.display->senders = {u":1.7"_s};
        desk.startCenter();
        desk.settle();
        QSignalSpy chosen(desk.center.get(), &UserNotificationCenter::chosen);
        Q_EMIT desk.display->chosen(1, {});
        QCOMPARE(chosen.size(), 0);
        desk.display->senders.clear();
        Q_EMIT desk.display->chosen(1, {});
        QCOMPARE(chosen.size(), 1);
    }

    void shouldSayWhetherSomethingIsDueForWhoDoesNotDeliver()
    {
        NotificationDesk desk("2026-03-18T07:00:00Z");
        desk.startCenter();
        desk.add({reminderOn({2026, 3, 18})});
        QVERIFY(QCoro::waitFor(desk.center->save()));
        desk.center.reset();
        desk.makeCenter();
        QVERIFY(!QCoro::waitFor(desk.center->prepareDelivery()));
        desk.clock->set(at("2026-03-18T08:00:00Z"));
        desk.unattended->arranged.clear();
        QVERIFY(QCoro::waitFor(desk.center->prepareDelivery()));
        QCOMPARE(desk.unattended->arranged.size(), 1);
        QVERIFY(desk.display->shown.isEmpty());
    }

    // ---- the clock ----

    void shouldFollowStepsOfTheClock_data()
    {
        QTest::addColumn<QByteArrayList>("moves");
        QTest::newRow("a day forward, over the time")
            << QByteArrayList{"2026-03-17T12:00:00Z", "2026-03-18T12:00:00Z"};
        QTest::newRow("a day back, and then on")
            << QByteArrayList{"2026-03-16T12:00:00Z", "2026-03-17T08:00:00Z", "2026-03-18T08:00:00Z"};
        QTest::newRow("a day back after it was shown, and over it again")
            << QByteArrayList{"2026-03-18T08:00:00Z", "2026-03-17T08:00:00Z", "2026-03-18T08:00:00Z"};
        QTest::newRow("asleep over the time")
            << QByteArrayList{"2026-03-18T07:00:00Z", "2026-03-18T10:30:00Z"};
    }

    void shouldFollowStepsOfTheClock()
    {
        QFETCH(const QByteArrayList, moves);
        NotificationDesk desk("2026-03-17T12:00:00Z");
        desk.startCenter();
        desk.add({reminderOn({2026, 3, 18})});
        for (const QByteArray &move : moves) {
            const bool isOver = desk.pending().isEmpty();
            desk.alarm->moveTo(at(move), FakeWallClockAlarm::Move::Set);
            desk.settle();
            const bool isTime = at(move) >= at("2026-03-18T08:00:00Z");
            QTRY_COMPARE(desk.pending().isEmpty(), isOver || isTime);
            QTRY_COMPARE(desk.alarm->target.has_value(), !desk.pending().isEmpty());
        }
        QCOMPARE(desk.display->shown.size(), 1);
    }

    void shouldNotKeepAnIntervalWaitingWhereTheClockIsSetBack()
    {
        NotificationDesk desk("2026-03-18T08:00:00Z");
        desk.startCenter();
        desk.add({reminderAtOnce(u"a"_s)});
        desk.alarm->moveTo(at("2026-03-17T08:00:00Z"), FakeWallClockAlarm::Move::Set);
        QTRY_COMPARE(desk.alarm->target, at("2026-03-17T08:00:02Z"));
        desk.alarm->moveTo(at("2026-03-17T08:00:02Z"));
        QTRY_COMPARE(desk.display->titles(), QStringList{u"a"_s});
        // Also where it is set back while nothing runs.
        desk.add({reminderAtOnce(u"b"_s)});
        desk.center.reset();
        desk.clock->set(at("2026-03-16T08:00:00Z"));
        desk.startCenter();
        QTRY_COMPARE(desk.alarm->target, at("2026-03-16T08:00:02Z"));
        desk.alarm->moveTo(at("2026-03-16T08:00:02Z"));
        QTRY_COMPARE(desk.display->titles(), (QStringList{u"a"_s, u"b"_s}));
    }

    void shouldShowWhatCameDueBeforeTheAlarmCouldRing()
    {
        NotificationDesk desk("2026-03-18T08:00:00Z");
        desk.startCenter();
        desk.add({reminderAtOnce()});
        // The alarm is set anew before the event loop gets to hear of it.
        desk.clock->set(at("2026-03-18T08:00:03Z"));
        desk.settle();
        QVERIFY(desk.alarm->target);
        desk.alarm->moveTo(at("2026-03-18T08:00:03Z"));
        QTRY_COMPARE(desk.display->shown.size(), 1);
        QTRY_VERIFY(desk.pending().isEmpty());
        QVERIFY(!desk.alarm->target);
    }

    void shouldNotRingForWhatNobodyShows()
    {
        NotificationDesk desk("2026-03-18T08:00:00Z");
        desk.display->isThere = false;
        desk.startCenter();
        desk.add({reminderAtOnce()});
        desk.alarm->moveTo(at("2026-03-18T08:00:02Z"));
        desk.settle();
        QVERIFY(!desk.alarm->target);
        desk.display->restart();
        QTRY_COMPARE(desk.display->shown.size(), 1);
        // From then on it rings again for what it missed.
        QTRY_VERIFY(desk.pending().isEmpty());
        desk.settle();
        desk.add({reminderAtOnce(u"b"_s)});
        desk.clock->set(at("2026-03-18T08:00:05Z"));
        desk.settle();
        QVERIFY(desk.alarm->target);
    }

    // ---- permission ----

    void shouldNotKnowBeforeItWasAsked()
    {
        NotificationDesk desk("2026-03-18T08:00:00Z");
        desk.startCenter();
        QCOMPARE(
            QCoro::waitFor(desk.center->settings()).authorization, NotificationAuthorization::NotDetermined);
        const auto granted = QCoro::waitFor(desk.center->requestAuthorization(NotificationOption::Alert));
        QCOMPARE(granted, true);
        desk.startCenter();
        const NotificationSettings settings = QCoro::waitFor(desk.center->settings());
        QCOMPARE(settings.authorization, NotificationAuthorization::Authorized);
        QVERIFY(settings.alertsEnabled);
        QVERIFY(settings.notificationCenterEnabled);
        // Also after everything was removed.
        QVERIFY(QCoro::waitFor(desk.center->forget(u"orbitledge."_s)));
        QCOMPARE(
            QCoro::waitFor(desk.center->settings()).authorization, NotificationAuthorization::Authorized);
    }

    void shouldFollowTheDesktopsSwitches_data()
    {
        QTest::addColumn<bool>("isThere");
        QTest::addColumn<bool>("allows");
        QTest::addColumn<bool>("popsUp");
        QTest::addColumn<NotificationSettings>("expected");
        using enum NotificationAuthorization;
        QTest::newRow("all on") << true << true << true << NotificationSettings{Authorized, true, true};
        QTest::newRow("no banners") << true << true << false << NotificationSettings{Authorized, false, true};
        QTest::newRow("switched off") << true << false << true << NotificationSettings{Denied, false, false};
        QTest::newRow("nobody there") << false << true << true << NotificationSettings{Denied, false, false};
    }

    void shouldFollowTheDesktopsSwitches()
    {
        QFETCH(const bool, isThere);
        QFETCH(const bool, allows);
        QFETCH(const bool, popsUp);
        QFETCH(const NotificationSettings, expected);
        NotificationDesk desk("2026-03-18T08:00:00Z");
        desk.display->isThere = isThere;
        desk.switches->positions = {.allows = allows, .popsUp = popsUp};
        desk.startCenter();
        const auto granted = QCoro::waitFor(desk.center->requestAuthorization(NotificationOption::Alert));
        QCOMPARE(granted, expected.authorization == NotificationAuthorization::Authorized);
        QCOMPARE(QCoro::waitFor(desk.center->settings()), expected);
    }

    // ---- the file ----

    void shouldBeReadableByItsOwnerAlone()
    {
        NotificationDesk desk("2026-03-17T12:00:00Z");
        desk.startCenter();
        desk.add({reminderOn({2026, 3, 18})});
        using std::filesystem::perms;
        const auto modeOf
            = [](const std::filesystem::path &path) { return std::filesystem::status(path).permissions(); };
        QVERIFY(modeOf(desk.file()) == (perms::owner_read | perms::owner_write));
        QVERIFY(modeOf(desk.file().parent_path()) == perms::owner_all);
    }

    void shouldWriteOnlyWhatChanged()
    {
        NotificationDesk desk("2026-03-17T12:00:00Z");
        const auto files = std::make_shared<CountingFileStore>();
        desk.files = files;
        desk.startCenter();
        QList<NotificationRequest> requests;
        for (int i = 0; i < 60; ++i)
            requests.append(reminderOn({2026, 3, 18}, QString::number(i)));
        desk.settle();
        const int before = files->writings;
        desk.add(requests);
        QCOMPARE(files->writings - before, 1);
        QStringList identifiers;
        for (const NotificationRequest &request : requests)
            identifiers.append(request.identifier);
        QCoro::waitFor(desk.center->removePendingRequests(identifiers));
        desk.add(requests);
        QCOMPARE(files->writings - before, 1);
    }

    void shouldSayWhyNothingCouldBeSaved()
    {
        NotificationDesk desk("2026-03-17T12:00:00Z");
        const auto files = std::make_shared<CountingFileStore>();
        desk.files = files;
        desk.startCenter();
        desk.add({reminderOn({2026, 3, 18}, u"a"_s)});
        const QByteArray before = contentOf(desk.file());
        files->isFull = true;
        QVERIFY(QCoro::waitFor(desk.center->add(reminderOn({2026, 3, 18}, u"b"_s))));
        const auto saved = QCoro::waitFor(desk.center->save());
        QVERIFY(!saved);
        QCOMPARE(saved.error().errorDescription, u"Reminders could not be saved: No space left on device"_s);
        QCOMPARE(contentOf(desk.file()), before);
        // This process still knows of both, and tells of each once.
        desk.alarm->moveTo(at("2026-03-18T08:00:00Z"));
        QTRY_COMPARE(desk.display->titles(), (QStringList{u"a"_s, u"b"_s}));
        QTRY_VERIFY(desk.pending().isEmpty());
        files->isFull = false;
        desk.settle();
        desk.startCenter();
        QVERIFY(desk.pending().isEmpty());
    }

    void shouldSaveByItselfOnceTheDiskHasRoomAgain_data()
    {
        QTest::addColumn<bool>("isShown");
        QTest::newRow("what was shown") << true;
        QTest::newRow("what was added") << false;
    }

    void shouldSaveByItselfOnceTheDiskHasRoomAgain()
    {
        QFETCH(const bool, isShown);
        NotificationDesk desk("2026-03-17T12:00:00Z");
        desk.pause = 10ms;
        const auto files = std::make_shared<CountingFileStore>();
        desk.files = files;
        desk.startCenter();
        desk.add({reminderOn({2026, 3, 18}, u"a"_s)});
        files->isFull = true;
        if (isShown) {
            desk.alarm->moveTo(at("2026-03-18T08:00:00Z"));
            QTRY_VERIFY(desk.pending().isEmpty());
        } else {
            QVERIFY(QCoro::waitFor(desk.center->add(reminderOn({2026, 3, 19}, u"b"_s))));
            QVERIFY(!QCoro::waitFor(desk.center->save()));
        }
        const int before = files->writings;
        QTRY_VERIFY(files->writings > before + 1);
        QVERIFY(!contentOf(desk.file()).contains(isShown ? "\"delivered\": [\n        {" : "renewal.b"));
        files->isFull = false;
        QTRY_VERIFY(contentOf(desk.file()).contains(isShown ? "\"delivered\": [\n        {" : "renewal.b"));
        QCOMPARE(desk.display->shown.size(), isShown ? 1 : 0);
    }

    void shouldTryAgainByItselfToShowIt()
    {
        NotificationDesk desk("2026-03-18T08:00:00Z");
        desk.pause = 10ms;
        desk.display->isThere = false;
        desk.startCenter();
        desk.add({reminderAtOnce()});
        desk.alarm->moveTo(at("2026-03-18T08:00:02Z"));
        desk.settle();
        desk.display->isThere = true; // without a word
        QTRY_COMPARE(desk.display->shown.size(), 1);
    }

    void shouldPutAFileAsideThatItCannotRead()
    {
        NotificationDesk desk("2026-03-17T12:00:00Z");
        QVERIFY(desk.files->replace(desk.file(), "what is this?"));
        desk.startCenter();
        QVERIFY(desk.pending().isEmpty());
        desk.add({reminderOn({2026, 3, 18})});
        std::filesystem::path aside = desk.file();
        aside += ".unreadable";
        QCOMPARE(contentOf(aside), QByteArray("what is this?"));
        desk.startCenter();
        QCOMPARE(desk.pending().size(), 1);
    }

    void shouldGoOnAfterItCouldNotPutAFileAside()
    {
        NotificationDesk desk("2026-03-17T12:00:00Z");
        QVERIFY(desk.files->replace(desk.file(), "what is this?"));
        const auto files = std::make_shared<CountingFileStore>();
        files->isFull = true;
        desk.files = files;
        desk.makeCenter(0ms);
        const auto added = QCoro::waitFor(desk.center->add(reminderOn({2026, 3, 18})));
        QVERIFY(!added);
        QVERIFY(added.error().errorDescription.endsWith(u"No space left on device"));
        QCOMPARE(contentOf(desk.file()), QByteArray("what is this?"));
        files->isFull = false;
        desk.add({reminderOn({2026, 3, 18})});
        QCOMPARE(desk.pending().size(), 1);
    }

    void shouldNotReplaceAFileThatItMayNotRead()
    {
        NotificationDesk desk("2026-03-17T12:00:00Z");
        const auto files = std::make_shared<FakeFileStore>();
        files->failReading({FileError::Kind::AccessDenied, u"Permission denied"_s});
        desk.files = files;
        desk.makeCenter();
        const auto added = QCoro::waitFor(desk.center->add(reminderOn({2026, 3, 18})));
        QVERIFY(!added);
        QCOMPARE(added.error().errorDescription, u"Reminders cannot be kept: Permission denied"_s);
        QVERIFY(!QCoro::waitFor(desk.center->save()));
        QVERIFY(!QCoro::waitFor(desk.center->forget({})));
        QVERIFY(!QCoro::waitFor(desk.center->requestAuthorization({})));
        QVERIFY(!QCoro::waitFor(desk.center->pendingRequests()));
        QCOMPARE(QCoro::waitFor(desk.center->deliverDue(1s)), NotificationDelivery::Unreadable);
    }

    void shouldForgetInTheFileBeforeItWaitsForTheDisplay()
    {
        NotificationDesk desk("2026-03-18T08:00:00Z");
        desk.startCenter();
        desk.add({reminderAtOnce(u"a"_s), reminderOn({2026, 3, 19}, u"b"_s)});
        desk.alarm->moveTo(at("2026-03-18T08:00:02Z"));
        QTRY_COMPARE(desk.pending(), QStringList{u"orbitledge.renewal.b"_s});
        desk.settle();
        QVERIFY(contentOf(desk.file()).contains("orbitledge.renewal."));
        desk.display->isMute = true;
        auto forgetting = desk.center->forget(u"orbitledge.renewal."_s);
        QTRY_COMPARE(desk.display->waitingCount(), 1);
        QVERIFY(!contentOf(desk.file()).contains("orbitledge.renewal."));
        desk.display->isMute = false;
        desk.display->answerAll();
        QVERIFY(QCoro::waitFor(std::move(forgetting)));
        QCOMPARE(desk.display->closings, QList<quint32>{1});
    }

    // ---- one process at a time ----

    void shouldLeaveItToTheProcessThatIsInCharge()
    {
        NotificationDesk desk("2026-03-17T12:00:00Z");
        desk.startCenter();
        desk.add({reminderOn({2026, 3, 18})});
        std::filesystem::path lockFile = desk.file();
        lockFile += ".lock";
        desk.center.reset();
        {
            const auto lock = ProcessLock::take(lockFile);
            QVERIFY(lock && *lock);
            desk.clock->set(at("2026-03-18T08:00:00Z"));
            QCOMPARE(QCoro::waitFor(desk.makeCenter(0ms).deliverDue(1s)), NotificationDelivery::Elsewhere);
            const auto added = QCoro::waitFor(desk.center->add(reminderOn({2026, 3, 18})));
            QVERIFY(!added);
            QCOMPARE(added.error().errorDescription,
                u"Reminders cannot be kept: Another process is in charge of them"_s);
            QVERIFY(desk.display->shown.isEmpty());
        }
        QCOMPARE(QCoro::waitFor(desk.center->deliverDue(20s)), NotificationDelivery::Done);
        QCOMPARE(desk.display->shown.size(), 1);
    }

    void shouldWaitForAnotherProcessThatIsAboutToEnd()
    {
        NotificationDesk desk("2026-03-17T12:00:00Z");
        std::filesystem::path lockFile = desk.file();
        lockFile += ".lock";
        auto lock = ProcessLock::take(lockFile);
        QVERIFY(lock && *lock);
        desk.startCenter();
        QTimer::singleShot(150ms, this, [&lock] { lock->reset(); });
        desk.add({reminderOn({2026, 3, 18})});
        QCOMPARE(desk.pending().size(), 1);
    }

    // ---- while the program does not run ----

    void shouldHaveTheNextOneDelivered()
    {
        NotificationDesk desk("2026-03-17T12:00:00Z");
        desk.startCenter();
        desk.add({reminderOn({2026, 3, 19}, u"b"_s), reminderOn({2026, 3, 18}, u"a"_s)});
        QTRY_COMPARE(desk.unattended->arranged.last(), at("2026-03-18T08:00:00Z"));
        QVERIFY(QCoro::waitFor(desk.center->forget(u"orbitledge.renewal."_s)));
        QTRY_COMPARE(desk.unattended->arranged.last(), std::optional<Instant>());
    }

    void shouldDeliverWhatIsDueAndEnd()
    {
        NotificationDesk desk("2026-03-17T12:00:00Z");
        desk.startCenter();
        for (int i = 0; i < 5; ++i)
            desk.add({reminderOn({2026, 3, 18}, QString::number(i))});
        desk.add({reminderOn({2026, 3, 19}, u"tomorrow"_s)});
        desk.clock->set(at("2026-03-18T08:00:01Z"));
        QCOMPARE(QCoro::waitFor(desk.makeCenter().deliverDue(20s)), NotificationDelivery::Done);
        QCOMPARE(desk.display->shown.size(), 5);
        QCOMPARE(desk.unattended->arranged.last(), at("2026-03-19T08:00:00Z"));
        QCOMPARE(QCoro::waitFor(desk.makeCenter().deliverDue(20s)), NotificationDelivery::Done);
        QCOMPARE(desk.display->shown.size(), 5);
    }

    void shouldTryAgainSoonWhereNobodyShowedIt()
    {
        NotificationDesk desk("2026-03-17T12:00:00Z");
        desk.startCenter();
        desk.add({reminderOn({2026, 3, 18})});
        desk.display->isThere = false;
        desk.clock->set(at("2026-03-18T08:00:00Z"));
        QCOMPARE(QCoro::waitFor(desk.makeCenter().deliverDue(1s)), NotificationDelivery::NoDisplay);
        QCOMPARE(desk.unattended->arranged.last(), at("2026-03-18T08:10:00Z"));
        desk.display->isThere = true;
        QCOMPARE(QCoro::waitFor(desk.makeCenter().deliverDue(20s)), NotificationDelivery::Done);
        QCOMPARE(desk.display->shown.size(), 1);
    }

    void shouldHaveTheNextOneDeliveredWhereNotificationsAreSwitchedOff()
    {
        NotificationDesk desk("2026-03-17T12:00:00Z");
        desk.startCenter();
        desk.add({reminderOn({2026, 3, 18}, u"a"_s), reminderOn({2026, 3, 19}, u"b"_s)});
        desk.switches->positions.allows = false;
        desk.clock->set(at("2026-03-18T08:00:00Z"));
        QCOMPARE(QCoro::waitFor(desk.makeCenter().deliverDue(20s)), NotificationDelivery::Done);
        QVERIFY(desk.display->shown.isEmpty());
        QCOMPARE(desk.unattended->arranged.last(), at("2026-03-19T08:00:00Z"));
    }

    void shouldHaveTheRestDeliveredWhereItEndsInBetween()
    {
        NotificationDesk desk("2026-03-17T12:00:00Z");
        desk.startCenter();
        desk.add({reminderOn({2026, 3, 18}, u"a"_s), reminderOn({2026, 3, 18}, u"b"_s)});
        desk.clock->set(at("2026-03-18T08:00:00Z"));
        desk.display->isMute = true;
        desk.display->isSlow = true;
        desk.unattended->arranged.clear();
        auto delivering = desk.makeCenter().deliverDue(20s);
        QTRY_COMPARE(desk.display->waitingCount(), 1);
        QCOMPARE(desk.unattended->arranged, QList<std::optional<Instant>>{at("2026-03-18T08:10:00Z")});
        desk.display->isMute = false;
        desk.display->answerAll();
        QTRY_COMPARE(desk.display->titles(), QStringList{u"a"_s});
        QTRY_COMPARE(desk.display->waitingCount(), 1);
        desk.display->answerAll();
        QTRY_COMPARE(desk.display->titles(), (QStringList{u"a"_s, u"b"_s}));
        // As if it was killed here.
        QCOMPARE(desk.unattended->arranged.last(), at("2026-03-18T08:10:00Z"));
        desk.display->answerAll();
        QCOMPARE(QCoro::waitFor(std::move(delivering)), NotificationDelivery::Done);
        QCOMPARE(desk.unattended->arranged.last(), std::optional<Instant>());
    }

    void shouldHaveItDeliveredWhereTheProgramEndsBeforeSomebodyShowsIt()
    {
        NotificationDesk desk("2026-03-17T12:00:00Z");
        desk.display->isThere = false;
        desk.startCenter();
        desk.add({reminderOn({2026, 3, 18})});
        desk.alarm->moveTo(at("2026-03-18T08:00:00Z"));
        QTRY_COMPARE(desk.unattended->arranged.last(), at("2026-03-18T08:10:00Z"));
    }

    void shouldHaveItDeliveredWhereTheProgramEndsWhileItIsBeingShown()
    {
        NotificationDesk desk("2026-03-17T12:00:00Z");
        desk.display->isSlow = true;
        desk.startCenter();
        desk.add({reminderOn({2026, 3, 18})});
        desk.alarm->moveTo(at("2026-03-18T08:00:00Z"));
        QTRY_COMPARE(desk.display->waitingCount(), 1);
        // What was arranged for eight is over.
        QCOMPARE(desk.unattended->arranged.last(), at("2026-03-18T08:10:00Z"));
        desk.display->answerAll();
        QTRY_COMPARE(desk.unattended->arranged.last(), std::optional<Instant>());
    }

    void shouldLetAnotherProcessTakeChargeWhereADisplayHangs()
    {
        NotificationDesk desk("2026-03-17T12:00:00Z");
        desk.startCenter();
        desk.add({reminderOn({2026, 3, 18})});
        desk.display->isSlow = true;
        desk.clock->set(at("2026-03-18T08:00:00Z"));
        QCOMPARE(QCoro::waitFor(desk.makeCenter().deliverDue(50ms)), NotificationDelivery::NoDisplay);
        QCOMPARE(desk.unattended->arranged.last(), at("2026-03-18T08:10:00Z"));
        QCOMPARE(desk.display->waitingCount(), 1);
        desk.center.reset();
        std::filesystem::path lockFile = desk.file();
        lockFile += ".lock";
        const auto lock = ProcessLock::take(lockFile);
        QVERIFY(lock && *lock);
        // What comes of it is not for this one to tell any more.
        const QByteArray saved = contentOf(desk.file());
        const qsizetype arrangements = desk.unattended->arranged.size();
        desk.display->answerAll();
        QTRY_COMPARE(desk.display->waitingCount(), 0);
        QTest::qWait(50);
        QCOMPARE(contentOf(desk.file()), saved);
        QCOMPARE(desk.unattended->arranged.size(), arrangements);
    }

    void shouldEndInTimeWhereADisplayIsSlow()
    {
        NotificationDesk desk("2026-03-17T12:00:00Z");
        desk.startCenter();
        desk.add({reminderOn({2026, 3, 18})});
        desk.display->isSlow = true;
        desk.clock->set(at("2026-03-18T08:00:00Z"));
        QCOMPARE(QCoro::waitFor(desk.makeCenter().deliverDue(50ms)), NotificationDelivery::NoDisplay);
    }

    void shouldGoOnWhereUnattendedDeliveryFails()
    {
        NotificationDesk desk("2026-03-17T12:00:00Z");
        desk.unattended->failure = u"No timers here"_s;
        desk.startCenter();
        desk.add({reminderOn({2026, 3, 18})});
        desk.alarm->moveTo(at("2026-03-18T08:00:00Z"));
        QTRY_COMPARE(desk.display->shown.size(), 1);
    }

    // ---- its end ----

    void shouldRecordWhatIsBeingShownBeforeItEnds()
    {
        NotificationDesk desk("2026-03-18T07:00:00Z");
        desk.display->isSlow = true;
        desk.startCenter();
        desk.add({reminderOn({2026, 3, 18}, u"a"_s), reminderOn({2026, 3, 18}, u"b"_s)});
        desk.alarm->moveTo(at("2026-03-18T08:00:00Z"));
        QTRY_COMPARE(desk.display->waitingCount(), 1);
        {
            auto finishing = desk.center->finish(60s);
            QVERIFY(!finishing.isReady());
            desk.display->isSlow = false;
            desk.display->answerAll();
            QCoro::waitFor(std::move(finishing));
        }
        QCOMPARE(desk.display->titles(), QStringList{u"a"_s});
        desk.startCenter();
        QTRY_COMPARE(desk.display->titles(), (QStringList{u"a"_s, u"b"_s}));
        QTRY_VERIFY(desk.pending().isEmpty());
    }

    void shouldNotWaitForADisplayWithoutEnd()
    {
        NotificationDesk desk("2026-03-18T07:00:00Z");
        desk.display->isSlow = true;
        desk.startCenter();
        desk.add({reminderOn({2026, 3, 18})});
        desk.alarm->moveTo(at("2026-03-18T08:00:00Z"));
        QTRY_COMPARE(desk.display->waitingCount(), 1);
        QCoro::waitFor(desk.center->finish(50ms));
        QCOMPARE(desk.display->waitingCount(), 1);
    }

    void shouldArrangeWhatComesNextBeforeItEnds()
    {
        NotificationDesk desk("2026-03-18T07:00:00Z");
        desk.startCenter();
        desk.unattended->isSlow = true;
        desk.add({reminderOn({2026, 3, 18})});
        auto finishing = desk.center->finish(60s);
        QTest::qWait(10);
        QVERIFY(!finishing.isReady());
        desk.unattended->answerAll();
        QCoro::waitFor(std::move(finishing));
    }

    void shouldSaveAndArrangeWhatWasPlannedBeforeItEnds()
    {
        NotificationDesk desk("2026-03-18T07:00:00Z");
        desk.startCenter();
        desk.add({reminderOn({2026, 3, 20})});
        desk.settle();
        const qsizetype before = desk.unattended->arranged.size();
        QVERIFY(QCoro::waitFor(desk.center->add(reminderOn({2026, 3, 19}, u"sooner"_s))));
        desk.unattended->isSlow = true;
        auto saving = desk.center->save();
        QCOMPARE(desk.unattended->arranged.size(), before);
        auto finishing = desk.center->finish(60s);
        QTRY_COMPARE(desk.unattended->arranged.size(), before + 1);
        QVERIFY(!finishing.isReady());
        desk.unattended->answerAll();
        QCoro::waitFor(std::move(finishing));
        QVERIFY(QCoro::waitFor(std::move(saving)));
    }

    void shouldNotWaitForTheMachineWithoutEnd()
    {
        NotificationDesk desk("2026-03-18T07:00:00Z");
        desk.startCenter();
        desk.unattended->isSlow = true;
        desk.add({reminderOn({2026, 3, 18})});
        QCoro::waitFor(desk.center->finish(50ms));
        desk.unattended->answerAll();
    }

    void shouldEndAtOnceWhereNothingIsBeingShown()
    {
        NotificationDesk desk("2026-03-18T07:00:00Z");
        desk.startCenter();
        desk.add({reminderOn({2026, 3, 18})});
        auto finishing = desk.center->finish(60s);
        QVERIFY(finishing.isReady());
        // And nothing is shown by who has said that it ends.
        desk.alarm->moveTo(at("2026-03-18T08:00:00Z"));
        desk.settle();
        QVERIFY(desk.display->shown.isEmpty());
    }

    void shouldBeDestroyedAtAnyTime()
    {
        for (int turns = 0; turns < 12; ++turns) {
            NotificationDesk desk("2026-03-18T08:00:00Z");
            desk.display->isSlow = true;
            desk.startCenter();
            auto settings = desk.center->settings();
            auto adding = desk.center->add(reminderOn({2026, 3, 18}));
            auto saving = desk.center->save();
            for (int i = 0; i < turns; ++i)
                QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 1);
            desk.center.reset();
            QSignalSpy rang(desk.alarm.get(), &WallClockAlarm::rang);
            (void)QCoro::waitFor(std::move(settings));
            (void)QCoro::waitFor(std::move(adding));
            (void)QCoro::waitFor(std::move(saving));
            Q_EMIT desk.alarm->rang();
            Q_EMIT desk.display->appeared();
        }
    }
};

ORBITLEDGE_TEST_MAIN(DesktopNotificationCenterTest)
#include "DesktopNotificationCenterTest.moc"
