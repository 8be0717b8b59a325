#pragma once

#include "base/Expected.h"
#include "base/Geometry.h"
#include "capture/RecordedFrame.h"
#include "encoding/GifEncoderError.h"
#include "platform/Platform.h"

#include <atomic>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace clipwren {

class HotKey;
class RecordingOverlay;
class RegionSelector;
class ScreenRecorder;
class SettingsWindow;
class ShutdownDelay;
class StatusItem;
class Timer;
struct Menu;

// The recording controller: owns every long-lived object and runs the one state machine that takes a
// recording from the user's request to a GIF file on the clipboard. Main thread only.
class AppDelegate : public std::enable_shared_from_this<AppDelegate> {
public:
    // The ports, and the struct that names them, outlive the delegate.
    static std::shared_ptr<AppDelegate> create(const Platform& platform);
    ~AppDelegate();

    // Start-up, once, when the event loop is about to run.
    void applicationDidFinishLaunching();

    // The user has started the program again while it runs: brings up the settings window.
    void applicationShouldHandleReopen();

    // What the record menu item and the hot key do: begin or cancel a selection, or stop the recording, by
    // state.
    void triggerRecord();

    // The share of the recording's frames that are written, while it is encoded: 0 to 1. Any thread.
    double encodingProgress() const { return progress; }

    // The event loop has ended, as the user wished: nothing stays on the screen, and a recording that is
    // running or was just stopped is saved on the background queue. The result is only logged.
    void applicationWillTerminate();

    // Saves a recording that is running, on this thread and without the display: for an end of the program
    // that nobody asked for, such as the display server's. The result is only logged.
    void saveBeforeExit();

private:
    // In this order: the icon tells apart what comes before `recording`, `recording`, and what comes after
    // it.
    enum class State : unsigned char { idle, selecting, recording, encoding };

    explicit AppDelegate(const Platform& platform);

    // The recording's road.
    void setupHotKey();
    void setState(State newState);
    void startSelection();
    void selectionDidComplete(const std::optional<Rect>& rect);
    void cancelSelection();
    void startRecording(const Rect& region);
    void startDidFail(const std::shared_ptr<ScreenRecorder>& failedRecorder, const std::string& description);
    void stopRecording();
    void encodeAndCopy(std::vector<RecordedFrame> frames);
    void computerWillShutDown();
    void encodingDidEnd(const Expected<std::filesystem::path, GifEncoderError>& result);
    void showAlert(const std::string& informativeText);
    bool mayCaptureScreen() const;

    // The status item and its menu.
    void setupStatusItem();
    void updateIcon();
    void applyMenuBarBehavior();
    void startSizeIndicator();
    void updateSizeIndicator();
    void stopFromMenuBar();
    void openFolder();
    void openSettings();
    void quit();

    const Platform& platform;
    std::unique_ptr<StatusItem> statusItem;
    std::shared_ptr<const Menu> idleMenu;
    std::unique_ptr<HotKey> hotKey;                 // none when the system refused it
    std::shared_ptr<RegionSelector> regionSelector; // while selecting
    std::shared_ptr<ScreenRecorder> recorder;       // until its frames are taken or its start has failed
    bool memoryRanShort = false;                    // which ended this recording
    std::shared_ptr<RecordingOverlay> overlay;      // while recording
    std::shared_ptr<SettingsWindow> settingsWindow; // while it is open
    std::shared_ptr<ShutdownDelay> shutdownDelay;   // from a recording's begin until its file is whole
    State state = State::idle;
    std::atomic<double> progress = 0; // of the encoding; written by the background queue
    std::shared_ptr<Timer> sizeIndicatorTimer;
};

} // namespace clipwren
