#include "platform/linux/DesktopWorkspace.h"

#include "support/TestMain.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QScopeGuard>

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

using namespace orbitledge;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace fs = std::filesystem;

namespace {

/// Longer than anything takes that ends by itself.
constexpr auto endlessPatience = 100s;
constexpr auto shortPatience = 100ms;

const QUrl page(u"https://orbitledge.example/"_s);

bool isRunning(pid_t process)
{
    return process > 0 && ::kill(process, 0) == 0;
}

/// Counts one that nobody has collected.
bool exists(pid_t process)
{
    return fs::exists("/proc/" + std::to_string(process));
}

} // namespace

/// Real programs on a PATH of their own, which leave a record of how they were called.
class DesktopWorkspaceTest : public QObject {
    Q_OBJECT

private:
    std::optional<QTemporaryDir> m_folder;
    QByteArray m_path = qgetenv("PATH");

    QString file(const QString &name) const { return m_folder->filePath(name); }

    void install(const QString &program, const QByteArray &script,
        QFile::Permissions permissions = QFile::ReadOwner | QFile::ExeOwner) const
    {
        QFile target(file(u"bin/"_s + program));
        QVERIFY(target.open(QIODevice::WriteOnly));
        QVERIFY(target.write(script) == script.size());
        QVERIFY(target.setPermissions(permissions));
    }

    /// One that records its name and arguments, a line each, and then does more.
    void installRecorder(const QString &program, const QByteArray &more = "exit 0") const
    {
        install(program, "#!/bin/sh\nprintf '%s\\n' \"${0##*/}\" \"$@\" >>\"$RECORD\"\n" + more + '\n');
    }

    QByteArray record() const
    {
        QFile recorded(file(u"record"_s));
        return recorded.open(QIODevice::ReadOnly) ? recorded.readAll() : QByteArray();
    }

    /// Where the program has recorded its own; 0 before.
    pid_t recordedProcess() const { return record().split('\n').value(2).toInt(); }

    std::optional<fs::path> autostartFolder() const
    {
        return fs::path(m_folder->path().toStdString()) / "config/autostart";
    }

    bool opens(const QUrl &url, const QString &token = {}) const
    {
        DesktopWorkspace workspace(std::nullopt, endlessPatience);
        return QCoro::waitFor(workspace.open(url, token));
    }

private Q_SLOTS:
    void init()
    {
        m_folder.emplace();
        QVERIFY(QDir(m_folder->path()).mkdir(u"bin"_s));
        qputenv("PATH", file(u"bin"_s).toUtf8());
        qputenv("RECORD", file(u"record"_s).toUtf8());
        qunsetenv("XDG_CURRENT_DESKTOP");
    }

    void cleanup()
    {
        qputenv("PATH", m_path);
        // Nobody is left, not even as a zombie.
        QCOMPARE(::waitpid(-1, nullptr, WNOHANG), -1);
        QCOMPARE(errno, ECHILD);
    }

    void shouldOpenPages_data()
    {
        QTest::addColumn<QUrl>("url");
        QTest::addColumn<QByteArray>("argument");
        const auto row = [](const char *url, const char *argument) {
            QTest::newRow(url) << QUrl(QString::fromUtf8(url)) << QByteArray(argument);
        };
        row("https://orbitledge.example/", "https://orbitledge.example/");
        row("http://127.0.0.1:8080/a?b=c#d", "http://127.0.0.1:8080/a?b=c#d");
        row("HTTPS://Orbitledge.Example", "https://orbitledge.example");
        row("https://[::1]/", "https://[::1]/");
        row("https://a.example/ -x \"$(touch pwned)\"\n`id`",
            "https://a.example/%20-x%20%22$(touch%20pwned)%22%0A%60id%60");
        row("https://bücher.example/ü", "https://xn--bcher-kva.example/%C3%BC");
        row("https://a.example/--help", "https://a.example/--help");
    }
    void shouldOpenPages()
    {
        QFETCH(QUrl, url);
        QFETCH(QByteArray, argument);
        installRecorder(u"xdg-open"_s);
        QVERIFY(opens(url));
        QCOMPARE(record(), "xdg-open\n" + argument + '\n');
    }

