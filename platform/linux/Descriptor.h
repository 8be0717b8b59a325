#pragma once

#include <cerrno>
#include <cstddef>

#include <unistd.h>

namespace clipwren {

// An open file, which is closed at the end.
class Descriptor {
public:
    explicit Descriptor(int number) : number(number) {}
    ~Descriptor() {
        if (number >= 0) close(number);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return number; }
    explicit operator bool() const { return number >= 0; }

    // False when not all bytes could be written.
    bool writeAll(const char* bytes, std::size_t size) const {
        while (size > 0) {
            const auto count = write(number, bytes, size);
            if (count < 0 && errno == EINTR) continue;
            if (count <= 0) return false;
            bytes += count;
            size -= static_cast<std::size_t>(count);
        }
        return true;
    }

private:
    int number;
};

} // namespace clipwren
