// Watches the windows of an X server from outside, so that programs can be measured which know nothing of it,
// and prints a line for each thing that happens to one, with the time of CLOCK_MONOTONIC in nanoseconds:
//
//   TIME shown PROCESS WINDOW WIDTH HEIGHT     it was mapped
//   TIME drawn PROCESS WINDOW COLOURS          since then, something was drawn in it from edge to edge
//   TIME changed PROCESS WINDOW PIXELS         and later so many of its pixels became others
//   TIME hidden PROCESS WINDOW                 it was unmapped
//
// The process is that which the window names as its own. Only windows that are made while this runs are seen,
// and only top-level ones. Ends with its standard input.
//
//   bench_window_watch [--contents]            COLOURS and "changed" only with this; else COLOURS is 0

#include <poll.h>
#include <unistd.h>
#include <xcb/damage.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

namespace {

template <typename Reply> std::unique_ptr<Reply, decltype(&std::free)> owned(Reply *reply)
{
    return {reply, &std::free};
}

long long now()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
        std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

struct Window {
    xcb_damage_damage_t damage = XCB_NONE;
    /// Asked when it is shown, since one that is hidden may be gone a moment later.
    std::uint32_t process = 0;
    int width = 0;
    int height = 0;
    bool isShown = false;
    bool isDrawn = false;
    /// Around everything that was drawn since it was shown.
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
    std::vector<std::uint32_t> pixels;

    void resetDrawn()
    {
        isDrawn = false;
        left = width;
        top = height;
        right = 0;
        bottom = 0;
        pixels.clear();
    }
};

class Watch {
public:
    explicit Watch(bool readsContents)
        : m_readsContents(readsContents)
        , m_xcb(xcb_connect(nullptr, nullptr))
    {
    }
    ~Watch() { xcb_disconnect(m_xcb); }
    Watch(const Watch &) = delete;
    Watch &operator=(const Watch &) = delete;

    bool begin();
    void run();

private:
    void follow(xcb_window_t id);
    void receive(const xcb_generic_event_t &event);
    void noteDrawing(const xcb_damage_notify_event_t &event);
    void compareContents(xcb_window_t id, Window &window, long long time);
    void printDrawn(xcb_window_t id, Window &window, long long time);
    std::vector<std::uint32_t> pixelsOf(xcb_window_t id, const Window &window);
    std::uint32_t processOf(xcb_window_t id);

