#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace clipwren {

// An environment variable that has another value, or none, until the end.
class Environment {
public:
    Environment(const char* name, const std::optional<std::string>& value) : name(name) {
        if (const char* old = std::getenv(name)) before = old;
        put(value);
    }
    ~Environment() { put(before); }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

private:
    void put(const std::optional<std::string>& value) const {
        if (value)
            setenv(name, value->c_str(), 1);
        else
            unsetenv(name);
    }

    const char* name;
    std::optional<std::string> before;
};

} // namespace clipwren
