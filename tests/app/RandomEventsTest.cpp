#include "app/AppDelegate.h"

#include "tests/fakes/FakePlatform.h"
#include "tests/support/Pictures.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <random>

namespace clipwren {
namespace {

constexpr std::uint32_t commandShift = HotKeyModifiers::command | HotKeyModifiers::shift;

// One life of the program in which anything may happen at any time, also while an alert is up. After every
// event the laws of the state machine must hold, and in the end everything must be gone.
class RandomLife {
public:
    RandomLife(unsigned seed, const std::filesystem::path& home) : random(seed) {
        platform.folders.homeFolder = home;
        platform.alerts.whileShown = [this] {
            if (alertDepth >= 3) return;
            ++alertDepth;
            for (int i = pick(3); i > 0; --i)
                happen();
            --alertDepth;
        };
        delegate->applicationDidFinishLaunching();
    }

    void happen() {
        switch (pick(17)) {
        case 0:
        case 1:
        case 2: platform.hotKeys.press(KeyCode::g, commandShift); break;
        case 3:
            if (const auto menu = item().menu) menu->items[0].action();
            break;
        case 4: item().click(); break;
        case 5:
        case 6: drag(); break;
        case 7: platform.windows.pressKey(KeyCode::escape); break;
        case 8:
        case 9: deliver(); break;
        case 10: platform.mainQueue.advance(pick(4) == 0 ? 20 : 0.4); break;
        case 11: platform.backgroundQueue.run(); break;
        case 12: changeTheWorld(); break;
        case 13: endStream(); break;
        case 14: platform.screenCapture.finishStart(); break;
        case 15:
            if (const auto menu = item().menu) menu->items[3].action();
            break;
        case 16:
            if (!platform.settingsViews.made.empty() && platform.settingsViews.made.back()->exists)
                platform.settingsViews.made.back()->close();
            break;
        }
        if (pick(3) != 0) platform.mainQueue.run();
        checkLaws();
    }

    // Whatever has happened, the user gets back to idle and then every trace of the recordings is gone.
    void comeToRest() {
        platform.screenCapture.startError.reset();
        platform.screenCapture.holdsStart = false;
        platform.screenCapture.finishStart(); // every start completes once
        platform.mainQueue.run();
        for (int step = 0; step < 8 && !isIdle(); ++step) {
            platform.windows.pressKey(KeyCode::escape);
            item().click();
            platform.mainQueue.run();
            platform.backgroundQueue.run();
            platform.mainQueue.run();
        }
        EXPECT_TRUE(isIdle());
        EXPECT_TRUE(platform.windows.visible().empty());
        EXPECT_EQ(count("arrow.triangle.2.circlepath"), outcomes())
            << "each stop ends in one GIF or one alert";
        for (const auto& stream : platform.screenCapture.streams)
            EXPECT_LE(stream->stopCount, 1);

        delegate.reset();
        platform.mainQueue.clear();
        EXPECT_TRUE(platform.hotKeys.registrations.empty());
        EXPECT_EQ(platform.windows.keyMonitorCount, 0);
        for (const auto& window : platform.windows.made)
            EXPECT_TRUE(window->isDestroyed);
        for (const auto& stream : platform.screenCapture.streams)
            EXPECT_EQ(stream->stream, nullptr);
    }

private:
    int pick(int choices) { return std::uniform_int_distribution(0, choices - 1)(random); }
    FakeStatusItemState& item() { return *platform.statusBar.item; }
    bool isIdle() { return item().symbolName == "record.circle" && platform.windows.keyMonitorCount == 0; }
    long count(const std::string& symbol) { return std::ranges::count(item().symbolHistory, symbol); }
    long outcomes() {
        const long alerts = std::ranges::count_if(platform.alerts.shown, [](const Alert& alert) {
            return alert.informativeText.starts_with("Could not save GIF: ");
        });
        const auto lines = platform.log.lines();
        return alerts + std::ranges::count_if(lines, [](const std::string& line) {
                   return line.starts_with("[Clipwren] GIF copied to clipboard");
               });
    }

    void drag() {
        const auto windows = platform.windows.visible();
        if (windows.empty()) return;
        const double size = pick(3) == 0 ? 5 : 40;
        windows[static_cast<std::size_t>(pick(static_cast<int>(windows.size())))]->drag(
            {10, 10}, {10 + size, 10 + size});
    }
    void deliver() {
        if (!platform.screenCapture.streams.empty())
            platform.screenCapture.streams.back()->deliver(plainImage(8, 8), {++frameTime, 15});
    }
    void endStream() {
        if (platform.screenCapture.streams.empty()) return;
        if (const auto listener = platform.screenCapture.streams.back()->delegate.lock())
            listener->didStopWithError({"The display is gone."});
    }
    void changeTheWorld() {
        auto& capture = platform.screenCapture;
        switch (pick(6)) {
        case 0: capture.holdsStart = !capture.holdsStart; break;
        case 1: capture.startError = PlatformError{"Not now."}; break;
        case 2: capture.startError.reset(); break;
        case 3:
            capture.currentPermission = capture.currentPermission == CapturePermission::granted
                                            ? CapturePermission::denied
                                            : CapturePermission::granted;
            break;
        case 4: // a folder in which nothing can be made
            platform.folders.picturesFolder = "/dev/null/none";
            break;
        case 5: platform.folders.picturesFolder.reset(); break;
        }
    }

    void checkLaws() {
        const bool recording = item().symbolName == "record.circle.fill";
        const bool beforeRecording = item().symbolName == "record.circle";
        int overlays = 0;
        int selectors = 0;
        for (const auto& window : platform.windows.visible())
            ++(window->options.ignoresMouseEvents ? overlays : selectors);
        EXPECT_EQ(overlays, recording ? 1 : 0);
        EXPECT_EQ(selectors, platform.windows.keyMonitorCount);
        if (!beforeRecording) {
            EXPECT_EQ(selectors, 0);
        }
        EXPECT_EQ(item().menu == nullptr, recording);
        EXPECT_EQ(item().title.text.empty(), !recording);
        long running = 0;
        for (const auto& stream : platform.screenCapture.streams)
            running += stream->stream && stream->isRunning ? 1 : 0;
        EXPECT_LE(running, 2) << "at most the present one and one that was stopped before it had started";
    }

    std::mt19937 random;
    FakePlatform platform;
    std::shared_ptr<AppDelegate> delegate = AppDelegate::create(platform.ports);
    int alertDepth = 0;
    std::int64_t frameTime = 0;
};

TEST(RandomEvents, TheLawsHoldWhateverHappens) {
    constexpr unsigned lives = 10'000;
    constexpr int events = 40;
    const TemporaryFolder home;
    for (unsigned seed = 0; seed < lives && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        RandomLife life(seed, home.path());
        for (int i = 0; i < events; ++i)
            life.happen();
        life.comeToRest();
    }
}

} // namespace
} // namespace clipwren
