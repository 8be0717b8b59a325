#pragma once

#include <xcb/xcb.h>

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace clipwren {

// The X11 selection CLIPBOARD offering one file, in the three forms that file managers, chats and browsers
// read, and in no other. On a connection of its own, one thread; needs no toolkit: whoever owns the object
// waits for the file descriptor and calls `answer`.
//
// Every call that waits for the server waits a second at most for an event; a lost connection makes it fail.
class X11FileSelection {
public:
    // None when no display can be reached.
    static std::unique_ptr<X11FileSelection> connect();
    ~X11FileSelection();
    X11FileSelection(const X11FileSelection&) = delete;
    X11FileSelection& operator=(const X11FileSelection&) = delete;

    int fileDescriptor() const { return xcb_get_file_descriptor(connection); }
    bool isLost() const { return xcb_connection_has_error(connection) != 0; }

    // Takes the selection, as of now or as of an earlier moment of the server's clock; it is not taken from
    // somebody who has taken it since. False when it is not ours afterwards.
    bool offer(const std::string& uri, std::optional<xcb_timestamp_t> asOf = std::nullopt);

    // Nobody owns the selection afterwards.
    void clear();

    // What is offered, while it is: until another program takes the selection.
    bool isOwner() const { return owning; }
    const std::string& uri() const { return offeredUri; }
    xcb_timestamp_t since() const { return ownedSince; }

    // Answers what other programs have asked for so far; does not wait.
    void answer();

private:
    enum Atom : std::size_t {
        clipboard,
        targets,
        timestamp,
        multiple,
        ownProperty,
        uriList,
        gnomeCopiedFiles,
        kdeCutSelection,
        atomCount
    };

    explicit X11FileSelection(xcb_connection_t* connection);
    bool prepare();
    void handle(const xcb_generic_event_t& event);
    bool waitFor(const std::function<bool(const xcb_generic_event_t&)>& condition);
    std::optional<xcb_timestamp_t> serverTime();
    bool convert(xcb_window_t requestor, xcb_atom_t target, xcb_atom_t property);
    bool convertMultiple(xcb_window_t requestor, xcb_atom_t property);
    void reply(const xcb_selection_request_event_t& request);

    xcb_connection_t* connection;
    xcb_window_t window = XCB_WINDOW_NONE;
    std::array<xcb_atom_t, atomCount> atoms{};
    bool owning = false;
    xcb_timestamp_t ownedSince = XCB_CURRENT_TIME;
    std::string offeredUri;
};

} // namespace clipwren