    void shouldRunNothingForWhatIsNoPage_data()
    {
        QTest::addColumn<QUrl>("url");
        for (const char *url : {"", "file:///etc/passwd", "file://host/etc/passwd", "/etc/passwd", "-h",
                 "--help", "javascript:alert(1)", "javascript://host/%0Aalert(1)", "data:text/html,a",
                 "mailto:a@b.example", "ftp://a.example/", "ssh://a.example", "https:", "https://",
                 "https:///a", "https:a", "https://--help/", "http://:80/", "//a.example/", "a.example",
                 "https://a.example:99999/", "https://a b/", "httpsx://a/"})
            QTest::addRow("\"%s\"", url) << QUrl(QString::fromUtf8(url));
    }
    void shouldRunNothingForWhatIsNoPage()
    {
        QFETCH(QUrl, url);
        installRecorder(u"xdg-open"_s);
        QVERIFY(!opens(url));
        QCOMPARE(record(), QByteArray());
    }

    void shouldHandTheTokenOver_data()
    {
        QTest::addColumn<QString>("token");
        QTest::addColumn<QByteArray>("seen");
        QTest::newRow("a token") << u"tok\"en $X_1"_s << "tok\"en $X_1|tok\"en $X_1|kept\n"_ba;
        QTest::newRow("none") << QString() << "unset|unset|kept\n"_ba;
    }
    void shouldHandTheTokenOver()
    {
        QFETCH(QString, token);
        QFETCH(QByteArray, seen);
        // Ours, from when we were started, serves nobody.
        const std::array names{"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"};
        for (const char *name : names)
            qputenv(name, "stale");
        qputenv("DESKTOP_STARTUP_ID_OTHER", "kept");
        const auto tidy = qScopeGuard([&] {
            for (const char *name : names)
                qunsetenv(name);
        });
        install(u"xdg-open"_s,
            "#!/bin/sh\necho "
            "\"${XDG_ACTIVATION_TOKEN-unset}|${DESKTOP_STARTUP_ID-unset}|$DESKTOP_STARTUP_ID_OTHER\""
            " >\"$RECORD\"\n");
        QVERIFY(opens(page, token));
        QCOMPARE(record(), seen);
        QCOMPARE(qgetenv("XDG_ACTIVATION_TOKEN"), "stale"_ba);
    }

