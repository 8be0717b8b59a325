#include "platform/linux/Files.h"

#include "platform/linux/Descriptor.h"

#include <cerrno>
#include <cstdlib>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace clipwren {

namespace {

// Where a chain of symbolic links ends, whether or not something is there. Empty for an endless chain.
std::filesystem::path endOfLinks(std::filesystem::path file) {
    for (int links = 0; links < 40; ++links) {
        std::error_code error;
        const auto target = std::filesystem::read_symlink(file, error);
        if (error) return file;
        file = file.parent_path() / target;
    }
    return {};
}

bool makeFolder(const std::filesystem::path& folder) {
    std::error_code error;
    std::filesystem::create_directories(folder.parent_path(), error);
    return mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST;
}

} // namespace

std::optional<std::string> readSmallFile(const std::filesystem::path& file, std::size_t limit) {
    const Descriptor descriptor(open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status{};
    if (!descriptor || fstat(descriptor.get(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
    std::string bytes;
    for (;;) {
        char part[4096];
        const auto count = read(descriptor.get(), part, sizeof part);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return std::nullopt;
        if (count == 0) return bytes;
        bytes.append(part, static_cast<std::size_t>(count));
        if (bytes.size() > limit) return std::nullopt;
    }
}

bool replaceFile(const std::filesystem::path& file, std::string_view bytes,
                 const std::filesystem::path& setAside) {
    const auto target = endOfLinks(file);
    const auto folder = target.parent_path();
    if (target.empty() || !makeFolder(folder)) return false;

    mode_t mode = S_IRUSR | S_IWUSR;
    struct stat status{};
    if (stat(target.c_str(), &status) == 0) {
        // Renaming would replace a file that its owner has made read-only.
        if (!S_ISREG(status.st_mode) || access(target.c_str(), W_OK) != 0) return false;
        mode = status.st_mode & 07777;
    }

    std::string temporary = target.string() + ".XXXXXX";
    const Descriptor descriptor(mkostemp(temporary.data(), O_CLOEXEC));
    if (!descriptor) return false;
    const bool isReplaced = descriptor.writeAll(bytes.data(), bytes.size()) &&
                            fchmod(descriptor.get(), mode) == 0 && fsync(descriptor.get()) == 0 &&
                            (setAside.empty() || rename(target.c_str(), setAside.c_str()) == 0) &&
                            rename(temporary.c_str(), target.c_str()) == 0;
    if (!isReplaced) {
        unlink(temporary.c_str());
        return false;
    }
    // The new name survives a crash only when the folder is written too.
    if (const Descriptor opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)); opened)
        fsync(opened.get());
    return true;
}

} // namespace clipwren
