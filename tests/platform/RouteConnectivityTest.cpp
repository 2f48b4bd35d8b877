#include "platform/linux/RouteConnectivity.h"

#include "support/TestMain.h"

#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryFile>

#include <unistd.h>

#include <vector>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

namespace {

constexpr const char *namespaceVariable = "ORBITLEDGE_TEST_NETWORK";

/// Starts this program again in a network of its own, where nothing that it does can be felt outside; as
/// another user first, which needs no rights. Returns where the system permits neither.
void enterNetwork(char **argv)
{
    qputenv(namespaceVariable, "own");
    for (const char *options : {"-rn", "-n"}) {
        const QStringList arguments{QString::fromLatin1(options), u"true"_s};
        if (QProcess::execute(u"unshare"_s, arguments) != 0)
            continue;
        std::vector<char *> words{qstrdup("unshare"), qstrdup(options), qstrdup("--")};
        for (char **word = argv; *word != nullptr; ++word)
            words.push_back(*word);
        words.push_back(nullptr);
        ::execvp("unshare", words.data());
    }
    qputenv(namespaceVariable, "refused");
}

/// What ip(8) said, empty where it succeeded.
QByteArray ip(const QString &command)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(u"ip"_s, command.split(u' '));
    if (!process.waitForFinished())
        return "ip did not run: " + process.errorString().toUtf8();
    const QByteArray said = process.readAll();
    return process.exitCode() == 0 ? QByteArray() : command.toUtf8() + ": " + said;
}

} // namespace

#define VERIFY_IP(command) QCOMPARE(ip(command), QByteArray())

