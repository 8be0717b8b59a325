#pragma once

#include "app/HotKey.h"
#include "platform/Platform.h"
#include "tests/fakes/FakeCanvas.h"
#include "tests/fakes/FakeFiles.h"
#include "tests/fakes/FakeFolders.h"
#include "tests/fakes/FakeHotKeys.h"
#include "tests/fakes/FakeMainQueue.h"
#include "tests/fakes/FakeScreenCapture.h"
#include "tests/fakes/FakeServices.h"
#include "tests/fakes/FakeSettingsView.h"
#include "tests/fakes/FakeStatusBar.h"
#include "tests/fakes/FakeStore.h"
#include "tests/fakes/FakeWindows.h"

namespace clipwren {

// A whole computer for the core: one screen of 1440 × 900 points whose display can be captured.
struct FakePlatform {
    FakeMainQueue mainQueue;
    FakeAlerts alerts;
    FakeApplication application;
    FakeBackgroundQueue backgroundQueue;
    FakeCanvases canvases;
    FakeFiles files;
    FakeFolders folders;
    FakeHotKeys hotKeys;
    FakeLog log;
    FakeLoginItem loginItem;
    FakeMemory memory;
    FakePasteboard pasteboard;
    FakeScreenCapture screenCapture{mainQueue};
    FakeScreens screens;
    FakeSession session;
    FakeSettingsViews settingsViews;
    FakeStatusBar statusBar;
    FakeStore store;
    FakeWindows windows;
    FakeWorkspace workspace;

    Platform ports{alerts,  application,   backgroundQueue, canvases, files,      folders,       hotKeys,
                   log,     loginItem,     mainQueue,       memory,   pasteboard, screenCapture, screens,
                   session, settingsViews, statusBar,       store,    windows,    workspace};

    ~FakePlatform() {
        // Waiting work may hold objects of the core, which need the ports until they are gone.
        backgroundQueue.items.clear();
        mainQueue.clear();
    }

    FakePlatform() {
        HotKey::resetSharedState(); // a new computer runs a new process
        screens.attached = {{{0, 0, 1440, 900}, 1}};
        screens.mainScreen = screens.attached.front();
        screenCapture.content.displays = {{1}};
    }
};

} // namespace clipwren
