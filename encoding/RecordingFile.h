#pragma once

#include "encoding/ByteSink.h"

#include <filesystem>
#include <memory>
#include <vector>

namespace clipwren {

class Files;
class NewFile;

// The file of a recording while it is written, through a buffer: under a hidden name in its folder, and under
// its own once it is whole and safe on the disk. So a process that is killed, or a power failure, leaves no
// half of a recording behind that looks like one.
class RecordingFile : public ByteSink {
public:
    // Nothing when no file can be made in the folder, or when `path` is a folder itself.
    static std::unique_ptr<RecordingFile> create(Files& files, const std::filesystem::path& path);
    // What was neither finished nor given up is taken away.
    ~RecordingFile() override;

    void write(std::span<const std::uint8_t> bytes) override;
    bool good() const override { return intact; }

    // The file is complete: gives it its name, replacing a file that has it. True when all of that succeeded.
    // Otherwise what is there of the file has the name. To be called once, last.
    bool finish();

private:
    RecordingFile(std::unique_ptr<NewFile> file, std::filesystem::path path);

    void writeOut();

    std::unique_ptr<NewFile> file; // none once it has its name
    const std::filesystem::path path;
    std::vector<std::uint8_t> buffer;
    bool intact = true;
};

// Removes the hidden files that a Clipwren has left behind which was ended while it wrote them: those that a
// RecordingFile has made and no living process is writing.
void removeAbandonedRecordings(Files& files, const std::filesystem::path& folder);

} // namespace clipwren
