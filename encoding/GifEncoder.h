#pragma once

#include "base/Expected.h"
#include "capture/RecordedFrame.h"
#include "encoding/GifEncoderError.h"

#include <filesystem>
#include <optional>
#include <span>

namespace clipwren {

class Canvases;
class Folders;

// Turns the frames of a finished recording into a GIF file in the user's pictures folder. Any thread.
class GifEncoder {
public:
    GifEncoder() = delete;

    // The folder "Clipwren" in the user's pictures folder, made if need be. Never fails: the path is returned
    // whether or not the folder could be made.
    static std::filesystem::path outputDirectory(const Folders& folders);

    // Writes a looping GIF of all frames, in their order and each with the badge, named by the local time of
    // this call, and returns its path. A file of that name is replaced; after a failure a partial file may
    // stay.
    static Expected<std::filesystem::path, GifEncoderError>
    encode(std::span<const RecordedFrame> frames, const Folders& folders, Canvases& canvases);
};

} // namespace clipwren
