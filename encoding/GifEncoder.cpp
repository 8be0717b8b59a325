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

Expected<std::filesystem::path, GifEncoderError> GifEncoder::encode(std::span<const RecordedFrame> frames,
                                                                    const Folders& folders, Files& files,
                                                                    Canvases& canvases) {
    if (frames.empty()) return Unexpected{GifEncoderError::noFrames};
    const std::string name = recordingFileName(folders.now());
    const std::filesystem::path path = outputDirectory(folders) / name;

    const std::unique_ptr<RecordingFile> file = RecordingFile::create(files, path);
    if (!file) return Unexpected{GifEncoderError::destinationFailure};
    const bool written = writeAnimation(recordedAnimation(frames, &canvases), *file, encodingThreads());
    const bool finished = file->finish();
    if (!written || !finished) return Unexpected{GifEncoderError::finalizeFailure};
    return path;
}

} // namespace clipwren
