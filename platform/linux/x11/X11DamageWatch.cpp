#include "platform/linux/x11/X11DamageWatch.h"

#include "platform/linux/x11/X11CaptureLink.h"

#include <xcb/damage.h>
#include <xcb/xfixes.h>

namespace clipwren {

std::unique_ptr<X11DamageWatch> X11DamageWatch::create(X11CaptureLink& link) {
    if (!link.has(xcb_damage_id) || !link.has(xcb_xfixes_id)) return nullptr;
    // Both must be asked for their version before anything else; any version with regions will do.
    const auto damageRequest = xcb_damage_query_version(link.raw(), 1, 1);
    const auto fixesRequest = xcb_xfixes_query_version(link.raw(), 2, 0);
    const auto damageVersion = link.await<xcb_damage_query_version_reply_t>(damageRequest.sequence);
    const auto fixesVersion = link.await<xcb_xfixes_query_version_reply_t>(fixesRequest.sequence);
    if (!damageVersion || !fixesVersion || fixesVersion->major_version < 2) return nullptr;
    return std::unique_ptr<X11DamageWatch>(new X11DamageWatch(link));
}

X11DamageWatch::X11DamageWatch(X11CaptureLink& link)
    : link(link),
      damage(xcb_generate_id(link.raw())),
      region(xcb_generate_id(link.raw())),
      notifyEvent(static_cast<std::uint8_t>(xcb_get_extension_data(link.raw(), &xcb_damage_id)->first_event +
                                            XCB_DAMAGE_NOTIFY)) {
    xcb_xfixes_create_region(link.raw(), region, 0, nullptr);
    // One event when there is damage again, not one a rectangle: how much there is, is asked for when it is
    // needed.
    xcb_damage_create(link.raw(), damage, link.root(), XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
}

bool X11DamageWatch::handle(const xcb_generic_event_t& event, Nanoseconds time) {
    if ((event.response_type & 0x7F) != notifyEvent) return false;
    if (!noticedAt) noticedAt = time;
    return true;
}

void X11DamageWatch::ask() {
    noticedAt.reset();
    xcb_damage_subtract(link.raw(), damage, XCB_NONE, region);
    request = xcb_xfixes_fetch_region(link.raw(), region).sequence;
}

std::optional<std::vector<PixelRect>> X11DamageWatch::take() {
    const auto reply = link.await<xcb_xfixes_fetch_region_reply_t>(request);
    if (!reply) return std::nullopt;
    const xcb_rectangle_t* rects = xcb_xfixes_fetch_region_rectangles(reply.get());
    const int count = xcb_xfixes_fetch_region_rectangles_length(reply.get());
    std::vector<PixelRect> drawn;
    drawn.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        drawn.push_back({rects[i].x, rects[i].y, rects[i].width, rects[i].height});
    return drawn;
}

} // namespace clipwren
