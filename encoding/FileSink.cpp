#include "encoding/FileSink.h"

namespace clipwren {

namespace {

constexpr std::size_t bufferSize = 256 * 1024;

} // namespace

std::unique_ptr<FileSink> FileSink::create(const std::filesystem::path& path) {
    std::unique_ptr<FileSink> sink(new FileSink);
    sink->buffer.resize(bufferSize);
    // Only before the file is opened does every implementation take the buffer.
    sink->file.pubsetbuf(sink->buffer.data(), static_cast<std::streamsize>(bufferSize));
    if (!sink->file.open(path, std::ios::out | std::ios::binary | std::ios::trunc)) return nullptr;
    return sink;
}

void FileSink::write(std::span<const std::uint8_t> bytes) {
    if (!intact) return;
    const auto size = static_cast<std::streamsize>(bytes.size());
    intact = file.sputn(reinterpret_cast<const char*>(bytes.data()), size) == size;
}

bool FileSink::close() {
    const bool flushed = file.pubsync() == 0;
    const bool closed = file.close() != nullptr;
    intact = intact && flushed && closed;
    return intact;
}

} // namespace clipwren
