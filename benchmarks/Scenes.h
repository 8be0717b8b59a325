#pragma once

#include <xcb/xcb.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace clipwren {

// What happens on desktops, drawn into a window from one tick to the next. A tick is a thirtieth of a second.
class Scene {
public:
    Scene(xcb_connection_t* connection, xcb_window_t window, int width, int height)
        : connection(connection),
          window(window),
          width(width),
          height(height),
          graphics(xcb_generate_id(connection)) {
        const xcb_font_t font = xcb_generate_id(connection);
        xcb_open_font(connection, font, 5, "fixed");
        const std::uint32_t values[] = {0, 0xFFFFFF, font, 0};
        xcb_create_gc(connection, graphics, window,
                      XCB_GC_FOREGROUND | XCB_GC_BACKGROUND | XCB_GC_FONT | XCB_GC_GRAPHICS_EXPOSURES,
                      values);
    }
    virtual ~Scene() = default;
    virtual void draw(int tick) = 0;

protected:
    static constexpr int lineHeight = 16;

    void fill(std::uint32_t color, int x, int y, int w, int h) {
        xcb_change_gc(connection, graphics, XCB_GC_FOREGROUND, &color);
        const xcb_rectangle_t rect{static_cast<std::int16_t>(x), static_cast<std::int16_t>(y),
                                   static_cast<std::uint16_t>(w), static_cast<std::uint16_t>(h)};
        xcb_poly_fill_rectangle(connection, window, graphics, 1, &rect);
    }
    void write(const std::string& text, int x, int y) {
        const std::uint32_t black = 0x202020;
        xcb_change_gc(connection, graphics, XCB_GC_FOREGROUND, &black);
        xcb_image_text_8(connection, static_cast<std::uint8_t>(text.size()), window, graphics,
                         static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), text.data());
    }
    // Moves the part below `top` up, and clears what comes free.
    void scroll(int left, int top, int w, int by) {
        xcb_copy_area(connection, window, window, graphics, static_cast<std::int16_t>(left),
                      static_cast<std::int16_t>(top + by), static_cast<std::int16_t>(left),
                      static_cast<std::int16_t>(top), static_cast<std::uint16_t>(w),
                      static_cast<std::uint16_t>(height - top - by));
        fill(0xFFFFFF, left, height - by, w, by);
    }
    void put(const std::vector<std::uint32_t>& pixels, xcb_drawable_t where, std::uint8_t depth) {
        // In strips, since a request has a largest size.
        constexpr int strip = 16;
        for (int y = 0; y < height; y += strip) {
            const int rows = std::min(strip, height - y);
            xcb_put_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, where, graphics,
                          static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(rows), 0,
                          static_cast<std::int16_t>(y), 0, depth,
                          static_cast<std::uint32_t>(width * rows * 4),
                          reinterpret_cast<const std::uint8_t*>(pixels.data() +
                                                                static_cast<std::ptrdiff_t>(y) * width));
        }
    }
    std::string words(std::size_t length) {
        std::string text;
        while (text.size() < length)
            text += random() % 6 == 0 ? ' ' : static_cast<char>('a' + random() % 26);
        return text;
    }

    xcb_connection_t* connection;
    xcb_window_t window;
    int width;
    int height;
    xcb_gcontext_t graphics;
    std::mt19937 random{3};
};

// Somebody writes in an editor, eight letters a second; the caret blinks, and a full page moves up.
class TypingScene : public Scene {
public:
    using Scene::Scene;
    void draw(int tick) override {
        if (tick == 0) {
            fill(0xFFFFFF, 0, 0, width, height);
            for (int y = lineHeight; y < height / 2; y += lineHeight, line = y)
                write(words(40 + random() % 60), 8, y - 4);
        }
        if (tick % 15 == 0) fill(tick % 30 == 0 ? 0 : 0xFFFFFF, 8 + column * 6, line + 2, 2, 12);
        if (tick % 4 != 0) return;
        fill(0xFFFFFF, 8 + column * 6, line + 2, 2, 12);
        write(words(1), 8 + column * 6, line + 12);
        if (++column < 90) return;
        column = 0;
        line += lineHeight;
        if (line + lineHeight <= height) return;
        scroll(0, 0, width, lineHeight);
        line -= lineHeight;
    }

private:
    int line = 0;
    int column = 0;
};

// A chat: every two seconds a message comes, and the list moves up smoothly.
class ChatScene : public Scene {
public:
    using Scene::Scene;
    void draw(int tick) override {
        const int left = width * 3 / 10, right = width - left;
        if (tick == 0) {
            fill(0xE8E8F0, 0, 0, left, height);
            for (int y = 20; y < height; y += 40)
                write(words(20), 12, y);
            fill(0xFFFFFF, left, 0, right, height);
        }
        if (tick % 60 >= 12) return;
        scroll(left, 0, right, 4);
        if (tick % 60 != 11) return;
        fill(static_cast<std::uint32_t>(random() & 0xFFFFFF), left + 8, height - 40, 32, 32);
        write(words(20), left + 50, height - 28);
        write(words(60), left + 50, height - 12);
    }
};

// A film without noise: smooth light, fine texture, everything moves.
class VideoScene : public Scene {
public:
    VideoScene(xcb_connection_t* connection, xcb_window_t window, int width, int height, std::uint8_t depth);
    void draw(int tick) override {
        xcb_copy_area(connection, pictures[static_cast<std::size_t>(tick) % pictures.size()], window,
                      graphics, 0, 0, 0, 0, static_cast<std::uint16_t>(width),
                      static_cast<std::uint16_t>(height));
    }

private:
    std::vector<xcb_pixmap_t> pictures;
};

// A photograph with the noise of its sensor, which stands still.
class WallpaperScene : public Scene {
public:
    WallpaperScene(xcb_connection_t* connection, xcb_window_t window, int width, int height,
                   std::uint8_t depth)
        : Scene(connection, window, width, height),
          depth(depth) {}
    void draw(int tick) override;

private:
    std::uint8_t depth;
};

} // namespace clipwren
