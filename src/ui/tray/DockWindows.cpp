#include "ui/tray/DockWindows.h"

#include "ui/tray/TrayHost.h"

#include <QGuiApplication>

#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace orbitledge::ui {

namespace {

template <typename Reply> std::unique_ptr<Reply, decltype(&std::free)> owned(Reply *reply)
{
    return {reply, &std::free};
}

/// More windows, or types of one, than anybody has.
constexpr std::uint32_t manyValues = 4096;

struct Atoms {
    xcb_atom_t clientList = XCB_ATOM_NONE;
    xcb_atom_t windowType = XCB_ATOM_NONE;
    xcb_atom_t dock = XCB_ATOM_NONE;
};

Atoms atomsOf(xcb_connection_t *xcb)
{
    constexpr std::array<std::string_view, 3> names{
        "_NET_CLIENT_LIST", "_NET_WM_WINDOW_TYPE", "_NET_WM_WINDOW_TYPE_DOCK"};
    std::array<xcb_intern_atom_cookie_t, names.size()> asked{};
    std::ranges::transform(names, asked.begin(), [xcb](std::string_view name) {
        return xcb_intern_atom(xcb, 1, static_cast<std::uint16_t>(name.size()), name.data());
    });
    std::array<xcb_atom_t, names.size()> atoms{};
    std::ranges::transform(asked, atoms.begin(), [xcb](xcb_intern_atom_cookie_t cookie) {
        const auto reply = owned(xcb_intern_atom_reply(xcb, cookie, nullptr));
        return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
    });
    return {.clientList = atoms[0], .windowType = atoms[1], .dock = atoms[2]};
}

/// Windows and atoms are numbers of this size.
std::vector<std::uint32_t> valuesOf(xcb_connection_t *xcb, xcb_get_property_cookie_t cookie)
{
    const auto reply = owned(xcb_get_property_reply(xcb, cookie, nullptr));
    if (!reply || reply->format != 32)
        return {};
    const std::span values(static_cast<const std::uint32_t *>(xcb_get_property_value(reply.get())),
        static_cast<std::size_t>(xcb_get_property_value_length(reply.get())) / sizeof(std::uint32_t));
    return {values.begin(), values.end()};
}

/// Empty where the window has gone.
QRect placeOf(
    xcb_connection_t *xcb, xcb_get_geometry_cookie_t size, xcb_translate_coordinates_cookie_t corner)
{
    const auto sizeReply = owned(xcb_get_geometry_reply(xcb, size, nullptr));
    const auto cornerReply = owned(xcb_translate_coordinates_reply(xcb, corner, nullptr));
    if (!sizeReply || !cornerReply)
        return {};
    return {cornerReply->dst_x, cornerReply->dst_y, sizeReply->width, sizeReply->height};
}

/// What is asked about one window, before any answer is waited for.
struct Questions {
    Questions(xcb_connection_t *xcb, xcb_window_t root, xcb_window_t window, const Atoms &atoms)
        : types(xcb_get_property(xcb, 0, window, atoms.windowType, XCB_ATOM_ATOM, 0, manyValues))
        , size(xcb_get_geometry(xcb, window))
        , corner(xcb_translate_coordinates(xcb, window, root, 0, 0))
    {
    }

    xcb_get_property_cookie_t types;
    xcb_get_geometry_cookie_t size;
    xcb_translate_coordinates_cookie_t corner;
};

} // namespace

QList<QRect> dockWindows()
{
    if (!TrayHost::windowsAreOnX11())
        return {};
    auto *const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    xcb_connection_t *const xcb = x11 == nullptr ? nullptr : x11->connection();
    if (xcb == nullptr)
        return {};
    // The toolkit shows windows of the server's first screen.
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(xcb)).data->root;
    const Atoms atoms = atomsOf(xcb);
    if (atoms.clientList == XCB_ATOM_NONE || atoms.windowType == XCB_ATOM_NONE || atoms.dock == XCB_ATOM_NONE)
        return {}; // nobody ever spoke of bars

    const std::vector<xcb_window_t> windows
        = valuesOf(xcb, xcb_get_property(xcb, 0, root, atoms.clientList, XCB_ATOM_WINDOW, 0, manyValues));
    std::vector<Questions> asked;
    asked.reserve(windows.size());
    for (const xcb_window_t window : windows)
        asked.emplace_back(xcb, root, window, atoms);
    QList<QRect> places;
    for (const Questions &questions : asked) {
        const std::vector<xcb_atom_t> types = valuesOf(xcb, questions.types);
        const QRect place = placeOf(xcb, questions.size, questions.corner);
        if (!place.isEmpty() && std::ranges::find(types, atoms.dock) != types.end())
            places.append(place);
    }
    return places;
}

} // namespace orbitledge::ui
