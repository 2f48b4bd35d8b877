#include "platform/linux/PosixFileStore.h"
#include "state/CacheSnapshot.h"
#include "support/ProgramEnd.h"
#include "support/SampleRecords.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

/// The program as it is installed: its own process, real files, real streams.
class ProgramTest : public QObject {
    Q_OBJECT

private:
    static ProgramEnd run(const QStringList &arguments, const QByteArray &input = {},
        const QHash<QString, QString> &variables = {},
        const QString &program = QStringLiteral(ORBITLEDGE_PROGRAM))
    {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (auto it = variables.begin(); it != variables.end(); ++it)
            environment.insert(it.key(), it.value());
        process.setProcessEnvironment(environment);
        process.start(program, arguments);
        process.write(input);
        process.closeWriteChannel();
        if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
            return {};
        return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
    }

    /// The loader prints what it would load, and ends.
    static QByteArray librariesOf(const QString &program)
    {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"LD_TRACE_LOADED_OBJECTS"_s, u"1"_s);
        process.setProcessEnvironment(environment);
        process.start(program, QStringList());
        return process.waitForFinished() ? process.readAllStandardOutput() : QByteArray();
    }

    static QString ownCache()
    {
        return qEnvironmentVariable("XDG_DATA_HOME")
            + u"/app.orbitledge.Orbitledge/subscription-snapshot-v1.json"_s;
    }

    static void save(const QByteArray &content)
    {
        QVERIFY(PosixFileStore().replace(ownCache().toStdString(), content));
    }

