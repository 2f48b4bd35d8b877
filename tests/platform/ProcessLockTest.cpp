#include "platform/linux/ProcessLock.h"

#include "support/TestMain.h"

#include <QProcess>
#include <QTemporaryDir>

using namespace orbitledge;
using namespace Qt::StringLiterals;

class ProcessLockTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_folder;

    [[nodiscard]] QString name() const { return m_folder.filePath(u"state/lock"_s); }
    [[nodiscard]] std::filesystem::path path() const { return name().toStdString(); }
    [[nodiscard]] bool isFree() const
    {
        const auto lock = ProcessLock::take(path());
        return lock && *lock;
    }

private Q_SLOTS:
    void shouldBeHadByOneAtATime()
    {
        auto first = ProcessLock::take(path());
        QVERIFY(first);
        QVERIFY(*first);
        const auto second = ProcessLock::take(path());
        QVERIFY(second);
        QVERIFY(!*second);
        first->reset();
        const auto third = ProcessLock::take(path());
        QVERIFY(third && *third);
    }

    void shouldMoveToItsNewOwner()
    {
        auto first = ProcessLock::take(path());
        QVERIFY(first && *first);
        std::optional<ProcessLock> second = std::move(*first);
        first->reset();
        const auto other = ProcessLock::take(path());
        QVERIFY(other && !*other);
        second.reset();
        const auto next = ProcessLock::take(path());
        QVERIFY(next && *next);
    }

    void shouldEndWithAProcessThatIsKilled()
    {
        {
            const auto make = ProcessLock::take(path()); // makes the file
            QVERIFY(make && *make);
        }
        QProcess other;
        other.start(u"flock"_s, {u"--no-fork"_s, name(), u"sh"_s, u"-c"_s, u"echo here; exec sleep 100"_s});
        QVERIFY(other.waitForReadyRead());
        const auto taken = ProcessLock::take(path());
        QVERIFY(taken && !*taken);
        other.kill();
        QVERIFY(other.waitForFinished());
        const auto next = ProcessLock::take(path());
        QVERIFY(next && *next);
    }

    void shouldNotBeInheritedByPrograms()
    {
        QProcess child;
        {
            const auto lock = ProcessLock::take(path());
            QVERIFY(lock && *lock);
            child.start(u"sleep"_s, {u"100"_s});
            QVERIFY(child.waitForStarted());
        }
        // It had it for a moment, until it became another program.
        QTRY_VERIFY(isFree());
        QCOMPARE(child.state(), QProcess::Running);
        child.kill();
        child.waitForFinished();
    }

    void shouldSayWhyItCannotBeHad()
    {
        const auto noFolder = ProcessLock::take("/dev/null/lock");
        QVERIFY(!noFolder);
        QVERIFY(!noFolder.error().errorDescription.isEmpty());
        QVERIFY(QFile::link(u"/etc/hostname"_s, m_folder.filePath(u"link"_s)));
        QVERIFY(!ProcessLock::take(m_folder.filePath(u"link"_s).toStdString()));
    }
};

ORBITLEDGE_TEST_MAIN(ProcessLockTest)
#include "ProcessLockTest.moc"
