#include "soak/FaultProxy.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <sys/socket.h>

#include <algorithm>
#include <atomic>
#include <vector>

namespace orbitledge::testing {

using namespace Qt::StringLiterals;

namespace {

const QByteArray endOfHead = "\r\n\r\n";

/// Of a whole message; absent while it is not known, or not there yet.
std::optional<qsizetype> sizeOf(const QByteArray &message)
{
    const qsizetype head = message.indexOf(endOfHead);
    if (head < 0)
        return std::nullopt;
    qsizetype body = 0;
    for (const QByteArray &line : message.left(head).split('\n')) {
        if (line.toLower().startsWith("content-length:"))
            body = line.mid(line.indexOf(':') + 1).trimmed().toLongLong();
    }
    const qsizetype size = head + endOfHead.size() + body;
    return message.size() >= size ? std::optional(size) : std::nullopt;
}

QByteArray answer(const QByteArray &status, const QByteArray &body, const QByteArray &headers = {})
{
    return "HTTP/1.1 " + status + "\r\nContent-Type: application/json\r\nContent-Length: "
        + QByteArray::number(body.size()) + "\r\n" + headers + "\r\n" + body;
}

QByteArray garbage(int number)
{
    const QByteArrayList kinds{
        answer("200 OK", "<html><body>Sign in to this network</body></html>"),
        answer("200 OK", R"([{"id":"00000000-0000-0000-0000-000000000000","name":)"),
        QByteArray("\x16\x03\x01\x00\xff\x00 what", 11),
        answer("200 OK", "{}", "Content-Encoding: gzip\r\n"),
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n",
        answer("302 Found", "", "Location: http://127.0.0.1:9/\r\n"),
        answer("200 OK", R"({"user":null,"subscriptions":[1,2,3]})"),
        answer("204 No Content", ""),
        answer("200 OK", QByteArray(1 << 20, '[')),
    };
    return kinds[number % kinds.size()];
}

QByteArray withoutIdentity(const QByteArray &kind)
{
    const qsizetype identity = kind.indexOf("/subscriptions/");
    return identity < 0 ? kind : kind.left(identity) + kind.mid(kind.lastIndexOf('/'));
}

/// Whether whoever connected is still there: the end of a connection is known to the kernel before it is
/// told.
bool isThere(const QTcpSocket &socket)
{
    char byte = 0;
    return ::recv(static_cast<int>(socket.socketDescriptor()), &byte, 1, MSG_PEEK | MSG_DONTWAIT) != 0;
}

} // namespace

struct FaultProxy::Shared {
    std::atomic<Weather> weather = Weather::Good;
    std::atomic<quint16> service = 0;
    std::atomic<int> life = 0;
    std::atomic<qint64> requests = 0;
    std::atomic<int> underWay = 0;

    std::mutex mutex;
    QStringList overlaps;
    QMap<QByteArray, int> kinds;
    std::set<QByteArray> credentials;
};

/// One request and its answer.
class FaultProxy::Exchange : public QObject {
public:
    Exchange(Server *server, QTcpSocket *client, std::shared_ptr<Shared> shared);
    ~Exchange() override;

    [[nodiscard]] bool isUnderWay() const { return m_isUnderWay && isThere(*m_client); }
    [[nodiscard]] const QByteArray &kind() const { return m_kind; }
    [[nodiscard]] int life() const { return m_life; }
    [[nodiscard]] bool mayBeOfSignIn() const { return m_mayBeOfSignIn; }

private:
    void read();
    void begin();
    void perform(Weather weather);
    void forward(Weather weather);
    void relay(Weather weather);
    void drip();
    void finish(const QByteArray &bytes);
    void breakOff();
    void learnCredential();
    void setUnderWay(bool isUnderWay);

