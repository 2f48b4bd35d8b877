#include "platform/linux/notifications/SystemdUnitFiles.h"

#include "platform/linux/PosixFileStore.h"
#include "support/FakeFileStore.h"
#include "support/TestMain.h"

#include <QDateTime>
#include <QFileInfo>
#include <QTest>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

namespace {

SystemdUnits unitsFor(qint64 secondsSinceEpoch, const QByteArray &service = "service")
{
    return {.elapse = Instant::fromSecondsSinceEpoch(secondsSinceEpoch),
        .service = service,
        .timer = "timer " + QByteArray::number(secondsSinceEpoch)};
}

class Folder {
    QTemporaryDir m_folder;

public:
    SystemdUnitFiles files{u"app.example"_s,
        {.configuration = (m_folder.path() + u"/config"_s).toStdString(),
            .data = (m_folder.path() + u"/data"_s).toStdString()},
        std::make_shared<PosixFileStore>()};

    [[nodiscard]] QString path(const QString &name) const { return m_folder.filePath(name); }
    [[nodiscard]] QString link() const
    {
        return path(u"config/systemd/user/timers.target.wants/app.example.timer"_s);
    }
    [[nodiscard]] QString stamp() const { return path(u"data/systemd/timers/stamp-app.example.timer"_s); }
    [[nodiscard]] qint64 stampTime() const { return QFileInfo(stamp()).lastModified().toSecsSinceEpoch(); }
};

qint64 now()
{
    return QDateTime::currentSecsSinceEpoch();
}

} // namespace

class SystemdUnitFilesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldBeInForceOnlyOnceMarked()
    {
        const Folder folder;
        const SystemdUnits units = unitsFor(now() + 1000);
        QVERIFY(!folder.files.areInForce(units));
        QVERIFY(!folder.files.leaveTraces());
        QVERIFY(folder.files.write(units));
        QVERIFY(!folder.files.areInForce(units));
        // The link leads to the timer all along.
        QVERIFY(QFileInfo::exists(folder.link()));
        QVERIFY(folder.files.markInForce());
        QVERIFY(folder.files.areInForce(units));
        QVERIFY(QFileInfo::exists(folder.link()));
        QVERIFY(!folder.files.areInForce(unitsFor(now() + 2000)));
        QVERIFY(!folder.files.areInForce(unitsFor(now() + 1000, "another")));
        QVERIFY(folder.files.write(units));
        QVERIFY(!folder.files.areInForce(units));
    }

    void shouldNotBeInForceWhenSomethingIsMissing_data()
    {
        QTest::addColumn<QString>("file");
        QTest::newRow("timer") << u"config/systemd/user/app.example.timer"_s;
        QTest::newRow("service") << u"config/systemd/user/app.example.service"_s;
        QTest::newRow("link") << u"config/systemd/user/timers.target.wants/app.example.timer"_s;
    }
    void shouldNotBeInForceWhenSomethingIsMissing()
    {
        QFETCH(const QString, file);
        const Folder folder;
        const SystemdUnits units = unitsFor(now() + 1000);
        QVERIFY(folder.files.write(units));
        QVERIFY(folder.files.markInForce());
        QVERIFY(QFile::remove(folder.path(file)));
        QVERIFY(!folder.files.areInForce(units));
    }

    void shouldDateTheStampBeforeTheTimerElapses_data()
    {
        QTest::addColumn<qint64>("stamp");
        QTest::addColumn<qint64>("elapse");
        QTest::addColumn<qint64>("expected");
        const qint64 time = now();
        const qint64 none = 0;
        const qint64 dated = 0; // when it is written
        QTest::newRow("none, due later") << none << time + 1000 << dated;
        QTest::newRow("none, overdue") << none << time - 1000 << time - 1001;
        QTest::newRow("older, due later") << time - 500 << time + 1000 << time - 500;
        QTest::newRow("older, overdue") << time - 5000 << time - 1000 << time - 5000;
        QTest::newRow("younger, overdue") << time - 500 << time - 1000 << time - 1001;
        QTest::newRow("of the same time") << time - 1000 << time - 1000 << time - 1001;
        QTest::newRow("from the future, due before") << time + 9000 << time + 1000 << dated;
        QTest::newRow("from the future, overdue") << time + 9000 << time - 1000 << time - 1001;
    }
    void shouldDateTheStampBeforeTheTimerElapses()
    {
        QFETCH(const qint64, stamp);
        QFETCH(const qint64, elapse);
        QFETCH(const qint64, expected);
        const Folder folder;
        if (stamp != 0) {
            QVERIFY(QDir().mkpath(QFileInfo(folder.stamp()).path()));
            QFile file(folder.stamp());
            QVERIFY(file.open(QIODevice::WriteOnly));
            QVERIFY(
                file.setFileTime(QDateTime::fromSecsSinceEpoch(stamp), QFileDevice::FileModificationTime));
        }
        const qint64 before = now();
        QVERIFY(folder.files.write(unitsFor(elapse)));
        if (expected == 0)
            QVERIFY(folder.stampTime() >= before && folder.stampTime() <= now());
        else
            QCOMPARE(folder.stampTime(), expected);
    }

    void shouldLeaveNothing()
    {
        const Folder folder;
        QVERIFY(folder.files.write(unitsFor(now() + 1000)));
        // As if it had been cut short.
        QVERIFY(QFile::link(
            u"../x"_s, folder.path(u"config/systemd/user/timers.target.wants/.app.example.timer.new"_s)));
        QVERIFY(folder.files.removeTimer());
        QVERIFY(!QFileInfo::exists(folder.path(u"config/systemd/user/timers.target.wants"_s)));
        QVERIFY(folder.files.leaveTraces());
        QVERIFY(folder.files.removeService());
        QVERIFY(!folder.files.leaveTraces());
        QVERIFY(QDir(folder.path(u"config/systemd/user"_s)).isEmpty());
        QVERIFY(QDir(folder.path(u"data/systemd/timers"_s)).isEmpty());
        QVERIFY(folder.files.removeTimer());
        QVERIFY(folder.files.removeService());
    }

    void shouldSeeALinkThatLeadsNowhere()
    {
        const Folder folder;
        QVERIFY(folder.files.markInForce());
        QVERIFY(folder.files.leaveTraces());
    }

    void shouldTellWhatCannotBeDone()
    {
        const QTemporaryDir folder;
        const auto store = std::make_shared<FakeFileStore>();
        const SystemdUnitFiles files(u"app.example"_s,
            {.configuration = folder.path().toStdString(), .data = folder.path().toStdString()}, store);
        store->failWriting({.kind = FileError::Kind::NoSpace, .errorDescription = u"No space left"_s});
        const QString units = folder.path() + u"/systemd/user/"_s;
        QCOMPARE(files.write(unitsFor(now())).error(),
            units + u"app.example.service cannot be written (No space left)"_s);
        QCOMPARE(files.removeTimer().error(),
            units + u"timers.target.wants/app.example.timer cannot be removed (No space left)"_s);
        QCOMPARE(files.removeService().error(),
            units + u"app.example.service cannot be removed (No space left)"_s);

        const SystemdUnitFiles nowhere(
            u"app.example"_s, {.configuration = "/dev/null", .data = "/dev/null"}, store);
        QCOMPARE(nowhere.markInForce().error(),
            u"/dev/null/systemd/user/timers.target.wants/app.example.timer cannot be linked (Not a directory)"_s);
    }
};

ORBITLEDGE_TEST_MAIN(SystemdUnitFilesTest)
#include "SystemdUnitFilesTest.moc"
