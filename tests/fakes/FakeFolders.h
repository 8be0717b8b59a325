#pragma once

#include "platform/Folders.h"

namespace clipwren {

// Folders and a clock that stand where the test puts them.
class FakeFolders : public Folders {
public:
    std::optional<std::filesystem::path> picturesFolder;
    std::filesystem::path homeFolder;
    LocalTime time{2024, 3, 9, 14, 5, 31};

    std::optional<std::filesystem::path> pictures() const override { return picturesFolder; }
    std::filesystem::path home() const override { return homeFolder; }
    LocalTime now() const override { return time; }
};

} // namespace clipwren