    Server *m_server;
    QTcpSocket *m_client;
    QTcpSocket *m_upstream = nullptr;
    std::shared_ptr<Shared> m_shared;
    QByteArray m_request;
    QByteArray m_kind;
    QByteArray m_answer;
    QTimer m_drip;
    int m_life = 0;
    bool m_isUnderWay = false;
    bool m_mayBeOfSignIn = false;
};

class FaultProxy::Server : public QTcpServer {
public:
    explicit Server(std::shared_ptr<Shared> shared)
        : m_shared(std::move(shared))
    {
        connect(this, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket *const client = nextPendingConnection())
                m_exchanges.push_back(new Exchange(this, client, m_shared));
        });
    }
    Server(const Server &) = delete;
    Server &operator=(const Server &) = delete;
    /// Not left to what is above: what ends tells it to this.
    ~Server() override
    {
        while (!m_exchanges.empty())
            delete m_exchanges.back(); // which takes itself out
    }

    void setOpen(bool isOpen, quint16 port)
    {
        if (isOpen == isListening())
            return;
        if (!isOpen)
            close();
        else if (!listen(QHostAddress::LocalHost, port))
            qFatal("the port %d is somebody else's now", port);
    }

    void forget(Exchange *exchange) { std::erase(m_exchanges, exchange); }

    /// Whether this is the list of a sign-in, which is not a fetch of the store's and may overlap one.
    bool followsSignIn(const QByteArray &kind)
    {
        if (kind == "POST /auth/login")
            m_listsOfSignIns = 2;
        return kind == "GET /subscriptions" && m_listsOfSignIns-- > 0;
    }

    void compare(const Exchange &begun)
    {
        if (begun.kind() != "GET /auth/profile" && begun.kind() != "GET /subscriptions")
            return;
        for (const Exchange *const other : m_exchanges) {
            const bool isSame = other != &begun && other->kind() == begun.kind()
                && other->life() == begun.life() && other->isUnderWay();
            if (!isSame || other->mayBeOfSignIn() || begun.mayBeOfSignIn())
                continue;
            const std::scoped_lock lock(m_shared->mutex);
            m_shared->overlaps.append(u"%1 twice at a time"_s.arg(QString::fromLatin1(begun.kind())));
        }
    }

private:
    std::shared_ptr<Shared> m_shared;
    std::vector<Exchange *> m_exchanges;
    int m_listsOfSignIns = 0;
};

FaultProxy::Exchange::Exchange(Server *server, QTcpSocket *client, std::shared_ptr<Shared> shared)
    : QObject(server)
    , m_server(server)
    , m_client(client)
    , m_shared(std::move(shared))
    , m_life(m_shared->life)
{
    m_client->setParent(this);
    connect(m_client, &QTcpSocket::readyRead, this, &Exchange::read);
    connect(m_client, &QTcpSocket::disconnected, this, &QObject::deleteLater);
    connect(&m_drip, &QTimer::timeout, this, &Exchange::drip);
    read();
}

FaultProxy::Exchange::~Exchange()
{
    setUnderWay(false);
    m_server->forget(this);
}

void FaultProxy::Exchange::setUnderWay(bool isUnderWay)
{
    if (std::exchange(m_isUnderWay, isUnderWay) != isUnderWay)
        m_shared->underWay += isUnderWay ? 1 : -1;
}

void FaultProxy::Exchange::read()
{
    if (m_isUnderWay)
        return;
    m_request += m_client->readAll();
    if (sizeOf(m_request))
        begin();
}

void FaultProxy::Exchange::begin()
{
    const QByteArrayList words = m_request.left(m_request.indexOf("\r\n")).split(' ');
    m_kind = words.value(0) + ' ' + words.value(1).split('?').constFirst();
    m_life = m_shared->life;
    m_mayBeOfSignIn = m_server->followsSignIn(m_kind);
    ++m_shared->requests;
    m_server->compare(*this);
    setUnderWay(true);
    { // last, since it tells that the request is there
        const std::scoped_lock lock(m_shared->mutex);
        ++m_shared->kinds[withoutIdentity(m_kind)];
    }
    perform(m_shared->weather);
}

void FaultProxy::Exchange::perform(Weather weather)
{
    constexpr auto quota = "Retry-After: 1\r\n";
    const auto number = static_cast<int>(m_shared->requests);
    switch (weather) {
    case Weather::Good:
    case Weather::CutOff:
    case Weather::Slow:
        forward(weather);
        break;
    case Weather::Mute:
        break;
    case Weather::Refusing:
    case Weather::Reset:
        breakOff();
        break;
    case Weather::Garbage:
        finish(garbage(number));
        break;
    case Weather::Unauthorized:
        finish(answer("401 Unauthorized", R"({"error":"Your session has expired."})"));
        break;
    case Weather::TooMany:
        finish(answer("429 Too Many Requests", R"({"error":"Slow down."})", quota));
        break;
    case Weather::Broken:
        finish(answer("500 Internal Server Error", "<html>oops</html>"));
        break;
    case Weather::Fickle:
        perform(number % 2 == 0 ? Weather::Good : number % 3 == 0 ? Weather::Broken : Weather::CutOff);
        break;
    }
}

