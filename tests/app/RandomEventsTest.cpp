#include "app/AppDelegate.h"

#include "tests/fakes/FakePlatform.h"
#include "tests/support/Pictures.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <random>

namespace clipwren {
namespace {

constexpr std::uint32_t commandShift = HotKeyModifiers::command | HotKeyModifiers::shift;

// How often lives came to each end, so that no law holds only because nothing ever happened.
struct Tally {
    long gifs = 0;
    long failedSaves = 0;
    long failedStarts = 0;
    long cancelled = 0;
    long autoStops = 0;
    long settingsOpened = 0;
    long locked = 0;
    long shutDown = 0;
};

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
        switch (pick(21)) {
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
        case 10: waitAWhile(); break;
        case 11: platform.backgroundQueue.run(); break;
        case 12: changeTheWorld(); break;
        case 13: endStream(); break;
        case 14: platform.screenCapture.finishStart(); break;
        case 15:
            if (const auto menu = item().menu) menu->items[3].action();
            break;
        case 16:
            if (auto* view = settings()) view->close();
            break;
        case 17: changeASetting(); break;
        case 18: delegate->applicationShouldHandleReopen(); break;
        case 19: lock(); break;
        case 20: shutDown(); break;
        }
        if (pick(3) != 0) platform.mainQueue.run();
        checkLaws();
    }

