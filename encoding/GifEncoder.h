#pragma once

#include "base/Expected.h"
#include "capture/RecordedFrame.h"
#include "encoding/GifEncoderError.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <span>

namespace clipwren {

class Canvases;
class Files;
class Folders;

// Turns the frames of a finished recording into a GIF file in the user's pictures folder. Any thread.
class GifEncoder {
public:
    GifEncoder() = delete;

    // The folder "Clipwren" in the user's pictures folder, made if need be. Never fails: the path is returned
    // whether or not the folder could be made.
    static std::filesystem::path outputDirectory(const Folders& folders);

    // Writes a looping GIF of all frames, in their order and each with the badge, named by the local time of
    // this call, and returns its path. A file of that name is replaced, in one step and only at the end.
    // After a failure to write it a partial file has that name. `progress`, where it is given, is told the
    // share of frames that are written, on this thread.
    static Expected<std::filesystem::path, GifEncoderError>
    encode(std::span<const RecordedFrame> frames, const Folders& folders, Files& files, Canvases& canvases,
           const std::function<void(double)>& progress = {});

    // Removes what a Clipwren has left in the folder that was ended in the midst of `encode`, but nothing of
    // a living one. Makes no folder.
    static void removeAbandonedRecordings(const Folders& folders, Files& files);
};

} // namespace clipwren