void FaultProxy::Exchange::forward(Weather weather)
{
    m_upstream = new QTcpSocket(this);
    connect(m_upstream, &QTcpSocket::connected, this, [this] { m_upstream->write(m_request); });
    connect(m_upstream, &QTcpSocket::readyRead, this, [this, weather] { relay(weather); });
    connect(m_upstream, &QTcpSocket::errorOccurred, this, &Exchange::breakOff);
    m_upstream->connectToHost(QHostAddress::LocalHost, m_shared->service);
}

void FaultProxy::Exchange::relay(Weather weather)
{
    m_answer += m_upstream->readAll();
    const auto size = sizeOf(m_answer);
    if (!size)
        return;
    disconnect(m_upstream, nullptr, this, nullptr);
    learnCredential();
    if (weather == Weather::CutOff) {
        finish(m_answer.left(*size / 2));
    } else if (weather == Weather::Slow) {
        constexpr int pause = 100;
        m_drip.start(pause);
    } else {
        finish(m_answer);
    }
}

void FaultProxy::Exchange::drip()
{
    constexpr qsizetype pieces = 20;
    const qsizetype piece
        = std::min(m_answer.size(), sizeOf(m_answer).value_or(m_answer.size()) / pieces + 40);
    m_client->write(m_answer.left(piece));
    m_answer.remove(0, piece);
    if (m_answer.isEmpty()) {
        m_drip.stop();
        finish({});
    }
}

void FaultProxy::Exchange::finish(const QByteArray &bytes)
{
    m_client->write(bytes);
    m_client->flush();
    setUnderWay(false);
    m_client->disconnectFromHost();
}

void FaultProxy::Exchange::breakOff()
{
    setUnderWay(false);
    m_client->abort();
    deleteLater();
}

void FaultProxy::Exchange::learnCredential()
{
    const QByteArray name = "orbitledge_user_session=";
    for (const QByteArray &line : m_answer.left(m_answer.indexOf(endOfHead)).split('\n')) {
        const qsizetype found = line.indexOf(name);
        if (!line.toLower().startsWith("set-cookie:") || found < 0)
            continue;
        const QByteArray value = line.mid(found + name.size()).split(';').constFirst().trimmed();
        const std::scoped_lock lock(m_shared->mutex);
        if (value.size() >= 8) // what takes a cookie back has none
            m_shared->credentials.insert(value);
    }
}

FaultProxy::FaultProxy()
    : m_shared(std::make_shared<Shared>())
    , m_server(new Server(m_shared))
{
    m_server->setOpen(true, 0);
    m_port = m_server->serverPort();
    m_server->moveToThread(&m_thread);
    QObject::connect(&m_thread, &QThread::finished, m_server, &QObject::deleteLater);
    m_thread.start();
}

FaultProxy::~FaultProxy()
{
    m_thread.quit();
    m_thread.wait();
}

QUrl FaultProxy::url() const
{
    return QUrl(u"http://127.0.0.1:%1/"_s.arg(m_port));
}

void FaultProxy::setWeather(Weather weather)
{
    m_shared->weather = weather;
    QMetaObject::invokeMethod(
        m_server, [this, weather] { m_server->setOpen(weather != Weather::Refusing, m_port); },
        Qt::BlockingQueuedConnection);
}

void FaultProxy::setService(quint16 port)
{
    m_shared->service = port;
}

void FaultProxy::beginLife()
{
    ++m_shared->life;
}

QStringList FaultProxy::overlaps() const
{
    const std::scoped_lock lock(m_shared->mutex);
    return {m_shared->overlaps.begin(), m_shared->overlaps.end()};
}

QMap<QByteArray, int> FaultProxy::requests() const
{
    const std::scoped_lock lock(m_shared->mutex);
    return m_shared->kinds;
}

int FaultProxy::underWay() const
{
    return m_shared->underWay;
}

QByteArrayList FaultProxy::credentials() const
{
    const std::scoped_lock lock(m_shared->mutex);
    return {m_shared->credentials.begin(), m_shared->credentials.end()};
}

} // namespace orbitledge::testing
