#include "ui/tray/X11SelectionWatch.h"

#include "platform/SerialQueue.h"

#include <QPointer>

#include <xcb/xcb.h>
#include <xcb/xfixes.h>

#include <cstdlib>
#include <utility>

namespace orbitledge::ui {

namespace {

template <typename Reply> std::unique_ptr<Reply, decltype(&std::free)> owned(Reply *reply)
{
    return {reply, &std::free};
}

xcb_window_t rootOf(xcb_connection_t *connection, int screen)
{
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; screens.rem > 0; xcb_screen_next(&screens), --screen) {
        if (screen == 0)
            return screens.data->root;
    }
    return XCB_NONE;
}

} // namespace

struct X11SelectionWatch::Connection {
    /// Waits for the server.
    explicit Connection(const QByteArray &namePrefix);
    ~Connection() { xcb_disconnect(xcb); }
    Q_DISABLE_COPY_MOVE(Connection)

    xcb_connection_t *xcb;
    bool isGood = false;
    /// Of the extension that tells of owners.
    int firstEvent = 0;
    bool isOwned = false;

private:
    bool askFor(const QByteArray &selection, xcb_window_t root);
};

X11SelectionWatch::Connection::Connection(const QByteArray &namePrefix)
{
    int screen = 0;
    xcb = xcb_connect(nullptr, &screen);
    if (xcb_connection_has_error(xcb) != 0)
        return;
    isGood = askFor(namePrefix + QByteArray::number(screen), rootOf(xcb, screen));
}

bool X11SelectionWatch::Connection::askFor(const QByteArray &selection, xcb_window_t root)
{
    const xcb_query_extension_reply_t *const extension = xcb_get_extension_data(xcb, &xcb_xfixes_id);
    if (extension == nullptr || extension->present == 0)
        return false;
    firstEvent = extension->first_event;
    const auto versionAsked = xcb_xfixes_query_version(xcb, 1, 0);
    const auto atomAsked
        = xcb_intern_atom(xcb, 0, static_cast<std::uint16_t>(selection.size()), selection.constData());
    const auto version = owned(xcb_xfixes_query_version_reply(xcb, versionAsked, nullptr));
    const auto atom = owned(xcb_intern_atom_reply(xcb, atomAsked, nullptr));
    if (!version || !atom)
        return false;
    // First to be told, then asked: nobody comes in between unseen.
    xcb_xfixes_select_selection_input(xcb, root, atom->atom,
        XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER
            | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY
            | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    const auto owner
        = owned(xcb_get_selection_owner_reply(xcb, xcb_get_selection_owner(xcb, atom->atom), nullptr));
    isOwned = owner && owner->owner != XCB_NONE;
    return static_cast<bool>(owner);
}

X11SelectionWatch::X11SelectionWatch(QByteArray namePrefix, QObject *parent)
    : QObject(parent)
    , m_namePrefix(std::move(namePrefix))
{
}

X11SelectionWatch::~X11SelectionWatch() = default;

std::optional<bool> X11SelectionWatch::isOwnedNow(const QByteArray &namePrefix)
{
    const Connection connection(namePrefix);
    return connection.isGood ? std::optional(connection.isOwned) : std::nullopt;
}

QCoro::Task<> X11SelectionWatch::start()
{
    const QPointer<X11SelectionWatch> self(this);
    SerialQueue background;
    const auto connect = [prefix = m_namePrefix] { return std::make_shared<Connection>(prefix); };
    auto connecting = background.run(connect);
    const std::shared_ptr<Connection> connection = co_await connecting;
    if (self && connection->isGood)
        self->listen(connection);
}

void X11SelectionWatch::listen(std::shared_ptr<Connection> connection)
{
    m_connection = std::move(connection);
    m_notifier = std::make_unique<QSocketNotifier>(
        xcb_get_file_descriptor(m_connection->xcb), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &X11SelectionWatch::receive);
    m_isOwned = m_connection->isOwned;
    // What came while the last answer was awaited has been read from the socket already.
    receive();
}

void X11SelectionWatch::receive()
{
    const bool wasOwned = m_isOwned;
    while (const auto event = owned(xcb_poll_for_event(m_connection->xcb))) {
        constexpr int sentByOthers = 0x80;
        if ((event->response_type & ~sentByOthers) != m_connection->firstEvent + XCB_XFIXES_SELECTION_NOTIFY)
            continue;
        const auto *const notice = reinterpret_cast<xcb_xfixes_selection_notify_event_t *>(event.get());
        m_isOwned = notice->owner != XCB_NONE;
    }
    if (xcb_connection_has_error(m_connection->xcb) != 0) {
        m_notifier->setEnabled(false);
        m_isOwned = false;
    }
    if (m_isOwned != wasOwned)
        Q_EMIT changed();
}

} // namespace orbitledge::ui