/// Against the kernel's own tables, in a network that has nothing but what a test puts there.
class RouteConnectivityTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        if (qgetenv(namespaceVariable) != "own")
            QSKIP("this system permits no network namespaces");
        const QByteArray said = ip(u"link add cable0 type veth peer name cable1"_s);
        if (!said.isEmpty())
            QSKIP(("this system has no virtual cables: " + said).constData());
        VERIFY_IP(u"link delete cable0"_s);
    }

    void init()
    {
        VERIFY_IP(u"link add cable0 type veth peer name cable1"_s);
        VERIFY_IP(u"link set cable1 up"_s);
        VERIFY_IP(u"link set cable0 up"_s);
        VERIFY_IP(u"link set lo up"_s);
    }

    void cleanup()
    {
        (void)ip(u"link delete cable0"_s); // where the test has left it
        VERIFY_IP(u"route flush table main"_s);
        VERIFY_IP(u"-6 route flush table main"_s);
    }

    void shouldBeOfflineWithoutRoutes()
    {
        const RouteConnectivity connectivity;
        QVERIFY(connectivity.isOffline());
    }

    void shouldFollowTheDefaultRoute_data()
    {
        QTest::addColumn<QStringList>("preparation");
        QTest::addColumn<QString>("route");
        QTest::newRow("IPv4, by a gateway")
            << QStringList{u"address add 10.9.8.7/24 dev cable0"_s} << u"default via 10.9.8.1"_s;
        QTest::newRow("IPv4, without a gateway")
            << QStringList{u"address add 10.9.8.7/24 dev cable0"_s} << u"default dev cable0"_s;
        QTest::newRow("IPv6 alone") << QStringList{u"address add fd00::7/64 dev cable0 nodad"_s}
                                    << u"default via fd00::1 dev cable0"_s;
    }
    void shouldFollowTheDefaultRoute()
    {
        QFETCH(QStringList, preparation);
        QFETCH(QString, route);
        for (const QString &command : preparation)
            VERIFY_IP(command);
        const RouteConnectivity connectivity;
        QVERIFY(connectivity.isOffline());
        QSignalSpy spy(&connectivity, &Connectivity::changed);
        const QString family = route.contains(u"::") ? u"-6 "_s : u"-4 "_s;

        VERIFY_IP(family + u"route add "_s + route);
        QTRY_VERIFY(!spy.isEmpty());
        QVERIFY(!connectivity.isOffline());

        spy.clear();
        VERIFY_IP(family + u"route delete "_s + route);
        QTRY_VERIFY(!spy.isEmpty());
        QVERIFY(connectivity.isOffline());
    }

    void shouldStayOnlineUntilTheLastDefaultRouteGoes()
    {
        VERIFY_IP(u"address add 10.9.8.7/24 dev cable0"_s);
        VERIFY_IP(u"address add fd00::7/64 dev cable0 nodad"_s);
        VERIFY_IP(u"route add default via 10.9.8.1"_s);
        VERIFY_IP(u"route add default via 10.9.8.2 metric 600"_s);
        VERIFY_IP(u"-6 route add default via fd00::1 dev cable0"_s);
        const RouteConnectivity connectivity;
        QVERIFY(!connectivity.isOffline());
        VERIFY_IP(u"route delete default via 10.9.8.1"_s);
        QVERIFY(!connectivity.isOffline());
        VERIFY_IP(u"route delete default via 10.9.8.2 metric 600"_s);
        QVERIFY(!connectivity.isOffline());
        VERIFY_IP(u"-6 route delete default via fd00::1 dev cable0"_s);
        QVERIFY(connectivity.isOffline());
    }

    void shouldBeOfflineWithRoutesThatLeadNowhere_data()
    {
        QTest::addColumn<QString>("route");
        QTest::newRow("a subnet") << u"-4 route add 10.1.0.0/16 dev cable0"_s;
        QTest::newRow("a subnet, IPv6") << u"-6 route add fd01::/64 dev cable0"_s;
        QTest::newRow("half of the Internet") << u"-4 route add 0.0.0.0/1 dev cable0"_s;
        QTest::newRow("unreachable") << u"-4 route add unreachable default metric 500"_s;
        QTest::newRow("unreachable, IPv6") << u"-6 route add unreachable default metric 500"_s;
        QTest::newRow("prohibited") << u"-4 route add prohibit default"_s;
        QTest::newRow("prohibited, IPv6") << u"-6 route add prohibit default"_s;
        QTest::newRow("a black hole") << u"-4 route add blackhole default"_s;
        QTest::newRow("a black hole, IPv6") << u"-6 route add blackhole default"_s;
        QTest::newRow("this machine, IPv6") << u"-6 route add default dev lo"_s;
        QTest::newRow("this machine") << u"-4 route add default dev lo"_s;
    }
    void shouldBeOfflineWithRoutesThatLeadNowhere()
    {
        QFETCH(QString, route);
        VERIFY_IP(u"address add 10.9.8.7/24 dev cable0"_s);
        VERIFY_IP(route);
        const RouteConnectivity connectivity;
        QVERIFY(connectivity.isOffline());
    }

    void shouldTellThatADeviceTookItsRoutesAway_data()
    {
        QTest::addColumn<QString>("command");
        QTest::newRow("down") << u"link set cable0 down"_s;
        QTest::newRow("gone") << u"link delete cable0"_s;
        QTest::newRow("without an address") << u"address delete 10.9.8.7/24 dev cable0"_s;
    }
    void shouldTellThatADeviceTookItsRoutesAway()
    {
        QFETCH(QString, command);
        // Without IPv6, whose routes tell of their own end.
        for (const QString &device : {u"cable0"_s, u"cable1"_s}) {
            QFile setting(u"/proc/sys/net/ipv6/conf/"_s + device + u"/disable_ipv6"_s);
            QVERIFY(setting.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
            QCOMPARE(setting.write("1"), 1);
        }
        VERIFY_IP(u"address add 10.9.8.7/24 dev cable0"_s);
        VERIFY_IP(u"route add default via 10.9.8.1"_s);
        const RouteConnectivity connectivity;
        QVERIFY(!connectivity.isOffline());
        QSignalSpy spy(&connectivity, &Connectivity::changed);
        VERIFY_IP(command);
        QTRY_VERIFY(!spy.isEmpty());
        QTRY_VERIFY(connectivity.isOffline());
    }

    void shouldSurviveMoreChangesThanItCanHear()
    {
        VERIFY_IP(u"address add 10.9.8.7/24 dev cable0"_s);
        const RouteConnectivity connectivity;
        QSignalSpy spy(&connectivity, &Connectivity::changed);
        // Far more than the socket's buffer holds, while nobody reads it.
        QTemporaryFile batch;
        QVERIFY(batch.open());
        for (int i = 0; i < 20'000; ++i)
            batch.write("route add 10.1." + QByteArray::number(i / 256) + '.' + QByteArray::number(i % 256)
                + "/32 dev cable0\n");
        batch.flush();
        VERIFY_IP(u"-batch "_s + batch.fileName());
        QTRY_VERIFY(!spy.isEmpty());
        while (spy.wait(100)) { } // what is left of them
        spy.clear();
        VERIFY_IP(u"route add default via 10.9.8.1"_s);
        QTRY_VERIFY(!spy.isEmpty());
        QVERIFY(!connectivity.isOffline());
    }
};

int main(int argc, char **argv)
{
    if (!qEnvironmentVariableIsSet(namespaceVariable))
        enterNetwork(argv);
    return runTest<RouteConnectivityTest>(argc, argv);
}
#include "RouteConnectivityTest.moc"
