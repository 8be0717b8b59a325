#pragma once

#include "base/Geometry.h"
#include "base/Image.h"

#include <xcb/xcb.h>

#include <memory>
#include <string>
#include <sys/types.h>
#include <vector>

namespace clipwren {

// An X server (Xvfb) of the test's own, which may be killed or held up. Ended on destruction.
class X11TestServer {
public:
    // `screen` as Xvfb takes it: WIDTHxHEIGHTxDEPTH; further arguments as they are.
    explicit X11TestServer(const std::string& screen = "800x600x24",
                           const std::vector<std::string>& arguments = {});
    ~X11TestServer();
    X11TestServer(const X11TestServer&) = delete;
    X11TestServer& operator=(const X11TestServer&) = delete;

    // Only ":" when the server did not come up within some seconds.
    const std::string& displayName() const { return name; }
    void send(int signal) const;

private:
    pid_t process = -1;
    std::string name;
};

// A client that draws: on one window without border or title, above all others, and with the pointer.
class X11TestWindow {
public:
    // `displayName` empty: the one that DISPLAY names. Native pixels.
    X11TestWindow(const std::string& displayName, const PixelRect& place, Pixel background = 0xFFFFFF);
    ~X11TestWindow();
    X11TestWindow(const X11TestWindow&) = delete;
    X11TestWindow& operator=(const X11TestWindow&) = delete;

    xcb_connection_t* raw() const { return connection; }
    xcb_window_t id() const { return window; }
    xcb_window_t root() const { return screen->root; }

    // Each has reached the server when it returns.
    void fill(const PixelRect& rect, Pixel color);
    void put(const PixelRect& rect, const std::vector<Pixel>& pixels);
    void warpPointer(int x, int y); // on the root window
    void setCursorShape(int glyph); // of the cursor font
    void sync();

private:
    xcb_connection_t* connection;
    const xcb_screen_t* screen = nullptr;
    xcb_window_t window = 0;
    xcb_gcontext_t graphics = 0;
};

} // namespace clipwren
