// The whole program looks for a newer release: by https, through a proxy, at the host that is built in, which
// a server of the test's own stands for. Who vouches for that server is known in a name space of the
// program's alone, so that nothing in the program needs to be told.

#include "BuildInfo.h"
#include "support/TestCertificate.h"
#include "support/TestMain.h"
#include "support/Typist.h"
#include "updates/ReleaseChecker.h"

#include <QTcpServer>
#include <QTcpSocket>

#include <optional>

using namespace orbitledge;
using namespace orbitledge::testing;
using namespace Qt::StringLiterals;

namespace {

QUrl manifestAddress()
{
    return ReleaseChecker(
        QString::fromLatin1(build::releaseManifestUrl), QUrl(QString::fromLatin1(build::releaseUrl)), nullptr)
        .manifestURL();
}

const QByteArray manifest = R"({"version": "99.1.0", "build": "990", "minimumSystemVersion": "12",
    "publishedAt": "2026-03-18T12:00:00Z", "url": "https://downloads.example/orbitledge", "size": 1,
    "sha256": "00", "architectures": ["x86_64"], "comingSoon": false})";

/// A proxy that leads every connection to the same port of this machine.
class Tunnel : public QTcpServer {
public:
    explicit Tunnel(int port)
        : m_port(static_cast<quint16>(port))
    {
        connect(this, &QTcpServer::newConnection, this, [this] { accept(nextPendingConnection()); });
        if (!listen(QHostAddress::LocalHost))
            qFatal("no port for a proxy");
    }

    /// "CONNECT host:port" of each connection.
    QByteArrayList targets;

private:
    void accept(QTcpSocket *client)
    {
        connect(client, &QTcpSocket::readyRead, client, [this, client] {
            // Until all of it is there, it stays there.
            const QByteArray head = client->peek(8192);
            if (!head.contains("\r\n\r\n"))
                return;
            client->read(head.indexOf("\r\n\r\n") + 4);
            targets.append(head.left(head.indexOf(" HTTP/1.1\r\n")));
            client->disconnect(SIGNAL(readyRead()));
            lead(client);
        });
    }
    void lead(QTcpSocket *client) const
    {
        auto *const server = new QTcpSocket(client);
        const auto pour = [](QTcpSocket *from, QTcpSocket *to) {
            connect(from, &QTcpSocket::readyRead, to, [from, to] { to->write(from->readAll()); });
            connect(from, &QTcpSocket::disconnected, to, &QTcpSocket::disconnectFromHost);
        };
        connect(server, &QTcpSocket::connected, client,
            [client] { client->write("HTTP/1.1 200 Connection established\r\n\r\n"); });
        pour(client, server);
        pour(server, client);
        server->connectToHost(QHostAddress::LocalHost, m_port);
    }

    quint16 m_port;
};

/// A command for a shell that has the program trust this certificate instead of those of the system.
QStringList trusting(const QByteArray &certificate)
{
    const QString script = u"mount --bind \"$1\" /etc/ssl/certs/ca-certificates.crt || exit 125\n"
                           "shift\nexec setpriv --pdeathsig KILL \"$@\"\n"_s;
    return {u"unshare"_s, u"--user"_s, u"--map-current-user"_s, u"--keep-caps"_s, u"--mount"_s, u"sh"_s,
        u"-c"_s, script, u"sh"_s, QString::fromUtf8(certificate)};
}

} // namespace

class UpdateProgramTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shouldOfferANewerReleaseWhenAskedTo()
    {
        const TestCertificate certificate(u"DNS:"_s + manifestAddress().host());
        QStringList command = trusting(certificate.file());
        if (QProcess::execute(command.first(), command.mid(1) + QStringList{u"true"_s}) != 0)
            QSKIP("no name spaces can be made here");

        FaultServer server(certificate.forServer());
        server.answerNext(FaultServer::whole(404, ""));
        server.answerAll(FaultServer::whole(200, manifest));
        Tunnel tunnel(server.port());
        ProgramDesk desk;
        ScreenReader reader(desk.lab());
        Typist typist(desk, reader);
        ScreenReader::addVariables(desk.environment());
        desk.set("https_proxy", u"http://127.0.0.1:%1"_s.arg(tunnel.serverPort()));
        desk.desk().startWindowManager(XfceDesk::Compositing::Off);
        desk.signIn();

        QProcess program;
        program.setProcessEnvironment(desk.environment());
        program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        command.append(QStringLiteral(ORBITLEDGE_PROGRAM));
        program.start(command.first(), command.mid(1));
        QVERIFY(program.waitForStarted());
        reader.awaitProgram(u"Orbitledge"_s);
        desk.awaitPanel(true);
        // By itself, at the start.
        DesktopLab::await("the first look", [&] { return server.requests().size() == 1; });
        QCOMPARE(tunnel.targets.constFirst(), "CONNECT " + manifestAddress().host().toLatin1() + ":443");
        const QByteArray path = manifestAddress().path().toLatin1();
        QVERIFY(server.requests().constFirst().startsWith("GET " + path + " HTTP/1.1\r\n"));
        QVERIFY(!server.requests().constFirst().toLower().contains("\r\ncookie:"));

        typist.press(u"ctrl+comma"_s);
        desk.desk().awaitActive(u"Orbitledge Settings"_s);
        QVERIFY(!reader.find(u"push button"_s, u"Get 99.1.0"_s));
        typist.use(u"Check for Updates"_s);
        // Whoever reads the windows holds the proxy up, and the program does not wait for it for ever.
        DesktopLab::await("the second look", [&] { return server.requests().size() == 2; });
        reader.await(u"label"_s, u"Version 99.1.0 is ready to download."_s);
        desk.keepPicture(u"update"_s);
        QCOMPARE(server.requests().size(), 2);
        typist.use(u"Get 99.1.0"_s, u"shift+Tab"_s);
        desk.awaitPage();
        QCOMPARE(desk.openedPages().constFirst(), desk.service().baseUrl().toEncoded() + "download");
        // In the panel too, until the next start.
        reader.await(u"label"_s, u"Version 99.1.0 is available"_s);
        program.kill();
        program.waitForFinished();
    }
};

ORBITLEDGE_TEST_MAIN(UpdateProgramTest)
#include "UpdateProgramTest.moc"
