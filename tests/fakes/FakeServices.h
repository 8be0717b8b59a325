#pragma once

#include "platform/Alerts.h"
#include "platform/Application.h"
#include "platform/BackgroundQueue.h"
#include "platform/Log.h"
#include "platform/Pasteboard.h"
#include "platform/Screens.h"
#include "platform/SettingsView.h"
#include "platform/Workspace.h"

#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace clipwren {

// The small fakes: each keeps what it was told, and answers what the test has set.

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

    void setActivationPolicy(ActivationPolicy newPolicy) override { policy = newPolicy; }
    void activateIgnoringOtherApps() override { ++activations; }
    void terminate() override { isTerminated = true; }
};

class FakeScreens : public Screens {
public:
    std::vector<Screen> attached;
    std::optional<Screen> mainScreen;
    std::uint32_t mainDisplay = 1;

    std::vector<Screen> screens() const override { return attached; }
    std::optional<Screen> main() const override { return mainScreen; }
    std::uint32_t mainDisplayID() const override { return mainDisplay; }
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

struct FakeSettingsViewState {
    std::function<void()> onClose;
    std::vector<std::string> calls;
    bool exists = true;
};

class FakeSettingsViews : public SettingsViews {
public:
    bool isAvailable = true;
    std::vector<std::shared_ptr<FakeSettingsViewState>> made;

    std::unique_ptr<SettingsView> makeSettingsView(std::function<void()> onClose) override {
        if (!isAvailable) return nullptr;
        made.push_back(std::make_shared<FakeSettingsViewState>());
        made.back()->onClose = std::move(onClose);
        return std::make_unique<View>(made.back());
    }

private:
    class View : public SettingsView {
    public:
        explicit View(std::shared_ptr<FakeSettingsViewState> state) : state(std::move(state)) {}
        ~View() override { state->exists = false; }
        void makeKeyAndOrderFront() override { state->calls.emplace_back("makeKeyAndOrderFront"); }
        void refreshPermissions() override { state->calls.emplace_back("refreshPermissions"); }
        void refreshControls() override { state->calls.emplace_back("refreshControls"); }

    private:
        std::shared_ptr<FakeSettingsViewState> state;
    };
};

} // namespace clipwren
