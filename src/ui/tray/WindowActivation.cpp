#include "ui/tray/WindowActivation.h"

#include "ui/tray/TrayHost.h"

#include <QByteArray>
#include <QGuiApplication>
#include <QWidget>

#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>

namespace orbitledge::ui {

using namespace Qt::StringLiterals;

namespace {

/// The toolkit's own connection, whose first screen it shows windows on.
class XServer {
public:
    explicit XServer(xcb_connection_t *connection)
        : m_connection(connection)
        , m_root(xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root)
    {
    }

    [[nodiscard]] xcb_atom_t atom(const QByteArray &name) const
    {
        const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
            xcb_intern_atom_reply(m_connection,
                xcb_intern_atom(m_connection, 0, static_cast<std::uint16_t>(name.size()), name.constData()),
                nullptr),
            &std::free);
        return reply ? reply->atom : XCB_NONE;
    }

    void setNumber(xcb_window_t window, const QByteArray &property, std::uint32_t value) const
    {
        constexpr std::uint8_t bits = 32;
        xcb_change_property(
            m_connection, XCB_PROP_MODE_REPLACE, window, atom(property), XCB_ATOM_CARDINAL, bits, 1, &value);
    }

    /// To whoever listens to these events of all windows.
    void announce(xcb_client_message_event_t message, std::uint32_t events) const
    {
        message.response_type = XCB_CLIENT_MESSAGE;
        std::array<char, 32> bytes{}; // what the call reads, whatever the message's own size
        static_assert(sizeof message <= bytes.size());
        std::copy_n(reinterpret_cast<const char *>(&message), sizeof message, bytes.begin());
        xcb_send_event(m_connection, 0, m_root, events, bytes.data());
    }

    /// Ends the waiting cursor of a launch (Startup Notification Specification): a text in pieces of 20
    /// bytes, its end included.
    void endStartup(xcb_window_t window, const QByteArray &startupId) const
    {
        const xcb_atom_t first = atom("_NET_STARTUP_INFO_BEGIN");
        const xcb_atom_t further = atom("_NET_STARTUP_INFO");
        QByteArray quoted = startupId;
        quoted.replace('\\', "\\\\").replace('"', "\\\"");
        const QByteArray text = "remove: ID=\"" + quoted + '"' + '\0';
        constexpr qsizetype piece = 20;
        for (qsizetype at = 0; at < text.size(); at += piece) {
            xcb_client_message_event_t message{};
            message.format = 8;
            message.window = window;
            message.type = at == 0 ? first : further;
            const QByteArray part = text.mid(at, piece);
            std::ranges::copy(part, message.data.data8);
            announce(message, XCB_EVENT_MASK_PROPERTY_CHANGE);
        }
    }

    void activate(xcb_window_t window, quint32 time) const
    {
        setNumber(window, "_NET_WM_USER_TIME", time);
        xcb_client_message_event_t message{};
        message.format = 32;
        message.window = window;
        message.type = atom("_NET_ACTIVE_WINDOW");
        message.data.data32[0] = 1; // a program asks, not a pager
        message.data.data32[1] = time;
        announce(message, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT);
    }

    void flush() const { xcb_flush(m_connection); }

private:
    xcb_connection_t *m_connection;
    xcb_window_t m_root;
};

void bringForwardOnX11(QWidget &window, const QString &startupId)
{
    window.raise();
    auto *const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    xcb_connection_t *const connection = x11 == nullptr ? nullptr : x11->connection();
    if (connection != nullptr && !startupId.isEmpty()) {
        const XServer server(connection);
        const auto id = static_cast<xcb_window_t>(window.winId());
        if (const quint32 time = timeOfStartupId(startupId); time != 0)
            server.activate(id, time);
        server.endStartup(id, startupId.toUtf8());
        server.flush();
    }
    window.activateWindow();
}

} // namespace

quint32 timeOfStartupId(const QString &startupId)
{
    constexpr auto mark = "_TIME"_L1;
    const qsizetype at = startupId.lastIndexOf(mark);
    return at < 0 ? 0 : QStringView(startupId).sliced(at + mark.size()).toUInt();
}

void bringForward(QWidget &window, const QString &activationToken)
{
    if (TrayHost::windowsAreOnX11()) {
        bringForwardOnX11(window, activationToken);
        return;
    }
    // The toolkit looks for it there, once.
    if (!activationToken.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", activationToken.toUtf8());
    window.activateWindow();
}

} // namespace orbitledge::ui
