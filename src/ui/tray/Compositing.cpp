#include "ui/tray/Compositing.h"

#include "ui/tray/TrayHost.h"

#include <QByteArray>
#include <QGuiApplication>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

namespace orbitledge::ui {

bool isComposited()
{
    if (!TrayHost::windowsAreOnX11())
        return true; // where there are no bare windows
    auto *const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    xcb_connection_t *const xcb = x11 == nullptr ? nullptr : x11->connection();
    if (xcb == nullptr)
        return false;
    // The toolkit has one connection, and shows windows of its first screen.
    const QByteArray name("_NET_WM_CM_S0");
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> atom(
        xcb_intern_atom_reply(
            xcb, xcb_intern_atom(xcb, 0, static_cast<std::uint16_t>(name.size()), name.constData()), nullptr),
        &std::free);
    if (!atom)
        return false;
    const std::unique_ptr<xcb_get_selection_owner_reply_t, decltype(&std::free)> owner(
        xcb_get_selection_owner_reply(xcb, xcb_get_selection_owner(xcb, atom->atom), nullptr), &std::free);
    return owner && owner->owner != XCB_NONE;
}

} // namespace orbitledge::ui
