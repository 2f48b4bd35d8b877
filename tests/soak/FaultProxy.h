#pragma once

#include <QByteArrayList>
#include <QMap>
#include <QStringList>
#include <QThread>
#include <QUrl>

#include <memory>
#include <mutex>
#include <set>

namespace orbitledge::testing {

/// Stands between the program and the service, at an address that stays the same, and hands on what passes,
/// or spoils it. It lives on a thread of its own, so that nothing that the test does holds it up, and counts
/// what is under way.
class FaultProxy {
public:
    enum class Weather {
        Good,
        /// Nobody listens.
        Refusing,
        /// Whoever connects hears nothing.
        Mute,
        /// The connection breaks as soon as the request is there.
        Reset,
        /// And in the middle of the answer.
        CutOff,
        /// The answer comes in twenty pieces, over two seconds.
        Slow,
        /// Something that is not what was asked for, or breaks the protocol.
        Garbage,
        Unauthorized,
        TooMany,
        Broken,
        /// Every other request goes well.
        Fickle,
    };

    FaultProxy();
    ~FaultProxy();
    FaultProxy(const FaultProxy &) = delete;
    FaultProxy &operator=(const FaultProxy &) = delete;

    [[nodiscard]] QUrl url() const;
    void setWeather(Weather weather);
    /// Where the service listens now; 0 while it is not there.
    void setService(quint16 port);
    /// Another run of the program begins: what an earlier one has left behind is not counted with its own.
    void beginLife();

    // What was seen up to now.

    /// Fetches that overlapped, in words; there should be none.
    [[nodiscard]] QStringList overlaps() const;
    /// By what was asked for, without what differs from one subscription to the next.
    [[nodiscard]] QMap<QByteArray, int> requests() const;
    [[nodiscard]] int underWay() const;
    /// The credentials that the service gave out.
    [[nodiscard]] QByteArrayList credentials() const;

    class Exchange;

private:
    class Server;
    struct Shared;

    std::shared_ptr<Shared> m_shared;
    QThread m_thread;
    Server *m_server = nullptr; // of the thread
    quint16 m_port = 0;
};

} // namespace orbitledge::testing
