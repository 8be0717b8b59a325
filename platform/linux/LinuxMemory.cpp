#include "platform/linux/LinuxMemory.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <malloc.h>
#include <sstream>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace clipwren {

namespace {

using Bytes = std::optional<std::int64_t>;
using Path = std::filesystem::path;

constexpr std::int64_t megabyte = std::int64_t{1} << 20;

Bytes least(Bytes one, Bytes other) {
    if (one && other) return std::min(*one, *other);
    return one ? one : other;
}

Bytes number(std::string_view text) {
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc{} && end != text.data() ? Bytes(value) : std::nullopt; // "max" is none
}

Bytes numberIn(const Path& file) {
    std::string word;
    std::ifstream(file) >> word;
    return number(word);
}

// The number behind a name that begins a line.
Bytes numberOf(std::string_view name, const Path& file) {
    std::ifstream lines(file);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string first, second;
        if (words >> first >> second && first == name) return number(second);
    }
    return std::nullopt;
}

// What one group leaves. File contents that nobody has used lately count as used, but can be dropped.
Bytes leftInGroup(const Path& folder, const char* limitName, const char* usedName) {
    const Bytes limit = numberIn(folder / limitName), used = numberIn(folder / usedName);
    if (!limit || !used) return std::nullopt;
    return *limit - *used + numberOf("inactive_file", folder / "memory.stat").value_or(0);
}

// The least that the group and those around it leave. Inside a container the path may begin further up than
// what can be seen; then the folder that can be seen is the group's.
Bytes leftInGroups(const Path& mount, Path group, const char* limitName, const char* usedName) {
    Bytes left;
    for (group = group.relative_path();; group = group.parent_path()) {
        left = least(left, leftInGroup(mount / group, limitName, usedName));
        if (group.empty()) return left;
    }
}

// Lines of number, colon, controllers, colon, path; the second version has no controllers.
Bytes leftInControlGroups(const Path& root) {
    Bytes left;
    std::ifstream lines(root / "proc/self/cgroup");
    for (std::string line; std::getline(lines, line);) {
        const std::size_t first = line.find(':'), second = line.find(':', first + 1);
        if (second == std::string::npos) continue;
        std::string controllers = line.substr(first, second - first);
        controllers += ':';
        std::ranges::replace(controllers, ',', ':');
        const Path group = line.substr(second + 1);
        const Path mounts = root / "sys/fs/cgroup";
        if (controllers == "::") {
            // Beyond "high" the group is slowed down, which is no better.
            left = least(left, leftInGroups(mounts, group, "memory.max", "memory.current"));
            left = least(left, leftInGroups(mounts, group, "memory.high", "memory.current"));
        } else if (controllers.find(":memory:") != std::string::npos) {
            left = least(left, leftInGroups(mounts / "memory", group, "memory.limit_in_bytes",
                                            "memory.usage_in_bytes"));
        }
    }
    return left;
}

Bytes limitOf(decltype(RLIMIT_AS) kind) {
    rlimit limit{};
    if (getrlimit(kind, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return std::nullopt;
    return static_cast<std::int64_t>(std::min<rlim_t>(limit.rlim_cur, INT64_MAX));
}

// Each thread takes eight megabytes of addresses for its stack.
std::int64_t addressesOfThreads() {
    return 8 * megabyte * (2 + std::int64_t{std::thread::hardware_concurrency()});
}

Bytes leftInProcess(const Path& root) {
    const Bytes addresses = limitOf(RLIMIT_AS), data = limitOf(RLIMIT_DATA);
    if (!addresses && !data) return std::nullopt;
    // All in pages: size, resident, shared, code, libraries, data and stack.
    std::int64_t sizes[6] = {};
    std::ifstream file(root / "proc/self/statm");
    for (std::int64_t& size : sizes)
        if (!(file >> size)) return std::nullopt;
    const std::int64_t page = sysconf(_SC_PAGESIZE);
    Bytes left;
    if (addresses) left = *addresses - sizes[0] * page - addressesOfThreads();
    if (data) left = least(left, *data - sizes[5] * page - addressesOfThreads());
    return left;
}

} // namespace

LinuxMemory::LinuxMemory(Path root) : root(std::move(root)) {
    // The allocator reserves 64 megabytes of addresses for each thread otherwise, which eats up what such a
    // limit leaves.
    if (limitOf(RLIMIT_AS) || limitOf(RLIMIT_DATA)) mallopt(M_ARENA_MAX, 1);
}

std::optional<std::int64_t> LinuxMemory::available() const {
    Bytes machine = numberOf("MemAvailable:", root / "proc/meminfo");
    if (machine) *machine *= 1024;
    return least(least(machine, leftInControlGroups(root)), leftInProcess(root));
}

} // namespace clipwren
