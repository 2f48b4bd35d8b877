#include "platform/linux/AutostartEntry.h"

#include "platform/linux/PosixFileStore.h"
#include "support/FakeFileStore.h"
#include "support/TestMain.h"

#include <QProcess>

#include <sys/stat.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <thread>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

namespace fs = std::filesystem;

namespace {

constexpr const char *entryName = "app.orbitledge.Orbitledge.desktop";

/// What desktop-file-validate has to say, empty where it is content.
QByteArray complaintsOf(const fs::path &file)
{
    QProcess validator;
    validator.setProcessChannelMode(QProcess::MergedChannels);
    validator.start(u"desktop-file-validate"_s, {QString::fromStdString(file.string())});
    if (!validator.waitForFinished())
        return "desktop-file-validate did not run: " + validator.errorString().toUtf8();
    const QByteArray said = validator.readAll();
    return validator.exitCode() == 0 && said.isEmpty() ? QByteArray() : "it says: " + said;
}

/// Where a program may be, and quoting has to hold.
QStringList oddFolders()
{
    return {u"a b"_s, u" ends with blanks "_s, u"\"quoted\""_s, u"it's"_s, u"back\\slash"_s, u"\\\\two\\"_s,
        u"\\n\\s\\t"_s, u"$HOME"_s, u"$(touch pwned)"_s, u"`touch pwned`"_s, u"100%"_s, u"%u%%f"_s,
        u"a;b&c|d>e<f"_s, u"*?~#(x)"_s, u"--option"_s, u"[Desktop Entry]"_s, u"Ünïcödé 💸"_s, u"\\\"$`%"_s};
}

mode_t modeOf(const fs::path &path)
{
    struct stat status{};
    return ::lstat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
}

} // namespace

/// On real files.
class AutostartEntryTest : public QObject {
    Q_OBJECT

private:
    std::optional<QTemporaryDir> m_folder;
    int m_pagesOpened = 0;

    fs::path root() const { return m_folder->path().toStdString(); }
    fs::path entryFile() const { return root() / "autostart" / entryName; }

    fs::path programNamed(const fs::path &name) const
    {
        const fs::path path = root() / name;
        fs::create_directories(path.parent_path());
        fs::remove(path);
        fs::create_symlink("/bin/true", path);
        return path;
    }

    std::unique_ptr<AutostartEntry> entryFor(
        const fs::path &program, std::shared_ptr<FileStore> files = std::make_shared<PosixFileStore>())
    {
        const auto open = [this]() -> QCoro::Task<bool> {
            ++m_pagesOpened;
            co_return true;
        };
        return std::make_unique<AutostartEntry>(entryFile(), program, std::move(files), open);
    }

    std::unique_ptr<AutostartEntry> entry() { return entryFor(programNamed("orbitledge")); }

