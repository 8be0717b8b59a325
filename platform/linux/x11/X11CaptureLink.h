#pragma once

#include "base/Expected.h"
#include "platform/ScreenCapture.h"
#include "platform/linux/capture/EndSignal.h"
#include "platform/linux/x11/X11Reply.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace clipwren {

// A capture thread's own connection to the X server. Used by that thread alone. Every wait ends when the end
// signal asks to abandon, and a second after it asks to finish at the latest.
class X11CaptureLink {
public:
    using Nanoseconds = std::int64_t;

    // The clock of all times here; it does not jump.
    static Nanoseconds now();

    // `displayName` empty: the one that DISPLAY names. The signal outlives the link.
    static Expected<std::unique_ptr<X11CaptureLink>, PlatformError> open(const std::string& displayName,
                                                                         EndSignal& end);
    ~X11CaptureLink();
    X11CaptureLink(const X11CaptureLink&) = delete;
    X11CaptureLink& operator=(const X11CaptureLink&) = delete;

    xcb_connection_t* raw() const { return connection; }
    const xcb_screen_t& screen() const { return *defaultScreen; }
    xcb_window_t root() const { return defaultScreen->root; }

    // Whether the server has the extension, which is then known on this connection.
    bool has(xcb_extension_t& extension) const;

    // Whether the pixels of the root window are words of this machine with eight bits each of red, green and
    // blue.
    bool hasKnownPixels() const;

    // The reply to the request of this number. Empty when the server refused it, when the connection is lost
    // and when the wait was ended.
    template <typename Reply>
    X11Reply<Reply> await(unsigned int sequence) {
        return X11Reply<Reply>(static_cast<Reply*>(awaitReply(sequence)));
    }
    // Whether the server carried out a checked request without a reply.
    bool succeeded(xcb_void_cookie_t checked);

    // Sends what is queued; then the next event that has arrived, empty when there is none. What arrives
    // between two sleeps may be left for after the second.
    X11Reply<xcb_generic_event_t> nextEvent();

    // Sleeps until something arrives, an end is asked for, or the time has come; without a time for as long
    // as it takes. To be called when nextEvent has just come back empty.
    void sleep(std::optional<Nanoseconds> until);
    // Sleeps until an end is asked for or the time has come, whatever arrives.
    void sleepDeaf(Nanoseconds until);

    bool isLost() const { return xcb_connection_has_error(connection) != 0; }
    EndSignal::Request endRequested() const { return end.requested(); }

private:
    X11CaptureLink(xcb_connection_t* connection, const xcb_screen_t* screen, EndSignal& end);
    void* awaitReply(unsigned int sequence);
    void poll(std::optional<Nanoseconds> until, bool isDeaf = false);

    xcb_connection_t* connection;
    const xcb_screen_t* defaultScreen;
    EndSignal& end;
    bool mayHaveArrived = true;              // something that was not read yet
    std::optional<Nanoseconds> patienceEnds; // once an end was asked for
};

} // namespace clipwren
