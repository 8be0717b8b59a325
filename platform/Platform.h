#pragma once

namespace clipwren {

class Alerts;
class Application;
class BackgroundQueue;
class Canvases;
class Files;
class Folders;
class HotKeys;
class Log;
class LoginItem;
class MainQueue;
class Memory;
class Pasteboard;
class ScreenCapture;
class Screens;
class Session;
class SettingsViews;
class StatusBar;
class Store;
class Windows;
class Workspace;

// Everything that the core asks of the computer around it. The ports outlive every object of the core.
struct Platform {
    Alerts& alerts;
    Application& application;
    BackgroundQueue& backgroundQueue;
    Canvases& canvases;
    Files& files;
    Folders& folders;
    HotKeys& hotKeys;
    Log& log;
    LoginItem& loginItem;
    MainQueue& mainQueue;
    Memory& memory;
    Pasteboard& pasteboard;
    ScreenCapture& screenCapture;
    Screens& screens;
    Session& session;
    SettingsViews& settingsViews;
    StatusBar& statusBar;
    Store& store;
    Windows& windows;
    Workspace& workspace;
};

} // namespace clipwren