    void write(const QByteArray &text) const
    {
        fs::create_directories(entryFile().parent_path());
        QFile file(QString::fromStdString(entryFile().string()));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(text), text.size());
    }

    QByteArray written() const
    {
        QFile file(QString::fromStdString(entryFile().string()));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private Q_SLOTS:
    void init()
    {
        m_folder.emplace();
        m_pagesOpened = 0;
    }

    void shouldNotBeRegisteredAtFirst()
    {
        QCOMPARE(entry()->status(), LoginItemStatus::NotRegistered);
        QVERIFY(!fs::exists(root() / "autostart"));
    }

    void shouldRegister()
    {
        const auto item = entry();
        QVERIFY(QCoro::waitFor(item->registerItem()));
        QCOMPARE(item->status(), LoginItemStatus::Enabled);
        QCOMPARE(written(),
            "[Desktop Entry]\n"
            "Type=Application\n"
            "Name=Orbitledge\n"
            "Comment=Keeps an eye on recurring subscriptions\n"
            "Icon=app.orbitledge.Orbitledge\n"
            "Exec=\""
                + QByteArray::fromStdString((root() / "orbitledge").native())
                + "\" --background\n"
                  "Terminal=false\n"
                  "StartupNotify=false\n"
                  "X-GNOME-Autostart-enabled=true\n");
        QCOMPARE(complaintsOf(entryFile()), QByteArray());
        QCOMPARE(modeOf(root() / "autostart"), mode_t{0700});
        QCOMPARE(modeOf(entryFile()), mode_t{0600});
    }

    void shouldUnregister()
    {
        const auto item = entry();
        QVERIFY(QCoro::waitFor(item->registerItem()));
        QVERIFY(QCoro::waitFor(item->unregisterItem()));
        QCOMPARE(item->status(), LoginItemStatus::NotRegistered);
        QVERIFY(fs::is_empty(root() / "autostart"));
        // What is not there needs no removal, with or without its folder.
        QVERIFY(QCoro::waitFor(item->unregisterItem()));
        fs::remove(root() / "autostart");
        QVERIFY(QCoro::waitFor(item->unregisterItem()));
    }

    void shouldTellTheStatusFromTheFile_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<LoginItemStatus>("status");
        const auto row = [](const char *name, const QByteArray &text, LoginItemStatus status) {
            QTest::newRow(name) << text << status;
        };
        const QByteArray head = "[Desktop Entry]\nType=Application\nName=Orbitledge\n";
        const QByteArray good = head + "Exec=/bin/true --background\n";
        row("another program that is there", good, LoginItemStatus::Enabled);
        row("a program on PATH", head + "Exec=true\n", LoginItemStatus::Enabled);
        row("a program in quotes", head + "Exec=\"/bin/true\"\n", LoginItemStatus::Enabled);
        row("the switch is on", good + "Hidden=false\nX-GNOME-Autostart-enabled=true\n",
            LoginItemStatus::Enabled);
        row("for one desktop", good + "OnlyShowIn=KDE;\n", LoginItemStatus::Enabled);
        row("the switch of another group", good + "\n[X-Other]\nHidden=true\n", LoginItemStatus::Enabled);

        row("hidden", good + "Hidden=true\n", LoginItemStatus::RequiresApproval);
        row("hidden, and nothing else", "[Desktop Entry]\nHidden=true\n", LoginItemStatus::RequiresApproval);
        row("GNOME's switch is off", good + "X-GNOME-Autostart-enabled=false\n",
            LoginItemStatus::RequiresApproval);
        row("MATE's switch is off", good + "X-MATE-Autostart-enabled=false\n",
            LoginItemStatus::RequiresApproval);
        row("one switch is off", good + "Hidden=true\nX-GNOME-Autostart-enabled=true\n",
            LoginItemStatus::RequiresApproval);

        row("a path to nothing", head + "Exec=/nowhere/orbitledge\n", LoginItemStatus::NotFound);
        row("a path to a file that is no program", head + "Exec=/etc/passwd\n", LoginItemStatus::NotFound);
        row("a path to a folder", head + "Exec=/usr/bin\n", LoginItemStatus::NotFound);
        row("a name that is not on PATH", head + "Exec=orbitledge-nowhere\n", LoginItemStatus::NotFound);
        row("a relative path", head + "Exec=bin/true\n", LoginItemStatus::NotFound);
        row("what is to be tried is gone", good + "TryExec=/nowhere/orbitledge\n", LoginItemStatus::NotFound);
        row("no program", head, LoginItemStatus::NotFound);
        row("an empty program", head + "Exec=\n", LoginItemStatus::NotFound);
        row("a quote without an end", head + "Exec=\"/bin/true\n", LoginItemStatus::NotFound);
        row("no application", "[Desktop Entry]\nType=Link\nExec=/bin/true\n", LoginItemStatus::NotFound);
        row("no type", "[Desktop Entry]\nExec=/bin/true\n", LoginItemStatus::NotFound);
        row("no group", "Exec=/bin/true\n", LoginItemStatus::NotFound);
        row("empty", "", LoginItemStatus::NotFound);
        row("bytes", QByteArray("\0\xFF\xFE[", 4).repeated(100), LoginItemStatus::NotFound);
        row("just not too large", good + '#' + QByteArray(65536 - good.size() - 1, 'x'),
            LoginItemStatus::Enabled);
        row("too large", good + '#' + QByteArray(65536 - good.size(), 'x'), LoginItemStatus::NotFound);
    }
    void shouldTellTheStatusFromTheFile()
    {
        QFETCH(QByteArray, text);
        QFETCH(LoginItemStatus, status);
        write(text);
        const auto item = entry();
        QCOMPARE(item->status(), status);
        QCOMPARE(written(), text);

        // Whatever it was, enabling makes it ours.
        QVERIFY(QCoro::waitFor(item->registerItem()));
        QCOMPARE(item->status(), LoginItemStatus::Enabled);
        QVERIFY(written().contains(
            "\nExec=\"" + QByteArray::fromStdString((root() / "orbitledge").native()) + "\" --background\n"));
        QCOMPARE(complaintsOf(entryFile()), QByteArray());
    }

    void shouldNotWaitForAPipe()
    {
        fs::create_directories(entryFile().parent_path());
        QCOMPARE(::mkfifo(entryFile().c_str(), 0600), 0);
        const auto item = entry();
        QCOMPARE(item->status(), LoginItemStatus::NotFound);
        QVERIFY(QCoro::waitFor(item->registerItem()));
        QCOMPARE(item->status(), LoginItemStatus::Enabled);
    }

    void shouldSeeThatTheProgramWentAndRepairIt()
    {
        const fs::path old = programNamed("old/orbitledge");
        const auto former = entryFor(old);
        QVERIFY(QCoro::waitFor(former->registerItem()));
        const auto item = entry();
        QCOMPARE(item->status(), LoginItemStatus::Enabled);
        fs::remove(old);
        QCOMPARE(item->status(), LoginItemStatus::NotFound);
        QVERIFY(QCoro::waitFor(item->registerItem()));
        QCOMPARE(item->status(), LoginItemStatus::Enabled);
        QVERIFY(!written().contains("old"));
    }

    void shouldKeepWhatOthersAdded()
    {
        write("# Mine\n"
              "[Desktop Entry]\n"
              "Type=Application\n"
              "Name=Orbitledge\n"
              "Name[de]=Umlaufbuch\n"
              "Exec=/bin/true\n"
              "TryExec=/nowhere\n"
              "Hidden=true\n"
              "NotShowIn=XFCE;\n"
              "X-GNOME-Autostart-Delay=10\n"
              "X-MATE-Autostart-enabled=false\n"
              "X-GNOME-Autostart-enabled=false\n");
        const auto item = entry();
        QCOMPARE(item->status(), LoginItemStatus::RequiresApproval);
        QVERIFY(QCoro::waitFor(item->registerItem()));
        QCOMPARE(item->status(), LoginItemStatus::Enabled);
        QCOMPARE(written(),
            "# Mine\n"
            "[Desktop Entry]\n"
            "Type=Application\n"
            "Name=Orbitledge\n"
            "Name[de]=Umlaufbuch\n"
            "Exec=\""
                + QByteArray::fromStdString((root() / "orbitledge").native())
                + "\" --background\n"
                  "NotShowIn=XFCE;\n"
                  "X-GNOME-Autostart-Delay=10\n"
                  "X-GNOME-Autostart-enabled=true\n"
                  "Comment=Keeps an eye on recurring subscriptions\n"
                  "Icon=app.orbitledge.Orbitledge\n"
                  "Terminal=false\n"
                  "StartupNotify=false\n");
        QCOMPARE(complaintsOf(entryFile()), QByteArray());
        // Once more changes nothing.
        const QByteArray before = written();
        QVERIFY(QCoro::waitFor(item->registerItem()));
        QCOMPARE(written(), before);
    }

    void shouldNameProgramsInOddPlaces_data()
    {
        QTest::addColumn<QString>("folder");
        for (const QString &folder : oddFolders())
            QTest::newRow(qPrintable(folder)) << folder;
    }
    void shouldNameProgramsInOddPlaces()
    {
        QFETCH(QString, folder);
        const fs::path program = programNamed(fs::path(folder.toStdString()) / "orbitledge");
        const auto item = entryFor(program);
        QVERIFY(QCoro::waitFor(item->registerItem()));
        QCOMPARE(item->status(), LoginItemStatus::Enabled);
        QCOMPARE(complaintsOf(entryFile()), QByteArray());
        // The status is about this very file.
        fs::remove(program);
        QCOMPARE(item->status(), LoginItemStatus::NotFound);
    }

    void shouldBeStartedFromOddPlacesByAnotherReader_data()
    {
        QTest::addColumn<QString>("folder");
        for (const QString &folder : oddFolders()) {
            // This reader looks for the program before it undoes the doubling of percent signs.
            if (!folder.contains(u'%'))
                QTest::newRow(qPrintable(folder)) << folder;
        }
    }
    void shouldBeStartedFromOddPlacesByAnotherReader()
    {
        QFETCH(QString, folder);
        const fs::path program = root() / folder.toStdString() / "orbitledge";
        fs::create_directories(program.parent_path());
        const fs::path record = root() / "record";
        std::ofstream(program) << "#!/bin/sh\nprintf '%s|' \"$0\" \"$@\" >" << record << '\n';
        fs::permissions(program, fs::perms::owner_all);
        const auto item = entryFor(program);
        QVERIFY(QCoro::waitFor(item->registerItem()));

        QProcess launcher;
        launcher.setProcessChannelMode(QProcess::MergedChannels);
        launcher.setWorkingDirectory(m_folder->path());
        launcher.start(u"/usr/bin/python3"_s,
            {QStringLiteral(ORBITLEDGE_TEST_SUPPORT "/launch_entry.py"),
                QString::fromStdString(entryFile().string())});
        QVERIFY(launcher.waitForFinished());
        QCOMPARE(launcher.readAll(), QByteArray());
        const auto recorded = [&] {
            QFile file(QString::fromStdString(record.string()));
            return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        };
        QTRY_COMPARE(recorded(), QByteArray::fromStdString(program.native()) + "|--background|");
        QVERIFY(!fs::exists(root() / "pwned"));
    }

    void shouldRefusePathsThatAnEntryCannotHold_data()
    {
        QTest::addColumn<QByteArray>("program");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("relative") << "bin/orbitledge"_ba;
        QTest::newRow("a line break") << "/opt/a\nHidden=true/orbitledge"_ba;
        QTest::newRow("a tab") << "/opt/a\tb/orbitledge"_ba;
        QTest::newRow("a control character") << "/opt/a\x7F/orbitledge"_ba;
        QTest::newRow("an equal sign") << "/opt/a=b/orbitledge"_ba;
        QTest::newRow("not UTF-8") << "/opt/\xE4/orbitledge"_ba;
    }
    void shouldRefusePathsThatAnEntryCannotHold()
    {
        QFETCH(QByteArray, program);
        const auto item = entryFor(program.toStdString());
        const auto outcome = QCoro::waitFor(item->registerItem());
        QVERIFY(!outcome);
        QVERIFY(outcome.error().errorDescription.startsWith(
            u"The desktop cannot start Orbitledge at login from a path like \""_s));
        QVERIFY(!outcome.error().errorDescription.contains(u'\n'));
        QCOMPARE(item->status(), LoginItemStatus::NotRegistered);
    }

    void shouldTellWhyItCannotBeSaved()
    {
        // Even an administrator cannot put a file into a file.
        std::ofstream(root() / "autostart") << "in the way";
        const auto item = entry();
        QCOMPARE(item->status(), LoginItemStatus::NotRegistered);
        const auto outcome = QCoro::waitFor(item->registerItem());
        QVERIFY(!outcome);
        QCOMPARE(outcome.error().errorDescription, u"The login item could not be saved: Not a directory."_s);
        QVERIFY(QCoro::waitFor(item->unregisterItem()));
    }

    void shouldTellWhyItCannotBeRemoved()
    {
        fs::create_directories(entryFile() / "something");
        const auto item = entry();
        QCOMPARE(item->status(), LoginItemStatus::NotFound);
        const auto outcome = QCoro::waitFor(item->unregisterItem());
        QVERIFY(!outcome);
        QCOMPARE(outcome.error().errorDescription, u"The login item could not be removed: Is a directory."_s);
        QVERIFY(!QCoro::waitFor(item->registerItem()));
        QVERIFY(fs::exists(entryFile() / "something"));
    }

    void shouldKeepTheOldEntryWhereTheNewOneCannotBeWritten()
    {
        const auto item = entry();
        QVERIFY(QCoro::waitFor(item->registerItem()));
        const QByteArray before = written();
        // In the way of what is written beside it.
        fs::create_directories(root() / "autostart" / (std::string(".") + entryName + ".new") / "something");
        const auto moved = entryFor(programNamed("elsewhere/orbitledge"));
        QVERIFY(!QCoro::waitFor(moved->registerItem()));
        QCOMPARE(written(), before);
        QCOMPARE(moved->status(), LoginItemStatus::Enabled);
    }

    void shouldSayThatTheDiskIsFull()
    {
        const auto files = std::make_shared<FakeFileStore>();
        files->failWriting(
            {.kind = FileError::Kind::NoSpace, .errorDescription = u"No space left on device"_s});
        const auto outcome = QCoro::waitFor(entryFor(programNamed("orbitledge"), files)->registerItem());
        QVERIFY(!outcome);
        QCOMPARE(outcome.error().errorDescription,
            u"The login item could not be saved: No space left on device."_s);
    }

    void shouldNeverShowHalfAnEntry()
    {
        const auto first = entry();
        const auto second
            = entryFor(programNamed("with a much longer path/so that the two differ/orbitledge"));
        QVERIFY(QCoro::waitFor(first->registerItem()));
        std::atomic<int> looks = 0;
        std::atomic<int> surprises = 0;
        {
            const std::jthread onlooker([&](const std::stop_token &stop) {
                while (!stop.stop_requested()) {
                    ++looks;
                    surprises += first->status() == LoginItemStatus::Enabled ? 0 : 1;
                }
            });
            int changes = 0;
            while (changes < 50 || looks < 100) {
                QVERIFY(QCoro::waitFor((changes % 2 == 0 ? second : first)->registerItem()));
                ++changes;
            }
        }
        QCOMPARE(surprises, 0);
    }

    void shouldReplaceALinkAndLeaveWhatItLeadsTo()
    {
        const QByteArray text = "[Desktop Entry]\nType=Application\nName=A\nExec=/bin/true\n";
        write(text);
        const fs::path target = root() / "dotfiles.desktop";
        fs::rename(entryFile(), target);
        const auto contentOfTarget = [&] {
            QFile file(QString::fromStdString(target.string()));
            return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        };
        const auto item = entry();
        fs::create_symlink(target, entryFile());
        QCOMPARE(item->status(), LoginItemStatus::Enabled);
        QVERIFY(QCoro::waitFor(item->registerItem()));
        QVERIFY(!fs::is_symlink(entryFile()));
        QCOMPARE(contentOfTarget(), text);

        fs::remove(entryFile());
        fs::create_symlink(target, entryFile());
        QVERIFY(QCoro::waitFor(item->unregisterItem()));
        QVERIFY(!fs::is_symlink(entryFile()));
        QCOMPARE(contentOfTarget(), text);
    }

    void shouldNotBeRegisteredByALinkToNothing()
    {
        fs::create_directories(entryFile().parent_path());
        fs::create_symlink("nowhere", entryFile());
        const auto item = entry();
        QCOMPARE(item->status(), LoginItemStatus::NotRegistered);
        QVERIFY(QCoro::waitFor(item->registerItem()));
        QCOMPARE(item->status(), LoginItemStatus::Enabled);
        QVERIFY(!fs::exists(entryFile().parent_path() / "nowhere"));
    }

    void shouldFinishWhatWasBegunWhenItGoes()
    {
        auto item = entry();
        const auto first = item->unregisterItem();
        const auto second = item->registerItem();
        item.reset();
        QVERIFY(QCoro::waitFor(first));
        QVERIFY(QCoro::waitFor(second));
        QCOMPARE(entry()->status(), LoginItemStatus::Enabled);
    }

    void shouldLieInTheAutostartFolder()
    {
        struct Directories final : UserDirectories {
            std::optional<fs::path> place;
            [[nodiscard]] std::optional<fs::path> data() const override { return "/wrong"; }
            [[nodiscard]] std::optional<fs::path> configuration() const override { return place; }
            [[nodiscard]] std::optional<fs::path> state() const override { return "/wrong"; }
            [[nodiscard]] std::optional<fs::path> cache() const override { return "/wrong"; }
            [[nodiscard]] fs::path temporary() const override { return "/wrong"; }
        };
        Directories directories;
        QVERIFY(!AutostartEntry::defaultLocation(directories));
        directories.place = "/home/a/.config";
        QCOMPARE(AutostartEntry::defaultLocation(directories).value_or("").native(),
            "/home/a/.config/autostart/app.orbitledge.Orbitledge.desktop");
    }

    void shouldOpenTheSettings()
    {
        auto item = entry();
        QVERIFY(QCoro::waitFor(item->openSystemSettings()));
        QCOMPARE(m_pagesOpened, 1);
    }
};

ORBITLEDGE_TEST_MAIN(AutostartEntryTest)
#include "AutostartEntryTest.moc"
