// A window whose every pixel changes at a steady rate, with the number of its picture in its corner:
// something to record. Or, with --quiet, a still one with a blinking caret while the pointer moves about now
// and then; or, with --scene, an editor, a chat, a film, a photograph that stands still, or nothing at all.
//
//   moving-window [--size WxH] [--at X,Y] [--fps N] [--jitter MS] [--seconds S] [--quiet]
//                 [--scene typing|chat|video|wallpaper|still] [--log FILE]
//
// --log: each picture's number and when it was drawn, in seconds of the monotonic clock, one a line.

#include "benchmarks/FrameCounter.h"
#include "benchmarks/Scenes.h"

#include <xcb/xcb.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <string_view>
#include <thread>
#include <vector>

using clipwren::FrameCounter;
using Clock = std::chrono::steady_clock;

namespace {

struct Options {
    int width = 800;
    int height = 450;
    int x = 100;
    int y = 100;
    double fps = 15;
    double jitter = 0; // ms to either side
    double seconds = 10;
    bool quiet = false;
    std::string_view scene;
    const char* log = nullptr;
};

bool parse(int argc, char** argv, Options& options) {
    for (int i = 1; i < argc; ++i) {
        const std::string_view name = argv[i];
        if (name == "--quiet") {
            options.quiet = true;
            continue;
        }
        if (++i == argc) return false;
        bool known = true;
        if (name == "--size")
            known = std::sscanf(argv[i], "%dx%d", &options.width, &options.height) == 2;
        else if (name == "--at")
            known = std::sscanf(argv[i], "%d,%d", &options.x, &options.y) == 2;
        else if (name == "--fps")
            options.fps = std::atof(argv[i]);
        else if (name == "--jitter")
            options.jitter = std::atof(argv[i]);
        else if (name == "--scene")
            options.scene = argv[i];
        else if (name == "--log")
            options.log = argv[i];
        else if (name == "--seconds")
            options.seconds = std::atof(argv[i]);
        else
            known = false;
        if (!known) return false;
    }
    return options.width >= FrameCounter::bits * FrameCounter::side && options.height >= 32 &&
           options.fps > 0;
}

class MovingWindow {
public:
    MovingWindow(xcb_connection_t* connection, const Options& options)
        : connection(connection),
          options(options),
          screen(xcb_setup_roots_iterator(xcb_get_setup(connection)).data) {
        window = xcb_generate_id(connection);
        const std::uint32_t values[] = {screen->white_pixel, 1};
        xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, screen->root,
                          static_cast<std::int16_t>(options.x), static_cast<std::int16_t>(options.y),
                          static_cast<std::uint16_t>(options.width),
                          static_cast<std::uint16_t>(options.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                          XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
        graphics = xcb_generate_id(connection);
        const std::uint32_t noExposures = 0;
        xcb_create_gc(connection, graphics, window, XCB_GC_GRAPHICS_EXPOSURES, &noExposures);
        xcb_map_window(connection, window);
        makePattern();
        xcb_flush(connection);
    }

    // The pattern moved down by some rows, and the number. Put together out of sight and shown by one
    // request, so that nobody can see half of it.
    void draw(int number) {
        const int offset = number * 4 % options.height;
        copy(pattern, options.height - offset, back);
        std::vector<xcb_rectangle_t> squares[2];
        for (int bit = 0; bit < FrameCounter::bits; ++bit)
            squares[number >> bit & 1].push_back({static_cast<std::int16_t>(bit * FrameCounter::side), 0,
                                                  FrameCounter::side, FrameCounter::side});
        fill(back, screen->black_pixel, squares[0]);
        fill(back, screen->white_pixel, squares[1]);
        copy(back, 0, window);
        xcb_flush(connection);
    }

    // None of this name.
    std::unique_ptr<clipwren::Scene> makeScene(std::string_view name) const {
        if (name == "typing")
            return std::make_unique<clipwren::TypingScene>(connection, window, options.width, options.height);
        if (name == "chat")
            return std::make_unique<clipwren::ChatScene>(connection, window, options.width, options.height);
        if (name == "video")
            return std::make_unique<clipwren::VideoScene>(connection, window, options.width, options.height,
                                                          screen->root_depth);
        if (name == "wallpaper")
            return std::make_unique<clipwren::WallpaperScene>(connection, window, options.width,
                                                              options.height, screen->root_depth);
        return nullptr;
    }

    void drawCaret(bool shown) {
        fill(window, shown ? screen->black_pixel : screen->white_pixel, {{200, 200, 2, 16}});
        xcb_flush(connection);
    }

    void movePointer(int x, int y) {
        xcb_warp_pointer(connection, XCB_NONE, window, 0, 0, 0, 0, static_cast<std::int16_t>(x),
                         static_cast<std::int16_t>(y));
        xcb_flush(connection);
    }

private:
    void fill(xcb_drawable_t where, std::uint32_t color, const std::vector<xcb_rectangle_t>& rects) {
        if (rects.empty()) return;
        xcb_change_gc(connection, graphics, XCB_GC_FOREGROUND, &color);
        xcb_poly_fill_rectangle(connection, where, graphics, static_cast<std::uint32_t>(rects.size()),
                                rects.data());
    }

    void copy(xcb_drawable_t from, int top, xcb_drawable_t to) {
        xcb_copy_area(connection, from, to, graphics, 0, static_cast<std::int16_t>(top), 0, 0,
                      static_cast<std::uint16_t>(options.width), static_cast<std::uint16_t>(options.height));
    }

    // Blocks, bars and dots of many colours, twice as high as the window.
    void makePattern() {
        pattern = xcb_generate_id(connection);
        xcb_create_pixmap(connection, screen->root_depth, pattern, window,
                          static_cast<std::uint16_t>(options.width),
                          static_cast<std::uint16_t>(options.height * 2));
        back = xcb_generate_id(connection);
        xcb_create_pixmap(connection, screen->root_depth, back, window,
                          static_cast<std::uint16_t>(options.width),
                          static_cast<std::uint16_t>(options.height));
        std::mt19937 random(7);
        for (int i = 0; i < options.width * options.height / 300; ++i) {
            const auto width = static_cast<std::uint16_t>(1 + random() % 60);
            const auto height = static_cast<std::uint16_t>(1 + random() % 40);
            const auto x = static_cast<std::int16_t>(random() % static_cast<unsigned>(options.width));
            const int y = static_cast<int>(random() % static_cast<unsigned>(options.height));
            // The lower half repeats the upper one, so that the movement has no seam.
            fill(pattern, static_cast<std::uint32_t>(random() & 0xFFFFFF),
                 {{x, static_cast<std::int16_t>(y), width, height},
                  {x, static_cast<std::int16_t>(y + options.height), width, height}});
        }
    }

    xcb_connection_t* connection;
    const Options& options;
    const xcb_screen_t* screen;
    xcb_window_t window = 0;
    xcb_gcontext_t graphics = 0;
    xcb_pixmap_t pattern = 0;
    xcb_pixmap_t back = 0;
};

} // namespace

int main(int argc, char** argv) {
    Options options;
    if (!parse(argc, argv, options)) {
        std::fprintf(stderr, "usage: moving-window [--size WxH] [--at X,Y] [--fps N] [--jitter MS] "
                             "[--seconds S] [--quiet] [--scene NAME] [--log FILE]\n");
        return 2;
    }
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(connection)) return 1;
    {
        MovingWindow window(connection, options);
        const auto scene = window.makeScene(options.scene);
        const std::unique_ptr<std::FILE, int (*)(std::FILE*)> log(
            options.log ? std::fopen(options.log, "w") : nullptr,
            [](std::FILE* file) { return std::fclose(file); });
        if (options.log && !log) return 1;
        if (log) std::setvbuf(log.get(), nullptr, _IOLBF, 0); // it may be ended at any time
        std::puts("ready");
        std::fflush(stdout);

        std::mt19937 random(11);
        std::uniform_real_distribution<double> jitter(-options.jitter / 1000, options.jitter / 1000);
        const auto begin = Clock::now();
        const auto at = [&](double seconds) {
            return begin +
                   std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
        };
        for (int number = 0; number / options.fps < options.seconds; ++number) {
            std::this_thread::sleep_until(at(number / options.fps + jitter(random)));
            if (xcb_connection_has_error(connection)) break;
            if (scene) {
                scene->draw(number);
                xcb_flush(connection);
                continue;
            }
            if (options.scene == "still") continue;
            if (!options.quiet) {
                window.draw(number);
                if (log)
                    std::fprintf(log.get(), "%d %.6f\n", number,
                                 std::chrono::duration<double>(Clock::now().time_since_epoch()).count());
                continue;
            }
            // The caret turns every half second; one second of three, the pointer moves.
            const double time = number / options.fps;
            const int half = static_cast<int>(time * 2);
            if (half != static_cast<int>((number - 1) / options.fps * 2)) window.drawCaret(half % 2 == 0);
            if (static_cast<int>(time) % 3 == 0)
                window.movePointer(100 + static_cast<int>(time * 300) % 400, 100 + number % 50);
        }
    }
    xcb_disconnect(connection);
    return 0;
}
