#include "support/DesktopLab.h"
#include "support/TestMain.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTest>

#include <csignal>

using namespace orbitledge::testing;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const QByteArray allOn = "allows popsUp";

/// The switches as a program sees them that runs in this environment.
QByteArray switchesIn(const QProcessEnvironment &environment, std::chrono::milliseconds patience = 20s)
{
    QProcess probe;
    probe.setProcessEnvironment(environment);
    probe.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    probe.start(QStringLiteral(ORBITLEDGE_SWITCHES_PROBE), {QString::number(patience.count())});
    DesktopLab::await("the probe", [&] { return probe.state() == QProcess::NotRunning; });
    if (probe.exitStatus() != QProcess::NormalExit || probe.exitCode() != 0)
        qFatal("the probe failed");
    const QList<QByteArray> lines = probe.readAllStandardOutput().split('\n');
    if (lines.value(1).toDouble() > 1000)
        qFatal("it was kept from its event loop for %s ms", lines.value(1).constData());
    return lines.value(0).trimmed();
}

QString gnomePath(const QString &name)
{
    return u"org.gnome.desktop.notifications.application:/org/gnome/desktop/notifications/application/%1/"_s
        .arg(name);
}

const QString ours = u"app-example-my-reminders-2"_s;

/// A session of GNOME's kind, whose settings lie in a file.
class Gnome {
public:
    Gnome()
    {
        environment.insert(u"GSETTINGS_BACKEND"_s, u"keyfile"_s);
        environment.insert(u"XDG_CURRENT_DESKTOP"_s, u"ubuntu:GNOME"_s);
    }

    void set(const QString &name, const QString &key, bool value) const
    {
        QProcess gsettings;
        gsettings.setProcessEnvironment(environment);
        gsettings.start(u"gsettings"_s, {u"set"_s, gnomePath(name), key, value ? u"true"_s : u"false"_s});
        if (!gsettings.waitForFinished() || gsettings.exitCode() != 0)
            qFatal("gsettings failed");
    }

    /// From now on this script is what is found under that name.
    void replaceGsettings(const QByteArray &script)
    {
        QDir().mkpath(lab.path(u"bin"_s));
        QFile file(lab.path(u"bin/gsettings"_s));
        if (!file.open(QIODevice::WriteOnly))
            qFatal("cannot write the script");
        file.write("#!/bin/sh\n" + script + '\n');
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        environment.insert(u"PATH"_s, lab.path(u"bin"_s) + u':' + environment.value(u"PATH"_s));
    }

    DesktopLab lab;
    QProcessEnvironment environment = lab.environment();
};

/// A session of XFCE, whose bus can start the real Xfconf.
class Xfce {
public:
    Xfce()
    {
        environment.insert(u"XDG_CURRENT_DESKTOP"_s, u"XFCE"_s);
        if (!QFile::copy(u"/usr/share/dbus-1/services/org.xfce.Xfconf.service"_s,
                lab.path(u"services/org.xfce.Xfconf.service"_s)))
            qFatal("xfconf is not installed");
        lab.bus().call(QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s,
            u"org.freedesktop.DBus"_s, u"ReloadConfig"_s));
    }

    /// With --force-array for a list.
    void mute(const QStringList &arguments)
    {
        lab.run(u"xfconf-query"_s,
            QStringList{u"--channel"_s, u"xfce4-notifyd"_s, u"--property"_s,
                u"/applications/muted_applications"_s, u"--create"_s}
                + arguments);
    }

    DesktopLab lab;
    QProcessEnvironment environment = lab.environment();
};

} // namespace

class NotificationSwitchesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // ---- GNOME ----

    void shouldReadTheSwitchesOfGnome_data()
    {
        QTest::addColumn<bool>("enable");
        QTest::addColumn<bool>("showBanners");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("all on") << true << true << allOn;
        QTest::newRow("no banners") << true << false << QByteArray("allows");
        QTest::newRow("off") << false << true << QByteArray("popsUp");
        QTest::newRow("all off") << false << false << QByteArray();
    }
    void shouldReadTheSwitchesOfGnome()
    {
        QFETCH(const bool, enable);
        QFETCH(const bool, showBanners);
        QFETCH(const QByteArray, expected);
        const Gnome gnome;
        gnome.set(ours, u"enable"_s, enable);
        gnome.set(ours, u"show-banners"_s, showBanners);
        QCOMPARE(switchesIn(gnome.environment), expected);
    }

    void shouldBeOnWhereNothingWasSet()
    {
        const Gnome gnome;
        gnome.set(u"app-example-other"_s, u"enable"_s, false);
        gnome.set(ours, u"enable-sound-alerts"_s, false);
        QCOMPARE(switchesIn(gnome.environment), allOn);
    }

    void shouldBeOnWhereGnomeDoesNotTell_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::newRow("it fails") << QByteArray(
            "echo org.gnome.desktop.notifications.application enable false; exit 1");
        QTest::newRow("it crashes") << QByteArray(
            "echo org.gnome.desktop.notifications.application enable false; kill -SEGV $$");
        QTest::newRow("it says nothing") << QByteArray("true");
        QTest::newRow("it says something else")
            << QByteArray(R"(printf 'false\n\000\377 enable false\nenable false ')");
        QTest::newRow("it does not end its speech") << QByteArray("exec yes false");
    }
    void shouldBeOnWhereGnomeDoesNotTell()
    {
        QFETCH(const QByteArray, script);
        Gnome gnome;
        gnome.replaceGsettings(script);
        QElapsedTimer time;
        time.start();
        QCOMPARE(switchesIn(gnome.environment), allOn);
        QVERIFY(time.elapsed() < 15'000);
    }

    void shouldBeOnWhereThereIsNoSuchProgram()
    {
        Gnome gnome;
        gnome.environment.insert(u"PATH"_s, gnome.lab.path(u"nothing"_s));
        QCOMPARE(switchesIn(gnome.environment), allOn);
    }

    void shouldBeOnWhereThereIsNoSuchSchema()
    {
        Gnome gnome;
        gnome.set(ours, u"enable"_s, false);
        gnome.environment.insert(u"XDG_DATA_DIRS"_s, gnome.lab.path(u"nothing"_s));
        QCOMPARE(switchesIn(gnome.environment), allOn);
    }

    void shouldNotWaitForAProgramThatHangs()
    {
        Gnome gnome;
        const QString pidFile = gnome.lab.path(u"pid"_s);
        gnome.replaceGsettings("echo $$ > '" + pidFile.toUtf8() + ".new'; mv '" + pidFile.toUtf8() + ".new' '"
            + pidFile.toUtf8() + "'; exec sleep 600");
        // Long enough for it to begin, on a busy machine.
        constexpr auto patience = 3s;
        QElapsedTimer time;
        time.start();
        QCOMPARE(switchesIn(gnome.environment, patience), allOn);
        QVERIFY(std::chrono::milliseconds(time.elapsed()) >= patience);
        QVERIFY(time.elapsed() < 15'000);
        QFile file(pidFile);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const int pid = file.readAll().trimmed().toInt();
        QVERIFY(pid > 0);
        QTRY_VERIFY(::kill(pid, 0) != 0);
    }

    // ---- XFCE ----

    void shouldReadTheMutedApplicationsOfXfce_data()
    {
        QTest::addColumn<QStringList>("muted");
        QTest::addColumn<QByteArray>("expected");
        const auto list = [](const QStringList &names) {
            QStringList arguments{u"--force-array"_s};
            for (const QString &name : names)
                arguments += {u"--type"_s, u"string"_s, u"--set"_s, name};
            return arguments;
        };
        QTest::newRow("by its name") << list({u"Reminders"_s}) << QByteArray("popsUp");
        QTest::newRow("by its desktop file")
            << list({u"app.example.My_Reminders--2"_s}) << QByteArray("popsUp");
        QTest::newRow("with others") << list({u"Mail"_s, u"Reminders"_s, u"News"_s}) << QByteArray("popsUp");
        QTest::newRow("only others") << list({u"Mail"_s, u"Reminders 2"_s, u"reminders"_s, u"Remind"_s})
                                     << allOn;
        QTest::newRow("a number") << QStringList{u"--force-array"_s, u"--type"_s, u"int"_s, u"--set"_s,
            u"7"_s} << allOn;
        QTest::newRow("no list") << QStringList{u"--type"_s, u"string"_s, u"--set"_s, u"Reminders"_s}
                                 << allOn;
    }
    void shouldReadTheMutedApplicationsOfXfce()
    {
        QFETCH(const QStringList, muted);
        QFETCH(const QByteArray, expected);
        Xfce xfce;
        xfce.mute(muted);
        QCOMPARE(switchesIn(xfce.environment), expected);
    }

    void shouldStartXfconfAndBeOnWhereNothingIsMuted()
    {
        const Xfce xfce;
        QVERIFY(!xfce.lab.isOnBus(u"org.xfce.Xfconf"_s));
        QCOMPARE(switchesIn(xfce.environment), allOn);
        QVERIFY(xfce.lab.isOnBus(u"org.xfce.Xfconf"_s));
    }

    void shouldBeOnWhereXfconfDoesNotAnswer()
    {
        Xfce xfce;
        xfce.mute({u"--force-array"_s, u"--type"_s, u"string"_s, u"--set"_s, u"Reminders"_s});
        QCOMPARE(switchesIn(xfce.environment), QByteArray("popsUp"));
        const QDBusReply<uint> xfconf = xfce.lab.bus().interface()->servicePid(u"org.xfce.Xfconf"_s);
        QVERIFY(xfconf.isValid());
        ::kill(static_cast<pid_t>(xfconf.value()), SIGSTOP);
        QCOMPARE(switchesIn(xfce.environment, 1s), allOn);
        ::kill(static_cast<pid_t>(xfconf.value()), SIGCONT);
    }

    void shouldBeOnWhereThereIsNoXfconf()
    {
        const DesktopLab lab;
        QProcessEnvironment environment = lab.environment();
        environment.insert(u"XDG_CURRENT_DESKTOP"_s, u"XFCE"_s);
        QCOMPARE(switchesIn(environment), allOn);
        environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, u"unix:path=/nowhere"_s);
        QCOMPARE(switchesIn(environment), allOn);
    }

    // ---- others ----

    void shouldAskNobodyElsewhere_data()
    {
        QTest::addColumn<QString>("desktop");
        for (const char *const desktop : {"", "KDE", "X-Cinnamon", "MATE", "gnome", "GNOMEish:", "LXQt:sway"})
            QTest::newRow(desktop) << QString::fromLatin1(desktop);
    }
    void shouldAskNobodyElsewhere()
    {
        QFETCH(const QString, desktop);
        Gnome gnome;
        gnome.replaceGsettings("touch '" + gnome.lab.path(u"asked"_s).toUtf8() + '\'');
        gnome.environment.insert(u"XDG_CURRENT_DESKTOP"_s, desktop);
        gnome.lab.startMonitor();
        QCOMPARE(switchesIn(gnome.environment), allOn);
        QVERIFY(!QFile::exists(gnome.lab.path(u"asked"_s)));
        QVERIFY(!gnome.lab.monitored().contains("Xfconf"));
    }
};

ORBITLEDGE_TEST_MAIN(NotificationSwitchesTest)
#include "NotificationSwitchesTest.moc"
