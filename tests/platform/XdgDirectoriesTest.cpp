#include "platform/linux/XdgDirectories.h"

#include "support/TestMain.h"

#include <QHash>

using namespace orbitledge;

class XdgDirectoriesTest : public QObject {
    Q_OBJECT

private:
    static XdgDirectories directories(const QHash<QByteArray, QByteArray> &variables)
    {
        return XdgDirectories([variables](const char *name) { return variables.value(name); });
    }

private Q_SLOTS:
    void shouldUseTheDataHomeThatIsSet()
    {
        QCOMPARE(directories({{"XDG_DATA_HOME", "/data"}, {"HOME", "/home/ada"}}).data()->string(), "/data");
    }

    void shouldFallBackToTheHomeFolder()
    {
        QCOMPARE(directories({{"HOME", "/home/ada"}}).data()->string(), "/home/ada/.local/share");
    }

    void shouldKnowWhereCachesLie()
    {
        QCOMPARE(
            directories({{"XDG_CACHE_HOME", "/cache"}, {"HOME", "/home/ada"}}).cache()->string(), "/cache");
        QCOMPARE(directories({{"HOME", "/home/ada"}}).cache()->string(), "/home/ada/.cache");
    }

    void shouldIgnoreAPathThatIsNotAbsolute()
    {
        QCOMPARE(directories({{"XDG_DATA_HOME", "data"}, {"HOME", "/home/ada"}}).data()->string(),
            "/home/ada/.local/share");
        QCOMPARE(directories({{"XDG_DATA_HOME", ""}, {"HOME", "/home/ada"}}).data()->string(),
            "/home/ada/.local/share");
    }

    void shouldAskTheUserDatabaseWithoutAHomeVariable()
    {
        const auto data = directories({}).data();
        QVERIFY(data);
        QVERIFY(data->is_absolute());
    }

    void shouldAlwaysKnowATemporaryFolder()
    {
        QCOMPARE(directories({}).temporary().string(), "/tmp");
        QCOMPARE(directories({{"TMPDIR", "/var/tmp/x"}}).temporary().string(), "/var/tmp/x");
        QCOMPARE(directories({{"TMPDIR", "relative"}}).temporary().string(), "/tmp");
    }
};

ORBITLEDGE_TEST_MAIN(XdgDirectoriesTest)
#include "XdgDirectoriesTest.moc"