private Q_SLOTS:
    void cleanup() { QFile::remove(ownCache()); }

    void shouldLoadNothingThatCommandsDoNotNeed()
    {
        const QByteArray commands = librariesOf(QStringLiteral(ORBITLEDGE_PROGRAM "-command"));
        QVERIFY(commands.contains("libQt6Core"));
        for (const auto *const library : {"libQt6Gui", "libcurl", "libssl", "libgnutls"})
            QVERIFY2(!commands.contains(library), library);
        const QByteArray launcher = librariesOf(QStringLiteral(ORBITLEDGE_PROGRAM));
        QVERIFY(launcher.contains("libc.so"));
        for (const auto *const library : {"libQt", "libicu"})
            QVERIFY2(!launcher.contains(library), library);
    }

    void shouldTellWhichPartOfItIsMissing()
    {
        const QTemporaryDir folder;
        const QString program = folder.filePath(u"orbitledge"_s);
        const QHash<QString, QString> desktop{{u"DISPLAY"_s, u":0"_s}};
        QVERIFY(QFile::copy(QStringLiteral(ORBITLEDGE_PROGRAM), program));
        const ProgramEnd alone = run({}, {}, desktop, program);
        QCOMPARE(alone.exitCode, 1);
        QCOMPARE(alone.errors, "orbitledge: the program is not whole: orbitledge-command is missing\n"_ba);

        QVERIFY(QFile::copy(QStringLiteral(ORBITLEDGE_PROGRAM "-command"), program + u"-command"_s));
        QCOMPARE(run({u"--version"_s}, {}, desktop, program).complaint(), "");
        const ProgramEnd withoutWindows = run({u"--quick-add"_s}, {}, desktop, program);
        QCOMPARE(withoutWindows.exitCode, 1);
        QVERIFY2(withoutWindows.errors.contains(
                     folder.filePath(u"orbitledge-desktop: No such file or directory"_s).toLocal8Bit()),
            withoutWindows.errors.constData());
        QCOMPARE(withoutWindows.errors.count('\n'), 1);
    }

    void shouldShowTheSavedData()
    {
        save(encodeCacheSnapshot(sampleSnapshot(3)));
        const ProgramEnd result = run({u"timeline"_s, u"--now"_s, u"2026-03-17T12:00:00Z"_s});
        QCOMPARE(result.complaint(), "");
        QVERIFY(result.output.contains("€29.97 / month"));
        QVERIFY(result.output.contains("tomorrow"));
        QCOMPARE(result.errors, ""_ba);
    }

    void shouldReadAPipe()
    {
        const ProgramEnd result = run({u"timeline"_s, u"--snapshot"_s, u"-"_s, u"--json"_s},
            encodeCacheSnapshot(sampleSnapshot(2'000)));
        QCOMPARE(result.complaint(), "");
        const auto object = QJsonDocument::fromJson(result.output).object();
        QCOMPARE(object[u"activeCount"_s].toInt(), 2'000);
    }

    void shouldSayWhatIsWrongInOneLineWhateverTheLocale_data()
    {
        QTest::addColumn<QString>("locale");
        for (const char *locale : {"C", "POSIX", "C.UTF-8", "de_DE.UTF-8", "xx_XX", "en_US.ISO-8859-1", ""})
            QTest::newRow(*locale != '\0' ? locale : "none") << QString::fromLatin1(locale);
    }
    void shouldSayWhatIsWrongInOneLineWhateverTheLocale()
    {
        QFETCH(QString, locale);
        save("{\"version\":1,\"profile\":{\"id\":\"ü\"}}");
        const ProgramEnd result = run({u"timeline"_s}, {}, {{u"LC_ALL"_s, locale}, {u"LANG"_s, locale}});
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.output, ""_ba);
        QCOMPARE(result.errors, "orbitledge: " + ownCache().toUtf8() + ": profile.id: Expected a UUID\n");
    }

    void shouldLeaveADamagedCacheWhereItIs()
    {
        save("damaged");
        QCOMPARE(run({u"timeline"_s}).exitCode, 1);
        QVERIFY(QFile::exists(ownCache()));
    }

    void shouldFillAStatusBar()
    {
        save(encodeCacheSnapshot(sampleSnapshot(1)));
        const ProgramEnd result = run({u"status"_s, u"--now"_s, u"2026-03-17T12:00:00Z"_s});
        QCOMPARE(result.complaint(), "");
        QCOMPARE(result.output, "1 due · Subscription 0 tomorrow, €9.99 · €9.99 left this month\n"_ba);
        QCOMPARE(result.errors, ""_ba);
    }

    void shouldTellAStatusBarThatNothingOfUseIsSavedAndLeaveItWhereItIs()
    {
        save("damaged");
        const ProgramEnd damaged = run({u"status"_s, u"--waybar"_s});
        QCOMPARE(damaged.complaint(), "");
        QVERIFY(damaged.output.contains("signed-out"));
        QCOMPARE(damaged.errors, ""_ba);
        QFile file(ownCache());
        QVERIFY(file.open(QFile::ReadOnly));
        QCOMPARE(file.readAll(), "damaged"_ba);

        const QString home = qEnvironmentVariable("HOME") + u"/empty-bar"_s;
        QVERIFY(QDir().mkpath(home));
        const ProgramEnd missing = run({u"status"_s}, {}, {{u"XDG_DATA_HOME"_s, home}});
        QCOMPARE(missing.complaint(), "");
        QCOMPARE(missing.output, "Not signed in\n"_ba);
        QVERIFY(QDir(home).isEmpty());
    }

    void shouldFailWhereTheStatusCannotBeRead()
    {
        // Not by its permissions, which do not bind root.
        const QString home = qEnvironmentVariable("HOME") + u"/folder-for-a-file"_s;
        const QString path = home + u"/app.orbitledge.Orbitledge/subscription-snapshot-v1.json"_s;
        QVERIFY(QDir().mkpath(path));
        const ProgramEnd result = run({u"status"_s, u"--json"_s}, {}, {{u"XDG_DATA_HOME"_s, home}});
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.output, ""_ba);
        QCOMPARE(result.errors, "orbitledge: " + path.toUtf8() + ": Is a directory\n");
    }

    void shouldSayThatNothingWasSavedYetAndCreateNothing()
    {
        const QString home = qEnvironmentVariable("HOME") + u"/empty"_s;
        QVERIFY(QDir().mkpath(home));
        const ProgramEnd result = run({u"timeline"_s}, {}, {{u"XDG_DATA_HOME"_s, home}});
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.errors.count('\n'), 1);
        QVERIFY(result.errors.contains("No data has been saved yet"));
        QVERIFY(QDir(home).isEmpty());
    }

    void shouldRefuseWrongArgumentsWithTwo()
    {
        const ProgramEnd result = run({u"timeline"_s, u"--time-zone"_s, u"Mars/Olympus"_s});
        QCOMPARE(result.exitCode, 2);
        QCOMPARE(result.errors.count('\n'), 1);
        QVERIFY(result.errors.contains("Mars/Olympus"));
    }

    void shouldTakeZoneAndLocaleFromTheMachine()
    {
        save(encodeCacheSnapshot(sampleSnapshot(1)));
        const QStringList arguments{u"timeline"_s, u"--json"_s, u"--now"_s, u"2026-03-18T12:30:00Z"_s};
        const ProgramEnd result
            = run(arguments, {}, {{u"TZ"_s, u"Pacific/Auckland"_s}, {u"LC_ALL"_s, u"de_DE.UTF-8"_s}});
        QCOMPARE(result.complaint(), "");
        // Already the 19th there; Monday the 16th starts the week at 11:00 UTC of the day before.
        QVERIFY(result.output.contains(
            "\"week\":[{\"date\":\"2026-03-15T11:00:00Z\",\"localDate\":\"2026-03-16\""));
        QVERIFY(result.output.contains("\"localDate\":\"2026-03-19\",\"isToday\":true"));
    }

    void shouldFailWhereTheDiskIsFull()
    {
        if (!QFileInfo::exists(u"/dev/full"_s))
            QSKIP("no /dev/full here");
        save(encodeCacheSnapshot(sampleSnapshot(1)));
        QProcess process;
        process.setStandardOutputFile(u"/dev/full"_s);
        process.start(QStringLiteral(ORBITLEDGE_PROGRAM), {u"timeline"_s});
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitCode(), 1);
        QCOMPARE(process.readAllStandardError(), "orbitledge: The output could not be written\n"_ba);
    }

    void shouldSpeakTheEncodingOfTheLocale()
    {
        const QTemporaryDir locales;
        if (QProcess::execute(u"localedef"_s,
                {u"-i"_s, u"de_DE"_s, u"-f"_s, u"ISO-8859-1"_s, locales.filePath(u"de_DE.ISO-8859-1"_s)})
            != 0)
            QSKIP("no localedef, or no sources of locales, here");
        const QHash<QString, QString> latin{
            {u"LOCPATH"_s, locales.path()}, {u"LC_ALL"_s, u"de_DE.ISO-8859-1"_s}};
        save(encodeCacheSnapshot(sampleSnapshot(1)));
        const ProgramEnd shown = run({u"timeline"_s, u"--now"_s, u"2026-03-18T12:00:00Z"_s}, {}, latin);
        QCOMPARE(shown.complaint(), "");
        QVERIFY(shown.output.startsWith("M\xE4rz 2026\n"));
        const ProgramEnd missing = run({u"timeline"_s, u"--snapshot"_s, u"/f\u00FCr"_s}, {}, latin);
        QCOMPARE(missing.exitCode, 1);
        QCOMPARE(missing.errors, "orbitledge: /f\xFCr: No such file or directory\n"_ba);
    }

    void shouldUseColoursAndKeepToTheWidthOnATerminal()
    {
        save(encodeCacheSnapshot(sampleSnapshot(1)));
        const auto onTerminal = [](const QString &prefix) {
            QProcess terminal;
            const QString command = u"stty cols 60; %1 '%2' timeline --now 2026-03-18T12:00:00Z"_s.arg(
                prefix, QStringLiteral(ORBITLEDGE_PROGRAM));
            terminal.start(u"script"_s, {u"-qec"_s, command, u"/dev/null"_s});
            return terminal.waitForFinished() && terminal.exitCode() == 0 ? terminal.readAllStandardOutput()
                                                                          : QByteArray();
        };
        const QByteArray colored = onTerminal(u"TERM=xterm"_s);
        QVERIFY(colored.contains("\x1B[1m"));
        const QByteArray plain = onTerminal(u"TERM=xterm NO_COLOR=1"_s);
        QVERIFY(plain.contains("Subscription 0"));
        QVERIFY(!plain.contains('\x1B'));
        for (const QByteArray &line : plain.split('\n'))
            QVERIFY(QString::fromUtf8(line).trimmed().size() <= 60);
    }

    void shouldEndInOrderWithoutStandardStreams_data()
    {
        QTest::addColumn<QString>("redirection");
        QTest::addColumn<int>("exitCode");
        QTest::newRow("no input") << u"<&-"_s << 0;
        QTest::newRow("no output") << u">&-"_s << 1;
        QTest::newRow("no error output") << u"2>&-"_s << 0;
        QTest::newRow("none at all") << u"<&- >&- 2>&-"_s << 1;
    }
    void shouldEndInOrderWithoutStandardStreams()
    {
        QFETCH(QString, redirection);
        QFETCH(int, exitCode);
        save(encodeCacheSnapshot(sampleSnapshot(1)));
        QCOMPARE(
            QProcess::execute(u"sh"_s,
                {u"-c"_s, u"'%1' timeline --json %2"_s.arg(QStringLiteral(ORBITLEDGE_PROGRAM), redirection)}),
            exitCode);
    }

    void shouldLoadNoGraphicalLibrary_data()
    {
        QTest::addColumn<QString>("command");
        QTest::newRow("timeline") << u"timeline"_s;
        QTest::newRow("status") << u"status"_s;
        QTest::newRow("doctor") << u"doctor"_s; // one that it starts says nothing here
    }
    void shouldLoadNoGraphicalLibrary()
    {
        QFETCH(const QString, command);
        save(encodeCacheSnapshot(sampleSnapshot(1)));
        // The loader's own list of what it mapped, also of what would only be opened later.
        const ProgramEnd result = run({command}, {}, {{u"LD_DEBUG"_s, u"files"_s}});
        QVERIFY(!result.output.isEmpty());
        QVERIFY(result.errors.contains("libQt6Core"));
        for (const char *library : {"Qt6Gui", "Qt6Widgets", "libX11", "libxcb", "wayland", "libGL"})
            QVERIFY2(!result.errors.contains(library), library);
    }
};

ORBITLEDGE_TEST_MAIN(ProgramTest)
#include "ProgramTest.moc"
