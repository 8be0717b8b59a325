// A window whose every pixel is known: the screen tests record it and compare.
//
//   pattern_window LEFT TOP WIDTH HEIGHT FPS FRAMES [unmanaged]
//
// Places a window without frame with its top left pixel at (LEFT, TOP) and draws FRAMES pictures (0: until it
// is ended) at FPS pictures a second; FPS 0 draws only picture 0. Picture n is a function of n, WIDTH and
// HEIGHT (tests/screen/pattern.py computes the same) and carries n in black and white blocks. Each appears at
// once, by a single copy on the server. Two pictures are never closer together than 1/FPS, even after a
// delay.
//
// Standard output, one line an event, seconds on the monotonic clock:
//   ready LEFT TOP WINDOW       the window is mapped at this place and shows picture 0
//   frame N TIME                picture N is on the screen since at most TIME
//   button NUMBER X Y TIME      a press of a button inside
//   key CODE TIME               a press of a key
#include <xcb/xcb.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <poll.h>
#include <vector>

namespace {

constexpr std::uint32_t tiles[] = {0x203040, 0x2c4a5a, 0x38585f, 0x22384c};
constexpr std::uint32_t bars[] = {0xff0000, 0x00ff00, 0x0000ff, 0xffff00,
                                  0x00ffff, 0xff00ff, 0xff8000, 0x8000ff};
constexpr std::uint32_t squares[] = {0xc0c0c0, 0xc06060, 0x60c060, 0x6060c0, 0xc0c060, 0x60c0c0,
                                     0xc060c0, 0x806040, 0x408060, 0x604080, 0xa0e0a0, 0xe0a0a0};
constexpr int block = 10;       // side of a counter block
constexpr int counterBits = 16; // blocks in a row; a second row below holds the inverse
constexpr int counterEdge = 8;  // from the window's left and top
constexpr int squareSide = 40;
constexpr int quietStrip = 56; // at the bottom: one colour and no motion, so that the badge lies on it

struct Picture {
    int width, height;
    std::vector<std::uint32_t> pixels;

    void fill(int left, int top, int right, int bottom, std::uint32_t colour) {
        for (int y = top < 0 ? 0 : top; y < bottom && y < height; ++y)
            for (int x = left < 0 ? 0 : left; x < right && x < width; ++x)
                pixels[static_cast<std::size_t>(y) * width + x] = colour;
    }
};

void paint(Picture& picture, int n) {
    const int moving = picture.height - quietStrip;
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x) {
            std::uint32_t colour = tiles[y < moving ? ((x >> 4) + (y >> 4)) & 3 : 0];
            const int bar = (x + 5 * n) / 24;
            if (y >= moving / 2 && y < moving && bar % 6 == 0) colour = bars[bar / 6 % 8];
            picture.pixels[static_cast<std::size_t>(y) * picture.width + x] = colour;
        }
    const int left = n * 11 % (picture.width - squareSide), top = n * 7 % (moving - squareSide);
    picture.fill(left, top, left + squareSide, top + squareSide, squares[n % 12]);
    for (int bit = 0; bit < counterBits; ++bit) {
        const bool set = (n >> bit & 1) != 0;
        const int x = counterEdge + bit * block;
        picture.fill(x, counterEdge, x + block, counterEdge + block, set ? 0xffffff : 0x000000);
        picture.fill(x, counterEdge + block, x + block, counterEdge + 2 * block, set ? 0x000000 : 0xffffff);
    }
}

double now() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

void sleepUntil(double time) {
    const timespec at{static_cast<time_t>(time), static_cast<long>((time - std::floor(time)) * 1e9)};
    clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &at, nullptr);
}

