#include "platform/linux/TimerfdAlarm.h"

#include "platform/linux/SystemClock.h"
#include "support/TestMain.h"
#include "support/Times.h"

#include <QSignalSpy>
#include <QTemporaryDir>

#include <sys/resource.h>
#include <unistd.h>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const SystemClock systemClock;

std::filesystem::path pathOf(const QTemporaryDir &folder, const QString &name)
{
    return folder.filePath(name).toStdString();
}

/// As the tools that set the zone do it.
void linkTo(const std::filesystem::path &target, const std::filesystem::path &link)
{
    std::filesystem::path fresh = link;
    fresh += ".new";
    std::filesystem::create_symlink(target, fresh);
    std::filesystem::rename(fresh, link);
}

} // namespace

class TimerfdAlarmTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldRingWhenTheClockShowsTheTime()
    {
        TimerfdAlarm alarm;
        const Instant target = later(systemClock.now(), 30);
        std::optional<Instant> rangAt;
        connect(&alarm, &WallClockAlarm::rang, this, [&] { rangAt = systemClock.now(); });
        alarm.set(target);
        QTRY_VERIFY(rangAt);
        QVERIFY(*rangAt >= target);
    }

    void shouldRingAtOnceForATimeThatIsOver_data()
    {
        QTest::addColumn<qint64>("milliseconds");
        QTest::newRow("a second ago") << systemClock.now().millisecondsSinceEpoch() - second;
        QTest::newRow("1970") << qint64{0};
        QTest::newRow("before 1970") << qint64{-86'400'000};
        QTest::newRow("as early as it gets") << std::numeric_limits<qint64>::min();
    }

    void shouldRingAtOnceForATimeThatIsOver()
    {
        QFETCH(const qint64, milliseconds);
        TimerfdAlarm alarm;
        QSignalSpy rang(&alarm, &WallClockAlarm::rang);
        alarm.set(Instant::fromMillisecondsSinceEpoch(milliseconds));
        QCOMPARE(rang.size(), 0); // not from within the call
        QTRY_COMPARE(rang.size(), 1);
    }

    void shouldRingOnce()
    {
        TimerfdAlarm alarm;
        QSignalSpy rang(&alarm, &WallClockAlarm::rang);
        alarm.set(systemClock.now());
        QTRY_COMPARE(rang.size(), 1);
        // A later one of another alarm shows that time has passed since.
        TimerfdAlarm other;
        QSignalSpy otherRang(&other, &WallClockAlarm::rang);
        other.set(later(systemClock.now(), 30));
        QTRY_COMPARE(otherRang.size(), 1);
        QCOMPARE(rang.size(), 1);
    }

    void shouldNotRingWhereItWasPutOffOrTakenBack()
    {
        TimerfdAlarm putOff;
        TimerfdAlarm takenBack;
        TimerfdAlarm far;
        TimerfdAlarm other;
        QSignalSpy rang(&other, &WallClockAlarm::rang);
        connect(&putOff, &WallClockAlarm::rang, this, [] { QFAIL("was put off"); });
        connect(&takenBack, &WallClockAlarm::rang, this, [] { QFAIL("was taken back"); });
        connect(&far, &WallClockAlarm::rang, this, [] { QFAIL("is far away"); });
        const Instant soon = later(systemClock.now(), 10);
        putOff.set(soon);
        putOff.set(later(soon, hour));
        takenBack.set(soon);
        takenBack.set(std::nullopt);
        far.set(Instant::fromMillisecondsSinceEpoch(std::numeric_limits<qint64>::max()));
        other.set(later(soon, 30));
        QTRY_COMPARE(rang.size(), 1);
    }

    void shouldBeSetAgainWhereItRings()
    {
        TimerfdAlarm alarm;
        int count = 0;
        connect(&alarm, &WallClockAlarm::rang, this, [&] {
            if (++count < 3)
                alarm.set(systemClock.now());
        });
        alarm.set(systemClock.now());
        QTRY_COMPARE(count, 3);
    }

    void shouldTellOfAnotherZone()
    {
        const QTemporaryDir folder;
        const auto zoneFile = pathOf(folder, u"localtime"_s);
        linkTo("/usr/share/zoneinfo/Europe/Berlin", zoneFile);
        TimerfdAlarm alarm(zoneFile);
        QSignalSpy changed(&alarm, &WallClockAlarm::clockChanged);
        linkTo("/usr/share/zoneinfo/Asia/Tokyo", zoneFile);
        QTRY_COMPARE(changed.size(), 1);
        // And again.
        linkTo("/usr/share/zoneinfo/Europe/Berlin", zoneFile);
        QTRY_COMPARE(changed.size(), 2);
    }

    void shouldTellOfAZoneFileThatIsNoLink()
    {
        const QTemporaryDir folder;
        const auto zoneFile = pathOf(folder, u"localtime"_s);
        const auto write = [&](const char *zone) {
            const auto fresh = pathOf(folder, u"fresh"_s);
            std::filesystem::copy_file(std::filesystem::path("/usr/share/zoneinfo") / zone, fresh);
            std::filesystem::rename(fresh, zoneFile);
        };
        write("Europe/Berlin");
        TimerfdAlarm alarm(zoneFile);
        QSignalSpy changed(&alarm, &WallClockAlarm::clockChanged);
        write("Asia/Tokyo");
        QTRY_COMPARE(changed.size(), 1);
    }

    void shouldNotMindWhatElseChangesBesideTheZone()
    {
        const QTemporaryDir folder;
        const auto zoneFile = pathOf(folder, u"localtime"_s);
        linkTo("/usr/share/zoneinfo/Europe/Berlin", zoneFile);
        TimerfdAlarm alarm(zoneFile);
        QSignalSpy changed(&alarm, &WallClockAlarm::clockChanged);
        std::filesystem::create_directory(pathOf(folder, u"other"_s));
        linkTo("/usr/share/zoneinfo/Europe/Berlin", zoneFile);
        // What comes after these changes is heard, so that they were heard before.
        linkTo("/usr/share/zoneinfo/Asia/Tokyo", zoneFile);
        QTRY_COMPARE(changed.size(), 1);
    }

    void shouldTellOfAnotherZoneWhenItRingsWhereNothingCanBeWatched()
    {
        const QTemporaryDir folder;
        const auto zoneFile = pathOf(folder, u"localtime"_s);
        linkTo("/usr/share/zoneinfo/Europe/Berlin", zoneFile);
        // One more descriptor, which is the timer's.
        rlimit before{};
        QCOMPARE(::getrlimit(RLIMIT_NOFILE, &before), 0);
        const int next = ::dup(STDERR_FILENO);
        ::close(next);
        rlimit tight = before;
        tight.rlim_cur = static_cast<rlim_t>(next) + 1;
        QCOMPARE(::setrlimit(RLIMIT_NOFILE, &tight), 0);
        TimerfdAlarm alarm(zoneFile);
        QCOMPARE(::setrlimit(RLIMIT_NOFILE, &before), 0);
        const QSignalSpy changed(&alarm, &WallClockAlarm::clockChanged);
        const QSignalSpy rang(&alarm, &WallClockAlarm::rang);
        linkTo("/usr/share/zoneinfo/Asia/Tokyo", zoneFile);
        QTest::qWait(50);
        QCOMPARE(changed.size(), 0);
        alarm.set(systemClock.now());
        QTRY_COMPARE(rang.size(), 1);
        QCOMPARE(changed.size(), 1);
    }

    void shouldDoWithoutAZoneFile()
    {
        TimerfdAlarm alarm("/nowhere/at/all");
        QSignalSpy rang(&alarm, &WallClockAlarm::rang);
        alarm.set(systemClock.now());
        QTRY_COMPARE(rang.size(), 1);
    }
};

ORBITLEDGE_TEST_MAIN(TimerfdAlarmTest)
#include "TimerfdAlarmTest.moc"
