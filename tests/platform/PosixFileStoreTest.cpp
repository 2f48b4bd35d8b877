#include "platform/linux/PosixFileStore.h"

#include "support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QScopeGuard>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <optional>
#include <thread>

using namespace orbitledge;
using namespace Qt::StringLiterals;

namespace {

/// What the store asked of the system, and what the system shall answer.
struct Calls {
    QStringList log;
    int failingFlush = 0; // the number of the call to fsync(2) that fails, from 1
    int flushes = 0;
};
Calls calls;

QString nameOf(int descriptor)
{
    return QFileInfo(QFile::symLinkTarget(u"/proc/self/fd/%1"_s.arg(descriptor))).fileName();
}

} // namespace

extern "C" {

// The names are those that the linker gives to wrapped functions.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
int __real_fsync(int descriptor);
int __real_renameat(int fromFolder, const char *from, int toFolder, const char *to);

int __wrap_fsync(int descriptor)
{
    calls.log.append(u"flush "_s + nameOf(descriptor));
    if (++calls.flushes == calls.failingFlush) {
        errno = EIO;
        return -1;
    }
    return __real_fsync(descriptor);
}

int __wrap_renameat(int fromFolder, const char *from, int toFolder, const char *to)
{
    calls.log.append(u"rename %1 to %2"_s.arg(QString::fromUtf8(from), QString::fromUtf8(to)));
    return __real_renameat(fromFolder, from, toFolder, to);
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
}

class PosixFileStoreTest : public QObject {
    Q_OBJECT

private:
    static mode_t modeOf(const std::filesystem::path &path)
    {
        struct stat status{};
        return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
    }

    std::filesystem::path path(const char *name) const
    {
        return std::filesystem::path(m_folder->path().toStdString()) / name;
    }

    std::optional<QTemporaryDir> m_folder;
    PosixFileStore m_files;

private Q_SLOTS:
    void init()
    {
        m_folder.emplace();
        calls = {};
    }
    void cleanup() { m_folder.reset(); }

    void shouldReadBackWhatItWrote_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("a line") << "one line\n"_ba;
        QTest::newRow("zero bytes") << QByteArray(3, '\0');
        QTest::newRow("more than a buffer") << QByteArray(300'000, 'x');
    }
    void shouldReadBackWhatItWrote()
    {
        QFETCH(QByteArray, content);
        QVERIFY(m_files.replace(path("file"), content));
        const auto read = m_files.read(path("file"));
        QVERIFY(read);
        QCOMPARE(*read, content);
        QVERIFY2(read->capacity() - read->size() >= 64, "parsers want room behind the content");
    }

    void shouldCreateMissingFoldersForTheirOwnerAlone()
    {
        ::umask(0);
        const auto file = path("one") / "two" / "file";
        QVERIFY(m_files.replace(file, "x"));
        QCOMPARE(modeOf(path("one")), mode_t{0700});
        QCOMPARE(modeOf(path("one") / "two"), mode_t{0700});
        QCOMPARE(modeOf(file), mode_t{0600});
    }

    void shouldLeaveAnExistingFoldersPermissionsAlone()
    {
        QVERIFY(::mkdir(path("shared").c_str(), 0755) == 0);
        QVERIFY(m_files.replace(path("shared") / "file", "x"));
        QCOMPARE(modeOf(path("shared")), mode_t{0755});
    }

    void shouldMakeTheFilePrivateAlsoWhereItWasNot()
    {
        QVERIFY(m_files.replace(path("file"), "old"));
        QVERIFY(::chmod(path("file").c_str(), 0644) == 0);
        QVERIFY(m_files.replace(path("file"), "new"));
        QCOMPARE(modeOf(path("file")), mode_t{0600});
    }

    void shouldReplaceALinkAndNotWhatItPointsTo()
    {
        QVERIFY(m_files.replace(path("precious"), "precious"));
        QVERIFY(::symlink(path("precious").c_str(), path("file").c_str()) == 0);
        QVERIFY(m_files.replace(path("file"), "new"));
        QCOMPARE(*m_files.read(path("precious")), "precious"_ba);
        QCOMPARE(*m_files.read(path("file")), "new"_ba);
    }

    void shouldNotFollowALinkLeftWhereItWrites()
    {
        QVERIFY(m_files.replace(path("precious"), "precious"));
        QVERIFY(::symlink(path("precious").c_str(), path(".file.new").c_str()) == 0);
        QVERIFY(m_files.replace(path("file"), "new"));
        QCOMPARE(*m_files.read(path("precious")), "precious"_ba);
    }

    void shouldTakeOverWhatAnInterruptedWritingLeft()
    {
        QVERIFY(m_files.replace(path(".file.new"), "half of some"));
        QVERIFY(m_files.replace(path("file"), "whole"));
        QCOMPARE(*m_files.read(path("file")), "whole"_ba);
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden), QStringList{u"file"_s});
    }

    void shouldKeepTheOldFileWhereTheNewOneCannotBeWritten()
    {
        QVERIFY(m_files.replace(path("file"), "old"));
        // A folder where the new content would go; not even root can open that for writing.
        QVERIFY(::mkdir(path(".file.new").c_str(), 0700) == 0);
        const auto result = m_files.replace(path("file"), "new");
        QVERIFY(!result);
        QVERIFY(!result.error().errorDescription.isEmpty());
        QCOMPARE(*m_files.read(path("file")), "old"_ba);
    }

    void shouldFlushTheContentBeforeTheRenameAndTheNameAfterIt()
    {
        QVERIFY(m_files.replace(path("file"), "x"));
        const QString folder = QFileInfo(m_folder->path()).fileName();
        QCOMPARE(calls.log,
            (QStringList{u"flush .file.new"_s, u"rename .file.new to file"_s, u"flush "_s + folder}));
    }

    void shouldKeepTheOldFileWhereTheNewContentCannotBeFlushed()
    {
        QVERIFY(m_files.replace(path("file"), "old"));
        calls = {};
        calls.failingFlush = 1;
        QVERIFY(!m_files.replace(path("file"), "new"));
        QCOMPARE(*m_files.read(path("file")), "old"_ba);
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden), QStringList{u"file"_s});
    }

    void shouldReportANameThatMayNotSurviveALossOfPower()
    {
        calls.failingFlush = 2;
        QVERIFY(!m_files.replace(path("file"), "new"));
    }

    void shouldSayThatTheDiskIsFull()
    {
        // A file system of one page; only root may make one, and not in every container.
        const auto mount = path("small");
        QVERIFY(::mkdir(mount.c_str(), 0700) == 0);
        const QString quoted = QString::fromStdString(mount.string());
        if (QProcess::execute(u"mount"_s, {u"-t"_s, u"tmpfs"_s, u"-o"_s, u"size=64k"_s, u"tmpfs"_s, quoted})
            != 0)
            QSKIP("no right to mount a small file system here");
        const auto unmount = qScopeGuard([&] { QProcess::execute(u"umount"_s, {quoted}); });

        QVERIFY(m_files.replace(mount / "file", "old"));
        const auto result = m_files.replace(mount / "file", QByteArray(1'000'000, 'x'));
        QVERIFY(!result);
        QCOMPARE(result.error().kind, FileError::Kind::NoSpace);
        QCOMPARE(*m_files.read(mount / "file"), "old"_ba);
        QCOMPARE(QDir(quoted).entryList(QDir::Files | QDir::Hidden), QStringList{u"file"_s});
    }

    void shouldTellAMissingFileFromOneThatCannotBeRead()
    {
        QCOMPARE(m_files.read(path("missing")).error().kind, FileError::Kind::NotFound);
        QCOMPARE(m_files.read(path("missing") / "deeper").error().kind, FileError::Kind::NotFound);
        QCOMPARE(m_files.read(m_folder->path().toStdString()).error().kind, FileError::Kind::Other);
    }

    void shouldRemoveAFileTwiceWithoutAnError()
    {
        QVERIFY(m_files.replace(path("file"), "x"));
        QVERIFY(m_files.remove(path("file")));
        QVERIFY(m_files.remove(path("file")));
        QVERIFY(!m_files.read(path("file")));
    }

    void shouldSayWhyAFileCannotBeRemoved()
    {
        QVERIFY(::mkdir(path("folder").c_str(), 0700) == 0);
        QVERIFY(!m_files.remove(path("folder")));
    }

    void shouldWorkWithNamesThatAreNotUtf8()
    {
        const auto file = path("na\xEFve");
        QVERIFY(m_files.replace(file, "x"));
        QCOMPARE(*m_files.read(file), "x"_ba);
    }

    void shouldReadAPipeToItsEnd()
    {
        int ends[2];
        QVERIFY(::pipe(ends) == 0);
        const QByteArray content(500'000, 'p');
        std::thread writer([&] {
            PosixFileStore::writeDescriptor(ends[1], content);
            ::close(ends[1]);
        });
        const auto read = PosixFileStore::readDescriptor(ends[0]);
        writer.join();
        ::close(ends[0]);
        QVERIFY(read);
        QCOMPARE(*read, content);
    }

    void shouldRefuseAFileThatIsTooLargeWithoutReadingIt()
    {
        // A hole takes no room on the disk.
        const int file = ::open(path("huge").c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
        QVERIFY(file >= 0);
        QVERIFY(::ftruncate(file, FileStore::largestFile + 1) == 0);
        ::close(file);
        const auto read = m_files.read(path("huge"));
        QVERIFY(!read);
        QCOMPARE(read.error().kind, FileError::Kind::TooLarge);
    }

    void shouldLetWritersTakeTurns()
    {
        const QByteArray first(200'000, 'a');
        const QByteArray second(100'000, 'b');
        std::atomic_int failures = 0;
        const auto write = [&](const QByteArray &content) {
            PosixFileStore files;
            for (int i = 0; i < 25; ++i) {
                if (!files.replace(path("file"), content))
                    ++failures;
                const auto read = files.read(path("file"));
                if (!read || (*read != first && *read != second))
                    ++failures;
            }
        };
        std::thread one([&] { write(first); });
        std::thread two([&] { write(second); });
        one.join();
        two.join();
        QCOMPARE(failures.load(), 0);
    }
};

ORBITLEDGE_TEST_MAIN(PosixFileStoreTest)
#include "PosixFileStoreTest.moc"