    // Whatever has happened, the user gets back to idle and then every trace of the recordings is gone.
    void comeToRest(Tally& tally) {
        platform.files.restart();
        platform.screenCapture.startError.reset();
        platform.screenCapture.holdsStart = false;
        platform.screenCapture.finishStart(); // every start completes once
        platform.mainQueue.run();
        platform.backgroundQueue.run();
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
        EXPECT_EQ(told("monitor keys"), told("end key monitor")) << "each selection ends once";
        checkHistory();
        for (const auto& stream : platform.screenCapture.streams) {
            EXPECT_LE(stream->stopCount, 1);
            EXPECT_FALSE(stream->isRunning);
        }
        expectNoHiddenFile();
        addTo(tally);

        if (auto* view = settings()) view->close();
        const std::weak_ptr<AppDelegate> last = delegate;
        delegate.reset();
        platform.mainQueue.clear();
        EXPECT_TRUE(last.expired());
        EXPECT_EQ(platform.mainQueue.scheduledCount(), 0u);
        EXPECT_TRUE(platform.backgroundQueue.items.empty());
        EXPECT_EQ(settings(), nullptr);
        EXPECT_FALSE(item().exists);
        EXPECT_TRUE(platform.hotKeys.registrations.empty());
        EXPECT_EQ(platform.windows.keyMonitorCount, 0);
        EXPECT_EQ(platform.session.delayCount(), 0);
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
    long told(const std::string& event) { return std::ranges::count(platform.windows.events, event); }
    long alerts(std::string_view prefix) {
        return std::ranges::count_if(platform.alerts.shown, [prefix](const Alert& alert) {
            return alert.informativeText.starts_with(prefix);
        });
    }
    long gifs() {
        const auto lines = platform.log.lines();
        return std::ranges::count_if(lines, [](const std::string& line) {
            return line.starts_with("[Clipwren] GIF copied to clipboard");
        });
    }
    long outcomes() { return gifs() + alerts("Could not save GIF: "); }
    // The settings window while it is open.
    FakeSettingsViewState* settings() {
        auto& made = platform.settingsViews.made;
        return made.empty() || !made.back()->exists ? nullptr : made.back().get();
    }

    // From the first symbol to the last: a recording is stopped once or its start has failed, nothing but a
    // recording is encoded, and encoding ends at idle.
    void checkHistory() {
        const auto& history = item().symbolHistory;
        long recordings = 0;
        long failedStarts = 0;
        for (std::size_t i = 0; i + 1 < history.size(); ++i) {
            const std::string& next = history[i + 1];
            if (history[i] == "record.circle") {
                EXPECT_EQ(next, "record.circle.fill");
            } else if (history[i] == "arrow.triangle.2.circlepath") {
                EXPECT_EQ(next, "record.circle");
            } else {
                ++recordings;
                failedStarts += next == "record.circle" ? 1 : 0;
            }
        }
        EXPECT_EQ(recordings, count("arrow.triangle.2.circlepath") + failedStarts);
        EXPECT_LE(recordings, told("monitor keys")) << "at most one recording a selection";
        EXPECT_LE(failedStarts, alerts("Could not start recording: "));
    }
    void expectNoHiddenFile() {
        const auto folder = platform.folders.homeFolder / "Pictures" / "Clipwren";
        std::error_code ignored;
        for (std::filesystem::directory_iterator entry(folder, ignored), end; entry != end; ++entry)
            EXPECT_FALSE(entry->path().filename().string().starts_with(".")) << entry->path();
    }
    void addTo(Tally& tally) {
        tally.gifs += gifs();
        tally.failedSaves += alerts("Could not save GIF: ");
        tally.failedStarts += alerts("Could not start recording: ");
        tally.cancelled += told("monitor keys") - count("record.circle.fill");
        tally.autoStops += autoStops;
        tally.locked += lockedSelections;
        tally.shutDown += shutdowns;
        tally.settingsOpened += static_cast<long>(platform.settingsViews.made.size());
    }

    void waitAWhile() {
        const long before = count("arrow.triangle.2.circlepath");
        const bool wasRecording = item().symbolName == "record.circle.fill";
        platform.mainQueue.advance(std::array{0.4, 0.4, 20., 70.}[static_cast<std::size_t>(pick(4))]);
        if (wasRecording && count("arrow.triangle.2.circlepath") > before) ++autoStops;
    }
    void changeASetting() {
        auto* view = settings();
        if (!view) {
            platform.store.values["recording.maxDuration"] =
                std::array{15, 30, 60, 0, -7}[static_cast<std::size_t>(pick(5))];
            return;
        }
        switch (pick(5)) {
        case 0: view->choose(SettingsPopup::fps, pick(7) - 1); break;
        case 1: view->choose(SettingsPopup::resolution, pick(7) - 1); break;
        case 2: view->choose(SettingsPopup::duration, pick(6) - 1); break;
        case 3: view->clickReset(); break;
        case 4: view->switchLaunchAtLogin(pick(2) == 0); break;
        }
    }

    void lock() {
        lockedSelections += platform.windows.keyMonitorCount;
        platform.session.willLock();
        EXPECT_EQ(platform.windows.keyMonitorCount, 0) << "the keyboard is free for a locker";
    }
    // The event loop goes on: it may be given up before it ends.
    void shutDown() {
        const bool recording = item().symbolName == "record.circle.fill";
        platform.application.isTerminated = false; // the user quits now and then
        platform.session.willShutDown();
        if (!platform.application.isTerminated) return;
        EXPECT_TRUE(recording);
        ++shutdowns;
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
        switch (pick(12)) {
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
        case 6: // a disk that fails soon, for a while or until it is replaced
            platform.files.restart();
            platform.files.operations = 0;
            platform.files.faultyOperation = 1 + pick(6);
            platform.files.fault = pick(2) == 0 ? FakeFiles::Fault::once : FakeFiles::Fault::forGood;
            break;
        case 7: platform.files.restart(); break;
        case 8: // another monitor comes or goes
            platform.screens.attached.resize(1);
            if (pick(2) == 0) platform.screens.attached.push_back({{1440, 0, 800, 600}, 2});
            break;
        case 9: capture.contentError = chance("No content."); break;
        case 10: capture.outputError = chance("No output."); break;
        case 11: capture.stopError = chance("Already over."); break;
        }
    }

    std::optional<PlatformError> chance(const char* text) {
        return pick(3) == 0 ? std::optional(PlatformError{text}) : std::nullopt;
    }

    void checkLaws() {
        const bool recording = item().symbolName == "record.circle.fill";
        const bool beforeRecording = item().symbolName == "record.circle";
        int overlays = 0;
        int selectors = 0;
        for (const auto& window : platform.windows.visible())
            ++(window->options.ignoresMouseEvents ? overlays : selectors);
        EXPECT_EQ(overlays > 0, recording);
        EXPECT_EQ(selectors > 0, platform.windows.keyMonitorCount == 1);
        EXPECT_LE(platform.windows.keyMonitorCount, 1);
        if (!beforeRecording) {
            EXPECT_EQ(selectors, 0);
        }
        EXPECT_EQ(item().menu == nullptr, recording);
        if (recording) {
            EXPECT_EQ(platform.session.delayCount(), 1);
        }
        EXPECT_LE(platform.session.delayCount(), beforeRecording ? 0 : 1);
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
    long autoStops = 0;
    long lockedSelections = 0;
    long shutdowns = 0;
};

TEST(RandomEvents, TheLawsHoldWhateverHappens) {
    constexpr unsigned lives = 10'000;
    constexpr int events = 40;
    const TemporaryFolder home;
    Tally tally;
    for (unsigned seed = 0; seed < lives && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        RandomLife life(seed, home.path());
        for (int i = 0; i < events; ++i)
            life.happen();
        life.comeToRest(tally);
    }
    if (testing::Test::HasFailure()) return;
    for (const long times : {tally.gifs, tally.failedSaves, tally.failedStarts, tally.cancelled,
                             tally.autoStops, tally.settingsOpened, tally.locked, tally.shutDown})
        EXPECT_GT(times, 100);
    std::printf(
        "%ld GIFs, %ld failed saves, %ld failed starts, %ld selections without recording, %ld auto-stops, "
        "%ld settings windows, %ld selections ended by a lock, %ld recordings by a shutdown\n",
        tally.gifs, tally.failedSaves, tally.failedStarts, tally.cancelled, tally.autoStops,
        tally.settingsOpened, tally.locked, tally.shutDown);
}

} // namespace
} // namespace clipwren
