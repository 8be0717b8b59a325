#include "platform/linux/PosixFiles.h"

#include "platform/linux/Descriptor.h"

#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace clipwren {

namespace {

constexpr mode_t asTheUserHasIt = 0666; // less what the process's mask takes

int openNew(const std::filesystem::path& file) {
    return open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, asTheUserHasIt);
}

class PosixNewFile : public NewFile {
public:
    explicit PosixNewFile(const std::filesystem::path& file) : path(file), descriptor(openNew(file)) {}

    // Whether the file is there and ours. Until it was locked, somebody may have taken it for abandoned.
    bool isHeld() const {
        if (!descriptor) return false;
        if (flock(descriptor.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) return false;
        struct stat status{};
        return fstat(descriptor.get(), &status) == 0 && status.st_nlink > 0;
    }

    bool write(std::span<const std::uint8_t> bytes) override {
        return descriptor.writeAll(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    }

    bool sync() override { return fsync(descriptor.get()) == 0; }

    bool rename(const std::filesystem::path& name) override {
        if (::rename(path.c_str(), name.c_str()) != 0) return false;
        path = name;
        // The new name survives a power failure only when the folder is written too. Not every file system
        // can do that, and the file is whole under either name.
        const Descriptor folder(open(path.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (folder) fsync(folder.get());
        return true;
    }

    void remove() override { unlink(path.c_str()); }

private:
    std::filesystem::path path;
    const Descriptor descriptor;
};

} // namespace

std::unique_ptr<NewFile> PosixFiles::create(const std::filesystem::path& file) {
    auto made = std::make_unique<PosixNewFile>(file);
    if (!made->isHeld()) return nullptr;
    return made;
}

bool PosixFiles::removeAbandoned(const std::filesystem::path& file) {
    // Not blocking: what is no file, a pipe for example, is not waited for.
    const Descriptor descriptor(open(file.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status{};
    if (!descriptor || fstat(descriptor.get(), &status) != 0 || !S_ISREG(status.st_mode)) return false;
    if (flock(descriptor.get(), LOCK_EX | LOCK_NB) != 0) return false;
    // While this waited for nothing, the writer may have given the file its final name and another one made.
    struct stat named{};
    if (lstat(file.c_str(), &named) != 0 || named.st_ino != status.st_ino || named.st_dev != status.st_dev)
        return false;
    return unlink(file.c_str()) == 0;
}

} // namespace clipwren
