#pragma once

#include <set>

namespace clipwren {

class X11Connection;

// The whole keyboard of the server, which one client can have at a time: keys then reach this program,
// whatever window has the focus. Windows that are about to be shown hold it so that no key slips past them,
// and a key monitor goes on with it. Main thread only.
class X11KeyboardGrab {
public:
    // The connection outlives this object.
    explicit X11KeyboardGrab(X11Connection& connection) : connection(connection) {}

    // From here on keys reach nobody else, unless another program has the keyboard: that is not waited for.
    // `window` only tells the holders apart.
    void hold(const void* window);
    // The last window to let go gives the keyboard back, unless it is monitored.
    void letGo(const void* window);

    // Tries for a fifth of a second while another program has the keyboard (a menu that is just closing);
    // false when it still has it then. One monitor at a time.
    bool beginMonitoring();
    // Gives the keyboard back, whoever holds it.
    void endMonitoring();

private:
    bool take();
    void giveBack();

    X11Connection& connection;
    std::set<const void*> holders;
    bool isTaken = false;
    bool isMonitored = false;
};

} // namespace clipwren
