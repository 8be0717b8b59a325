#include "platform/linux/x11/X11PictureReader.h"

#include "platform/linux/x11/X11CaptureLink.h"

#include <xcb/shm.h>

#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

namespace clipwren {

namespace {

constexpr std::uint32_t allPlanes = 0xFFFFFFFF;

std::size_t byteCount(std::int64_t pixelCount) {
    return static_cast<std::size_t>(pixelCount) * sizeof(Pixel);
}

// A descriptor can be passed through a local socket only; on any other, libxcb would drop the connection.
bool isLocal(int descriptor) {
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    return getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &length) == 0 &&
           address.ss_family == AF_UNIX;
}

} // namespace

X11PictureReader::X11PictureReader(X11CaptureLink& link, std::int64_t capacity)
    : link(link),
      capacity(capacity) {
    if (!share() && pixels) {
        munmap(pixels, byteCount(segmentSize()));
        pixels = nullptr;
    }
}

X11PictureReader::~X11PictureReader() {
    if (!pixels) return;
    xcb_shm_detach(link.raw(), segment);
    xcb_flush(link.raw());
    munmap(pixels, byteCount(segmentSize()));
}

// A memory file instead of a System V segment: it works across the borders of containers too, and nothing is
// left behind however the program ends.
bool X11PictureReader::share() {
    if (byteCount(segmentSize()) > UINT32_MAX) return false; // requests could not name every place in it
    if (!link.has(xcb_shm_id) || !isLocal(xcb_get_file_descriptor(link.raw()))) return false;
    const auto version =
        link.await<xcb_shm_query_version_reply_t>(xcb_shm_query_version(link.raw()).sequence);
    if (!version || version->major_version != 1 || version->minor_version < 2) return false;

    const int file = memfd_create("clipwren-capture", MFD_CLOEXEC);
    if (file < 0) return false;
    void* memory = MAP_FAILED;
    if (ftruncate(file, static_cast<off_t>(byteCount(segmentSize()))) == 0)
        memory = mmap(nullptr, byteCount(segmentSize()), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (memory == MAP_FAILED) {
        close(file);
        return false;
    }
    pixels = static_cast<Pixel*>(memory);
    segment = xcb_generate_id(link.raw());
    // The request takes the descriptor over.
    return link.succeeded(xcb_shm_attach_fd_checked(link.raw(), segment, file, false));
}

bool X11PictureReader::read(std::span<const PixelRect> rects, const Sink& sink) {
    if (!pixels) {
        for (const PixelRect& rect : rects)
            if (!readPlain(rect, sink)) return false;
        return true;
    }
    // As many at a time as there is room for.
    while (!rects.empty()) {
        std::size_t count = 0;
        for (std::int64_t used = 0; count < rects.size(); ++count) {
            used += rects[count].area();
            if (used > capacity) break;
        }
        if (count == 0) return false;
        ask(rects.first(count));
        if (!take(sink)) return false;
        rects = rects.subspan(count);
    }
    return true;
}

unsigned int X11PictureReader::request(const PixelRect& rect, std::int64_t offset) {
    return xcb_shm_get_image(link.raw(), link.root(), static_cast<std::int16_t>(rect.x),
                             static_cast<std::int16_t>(rect.y), static_cast<std::uint16_t>(rect.width),
                             static_cast<std::uint16_t>(rect.height), allPlanes, XCB_IMAGE_FORMAT_Z_PIXMAP,
                             segment, static_cast<std::uint32_t>(byteCount(offset)))
        .sequence;
}

void X11PictureReader::askStaying(const PixelRect& rect) {
    stayingSize = rect.area();
    stayingRequest = request(rect, (1 - stayingPart) * capacity);
}

Pixel* X11PictureReader::takeStaying() {
    const auto reply = link.await<xcb_shm_get_image_reply_t>(stayingRequest);
    if (!reply || reply->size < byteCount(stayingSize)) return nullptr;
    stayingPart = 1 - stayingPart;
    return pixels + stayingPart * capacity;
}

void X11PictureReader::ask(std::span<const PixelRect> rects) {
    askedRects.assign(rects.begin(), rects.end());
    requests.clear();
    std::int64_t offset = 2 * capacity; // behind the two that stay
    for (const PixelRect& rect : askedRects) {
        requests.push_back(request(rect, offset));
        offset += rect.area();
    }
}

bool X11PictureReader::take(const Sink& sink) {
    bool allRead = true;
    std::int64_t offset = 2 * capacity;
    for (std::size_t i = 0; i < askedRects.size(); ++i) {
        // Every reply is awaited: the server goes on writing into the memory until then.
        const PixelRect& rect = askedRects[i];
        const auto reply = link.await<xcb_shm_get_image_reply_t>(requests[i]);
        allRead = allRead && reply && reply->size >= byteCount(rect.area());
        if (allRead) sink(rect, pixels + offset, rect.width);
        offset += rect.area();
    }
    return allRead;
}

void X11PictureReader::rest() {
    if (!pixels) return;
    // Whole pages; they read as zeros afterwards. Nothing is lost when that fails.
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    for (const int part : {1 - stayingPart, 2}) {
        const std::size_t begin = (byteCount(part * capacity) + page - 1) / page * page;
        const std::size_t end = byteCount((part + 1) * capacity) / page * page;
        if (begin < end)
            (void)madvise(reinterpret_cast<std::byte*>(pixels) + begin, end - begin, MADV_REMOVE);
    }
}

bool X11PictureReader::readPlain(const PixelRect& rect, const Sink& sink) {
    const auto reply = link.await<xcb_get_image_reply_t>(
        xcb_get_image(link.raw(), XCB_IMAGE_FORMAT_Z_PIXMAP, link.root(), static_cast<std::int16_t>(rect.x),
                      static_cast<std::int16_t>(rect.y), static_cast<std::uint16_t>(rect.width),
                      static_cast<std::uint16_t>(rect.height), allPlanes)
            .sequence);
    if (!reply || static_cast<std::size_t>(xcb_get_image_data_length(reply.get())) < byteCount(rect.area()))
        return false;
    // The data of a reply begins at a multiple of four bytes, and the pixels are words of this machine.
    sink(rect, reinterpret_cast<const Pixel*>(xcb_get_image_data(reply.get())), rect.width);
    return true;
}

} // namespace clipwren
