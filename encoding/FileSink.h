#pragma once

#include "encoding/ByteSink.h"

#include <filesystem>
#include <fstream>
#include <memory>
#include <vector>

namespace clipwren {

// Bytes into a file, through a buffer.
class FileSink : public ByteSink {
public:
    // Makes the file, or empties the one that is there. Nothing when it cannot be written.
    static std::unique_ptr<FileSink> create(const std::filesystem::path& path);

    void write(std::span<const std::uint8_t> bytes) override;
    bool good() const override { return intact; }

    // Writes out the buffer and closes the file. False when this or anything before failed: the file is then
    // not complete. To be called once, last.
    bool close();

private:
    FileSink() = default;

    std::vector<char> buffer;
    std::filebuf file;
    bool intact = true;
};

} // namespace clipwren
