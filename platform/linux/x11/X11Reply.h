#pragma once

#include <cstdlib>
#include <memory>

namespace clipwren {

struct X11ReplyFree {
    void operator()(void* reply) const { std::free(reply); }
};

// A reply, error or event of the X server: empty when the server refused or the connection is lost.
template <typename T>
using X11Reply = std::unique_ptr<T, X11ReplyFree>;

// Takes over what an xcb_..._reply function has returned.
template <typename T>
X11Reply<T> owned(T* reply) {
    return X11Reply<T>(reply);
}

} // namespace clipwren
