#pragma once

#include "platform/Folders.h"

#include <string_view>

namespace clipwren {

// The user's folders as the XDG conventions name them, from the environment and user-dirs.dirs, which is read
// anew at each question.
class XdgFolders : public Folders {
public:
    std::optional<std::filesystem::path> pictures() const override;
    std::filesystem::path home() const override;
    LocalTime now() const override;

    // $XDG_CONFIG_HOME when it is an absolute path, else ~/.config.
    std::filesystem::path configuration() const;
};

// The pictures folder that the text of a user-dirs.dirs file names: an absolute path, or one below $HOME.
// None when it names none or, as the convention has it, the home folder itself. Of several lines the last
// counts.
std::optional<std::filesystem::path> picturesInUserDirs(std::string_view text,
                                                        const std::filesystem::path& home);

} // namespace clipwren
