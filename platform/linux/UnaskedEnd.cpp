#include "platform/linux/UnaskedEnd.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace clipwren {

namespace {

constexpr std::array endingSignals{SIGTERM, SIGINT, SIGHUP};

// What the signal handler and the exit handler can reach.
std::array<int, 2> signalPipe{-1, -1};
UnaskedEnd* current = nullptr;

void tellOfSignal(int) {
    const char byte = 0;
    // A full pipe already tells of one. Nothing else may be done inside a signal handler.
    [[maybe_unused]] const auto written = write(signalPipe[1], &byte, 1);
}

void handleSignals(void (*handler)(int)) {
    struct sigaction action{};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    for (const int signal : endingSignals)
        sigaction(signal, &action, nullptr);
}

} // namespace

UnaskedEnd::UnaskedEnd(std::function<void()> save, std::function<void()> finish)
    : save(std::move(save)),
      finish(std::move(finish)) {
    current = this;
    // A reader of standard error that has gone is no reason to end.
    std::signal(SIGPIPE, SIG_IGN);
    if (pipe2(signalPipe.data(), O_CLOEXEC | O_NONBLOCK) != 0) return;
    signalNotifier = std::make_unique<QSocketNotifier>(signalPipe[0], QSocketNotifier::Read);
    QObject::connect(signalNotifier.get(), &QSocketNotifier::activated, [this] { signalArrived(); });
    handleSignals(tellOfSignal);
}

UnaskedEnd::~UnaskedEnd() {
    current = nullptr;
    if (!signalNotifier) return;
    handleSignals(SIG_DFL);
    signalNotifier.reset();
    for (int& end : signalPipe)
        close(std::exchange(end, -1));
}

void UnaskedEnd::watchExit() { std::atexit(atExit); }

void UnaskedEnd::saveOnce() {
    if (const auto saving = std::exchange(save, nullptr)) saving();
}

void UnaskedEnd::signalArrived() {
    saveOnce();
    QCoreApplication::exit(EXIT_SUCCESS); // quit() would ask every window, and one may refuse.
}

void UnaskedEnd::displayIsLost() {
    std::exit(EXIT_FAILURE); // The exit handler saves: here as where Qt is the first to notice.
}

void UnaskedEnd::atExit() {
    if (!current) return;
    current->saveOnce();
    current->finish();
    // The stack of the event loop is still there and nobody returns to it; static objects of the toolkit
    // would be torn down under its feet.
    std::_Exit(EXIT_FAILURE);
}

} // namespace clipwren
