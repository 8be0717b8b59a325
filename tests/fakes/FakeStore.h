#pragma once

#include "platform/Store.h"

#include <map>
#include <string>
#include <variant>

namespace clipwren {

// Settings in memory; a text stands for a stored value that is not a number.
class FakeStore : public Store {
public:
    std::map<std::string, std::variant<std::int64_t, std::string>, std::less<>> values;
    bool refusesWrites = false;

    bool contains(std::string_view key) const override { return values.find(key) != values.end(); }
    std::int64_t integer(std::string_view key) const override {
        const auto found = values.find(key);
        if (found == values.end()) return 0;
        const auto* number = std::get_if<std::int64_t>(&found->second);
        return number ? *number : 0;
    }
    bool setInteger(std::string_view key, std::int64_t value) override {
        if (refusesWrites) return false;
        values[std::string(key)] = value;
        return true;
    }
    bool removeAll() override {
        if (refusesWrites) return false;
        values.clear();
        return true;
    }
};

} // namespace clipwren
