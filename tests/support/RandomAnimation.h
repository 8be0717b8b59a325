#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace clipwren {

// Writes an animation that the bytes describe - its size from 1 x 1 up to 4,096 wide, pictures of few or many
// colours, changes of every shape, times that are equal, backwards, invalid or huge - and decodes it again
// with giflib. Returns what is wrong with it: the empty text when the file is sound, has the delays that the
// times prescribe and shows exactly the pictures of few colours, and near ones of many.
std::string checkRandomAnimation(std::span<const std::uint8_t> bytes);

} // namespace clipwren
