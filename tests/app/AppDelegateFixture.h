#pragma once

#include "app/AppDelegate.h"

#include "tests/fakes/FakePlatform.h"
#include "tests/support/Pictures.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <memory>

namespace clipwren {

inline constexpr std::uint32_t commandShift = HotKeyModifiers::command | HotKeyModifiers::shift;

// The delegate on fakes. What the user sees tells the state: the menu bar's symbol, the windows, the alerts.
class AppDelegateFixture : public testing::Test {
protected:
    TemporaryFolder home;
    FakePlatform platform;
    std::shared_ptr<AppDelegate> delegate = AppDelegate::create(platform.ports);

    void SetUp() override {
        platform.folders.homeFolder = home.path();
        delegate->applicationDidFinishLaunching();
        platform.mainQueue.run();
        platform.backgroundQueue.run();
    }

    enum class Looks { idle, selecting, recording, encoding };
    Looks looks() {
        const auto& item = *platform.statusBar.item;
        const bool hasMenu = item.menu != nullptr;
        EXPECT_NE(hasMenu, item.action != nullptr);
        EXPECT_EQ(item.accessibilityDescription, "Clipwren");
        if (item.symbolName == "record.circle.fill") {
            EXPECT_FALSE(hasMenu);
            EXPECT_EQ(item.tint, Tint::systemRed);
            EXPECT_EQ(item.imagePosition, ImagePosition::imageRight);
            EXPECT_EQ(item.toolTip, "Stop recording");
            return Looks::recording;
        }
        EXPECT_TRUE(hasMenu);
        EXPECT_EQ(item.tint, std::nullopt);
        EXPECT_EQ(item.imagePosition, ImagePosition::imageOnly);
        EXPECT_EQ(item.title.text, "");
        EXPECT_EQ(item.toolTip, "Clipwren");
        if (item.symbolName == "arrow.triangle.2.circlepath") return Looks::encoding;
        EXPECT_EQ(item.symbolName, "record.circle");
        return platform.windows.keyMonitorCount > 0 ? Looks::selecting : Looks::idle;
    }
    void pressHotKey() {
        EXPECT_TRUE(platform.hotKeys.press(KeyCode::g, commandShift));
        platform.mainQueue.run();
    }
    void drag(Point from, Point to) {
        platform.windows.visible().at(0)->drag(from, to);
        platform.mainQueue.run();
    }
    void startRecording() {
        pressHotKey();
        drag({100, 100}, {420, 340});
        ASSERT_EQ(looks(), Looks::recording);
    }
    FakeCaptureStream::Control& stream() { return *platform.screenCapture.streams.back(); }
    void deliverFrames(int count) {
        for (int i = 0; i < count; ++i)
            stream().deliver(plainImage(320, 240, 0xFF000000u | static_cast<Pixel>(i * 40)), {i, 15});
    }
    void finishEncoding() {
        platform.backgroundQueue.run();
        platform.mainQueue.run();
    }
    std::filesystem::path expectedFile() const {
        return home.path() / "Pictures" / "Clipwren" / "Recording_2024-03-09_14-05-31.gif";
    }
    bool overlayIsShown() const {
        for (const auto& window : platform.windows.visible())
            if (window->options.ignoresMouseEvents) return true;
        return false;
    }
};

} // namespace clipwren