class Window {
public:
    Window(int left, int top, int width, int height, bool isUnmanaged)
        : picture{width, height, std::vector<std::uint32_t>(static_cast<std::size_t>(width) * height)} {
        connection = xcb_connect(nullptr, nullptr);
        if (xcb_connection_has_error(connection) != 0) {
            std::fputs("pattern_window: no X display\n", stderr);
            std::exit(1);
        }
        screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
        window = xcb_generate_id(connection);
        const std::uint32_t values[] = {isUnmanaged ? 1u : 0u,
                                        XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY |
                                            XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_KEY_PRESS,
                                        makeCursor()};
        xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, screen->root,
                          static_cast<std::int16_t>(left), static_cast<std::int16_t>(top),
                          static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height), 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual,
                          XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK | XCB_CW_CURSOR, values);
        placeWithoutFrame(left, top, width, height);
        back = xcb_generate_id(connection);
        xcb_create_pixmap(connection, screen->root_depth, back, window, static_cast<std::uint16_t>(width),
                          static_cast<std::uint16_t>(height));
        context = xcb_generate_id(connection);
        const std::uint32_t noExposures = 0;
        xcb_create_gc(connection, context, window, XCB_GC_GRAPHICS_EXPOSURES, &noExposures);
        prepare(0);
        xcb_map_window(connection, window);
        xcb_flush(connection);
        const double limit = now() + 5;
        while (!exposed && now() < limit)
            handleEvents(50);
        show();
        const xcb_translate_coordinates_cookie_t asked =
            xcb_translate_coordinates(connection, window, screen->root, 0, 0);
        xcb_translate_coordinates_reply_t* at = xcb_translate_coordinates_reply(connection, asked, nullptr);
        if (at != nullptr) std::printf("ready %d %d %u\n", at->dst_x, at->dst_y, window);
        std::free(at);
    }

    // Puts picture n into the back pixmap, in strips that any server's largest request can hold.
    void prepare(int n) {
        paint(picture, n);
        const int rows = 60000 / picture.width;
        for (int top = 0; top < picture.height; top += rows) {
            const int count = picture.height - top < rows ? picture.height - top : rows;
            xcb_put_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, back, context,
                          static_cast<std::uint16_t>(picture.width), static_cast<std::uint16_t>(count), 0,
                          static_cast<std::int16_t>(top), 0, screen->root_depth,
                          static_cast<std::uint32_t>(picture.width) * count * 4,
                          reinterpret_cast<const std::uint8_t*>(
                              &picture.pixels[static_cast<std::size_t>(top) * picture.width]));
        }
        xcb_flush(connection);
    }

    // Shows what was prepared; returns when the server has done it. False when the server is gone.
    bool show() {
        xcb_copy_area(connection, back, window, context, 0, 0, 0, 0,
                      static_cast<std::uint16_t>(picture.width), static_cast<std::uint16_t>(picture.height));
        xcb_get_input_focus_reply_t* done =
            xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr);
        std::free(done);
        return done != nullptr;
    }

    // Handles what has come and what comes within the time. False when the server is gone.
    bool handleEvents(int milliseconds) {
        pollfd sources[] = {{xcb_get_file_descriptor(connection), POLLIN, 0}, {moving ? -1 : 0, POLLIN, 0}};
        xcb_flush(connection);
        poll(sources, 2, milliseconds);
        moving = moving || sources[1].revents != 0;
        while (xcb_generic_event_t* event = xcb_poll_for_event(connection)) {
            switch (event->response_type & 0x7f) {
            case XCB_EXPOSE:
                exposed = true;
                show();
                break;
            case XCB_BUTTON_PRESS: {
                const auto* press = reinterpret_cast<xcb_button_press_event_t*>(event);
                std::printf("button %d %d %d %.6f\n", press->detail, press->event_x, press->event_y, now());
                break;
            }
            case XCB_KEY_PRESS:
                std::printf("key %d %.6f\n", reinterpret_cast<xcb_key_press_event_t*>(event)->detail, now());
                break;
            default: break;
            }
            std::free(event);
        }
        return xcb_connection_has_error(connection) == 0;
    }

    bool moving = false; // whether the line that sets the window in motion has come

