#pragma once

#include "platform/Alerts.h"
#include "platform/Application.h"
#include "platform/BackgroundQueue.h"
#include "platform/Log.h"
#include "platform/LoginItem.h"
#include "platform/Memory.h"
#include "platform/Pasteboard.h"
#include "platform/Screens.h"
#include "platform/Session.h"
#include "platform/Workspace.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace clipwren {

// The small fakes: each keeps what it was told, and answers what the test has set.

// The live observers of one kind.
template <typename Observer>
class FakeObservers {
public:
    std::unique_ptr<Observer> add(std::function<void()> handler) {
        auto observer = std::make_unique<Holder>();
        observer->handler = std::make_shared<std::function<void()>>(std::move(handler));
        handlers.push_back(observer->handler);
        return observer;
    }
    void tell() {
        for (const auto& weakHandler : std::vector(handlers))
            if (const auto handler = weakHandler.lock()) (*handler)();
    }

private:
    struct Holder : Observer {
        std::shared_ptr<std::function<void()>> handler;
    };
    std::vector<std::weak_ptr<std::function<void()>>> handlers;
};

class FakeBackgroundQueue : public BackgroundQueue {
public:
    std::deque<std::function<void()>> items;

    void async(std::function<void()> work) override { items.push_back(std::move(work)); }
    // Runs everything that waits, here and now.
    void run() {
        while (!items.empty()) {
            const auto work = std::move(items.front());
            items.pop_front();
            work();
        }
    }
};

class FakeApplication : public Application {
public:
    ActivationPolicy policy = ActivationPolicy::accessory;
    int activations = 0;
    bool isTerminated = false;
    BundleFacts facts{"app.clipwren.Clipwren", "1.2.0", "7", LocalTime{2025, 3, 14, 9, 26, 53}};
    std::int32_t processNumber = 4711;
    std::string launch = "exec '/opt/clipwren'";
    std::vector<std::string> shellCommands;

    // The user comes back from another program.
    void becomeActive() { observers.tell(); }

    void setActivationPolicy(ActivationPolicy newPolicy) override { policy = newPolicy; }
    void activateIgnoringOtherApps() override { ++activations; }
    void terminate() override { isTerminated = true; }
    std::unique_ptr<ActivationObserver> observeDidBecomeActive(std::function<void()> handler) override {
        return observers.add(std::move(handler));
    }
    BundleFacts bundleFacts() const override { return facts; }
    std::int32_t processIdentifier() const override { return processNumber; }
    std::string launchCommand() const override { return launch; }
    void startShellCommand(const std::string& command) override { shellCommands.push_back(command); }

private:
    FakeObservers<ActivationObserver> observers;
};

// Login items of a desktop that can be told to refuse.
class FakeLoginItem : public LoginItem {
public:
    LoginItemStatus current = LoginItemStatus::notRegistered;
    std::optional<PlatformError> refusal;
    int registrations = 0; // calls, refused ones too
    int unregistrations = 0;

    LoginItemStatus status() const override { return current; }
    Expected<void, PlatformError> registerItem() override {
        ++registrations;
        return change(LoginItemStatus::enabled);
    }
    Expected<void, PlatformError> unregisterItem() override {
        ++unregistrations;
        return change(LoginItemStatus::notRegistered);
    }

private:
    Expected<void, PlatformError> change(LoginItemStatus status) {
        if (refusal) return Unexpected{*refusal};
        current = status;
        return {};
    }
};

class FakeScreens : public Screens {
public:
    std::vector<Screen> attached;
    std::optional<Screen> mainScreen;
    std::uint32_t mainDisplay = 1;

    // Somebody plugs and unplugs.
    void change(std::vector<Screen> newScreens) {
        attached = std::move(newScreens);
        observers.tell();
    }

    std::vector<Screen> screens() const override { return attached; }
    std::optional<Screen> main() const override { return mainScreen; }
    std::uint32_t mainDisplayID() const override { return mainDisplay; }
    std::unique_ptr<ScreensObserver> observeDidChange(std::function<void()> handler) override {
        return observers.add(std::move(handler));
    }

private:
    FakeObservers<ScreensObserver> observers;
};

// A session that a test locks and shuts down.
class FakeSession : public Session {
public:
    // For what each delay was asked, in order.
    std::vector<std::string> reasons;

    // A locker is about to start, or the computer to sleep.
    void willLock() { observers.tell(); }
    // The computer is about to be switched off.
    void willShutDown() {
        for (const auto& weakDelay : std::vector(delays))
            if (const auto delay = weakDelay.lock())
                if (const auto handler = std::exchange(delay->handler, nullptr)) handler();
    }
    // How many hold the computer up now.
    int delayCount() const {
        int count = 0;
        for (const auto& delay : delays)
            count += delay.expired() ? 0 : 1;
        return count;
    }

    std::unique_ptr<SessionObserver> observeWillLock(std::function<void()> handler) override {
        return observers.add(std::move(handler));
    }
    std::shared_ptr<ShutdownDelay> delayShutdown(const std::string& reason,
                                                 std::function<void()> willShutDown) override {
        reasons.push_back(reason);
        auto delay = std::make_shared<Delay>();
        delay->handler = std::move(willShutDown);
        std::erase_if(delays, [](const auto& known) { return known.expired(); });
        delays.push_back(delay);
        return delay;
    }

private:
    struct Delay : ShutdownDelay {
        std::function<void()> handler;
    };
    FakeObservers<SessionObserver> observers;
    std::vector<std::weak_ptr<Delay>> delays;
};

class FakeMemory : public Memory {
public:
    // Set before and read on other threads while a queue runs.
    std::atomic<std::int64_t> left = std::int64_t{1} << 40;
    mutable std::atomic<int> questions = 0;
    bool isKnown = true;

    std::optional<std::int64_t> available() const override {
        ++questions;
        return isKnown ? std::optional(left.load()) : std::nullopt;
    }
};

class FakePasteboard : public Pasteboard {
public:
    std::vector<std::filesystem::path> items;
    int clearCount = 0;
    bool refuses = false;

    void clearContents() override {
        items.clear();
        ++clearCount;
    }
    bool writeFileURL(const std::filesystem::path& file) override {
        if (refuses) return false;
        items.push_back(file);
        return true;
    }
};

class FakeAlerts : public Alerts {
public:
    std::vector<Alert> shown;
    int answer = 0;
    // Runs while the alert is up.
    std::function<void()> whileShown;

    int runModal(const Alert& alert) override {
        shown.push_back(alert);
        if (whileShown) whileShown();
        return answer;
    }
};

class FakeLog : public Log {
public:
    void write(std::string_view line) override {
        const std::lock_guard lock(mutex);
        written.emplace_back(line);
    }
    std::vector<std::string> lines() const {
        const std::lock_guard lock(mutex);
        return written;
    }

private:
    mutable std::mutex mutex;
    std::vector<std::string> written;
};

class FakeWorkspace : public Workspace {
public:
    std::vector<std::filesystem::path> opened;
    void openFolder(const std::filesystem::path& folder) override { opened.push_back(folder); }
};

} // namespace clipwren
