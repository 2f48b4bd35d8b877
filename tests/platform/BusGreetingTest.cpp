#include "platform/linux/diagnosis/BusGreeting.h"

#include "support/TestMain.h"

#include <QElapsedTimer>
#include <QTemporaryDir>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <thread>

using namespace orbitledge;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

using findings::Bus;

namespace {

/// Waits for one who greets it, and gives the answer. A name that begins with a zero byte is an abstract one.
class Bystander {
public:
    Bystander(const QByteArray &name, QByteArray answer)
        : m_listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::ranges::copy(name, address.sun_path);
        const auto size
            = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + static_cast<std::size_t>(name.size()));
        if (::bind(m_listener, reinterpret_cast<const sockaddr *>(&address), size) != 0
            || ::listen(m_listener, 1) != 0)
            qFatal("nobody can be greeted at %s", name.constData());
        m_thread = std::thread([this, answer = std::move(answer)] { serve(answer); });
    }
    ~Bystander()
    {
        end();
        ::close(m_listener);
    }
    Q_DISABLE_COPY_MOVE(Bystander)

    /// Whoever greets it later is not heard.
    [[nodiscard]] QByteArray heard()
    {
        end();
        return m_heard;
    }

private:
    void end()
    {
        ::shutdown(m_listener, SHUT_RDWR); // which is all that waits for nobody
        if (m_thread.joinable())
            m_thread.join();
    }
    void serve(const QByteArray &answer)
    {
        const int guest = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (guest < 0)
            return;
        std::array<char, 256> buffer{};
        while (!m_heard.endsWith("\r\n")) {
            const ssize_t size = ::recv(guest, buffer.data(), buffer.size(), 0);
            if (size <= 0)
                break;
            m_heard.append(buffer.data(), size);
        }
        (void)::send(guest, answer.constData(), static_cast<std::size_t>(answer.size()), MSG_NOSIGNAL);
        // Until the other one goes.
        while (!answer.isEmpty() && ::recv(guest, buffer.data(), buffer.size(), 0) > 0)
            ;
        ::close(guest);
    }

    int m_listener;
    QByteArray m_heard;
    std::thread m_thread;
};

} // namespace

class BusGreetingTest : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    QHash<QByteArray, QByteArray> m_variables;

    [[nodiscard]] QByteArray socket() const { return m_folder.filePath(u"bus"_s).toLocal8Bit(); }
    [[nodiscard]] Bus greeting(std::chrono::milliseconds limit = 10s) const
    {
        return greetSessionBus([this](const char *name) { return m_variables.value(name); }, limit);
    }
    void setAddress(const QByteArray &address) { m_variables["DBUS_SESSION_BUS_ADDRESS"] = address; }

private Q_SLOTS:
    void cleanup()
    {
        m_variables.clear();
        QFile::remove(QString::fromLocal8Bit(socket()));
    }

    void shouldReachABusWhateverItsAddress_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QByteArray>("address");
        const QByteArray abstract = "/orbitledge-test-" + QByteArray::number(::getpid());
        QTest::newRow("a file") << socket() << "unix:path=" + socket();
        QTest::newRow("a file, with more said of it")
            << socket() << "unix:guid=12,path=" + socket() + ",runtime=no";
        QTest::newRow("a file with an escaped letter")
            << socket() << "unix:path=" + socket().chopped(3) + "%62us";
        QTest::newRow("a name of Linux's own") << '\0' + abstract << "unix:abstract=" + abstract + ",guid=12";
        QTest::newRow("the person's folder") << socket() << "unix:runtime=yes"_ba;
        QTest::newRow("the person's folder, as nothing else is told") << socket() << QByteArray();
        QTest::newRow("the second of two")
            << socket() << "unix:path=/nowhere/bus;unix:path=" + socket() + ";unix:path=/nowhere/other";
        QTest::newRow("without an end") << socket() << "unix:path=" + socket() + ';';
    }
    void shouldReachABusWhateverItsAddress()
    {
        QFETCH(QByteArray, name);
        QFETCH(QByteArray, address);
        setAddress(address);
        m_variables["XDG_RUNTIME_DIR"] = m_folder.path().toLocal8Bit();
        Bystander bus(name, "OK 0123456789abcdef\r\n");
        QCOMPARE(greeting(), Bus::Reached);
        const QByteArray user = QByteArray::number(::geteuid()).toHex();
        QCOMPARE(bus.heard(), '\0' + ("AUTH EXTERNAL " + user + "\r\n"));
    }

    void shouldLeaveOtherAddressesToAConnection_data()
    {
        QTest::addColumn<QByteArray>("address");
        QTest::newRow("another machine") << "tcp:host=bus.example,port=1234"_ba;
        QTest::newRow("a program") << "unixexec:path=/bin/false"_ba;
        QTest::newRow("behind one that is not there") << "unix:path=/nowhere/bus;tcp:host=bus.example"_ba;
    }
    void shouldLeaveOtherAddressesToAConnection()
    {
        QFETCH(QByteArray, address);
        setAddress(address);
        QCOMPARE(greeting(), Bus::Reached);
    }

    void shouldTellThatNobodyIsThere_data()
    {
        QTest::addColumn<QByteArray>("address");
        QTest::newRow("no file") << "unix:path=/nowhere/bus"_ba;
        QTest::newRow("no abstract name") << "unix:abstract=/orbitledge-test-nobody"_ba;
        QTest::newRow("no name") << "unix:"_ba;
        QTest::newRow("another kind of name") << "unix:dir=/tmp"_ba;
        QTest::newRow("a name that is too long") << "unix:path=/" + QByteArray(200, 'a');
        QTest::newRow("only separators") << ";;"_ba;
    }
    void shouldTellThatNobodyIsThere()
    {
        QFETCH(QByteArray, address);
        setAddress(address);
        QCOMPARE(greeting(), Bus::Unreachable);
    }

    void shouldTellThatNoneIsNamed()
    {
        QCOMPARE(greeting(), Bus::NotNamed);
        m_variables["XDG_RUNTIME_DIR"] = m_folder.path().toLocal8Bit();
        QCOMPARE(greeting(), Bus::NotNamed);
    }

    void shouldNotTakeEverybodyForABus()
    {
        setAddress("unix:path=" + socket());
        for (const QByteArray &answer :
            {"REJECTED EXTERNAL\r\n"_ba, "HTTP/1.1 400 Bad Request\r\n"_ba, ""_ba}) {
            const Bystander other(socket(), answer);
            QCOMPARE(greeting(), Bus::Unreachable);
            QFile::remove(QString::fromLocal8Bit(socket()));
        }
    }

    void shouldWaitForNoLongerThanItMay()
    {
        // Somebody listens, and never looks who came.
        const int listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::ranges::copy(socket(), address.sun_path);
        QCOMPARE(::bind(listener, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
        QCOMPARE(::listen(listener, 0), 0);
        setAddress("unix:path=" + socket());
        QElapsedTimer time;
        time.start();
        QCOMPARE(greeting(50ms), Bus::Mute);
        QVERIFY(time.elapsed() >= 45);
        // One waits for it already, and no more may.
        const int waiting = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
        (void)::connect(waiting, reinterpret_cast<const sockaddr *>(&address), sizeof address);
        QCOMPARE(greeting(50ms), Bus::Mute);
        ::close(waiting);
        ::close(listener);
    }
};

ORBITLEDGE_TEST_MAIN(BusGreetingTest)
#include "BusGreetingTest.moc"