private:
    // A magenta square of 11 pixels with a white middle pixel, the hot spot: known, unlike a theme's cursor.
    xcb_cursor_t makeCursor() {
        constexpr int side = 11;
        const auto bitmap = [&](bool middleOnly) {
            const xcb_pixmap_t pixmap = xcb_generate_id(connection);
            xcb_create_pixmap(connection, 1, pixmap, screen->root, side, side);
            const xcb_gcontext_t pen = xcb_generate_id(connection);
            std::uint32_t ink = middleOnly ? 0 : 1;
            xcb_create_gc(connection, pen, pixmap, XCB_GC_FOREGROUND, &ink);
            const xcb_rectangle_t all{0, 0, side, side}, middle{side / 2, side / 2, 1, 1};
            xcb_poly_fill_rectangle(connection, pixmap, pen, 1, &all);
            if (middleOnly) {
                ink = 1;
                xcb_change_gc(connection, pen, XCB_GC_FOREGROUND, &ink);
                xcb_poly_fill_rectangle(connection, pixmap, pen, 1, &middle);
            }
            xcb_free_gc(connection, pen);
            return pixmap;
        };
        const xcb_cursor_t cursor = xcb_generate_id(connection);
        xcb_create_cursor(connection, cursor, bitmap(true), bitmap(false), 0xffff, 0xffff, 0xffff, 0xffff, 0,
                          0xffff, side / 2, side / 2);
        return cursor;
    }

    // Asks the window manager for exactly this place and no decoration.
    void placeWithoutFrame(int left, int top, int width, int height) {
        const std::uint32_t hints[18] = {1u | 2u | 4u | 8u | 512u, // position and size by the user, gravity
                                         static_cast<std::uint32_t>(left),
                                         static_cast<std::uint32_t>(top),
                                         static_cast<std::uint32_t>(width),
                                         static_cast<std::uint32_t>(height),
                                         0,
                                         0,
                                         0,
                                         0,
                                         0,
                                         0,
                                         0,
                                         0,
                                         0,
                                         0,
                                         0,
                                         0,
                                         XCB_GRAVITY_STATIC};
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NORMAL_HINTS,
                            XCB_ATOM_WM_SIZE_HINTS, 32, 18, hints);
        const std::uint32_t undecorated[5] = {2, 0, 0, 0, 0};
        const xcb_atom_t motif = atom("_MOTIF_WM_HINTS");
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, motif, motif, 32, 5, undecorated);
        constexpr char name[] = "pattern";
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8,
                            sizeof name - 1, name);
    }

    xcb_atom_t atom(const char* name) {
        std::uint16_t length = 0;
        while (name[length] != '\0')
            ++length;
        xcb_intern_atom_reply_t* reply =
            xcb_intern_atom_reply(connection, xcb_intern_atom(connection, 0, length, name), nullptr);
        const xcb_atom_t result = reply != nullptr ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
        std::free(reply);
        return result;
    }

    Picture picture;
    xcb_connection_t* connection = nullptr;
    xcb_screen_t* screen = nullptr;
    xcb_window_t window = 0;
    xcb_pixmap_t back = 0;
    xcb_gcontext_t context = 0;
    bool exposed = false;
};

} // namespace

int main(int count, char** arguments) {
    const bool isUnmanaged = count == 8 && std::strcmp(arguments[7], "unmanaged") == 0;
    if (count != 7 && !isUnmanaged) {
        std::fputs("usage: pattern_window LEFT TOP WIDTH HEIGHT FPS FRAMES [unmanaged]\n", stderr);
        return 2;
    }
    const auto number = [&](int index) { return std::atoi(arguments[index]); };
    const int fps = number(5), frames = number(6);
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    Window window(number(1), number(2), number(3), number(4), isUnmanaged);
    double shown = now();
    std::printf("frame 0 %.6f\n", shown);
    while (!window.moving)
        if (!window.handleEvents(1000)) return 0;
    // The grid of times moves back by whatever a picture came late.
    double due = now();
    for (int n = 1; fps > 0 && (frames == 0 || n < frames); ++n) {
        window.prepare(n % 65536);
        due = n == 1 ? due : std::max(due, shown - 0.0005) + 1.0 / fps;
        for (double left = due - now(); left > 0.001; left = due - now())
            if (!window.handleEvents(static_cast<int>(left * 1000))) return 0;
        sleepUntil(due);
        if (!window.show()) return 0;
        shown = now();
        std::printf("frame %d %.6f\n", n, shown);
    }
    while (window.handleEvents(1000)) {
    }
    return 0;
}
