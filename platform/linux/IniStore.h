#pragma once

#include "platform/Store.h"

#include <filesystem>
#include <optional>
#include <string>

namespace clipwren {

// Settings in an ini file: the key "recording.fps" is the line "fps=…" of the group [recording].
//
// The file is parsed here rather than by QSettings, which sorts and rewrites the whole file, drops comments
// and changes the escapes of values that it does not know; here all that is not a setting of ours stays as it
// is.
//
// A file that is no text, or too long to be settings, is an empty store; the first write puts it aside under
// its name with ".bad" behind. Every write replaces the file in one step.
class IniStore : public Store {
public:
    explicit IniStore(std::filesystem::path file);

    bool contains(std::string_view key) const override;
    std::int64_t integer(std::string_view key) const override;
    bool setInteger(std::string_view key, std::int64_t value) override;
    bool removeAll() override;

private:
    std::optional<std::string> readText() const;
    std::optional<std::string> valueOf(std::string_view key) const;

    const std::filesystem::path file;
};

} // namespace clipwren
