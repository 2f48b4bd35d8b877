#pragma once

#include <QByteArray>
#include <QCoroTask>
#include <QObject>
#include <QSocketNotifier>

#include <memory>
#include <optional>

struct xcb_connection_t;

namespace orbitledge::ui {

/// Follows whether somebody owns a selection of the X server, by which trays make themselves known. Has a
/// connection of its own, and sleeps until the server says something.
class X11SelectionWatch : public QObject {
    Q_OBJECT

public:
    /// The number of the screen is added to the name.
    explicit X11SelectionWatch(QByteArray namePrefix, QObject *parent = nullptr);
    ~X11SelectionWatch() override;

    /// Asks on another thread, since connecting waits for the server. Where there is none, nobody owns
    /// anything. Call it once; the object may go meanwhile.
    QCoro::Task<> start();

    [[nodiscard]] bool isOwned() const { return m_isOwned; }

    /// The same, asked once. Waits for the server; absent where none answers as it should.
    static std::optional<bool> isOwnedNow(const QByteArray &namePrefix);

Q_SIGNALS:
    void changed();

private:
    struct Connection;

    void listen(std::shared_ptr<Connection> connection);
    void receive();

    QByteArray m_namePrefix;
    std::shared_ptr<Connection> m_connection;
    std::unique_ptr<QSocketNotifier> m_notifier;
    bool m_isOwned = false;
};

} // namespace orbitledge::ui
