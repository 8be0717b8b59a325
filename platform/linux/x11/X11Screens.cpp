#include "platform/linux/x11/X11Screens.h"

#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11Reply.h"

#include <xcb/randr.h>
#include <xcb/xcbext.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <utility>

namespace clipwren {

namespace {

constexpr std::uint32_t longestResources = 1 << 18; // in units of four bytes

// The reply to a request, as its own type.
template <typename T, typename Cookie>
X11Reply<T> replyTo(const Cookie& cookie, const AwaitReply& await) {
    return X11Reply<T>(static_cast<T*>(await(cookie.sequence).release()));
}

std::vector<NativeMonitor> readMonitors(xcb_connection_t* connection, xcb_window_t root,
                                        const AwaitReply& await) {
    std::vector<NativeMonitor> monitors;
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(connection, &xcb_randr_id);
    if (!extension || !extension->present) return monitors;
    // A server answers with the lower of both versions, and an old one knows no monitors.
    const auto version =
        replyTo<xcb_randr_query_version_reply_t>(xcb_randr_query_version(connection, 1, 5), await);
    if (!version || version->major_version != 1 || version->minor_version < 5) return monitors;
    const auto reply =
        replyTo<xcb_randr_get_monitors_reply_t>(xcb_randr_get_monitors(connection, root, true), await);
    if (!reply) return monitors;
    // Whatever numbers the reply tells, no more than it holds. Behind each monitor stand its outputs.
    const auto* next = reinterpret_cast<const std::byte*>(reply.get() + 1);
    std::size_t left = std::size_t{reply->length} * 4;
    for (std::uint32_t i = 0; i < reply->nMonitors && left >= sizeof(xcb_randr_monitor_info_t); ++i) {
        xcb_randr_monitor_info_t info;
        std::memcpy(&info, next, sizeof info);
        monitors.push_back({.id = info.name,
                            .pixels = {info.x, info.y, info.width, info.height},
                            .isPrimary = info.primary != 0});
        const std::size_t size = sizeof info + std::size_t{info.nOutput} * sizeof(xcb_randr_output_t);
        if (size > left) break;
        next += size;
        left -= size;
    }
    return monitors;
}

std::string readResources(xcb_connection_t* connection, xcb_window_t root, const AwaitReply& await) {
    const auto reply =
        replyTo<xcb_get_property_reply_t>(xcb_get_property(connection, false, root, XCB_ATOM_RESOURCE_MANAGER,
                                                           XCB_ATOM_STRING, 0, longestResources),
                                          await);
    if (!reply || reply->format != 8) return {};
    return {static_cast<const char*>(xcb_get_property_value(reply.get())),
            std::min(std::size_t{reply->value_len}, std::size_t{reply->length} * 4)};
}

struct Observer : ScreensObserver {
    explicit Observer(Listeners::Subscription subscription) : subscription(std::move(subscription)) {}
    const Listeners::Subscription subscription;
};

Screen asScreen(const NativeScreen& screen) { return {.frame = screen.frame, .screenNumber = screen.id}; }

} // namespace

std::vector<NativeScreen> readScreens(xcb_connection_t* connection, const xcb_screen_t& screen,
                                      AwaitReply await) {
    if (!await)
        await = [connection](unsigned int sequence) {
            return X11Reply<void>(xcb_wait_for_reply(connection, sequence, nullptr));
        };
    std::vector<NativeMonitor> monitors = readMonitors(connection, screen.root, await);
    if (monitors.empty()) {
        const auto geometry =
            replyTo<xcb_get_geometry_reply_t>(xcb_get_geometry(connection, screen.root), await);
        if (!geometry) return {};
        // The root's own identifier names it as well as an atom would.
        monitors.push_back({.id = screen.root, .pixels = {0, 0, geometry->width, geometry->height}});
    }
    return layOutScreens(std::move(monitors),
                         scaleFromResources(readResources(connection, screen.root, await)));
}

std::vector<NativeScreen> X11Screens::nativeScreens() const {
    return readScreens(connection.raw(), connection.screen());
}

std::vector<Screen> X11Screens::screens() const {
    const std::vector<NativeScreen> natives = nativeScreens();
    std::vector<Screen> result(natives.size());
    std::transform(natives.begin(), natives.end(), result.begin(), asScreen);
    return result;
}

std::optional<Screen> X11Screens::main() const {
    const std::vector<NativeScreen> natives = nativeScreens();
    if (natives.empty()) return std::nullopt;
    const auto pointer = owned(xcb_query_pointer_reply(
        connection.raw(), xcb_query_pointer(connection.raw(), connection.root()), nullptr));
    if (pointer && pointer->same_screen) {
        const PixelRect under{pointer->root_x, pointer->root_y, 1, 1};
        for (const NativeScreen& screen : natives)
            if (!screen.pixels.intersection(under).isEmpty()) return asScreen(screen);
    }
    return asScreen(natives.front());
}

std::uint32_t X11Screens::mainDisplayID() const {
    const std::vector<NativeScreen> natives = nativeScreens();
    return natives.empty() ? 0 : natives.front().id;
}

std::unique_ptr<ScreensObserver> X11Screens::observeDidChange(std::function<void()> handler) {
    return std::make_unique<Observer>(changes.subscribe(std::move(handler)));
}

} // namespace clipwren
