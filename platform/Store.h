#pragma once

#include <cstdint>
#include <string_view>

namespace clipwren {

// The user's stored settings: integers by key. Main thread only. Nothing is cached: every read sees what is
// stored at that moment, also by others. A store that cannot be read is an empty one.
class Store {
public:
    virtual ~Store() = default;

    // Tells an absent key from a present one.
    virtual bool contains(std::string_view key) const = 0;
    // 0 for an absent key and for a present value that is not a number.
    virtual std::int64_t integer(std::string_view key) const = 0;
    // Written through at once; other keys stay as they are. False when it could not be stored; the old values
    // are then still there.
    virtual bool setInteger(std::string_view key, std::int64_t value) = 0;
    // Removes everything that this program has stored. False when it could not be removed.
    virtual bool removeAll() = 0;
};

} // namespace clipwren
