#include "platform/linux/x11/X11ScreenCapture.h"

#include "platform/linux/LargePages.h"
#include "platform/linux/x11/X11CaptureStream.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11Reply.h"
#include "platform/linux/x11/X11Screens.h"

#include <xcb/randr.h>
#include <xcb/xcb.h>

#include <string_view>
#include <utility>
#include <vector>

namespace clipwren {

namespace {

bool hasExtension(xcb_connection_t* connection, std::string_view name) {
    const auto reply = owned(xcb_query_extension_reply(
        connection, xcb_query_extension(connection, static_cast<std::uint16_t>(name.size()), name.data()),
        nullptr));
    return reply && reply->present;
}

// Older Xwaylands have no extension of that name, but they have always named their outputs so.
bool hasXwaylandOutput(xcb_connection_t* connection, xcb_window_t root) {
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(connection, &xcb_randr_id);
    if (!extension || !extension->present) return false;
    const auto resources = owned(xcb_randr_get_screen_resources_current_reply(
        connection, xcb_randr_get_screen_resources_current(connection, root), nullptr));
    if (!resources) return false;
    const xcb_randr_output_t* outputs = xcb_randr_get_screen_resources_current_outputs(resources.get());
    for (int i = 0; i < resources->num_outputs; ++i) {
        const auto info = owned(xcb_randr_get_output_info_reply(
            connection, xcb_randr_get_output_info(connection, outputs[i], resources->config_timestamp),
            nullptr));
        if (!info) continue;
        const std::string_view name(
            reinterpret_cast<const char*>(xcb_randr_get_output_info_name(info.get())),
            static_cast<std::size_t>(xcb_randr_get_output_info_name_length(info.get())));
        if (name.starts_with("XWAYLAND")) return true;
    }
    return false;
}

std::vector<ShareableWindow> shownWindows(xcb_connection_t* connection, xcb_window_t root) {
    std::vector<ShareableWindow> shown;
    const auto tree = owned(xcb_query_tree_reply(connection, xcb_query_tree(connection, root), nullptr));
    if (!tree) return shown;
    const xcb_window_t* windows = xcb_query_tree_children(tree.get());
    const auto count = static_cast<std::size_t>(xcb_query_tree_children_length(tree.get()));
    std::vector<xcb_get_window_attributes_cookie_t> requests(count);
    for (std::size_t i = 0; i < count; ++i)
        requests[i] = xcb_get_window_attributes(connection, windows[i]);
    for (std::size_t i = 0; i < count; ++i) {
        // A window may have gone meanwhile.
        const auto attributes = owned(xcb_get_window_attributes_reply(connection, requests[i], nullptr));
        if (attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE) shown.push_back({windows[i]});
    }
    return shown;
}

} // namespace

X11ScreenCapture::X11ScreenCapture(X11Connection& connection, MainQueue& mainQueue, std::string displayName)
    : connection(connection),
      mainQueue(mainQueue),
      displayName(std::move(displayName)) {
    BlockPool::setSource(largePages());
}

CapturePermission X11ScreenCapture::permission() const {
    const bool isXwayland =
        hasExtension(connection.raw(), "XWAYLAND") || hasXwaylandOutput(connection.raw(), connection.root());
    return isXwayland ? CapturePermission::denied : CapturePermission::granted;
}

void X11ScreenCapture::requestPermission() {
    if (permission() == CapturePermission::denied && explainDenial) mainQueue.async(explainDenial);
}

void X11ScreenCapture::shareableContent(ContentCompletion completion) {
    ShareableContent content;
    for (const NativeScreen& screen : readScreens(connection.raw(), connection.screen()))
        content.displays.push_back({screen.id});
    content.windows = shownWindows(connection.raw(), connection.root());
    Expected<ShareableContent, PlatformError> answer = std::move(content);
    if (connection.isLost()) answer = Unexpected{PlatformError{"The display server ended the connection."}};
    mainQueue.async([completion = std::move(completion), answer = std::move(answer)] { completion(answer); });
}

std::shared_ptr<CaptureStream> X11ScreenCapture::makeStream(const ContentFilter& filter,
                                                            const StreamConfiguration& configuration,
                                                            std::weak_ptr<StreamDelegate> delegate) {
    auto stream = X11CaptureStream::create(
        {.displayName = displayName, .displayID = filter.display.displayID, .configuration = configuration},
        mainQueue, std::move(delegate));
    std::erase_if(streams, [](const auto& known) { return known.expired(); });
    streams.push_back(stream);
    return stream;
}

void X11ScreenCapture::endStreams() {
    for (const auto& known : streams)
        if (const auto stream = known.lock()) static_cast<X11CaptureStream&>(*stream).end();
}

} // namespace clipwren
