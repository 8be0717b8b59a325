#include "tests/conformance/X11TestServer.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace clipwren {

X11TestServer::X11TestServer(const std::string& screen, const std::vector<std::string>& arguments) {
    int ends[2];
    if (pipe(ends) != 0) return;
    fcntl(ends[0], F_SETFD, FD_CLOEXEC);
    // The server finds a free display number by itself and writes it into the pipe.
    std::vector<std::string> words{"Xvfb",     "-displayfd", std::to_string(ends[1]),
                                   "-screen",  "0",          screen,
                                   "-noreset", "-nolisten",  "tcp"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    if (posix_spawnp(&process, "Xvfb", &actions, nullptr, argv.data(), environ) != 0) process = -1;
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);

    std::string number;
    pollfd descriptor{ends[0], POLLIN, 0};
    char digit = 0;
    while (poll(&descriptor, 1, 10'000) == 1 && read(ends[0], &digit, 1) == 1 && digit != '\n')
        number += digit;
    close(ends[0]);
    name = ':';
    if (digit == '\n') name += number;
}

X11TestServer::~X11TestServer() {
    if (process < 0) return;
    send(SIGKILL);
    waitpid(process, nullptr, 0);
    // A killed server leaves its number marked as taken.
    const std::string lock = "/tmp/.X" + name.substr(1) + "-lock";
    int owner = 0;
    if (std::ifstream(lock) >> owner && owner == process) {
        unlink(lock.c_str());
        unlink(("/tmp/.X11-unix/X" + name.substr(1)).c_str());
    }
}

void X11TestServer::send(int signal) const {
    if (process > 0) kill(process, signal);
}

X11TestWindow::X11TestWindow(const std::string& displayName, const PixelRect& place, Pixel background)
    : connection(xcb_connect(displayName.empty() ? nullptr : displayName.c_str(), nullptr)) {
    if (xcb_connection_has_error(connection)) return;
    screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    window = xcb_generate_id(connection);
    const std::uint32_t values[] = {background, 1};
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, screen->root,
                      static_cast<std::int16_t>(place.x), static_cast<std::int16_t>(place.y),
                      static_cast<std::uint16_t>(place.width), static_cast<std::uint16_t>(place.height), 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
    graphics = xcb_generate_id(connection);
    xcb_create_gc(connection, graphics, window, 0, nullptr);
    xcb_map_window(connection, window);
    sync();
}

X11TestWindow::~X11TestWindow() { xcb_disconnect(connection); }

void X11TestWindow::fill(const PixelRect& rect, Pixel color) {
    xcb_change_gc(connection, graphics, XCB_GC_FOREGROUND, &color);
    const xcb_rectangle_t area{static_cast<std::int16_t>(rect.x), static_cast<std::int16_t>(rect.y),
                               static_cast<std::uint16_t>(rect.width),
                               static_cast<std::uint16_t>(rect.height)};
    xcb_poly_fill_rectangle(connection, window, graphics, 1, &area);
    sync();
}

void X11TestWindow::put(const PixelRect& rect, const std::vector<Pixel>& pixels) {
    xcb_put_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, window, graphics,
                  static_cast<std::uint16_t>(rect.width), static_cast<std::uint16_t>(rect.height),
                  static_cast<std::int16_t>(rect.x), static_cast<std::int16_t>(rect.y), 0, screen->root_depth,
                  static_cast<std::uint32_t>(pixels.size() * sizeof(Pixel)),
                  reinterpret_cast<const std::uint8_t*>(pixels.data()));
    sync();
}

void X11TestWindow::warpPointer(int x, int y) {
    xcb_warp_pointer(connection, XCB_NONE, screen->root, 0, 0, 0, 0, static_cast<std::int16_t>(x),
                     static_cast<std::int16_t>(y));
    sync();
}

void X11TestWindow::setCursorShape(int glyph) {
    const xcb_font_t font = xcb_generate_id(connection);
    xcb_open_font(connection, font, 6, "cursor");
    const xcb_cursor_t cursor = xcb_generate_id(connection);
    xcb_create_glyph_cursor(connection, cursor, font, font, static_cast<std::uint16_t>(glyph),
                            static_cast<std::uint16_t>(glyph + 1), 0xFFFF, 0, 0, 0, 0xFFFF, 0);
    const std::uint32_t value = cursor;
    xcb_change_window_attributes(connection, window, XCB_CW_CURSOR, &value);
    xcb_free_cursor(connection, cursor);
    xcb_close_font(connection, font);
    sync();
}

void X11TestWindow::sync() {
    std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
}

} // namespace clipwren
