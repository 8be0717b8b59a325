#include "encoding/GifEncoder.h"

#include "encoding/AnimationWriter.h"
#include "encoding/OutputFolder.h"
#include "encoding/RecordedAnimation.h"
#include "encoding/RecordingFile.h"

#include <memory>
#include <string>

namespace clipwren {

std::filesystem::path GifEncoder::outputDirectory(const Folders& folders) { return outputFolder(folders); }

void GifEncoder::removeAbandonedRecordings(const Folders& folders, Files& files) {
    clipwren::removeAbandonedRecordings(files, outputFolderPath(folders));
}

Expected<std::filesystem::path, GifEncoderError>
GifEncoder::encode(std::span<const RecordedFrame> frames, const Folders& folders, Files& files,
                   Canvases& canvases, const std::function<void(double)>& progress) {
    if (frames.empty()) return Unexpected{GifEncoderError::noFrames};
    const std::string name = recordingFileName(folders.now());
    const std::filesystem::path path = outputDirectory(folders) / name;

    const std::unique_ptr<RecordingFile> file = RecordingFile::create(files, path);
    if (!file) return Unexpected{GifEncoderError::destinationFailure};
    Animation animation = recordedAnimation(frames, &canvases);
    if (progress)
        animation.written = [&](std::size_t count) {
            progress(static_cast<double>(count) / static_cast<double>(frames.size()));
        };
    const bool written = writeAnimation(animation, *file, encodingThreads());
    const bool finished = file->finish();
    if (!written || !finished) return Unexpected{GifEncoderError::finalizeFailure};
    return path;
}

} // namespace clipwren