    void shouldSayThatNothingOpens_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::newRow("an exit code") << "#!/bin/sh\nexit 3\n"_ba;
        QTest::newRow("a signal") << "#!/bin/sh\nkill -9 $$\n"_ba;
        QTest::newRow("no interpreter") << "#!/nowhere/sh\n"_ba;
        QTest::newRow("no program") << "\x7F\x45LF nonsense"_ba;
    }
    void shouldSayThatNothingOpens()
    {
        QFETCH(QByteArray, script);
        install(u"xdg-open"_s, script);
        QVERIFY(!opens(page));
    }

    void shouldSayThatNobodyOpens()
    {
        QVERIFY(!opens(page));
        install(u"xdg-open"_s, "#!/bin/sh\nexit 0\n", QFile::ReadOwner);
        QVERIFY(!opens(page));
        QVERIFY(QFile::remove(file(u"bin/xdg-open"_s)));
        QVERIFY(QDir(m_folder->path()).mkdir(u"bin/xdg-open"_s));
        QVERIFY(!opens(page));
    }

    void shouldNotWaitForThePatienceToEnd()
    {
        installRecorder(u"xdg-open"_s);
        QElapsedTimer time;
        time.start();
        QVERIFY(opens(page));
        QVERIFY(std::chrono::milliseconds(time.elapsed()) < endlessPatience / 2);
    }

    void shouldKeepTheLoopRunningMeanwhile()
    {
        const QByteArray pipe = file(u"pipe"_s).toUtf8();
        QCOMPARE(::mkfifo(pipe.constData(), 0600), 0);
        installRecorder(u"xdg-open"_s, "read -r word <" + pipe + "\n[ \"$word\" = go ]");
        // Only the loop lets it end. What is in the pipe stays there for as long as somebody has it open.
        QFile end(QString::fromUtf8(pipe));
        QTimer::singleShot(0, this, [&] {
            QVERIFY(end.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
            QVERIFY(end.write("go\n") == 3);
            QTRY_VERIFY(!record().isEmpty());
        });
        QVERIFY(opens(page));
    }

    void shouldLeaveALongRunningOneToItself()
    {
        installRecorder(u"xdg-open"_s, "echo $$ >>\"$RECORD\"\nexec /bin/sleep 1000");
        DesktopWorkspace workspace(std::nullopt, shortPatience);
        QVERIFY(QCoro::waitFor(workspace.open(page, QString())));
        QTRY_VERIFY(recordedProcess() > 0);
        const pid_t process = recordedProcess();
        QVERIFY(isRunning(process));
        QCOMPARE(::kill(process, SIGTERM), 0);
        QTRY_VERIFY(!exists(process));
    }

    void shouldStartItAwayFromUs()
    {
        // Something of ours that is open, and signals that are not as usual.
        constexpr int descriptor = 77;
        const int null = ::open("/dev/null", O_RDONLY);
        QCOMPARE(::dup2(null, descriptor), descriptor);
        sigset_t held;
        sigset_t before;
        sigemptyset(&held);
        sigaddset(&held, SIGTERM);
        pthread_sigmask(SIG_BLOCK, &held, &before);
        const auto pipeHandler = ::signal(SIGPIPE, SIG_IGN);
        const auto tidy = qScopeGuard([&] {
            ::close(null);
            ::close(descriptor);
            pthread_sigmask(SIG_SETMASK, &before, nullptr);
            ::signal(SIGPIPE, pipeHandler);
        });
        install(u"xdg-open"_s, R"s(#!/bin/sh
{
    /bin/readlink /proc/$$/fd/0 /proc/$$/fd/2
    [ -e /proc/$$/fd/77 ] && echo open || echo closed
    read -r pid name state parent group session rest </proc/$$/stat
    [ "$pid" = "$session" ] && echo leader || echo member
    while read -r key value; do
        # The C library keeps those above 31 for itself.
        case $key in SigBlk:|SigIgn:) echo "$key $((0x$value & 0x7FFFFFFF))" ;; esac
    done </proc/$$/status
} >"$RECORD"
)s");
        QVERIFY(opens(page));
        QCOMPARE(record(), "/dev/null\n/dev/null\nclosed\nleader\nSigBlk: 0\nSigIgn: 0\n"_ba);
    }

    void shouldLeaveItRunningWhenWeEnd()
    {
        installRecorder(u"xdg-open"_s, "echo $$ >>\"$RECORD\"\nexec /bin/sleep 1000");
        QProcess probe;
        probe.setProcessChannelMode(QProcess::MergedChannels);
        probe.start(QStringLiteral(ORBITLEDGE_WORKSPACE_PROBE), {page.toString(), u"1000"_s});
        QVERIFY(probe.waitForFinished());
        QCOMPARE(probe.readAll(), QByteArray());
        QCOMPARE(probe.exitStatus(), QProcess::NormalExit);
        QCOMPARE(probe.exitCode(), 0);
        QTRY_VERIFY(recordedProcess() > 0);
        const pid_t process = recordedProcess();
        QVERIFY(isRunning(process));
        QCOMPARE(::kill(process, SIGTERM), 0);
    }

    void shouldOpenTheSettingsOfTheDesktop_data()
    {
        QTest::addColumn<QByteArray>("desktop");
        QTest::addColumn<QStringList>("installed");
        QTest::addColumn<QByteArray>("forNotifications");
        QTest::addColumn<QByteArray>("forLoginItems");
        const auto row = [](const char *name, const char *desktop, const char *installed,
                             const char *forNotifications, const char *forLoginItems) {
            QTest::newRow(name) << QByteArray(desktop) << QString::fromLatin1(installed).split(u' ')
                                << QByteArray(forNotifications) << QByteArray(forLoginItems);
        };
        row("GNOME", "GNOME", "gnome-control-center gnome-tweaks gnome-session-properties",
            "gnome-control-center\nnotifications\n", "gnome-tweaks\n");
        row("GNOME of a distribution", "ubuntu:GNOME", "gnome-control-center gnome-session-properties",
            "gnome-control-center\nnotifications\n", "gnome-session-properties\n");
        row("akin to GNOME", "Budgie:GNOME", "gnome-control-center", "gnome-control-center\nnotifications\n",
            "");
        row("Unity", "Unity:Unity7:ubuntu", "gnome-control-center gnome-session-properties",
            "gnome-control-center\nnotifications\n", "gnome-session-properties\n");
        row("KDE", "KDE", "systemsettings systemsettings5 kcmshell6 kcmshell5",
            "systemsettings\nkcm_notifications\n", "systemsettings\nkcm_autostart\n");
        row("KDE, the one before", "KDE", "systemsettings5 kcmshell5", "systemsettings5\nkcm_notifications\n",
            "systemsettings5\nkcm_autostart\n");
        row("KDE without the frame", "KDE", "kcmshell5 kcmshell6", "kcmshell6\nkcm_notifications\n",
            "kcmshell6\nkcm_autostart\n");
        row("KDE with the older shell", "KDE", "kcmshell5", "kcmshell5\nkcm_notifications\n",
            "kcmshell5\nkcm_autostart\n");
        row("XFCE", "XFCE", "xfce4-notifyd-config xfce4-session-settings", "xfce4-notifyd-config\n",
            "xfce4-session-settings\n");
        row("MATE", "MATE", "mate-notification-properties mate-session-properties",
            "mate-notification-properties\n", "mate-session-properties\n");
        row("Cinnamon", "X-Cinnamon", "cinnamon-settings", "cinnamon-settings\nnotifications\n",
            "cinnamon-settings\nstartup\n");
        row("LXQt", "LXQt", "lxqt-config-notificationd lxqt-config-session", "lxqt-config-notificationd\n",
            "lxqt-config-session\n");
        row("another case", "xfce", "xfce4-notifyd-config xfce4-session-settings", "xfce4-notifyd-config\n",
            "xfce4-session-settings\n");
        row("the first that can", "MATE::XFCE", "xfce4-notifyd-config mate-session-properties",
            "xfce4-notifyd-config\n", "mate-session-properties\n");
        row("another desktop's programs", "KDE", "gnome-control-center gnome-tweaks", "", "");
        row("no such desktop", "Elsewhere", "gnome-control-center gnome-tweaks systemsettings", "", "");
        row("no desktop", "", "gnome-control-center gnome-tweaks systemsettings", "", "");
        row("a part of a name", "GNOM:KD", "gnome-control-center gnome-tweaks systemsettings", "", "");
    }
    void shouldOpenTheSettingsOfTheDesktop()
    {
        QFETCH(QByteArray, desktop);
        QFETCH(QStringList, installed);
        QFETCH(QByteArray, forNotifications);
        QFETCH(QByteArray, forLoginItems);
        qputenv("XDG_CURRENT_DESKTOP", desktop);
        for (const QString &program : std::as_const(installed))
            installRecorder(program);
        DesktopWorkspace workspace(autostartFolder(), endlessPatience);
        QCOMPARE(QCoro::waitFor(workspace.openNotificationSettings()), !forNotifications.isEmpty());
        QCOMPARE(record(), forNotifications);
        QFile::remove(file(u"record"_s));
        QCOMPARE(QCoro::waitFor(workspace.openLoginItemSettings()), !forLoginItems.isEmpty());
        QCOMPARE(record(), forLoginItems);
    }

    void shouldSayThatSettingsFailed()
    {
        qputenv("XDG_CURRENT_DESKTOP", "KDE");
        installRecorder(u"systemsettings"_s, "exit 1");
        DesktopWorkspace workspace(autostartFolder(), endlessPatience);
        QVERIFY(!QCoro::waitFor(workspace.openNotificationSettings()));
        QVERIFY(!QCoro::waitFor(workspace.openLoginItemSettings()));
    }

    void shouldShowTheFolderWhereThereIsNoPageForLoginItems()
    {
        installRecorder(u"xdg-open"_s);
        DesktopWorkspace workspace(autostartFolder(), endlessPatience);
        for (int time = 0; time < 2; ++time) {
            QVERIFY(QCoro::waitFor(workspace.openLoginItemSettings()));
            QCOMPARE(record(), "xdg-open\n" + QByteArray::fromStdString(autostartFolder()->native()) + '\n');
            QVERIFY(fs::is_directory(*autostartFolder()));
            QVERIFY(fs::status(*autostartFolder()).permissions() == fs::perms::owner_all);
            QVERIFY(QFile::remove(file(u"record"_s)));
        }
        // Not for notifications.
        QVERIFY(!QCoro::waitFor(workspace.openNotificationSettings()));
        QCOMPARE(record(), QByteArray());
    }

    void shouldShowNoFolderWhereThereIsNone()
    {
        installRecorder(u"xdg-open"_s);
        DesktopWorkspace homeless(std::nullopt, endlessPatience);
        QVERIFY(!QCoro::waitFor(homeless.openLoginItemSettings()));
        QFile inTheWay(file(u"config"_s));
        QVERIFY(inTheWay.open(QIODevice::WriteOnly));
        DesktopWorkspace workspace(autostartFolder(), endlessPatience);
        QVERIFY(!QCoro::waitFor(workspace.openLoginItemSettings()));
        QCOMPARE(record(), QByteArray());
    }
};

ORBITLEDGE_TEST_MAIN(DesktopWorkspaceTest)
#include "DesktopWorkspaceTest.moc"
