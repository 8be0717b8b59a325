#include "platform/linux/x11/X11ClipboardKeeper.h"

#include "platform/linux/x11/X11FileSelection.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <unistd.h>

namespace clipwren {

namespace {

constexpr const char* option = "--keep-clipboard";
constexpr const char* nowhere = "/dev/null";

// The report to the program that started the keeper is one byte on standard output; the end of the file
// without it means that the keeper has ended.
void reportOwnership() {
    [[maybe_unused]] const auto written = write(STDOUT_FILENO, "1", 1);
    dup2(STDIN_FILENO, STDOUT_FILENO); // which leads nowhere
}

bool spawnKeeper(const X11FileSelection& selection, int reportEnd) {
    std::array<char, 16> digits{};
    std::to_chars(digits.data(), digits.data() + digits.size() - 1, selection.since());
    std::string name = "clipwren", flag = option, uri = selection.uri();
    std::array<char*, 5> arguments{name.data(), flag.data(), digits.data(), uri.data(), nullptr};

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, reportEnd, STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, nowhere, O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, nowhere, O_WRONLY, 0);

    // A session of its own: the end of the terminal or of the program's process group is not the keeper's.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t signals;
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&attributes, &signals);
    sigfillset(&signals);
    posix_spawnattr_setsigdefault(&attributes, &signals);
    posix_spawnattr_setflags(&attributes,
                             POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);

    // The running program itself, even when its file has been replaced or removed meanwhile.
    pid_t child = 0;
    const int error = posix_spawn(&child, "/proc/self/exe", &actions, &attributes, arguments.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return error == 0;
}

bool waitForReport(X11FileSelection& selection, int report) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(1);
    for (;;) {
        selection.answer();
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now()).count();
        if (left <= 0) return false;
        std::array<pollfd, 2> readable{pollfd{report, POLLIN, 0},
                                       pollfd{selection.fileDescriptor(), POLLIN, 0}};
        const nfds_t count = selection.isLost() ? 1 : 2;
        if (poll(readable.data(), count, static_cast<int>(left)) < 0 && errno != EINTR) return false;
        if (readable[0].revents == 0) continue;
        char byte = 0;
        return read(report, &byte, 1) == 1;
    }
}

} // namespace

std::optional<int> runClipboardKeeper(int argc, char** argv) {
    if (argc != 4 || argv[1] != std::string_view(option)) return std::nullopt;
    // Nothing of the program that started it stays open or in use.
    close_range(STDERR_FILENO + 1, ~0U, 0);
    [[maybe_unused]] const int atRoot = chdir("/");

    const std::string_view since = argv[2];
    xcb_timestamp_t time = 0;
    std::from_chars(since.data(), since.data() + since.size(), time);
    const auto selection = X11FileSelection::connect();
    if (!selection || !selection->offer(argv[3], time)) return EXIT_FAILURE;
    reportOwnership();

    while (selection->isOwner()) {
        pollfd readable{selection->fileDescriptor(), POLLIN, 0};
        if (poll(&readable, 1, -1) < 0 && errno != EINTR) return EXIT_FAILURE;
        selection->answer();
    }
    return EXIT_SUCCESS;
}

bool startClipboardKeeper(X11FileSelection& selection) {
    std::array<int, 2> report{};
    if (pipe2(report.data(), O_CLOEXEC) != 0) return false;
    const bool isStarted = spawnKeeper(selection, report[1]);
    close(report[1]);
    const bool isKept = isStarted && waitForReport(selection, report[0]);
    close(report[0]);
    return isKept;
}

} // namespace clipwren