    bool m_readsContents;
    xcb_connection_t *m_xcb;
    xcb_window_t m_root = XCB_NONE;
    int m_firstDamageEvent = 0;
    xcb_atom_t m_processAtom = XCB_NONE;
    std::map<xcb_window_t, Window> m_windows;
    /// Drawn in since their contents were last read.
    std::set<xcb_window_t> m_touched;
};

bool Watch::begin()
{
    if (xcb_connection_has_error(m_xcb) != 0)
        return false;
    m_root = xcb_setup_roots_iterator(xcb_get_setup(m_xcb)).data->root;
    const xcb_query_extension_reply_t *const extension = xcb_get_extension_data(m_xcb, &xcb_damage_id);
    if (extension == nullptr || extension->present == 0)
        return false;
    m_firstDamageEvent = extension->first_event;
    const auto version
        = owned(xcb_damage_query_version_reply(m_xcb, xcb_damage_query_version(m_xcb, 1, 1), nullptr));
    const std::string_view name = "_NET_WM_PID";
    const auto atom = owned(xcb_intern_atom_reply(
        m_xcb, xcb_intern_atom(m_xcb, 0, static_cast<std::uint16_t>(name.size()), name.data()), nullptr));
    if (!version || !atom)
        return false;
    m_processAtom = atom->atom;
    const std::uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(m_xcb, m_root, XCB_CW_EVENT_MASK, &mask);
    return xcb_flush(m_xcb) > 0;
}

std::uint32_t Watch::processOf(xcb_window_t id)
{
    const auto reply = owned(xcb_get_property_reply(
        m_xcb, xcb_get_property(m_xcb, 0, id, m_processAtom, XCB_ATOM_CARDINAL, 0, 1), nullptr));
    if (!reply || xcb_get_property_value_length(reply.get()) != sizeof(std::uint32_t))
        return 0;
    std::uint32_t process = 0;
    std::memcpy(&process, xcb_get_property_value(reply.get()), sizeof process);
    return process;
}

/// Before it is shown, so that nothing that is drawn in it is missed.
void Watch::follow(xcb_window_t id)
{
    Window window;
    const std::uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(m_xcb, id, XCB_CW_EVENT_MASK, &mask);
    window.damage = xcb_generate_id(m_xcb);
    xcb_damage_create(m_xcb, window.damage, id, XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
    xcb_flush(m_xcb);
    m_windows[id] = std::move(window);
}

std::vector<std::uint32_t> Watch::pixelsOf(xcb_window_t id, const Window &window)
{
    const auto image = owned(xcb_get_image_reply(m_xcb,
        xcb_get_image(m_xcb, XCB_IMAGE_FORMAT_Z_PIXMAP, id, 0, 0, static_cast<std::uint16_t>(window.width),
            static_cast<std::uint16_t>(window.height), ~0U),
        nullptr));
    if (!image)
        return {};
    const auto length = static_cast<std::size_t>(xcb_get_image_data_length(image.get()));
    std::vector<std::uint32_t> pixels(length / sizeof(std::uint32_t));
    std::memcpy(pixels.data(), xcb_get_image_data(image.get()), pixels.size() * sizeof(std::uint32_t));
    return pixels;
}

void Watch::printDrawn(xcb_window_t id, Window &window, long long time)
{
    std::size_t colours = 0;
    if (m_readsContents) {
        window.pixels = pixelsOf(id, window);
        colours = std::set(window.pixels.begin(), window.pixels.end()).size();
    }
    std::printf("%lld drawn %u %u %zu\n", time, window.process, id, colours);
}

void Watch::noteDrawing(const xcb_damage_notify_event_t &event)
{
    const auto found = m_windows.find(event.drawable);
    if (found == m_windows.end() || !found->second.isShown)
        return;
    Window &window = found->second;
    if (window.isDrawn) {
        m_touched.insert(found->first);
        return;
    }
    window.left = std::min<int>(window.left, event.area.x);
    window.top = std::min<int>(window.top, event.area.y);
    window.right = std::max<int>(window.right, event.area.x + event.area.width);
    window.bottom = std::max<int>(window.bottom, event.area.y + event.area.height);
    if (window.left > 0 || window.top > 0 || window.right < window.width || window.bottom < window.height)
        return;
    window.isDrawn = true;
    printDrawn(found->first, window, now());
}

void Watch::receive(const xcb_generic_event_t &event)
{
    constexpr int sentByOthers = 0x80;
    const int type = event.response_type & ~sentByOthers;
    if (type == m_firstDamageEvent + XCB_DAMAGE_NOTIFY) {
        noteDrawing(reinterpret_cast<const xcb_damage_notify_event_t &>(event));
    } else if (type == XCB_CREATE_NOTIFY) {
        const auto &create = reinterpret_cast<const xcb_create_notify_event_t &>(event);
        if (create.parent == m_root)
            follow(create.window);
    } else if (type == XCB_DESTROY_NOTIFY) {
        const auto id = reinterpret_cast<const xcb_destroy_notify_event_t &>(event).window;
        m_windows.erase(id);
        m_touched.erase(id);
    } else if (type == XCB_CONFIGURE_NOTIFY) {
        const auto &configure = reinterpret_cast<const xcb_configure_notify_event_t &>(event);
        if (const auto found = m_windows.find(configure.window); found != m_windows.end()) {
            found->second.width = configure.width;
            found->second.height = configure.height;
        }
    } else if (type == XCB_MAP_NOTIFY) {
        const auto &map = reinterpret_cast<const xcb_map_notify_event_t &>(event);
        const auto found = m_windows.find(map.window);
        if (found == m_windows.end() || found->second.isShown)
            return;
        const long long time = now();
        Window &window = found->second;
        const auto place = owned(xcb_get_geometry_reply(m_xcb, xcb_get_geometry(m_xcb, map.window), nullptr));
        if (!place)
            return;
        window.width = place->width;
        window.height = place->height;
        window.isShown = true;
        window.process = processOf(map.window);
        window.resetDrawn();
        std::printf(
            "%lld shown %u %u %d %d\n", time, window.process, map.window, window.width, window.height);
    } else if (type == XCB_UNMAP_NOTIFY) {
        const auto id = reinterpret_cast<const xcb_unmap_notify_event_t &>(event).window;
        const auto found = m_windows.find(id);
        if (found == m_windows.end() || !found->second.isShown)
            return;
        found->second.isShown = false;
        m_touched.erase(id);
        std::printf("%lld hidden %u %u\n", now(), found->second.process, id);
    }
}

void Watch::compareContents(xcb_window_t id, Window &window, long long time)
{
    std::vector<std::uint32_t> pixels = pixelsOf(id, window);
    if (pixels.empty() || pixels.size() != window.pixels.size())
        return;
    std::size_t changed = 0;
    for (std::size_t i = 0; i < pixels.size(); ++i)
        changed += pixels[i] == window.pixels[i] ? 0U : 1U;
    window.pixels = std::move(pixels);
    if (changed > 0)
        std::printf("%lld changed %u %u %zu\n", time, window.process, id, changed);
}

void Watch::run()
{
    while (xcb_connection_has_error(m_xcb) == 0) {
        while (const auto event = owned(xcb_poll_for_event(m_xcb)))
            receive(*event);
        if (m_readsContents) {
            const long long time = now();
            for (const xcb_window_t id : std::exchange(m_touched, {})) {
                if (const auto found = m_windows.find(id); found != m_windows.end())
                    compareContents(id, found->second, time);
            }
        }
        std::fflush(stdout);
        // The answers that were waited for may have brought events along.
        if (const auto event = owned(xcb_poll_for_queued_event(m_xcb))) {
            receive(*event);
            continue;
        }
        std::array<pollfd, 2> sources{{{.fd = xcb_get_file_descriptor(m_xcb), .events = POLLIN, .revents = 0},
            {.fd = STDIN_FILENO, .events = POLLIN, .revents = 0}}};
        ::poll(sources.data(), sources.size(), -1);
        if ((sources[1].revents & (POLLIN | POLLHUP)) != 0)
            return;
    }
}

} // namespace

int main(int argc, char **argv)
{
    const bool readsContents = argc == 2 && std::string_view(argv[1]) == "--contents";
    if (argc > 1 && !readsContents) {
        std::fputs("usage: bench_window_watch [--contents]\n", stderr);
        return 2;
    }
    Watch watch(readsContents);
    if (!watch.begin()) {
        std::fputs("bench_window_watch: no X server, or one that does not tell what is drawn\n", stderr);
        return 1;
    }
    std::puts("watching");
    std::fflush(stdout);
    watch.run();
    return 0;
}
