// Preloaded into the real program: what goes wrong with its files and its clock, as the test says while it
// runs.
//
// The file that HARD_TIMES names holds one line a wish, read anew each time:
//   fail OPERATION N ERRNO   the Nth such operation on the file of a recording fails. OPERATION: open, write,
//                            sync, rename. A write that fails has written half of its bytes.
//   hold OPERATION N         it waits until the wish is gone; meanwhile HARD_TIMES.held exists
//   clock SECONDS            the clock of the day is off by so much
//   stand SECONDS            it stands still, so long after 1970
// HARD_TIMES.trace tells what has been done, one "OPERATION N" a line.

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <string_view>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

constexpr std::string_view recording = "/.clipwren-recording-";
enum Operation { opening, writing, syncing, renaming, operations };
constexpr std::array<const char*, operations> names{"open", "write", "sync", "rename"};
std::array<std::atomic<int>, operations> counts;

// The function that would have been called without this library.
template <typename Function>
Function original(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

int reallyOpen(const char* path, int flags, mode_t mode = 0644) {
    static const auto function = original<int (*)(const char*, int, ...)>("open");
    return function(path, flags, mode);
}
ssize_t reallyWrite(int file, const void* bytes, std::size_t size) {
    static const auto function = original<ssize_t (*)(int, const void*, std::size_t)>("write");
    return function(file, bytes, size);
}

std::string control(const char* suffix = "") {
    const char* path = std::getenv("HARD_TIMES");
    return path ? std::string(path) + suffix : std::string();
}

std::string wishes() {
    std::array<char, 1000> text;
    const int file = reallyOpen(control().c_str(), O_RDONLY | O_CLOEXEC);
    const auto size = file < 0 ? 0 : read(file, text.data(), text.size());
    if (file >= 0) close(file);
    return {text.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
}

// What follows the words in a line of the wishes.
bool wishFor(const std::string& words, long& value) {
    const std::string text = wishes();
    for (std::size_t line = 0; line < text.size(); line = text.find('\n', line) + 1) {
        if (text.compare(line, words.size(), words) == 0) {
            value = std::atol(text.c_str() + line + words.size());
            return true;
        }
        if (text.find('\n', line) == std::string::npos) break;
    }
    return false;
}

void append(const std::string& path, const std::string& text) {
    const int file = reallyOpen(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC);
    if (file < 0) return;
    [[maybe_unused]] const auto written = reallyWrite(file, text.data(), text.size());
    close(file);
}

// Whether the operation, which is about to happen, has to fail; errno says how.
bool fails(Operation operation) {
    const int errorBefore = errno;
    const std::string which = std::string(names[operation]) + " " + std::to_string(++counts[operation]);
    append(control(".trace"), which + "\n");
    long value = 0;
    if (wishFor("hold " + which + "\n", value)) {
        append(control(".held"), "");
        // A minute at most, should the test have gone.
        for (int i = 0; i < 6000 && wishFor("hold " + which + "\n", value); ++i)
            usleep(10'000);
        unlink(control(".held").c_str());
    }
    const bool failing = wishFor("fail " + which + " ", value);
    errno = failing ? static_cast<int>(value) : errorBefore;
    return failing;
}

bool isRecording(const char* path) { return path && std::strstr(path, recording.data()); }

bool isRecording(int file) {
    std::array<char, 4096> path{};
    const std::string link = "/proc/self/fd/" + std::to_string(file);
    const int errorBefore = errno;
    const auto size = readlink(link.c_str(), path.data(), path.size() - 1);
    errno = errorBefore;
    return size > 0 && isRecording(path.data());
}

void bend(timespec& time) {
    long value = 0;
    if (wishFor("clock ", value)) time.tv_sec += value;
    if (wishFor("stand ", value)) time = {value, 0};
}

} // namespace

extern "C" {

int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = flags & (O_CREAT | O_TMPFILE) ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    if ((flags & O_CREAT) && isRecording(path)) {
        for (auto& count : counts)
            count = 0;
        if (fails(opening)) return -1;
    }
    return reallyOpen(path, flags, mode);
}

ssize_t write(int file, const void* bytes, std::size_t size) {
    if (!isRecording(file)) return reallyWrite(file, bytes, size);
    if (!fails(writing)) return reallyWrite(file, bytes, size);
    const int error = errno;
    reallyWrite(file, bytes, size / 2);
    errno = error;
    return -1;
}

int fsync(int file) {
    static const auto function = original<int (*)(int)>("fsync");
    return isRecording(file) && fails(syncing) ? -1 : function(file);
}

int rename(const char* from, const char* to) noexcept {
    static const auto function = original<int (*)(const char*, const char*)>("rename");
    return isRecording(from) && fails(renaming) ? -1 : function(from, to);
}

int clock_gettime(clockid_t clock, timespec* time) noexcept {
    static const auto function = original<int (*)(clockid_t, timespec*)>("clock_gettime");
    const int result = function(clock, time);
    if (result == 0 && (clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE)) bend(*time);
    return result;
}

int gettimeofday(timeval* time, void*) noexcept {
    timespec now{};
    const int result = clock_gettime(CLOCK_REALTIME, &now);
    *time = {now.tv_sec, now.tv_nsec / 1000};
    return result;
}

time_t time(time_t* result) noexcept {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    if (result) *result = now.tv_sec;
    return now.tv_sec;
}
}
