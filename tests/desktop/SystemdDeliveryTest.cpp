#include "support/DeliveryDriver.h"
#include "support/TestMain.h"

#include <QDBusMessage>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QTest>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QString systemdName = u"org.freedesktop.systemd1"_s;
const Instant tuesday = Instant::fromText("2100-03-16T08:00:00Z").value();
const Instant wednesday = Instant::fromText("2100-03-17T08:00:00Z").value();

const QByteArray restarted = "Reload\nRestartUnit app.example.Reminders.reminders.timer replace\n";
const QByteArray asked = "GetUnit app.example.Reminders.reminders.timer\n";
const QByteArray stopped = "StopUnit app.example.Reminders.reminders.timer replace\nReload\n";

/// A session with a mock of systemd in it.
class Session {
public:
    explicit Session(const QString &behaviour) { startSystemd(behaviour); }

    void startSystemd(const QString &behaviour)
    {
        lab.startService(systemdName, u"/usr/bin/python3"_s,
            {QStringLiteral(ORBITLEDGE_TEST_SUPPORT) + u"/mock_systemd.py"_s, behaviour,
                lab.path(u"record"_s)});
    }

    /// The calls since this was asked last.
    QByteArray takeCalls()
    {
        QFile record(lab.path(u"record"_s));
        if (!record.open(QIODevice::ReadOnly))
            return {};
        // The file stays, since another call may be written to it at this moment.
        record.seek(m_takenCalls);
        const QByteArray calls = record.readAll();
        m_takenCalls += calls.size();
        return calls;
    }

    [[nodiscard]] QString configuration(const QString &name) const
    {
        return lab.path(u"config/systemd/user/"_s + name);
    }

    [[nodiscard]] QByteArray timer() const
    {
        QFile file(configuration(u"app.example.Reminders.reminders.timer"_s));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    /// The paths of all files and links below the folders of configuration and data.
    [[nodiscard]] QStringList files() const
    {
        QStringList found;
        for (const QString &folder : {u"config"_s, u"data"_s}) {
            QDirIterator entries(lab.path(folder),
                QDir::Files | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot,
                QDirIterator::Subdirectories);
            while (entries.hasNext())
                found.append(QDir(lab.path(folder)).relativeFilePath(entries.next()));
        }
        found.sort();
        return found;
    }

    DesktopLab lab;

private:
    qint64 m_takenCalls = 0;
};

const QStringList everything{u"systemd/timers/stamp-app.example.Reminders.reminders.timer"_s,
    u"systemd/user/app.example.Reminders.reminders.service"_s,
    u"systemd/user/app.example.Reminders.reminders.timer"_s,
    u"systemd/user/timers.target.wants/app.example.Reminders.reminders.timer"_s};

QString notDelivered(const QString &reason)
{
    return u"Reminders cannot be delivered while Orbitledge is not running: "_s + reason;
}

QString notTakenBack(const QString &reason)
{
    return u"Orbitledge cannot take back that it is started for reminders: "_s + reason;
}

} // namespace

class SystemdDeliveryTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldHaveSystemdReadTheUnitsAndStartTheTimer()
    {
        Session session(u"obey"_s);
        DeliveryDriver delivery(session.lab.environment());
        QCOMPARE(delivery.arrange(tuesday), QString());
        QCOMPARE(session.takeCalls(), restarted);
        QCOMPARE(session.files(), everything);
        QVERIFY(session.timer().contains("OnCalendar=2100-03-16 08:00:00 UTC\n"));
    }

    void shouldDoNothingForWhatIsInForce()
    {
        Session session(u"obey"_s);
        {
            DeliveryDriver delivery(session.lab.environment());
            QCOMPARE(delivery.arrange(tuesday), QString());
        }
        session.takeCalls();
        // In another run of the program it is asked once whether it has the timer.
        DeliveryDriver delivery(session.lab.environment());
        QCOMPARE(delivery.arrange(tuesday), QString());
        QCOMPARE(session.takeCalls(), asked);
        session.lab.startMonitor();
        QCOMPARE(delivery.arrange(tuesday), QString());
        QCOMPARE(session.takeCalls(), QByteArray());
        QVERIFY(!session.lab.monitored().contains("GetNameOwner"));
    }

    void shouldStartATimerThatSystemdDoesNotHave_data()
    {
        QTest::addColumn<QString>("behaviour");
        QTest::newRow("unknown") << u"restarted"_s;
        QTest::newRow("stopped") << u"stopped"_s;
    }
    void shouldStartATimerThatSystemdDoesNotHave()
    {
        QFETCH(const QString, behaviour);
        Session session(u"obey"_s);
        {
            DeliveryDriver delivery(session.lab.environment());
            QCOMPARE(delivery.arrange(tuesday), QString());
        }
        session.lab.killService(systemdName);
        session.startSystemd(behaviour);
        session.takeCalls();
        DeliveryDriver delivery(session.lab.environment());
        QCOMPARE(delivery.arrange(tuesday), QString());
        QCOMPARE(session.takeCalls(), asked + restarted);
        QCOMPARE(delivery.arrange(tuesday), QString());
        QCOMPARE(session.takeCalls(), QByteArray());
    }

    void shouldTellThatSystemdDoesNotTell()
    {
        Session session(u"obey"_s);
        {
            DeliveryDriver delivery(session.lab.environment());
            QCOMPARE(delivery.arrange(tuesday), QString());
        }
        session.lab.killService(systemdName);
        session.startSystemd(u"mute"_s);
        DeliveryDriver delivery(session.lab.environment(), 200ms);
        QCOMPARE(delivery.arrange(tuesday), notDelivered(u"systemd does not answer."_s));
        session.lab.killService(systemdName);
        session.startSystemd(u"refuse"_s);
        QCOMPARE(delivery.arrange(tuesday), notDelivered(u"systemd says “You may not do that”."_s));
    }

    void shouldReplaceWhatWasArranged_data()
    {
        QTest::addColumn<Instant>("next");
        QTest::addColumn<QString>("program");
        QTest::newRow("another moment") << wednesday << u"/usr/bin/true"_s;
        QTest::newRow("another program") << tuesday << u"/usr/bin/false"_s;
    }
    void shouldReplaceWhatWasArranged()
    {
        QFETCH(const Instant, next);
        QFETCH(const QString, program);
        Session session(u"obey"_s);
        {
            DeliveryDriver delivery(session.lab.environment());
            QCOMPARE(delivery.arrange(tuesday), QString());
        }
        session.takeCalls();
        DeliveryDriver delivery(session.lab.environment(), 20s, program);
        QCOMPARE(delivery.arrange(next), QString());
        QCOMPARE(session.takeCalls(), restarted);
        QCOMPARE(session.files(), everything);
    }

    void shouldTakeBackEverything()
    {
        Session session(u"obey"_s);
        DeliveryDriver delivery(session.lab.environment());
        QCOMPARE(delivery.arrange(tuesday), QString());
        session.takeCalls();
        QCOMPARE(delivery.arrange(std::nullopt), QString());
        QCOMPARE(session.takeCalls(), stopped);
        QCOMPARE(session.files(), QStringList());
        QVERIFY(!QFile::exists(session.configuration(u"timers.target.wants"_s)));

        QCOMPARE(delivery.arrange(std::nullopt), QString());
        QCOMPARE(session.takeCalls(), QByteArray());
    }

    void shouldLeaveWhatBelongsToOthers()
    {
        Session session(u"obey"_s);
        const QString wants = session.configuration(u"timers.target.wants"_s);
        QVERIFY(QDir().mkpath(wants));
        QVERIFY(QFile::link(u"../other.timer"_s, wants + u"/other.timer"_s));
        DeliveryDriver delivery(session.lab.environment());
        QCOMPARE(delivery.arrange(tuesday), QString());
        QCOMPARE(delivery.arrange(std::nullopt), QString());
        QCOMPARE(session.files(), QStringList{u"systemd/user/timers.target.wants/other.timer"_s});
    }

    void shouldGrantTheLastOfSeveralWishes()
    {
        Session session(u"obey"_s);
        DeliveryDriver delivery(session.lab.environment());
        delivery.startArranging(tuesday);
        delivery.startArranging(std::nullopt);
        const int last = delivery.startArranging(wednesday);
        QCOMPARE(delivery.result(last), QString());
        QCOMPARE(delivery.ended(), (QList<int>{1, 2, 3}));
        QCOMPARE(session.takeCalls(), restarted + stopped + restarted);
        QVERIFY(session.timer().contains("2100-03-17"));
    }

    void shouldFinishWhenItsOwnerIsGone()
    {
        Session session(u"slow"_s);
        DeliveryDriver delivery(session.lab.environment());
        const int first = delivery.startArranging(tuesday);
        const int second = delivery.startArranging(std::nullopt);
        delivery.destroyDelivery();
        QByteArray calls;
        DesktopLab::await("the restart", [&] {
            calls += session.takeCalls();
            return calls.contains("RestartUnit");
        });
        finishJobs(session);
        QCOMPARE(delivery.result(first), QString());
        DesktopLab::await("the stop", [&] {
            calls += session.takeCalls();
            return calls.contains("StopUnit");
        });
        finishJobs(session);
        QCOMPARE(delivery.result(second), QString());
        QCOMPARE(session.files(), QStringList());
    }

    // ---- no systemd ----

    void shouldArrangeNothingWhereThereIsNoSystemd()
    {
        Session session(u"obey"_s);
        session.lab.killService(systemdName);
        DeliveryDriver delivery(session.lab.environment());
        QCOMPARE(delivery.arrange(tuesday), QString());
        QCOMPARE(session.files(), QStringList());
        QCOMPARE(delivery.arrange(std::nullopt), QString());
    }

    void shouldStartNobody()
    {
        // The bus could start one.
        DesktopLab lab;
        const QString started = lab.path(u"started"_s);
        QFile service(lab.path(u"services/org.freedesktop.systemd1.service"_s));
        QVERIFY(service.open(QIODevice::WriteOnly));
        service.write(
            "[D-BUS Service]\nName=org.freedesktop.systemd1\nExec=/usr/bin/touch " + started.toUtf8() + '\n');
        service.close();
        askBus(lab, u"ReloadConfig"_s);
        QVERIFY(askBus(lab, u"ListActivatableNames"_s).value(0).toStringList().contains(systemdName));
        DeliveryDriver delivery(lab.environment());
        QCOMPARE(delivery.arrange(tuesday), QString());
        QCOMPARE(delivery.arrange(std::nullopt), QString());
        QVERIFY(!QFile::exists(started));
    }

    void shouldTakeBackWithoutSystemd_data()
    {
        QTest::addColumn<bool>("hasBus");
        QTest::newRow("a bus without it") << true;
        QTest::newRow("no bus") << false;
    }
    void shouldTakeBackWithoutSystemd()
    {
        QFETCH(const bool, hasBus);
        Session session(u"obey"_s);
        {
            DeliveryDriver delivery(session.lab.environment());
            QCOMPARE(delivery.arrange(tuesday), QString());
        }
        session.lab.killService(systemdName);
        QProcessEnvironment environment = session.lab.environment();
        if (!hasBus)
            environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, u"unix:path=/nowhere"_s);
        DeliveryDriver delivery(environment);
        QCOMPARE(delivery.arrange(std::nullopt), QString());
        QCOMPARE(session.files(), QStringList());
    }

    // ---- a systemd that does not do it ----

    void shouldTellWhyItCannotBeArranged_data()
    {
        QTest::addColumn<QString>("behaviour");
        QTest::addColumn<QString>("reason");
        QTest::newRow("refused") << u"refuse"_s << u"systemd says “You may not do that”."_s;
        QTest::newRow("failed") << u"fail"_s << u"systemd ends the request as “failed”."_s;
        QTest::newRow("looks elsewhere")
            << u"forget"_s << u"systemd says “Unit app.example.Reminders.reminders.timer not found”."_s;
    }
    void shouldTellWhyItCannotBeArranged()
    {
        QFETCH(const QString, behaviour);
        QFETCH(const QString, reason);
        Session session(behaviour);
        DeliveryDriver delivery(session.lab.environment());
        QCOMPARE(delivery.arrange(tuesday), notDelivered(reason));
        // It holds for the next login, but is not taken for done.
        QCOMPARE(session.files(), everything);
        session.lab.killService(systemdName);
        session.startSystemd(u"obey"_s);
        session.takeCalls();
        QCOMPARE(delivery.arrange(tuesday), QString());
        QCOMPARE(session.takeCalls(), restarted);
    }

    void shouldTakeBackWhatSystemdDoesNotKnow()
    {
        Session session(u"obey"_s);
        DeliveryDriver delivery(session.lab.environment());
        QCOMPARE(delivery.arrange(tuesday), QString());
        session.lab.killService(systemdName);
        session.startSystemd(u"forget"_s);
        QCOMPARE(delivery.arrange(std::nullopt), QString());
        QCOMPARE(session.files(), QStringList());
    }

    void shouldTryAgainToTakeBackWhatSystemdKept()
    {
        Session session(u"obey"_s);
        DeliveryDriver delivery(session.lab.environment());
        QCOMPARE(delivery.arrange(tuesday), QString());
        session.lab.killService(systemdName);
        session.startSystemd(u"refuse"_s);
        QCOMPARE(delivery.arrange(std::nullopt), notTakenBack(u"systemd says “You may not do that”."_s));
        // Nothing that would start with the next login.
        QCOMPARE(session.files(), QStringList{everything[1]});
        session.lab.killService(systemdName);
        session.startSystemd(u"obey"_s);
        session.takeCalls();
        QCOMPARE(delivery.arrange(std::nullopt), QString());
        QCOMPARE(session.takeCalls(), stopped);
        QCOMPARE(session.files(), QStringList());
    }

    void shouldGiveUpASilentSystemd()
    {
        constexpr double limit = 2000;
        // The bus library's timers may come a twentieth early.
        constexpr qint64 atLeast = 3700;
        Session session(u"mute"_s);
        DeliveryDriver delivery(session.lab.environment(), 4s);
        QElapsedTimer time;
        time.start();
        QCOMPARE(delivery.arrange(tuesday), notDelivered(u"systemd does not answer."_s));
        QVERIFY2(time.elapsed() >= atLeast, qPrintable(QString::number(time.elapsed())));
        QCOMPARE(delivery.arrange(std::nullopt), notTakenBack(u"systemd does not answer."_s));
        QVERIFY(delivery.longestStretch() < limit);
    }

    void shouldGiveUpAJobThatDoesNotEnd()
    {
        Session session(u"slow"_s);
        DeliveryDriver delivery(session.lab.environment(), 1s);
        QCOMPARE(delivery.arrange(tuesday), notDelivered(u"systemd does not answer."_s));
    }

    void shouldGiveUpASilentBus()
    {
        Session session(u"obey"_s);
        // Long enough for a bus that is not, on a busy machine.
        DeliveryDriver delivery(session.lab.environment(), 4s);
        QCOMPARE(delivery.arrange(tuesday), QString());
        session.lab.pauseBus();
        QCOMPARE(delivery.arrange(wednesday),
            notDelivered(u"the session bus does not tell whether systemd is there."_s));
        session.lab.resumeBus();
        QCOMPARE(delivery.arrange(wednesday), QString());
    }

    // ---- files ----

    void shouldTellThatTheUnitsCannotBeWritten()
    {
        Session session(u"obey"_s);
        QVERIFY(QDir().mkpath(session.configuration(u"app.example.Reminders.reminders.timer"_s)));
        DeliveryDriver delivery(session.lab.environment());
        QCOMPARE(delivery.arrange(tuesday),
            notDelivered(session.configuration(u"app.example.Reminders.reminders.timer"_s)
                + u" cannot be written (Is a directory)."_s));
        QCOMPARE(session.takeCalls(), QByteArray());
    }

private:
    static QList<QVariant> askBus(const DesktopLab &lab, const QString &method)
    {
        return lab.bus()
            .call(QDBusMessage::createMethodCall(
                u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s, u"org.freedesktop.DBus"_s, method))
            .arguments();
    }

    static void finishJobs(Session &session)
    {
        session.lab.bus().call(QDBusMessage::createMethodCall(
            systemdName, u"/org/freedesktop/systemd1"_s, u"org.freedesktop.systemd1.Manager"_s, u"Finish"_s));
    }
};

ORBITLEDGE_TEST_MAIN(SystemdDeliveryTest)
#include "SystemdDeliveryTest.moc"
