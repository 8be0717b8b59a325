#pragma once

namespace clipwren {

class Log;
class LoginItem;

// Whether the program is started when the user logs in. Nothing is stored here: the truth is the desktop's
// own registration. Main thread only.
struct LaunchAtLogin {
    LaunchAtLogin() = delete;

    static bool isEnabled(const LoginItem& loginItem);

    // A failure is one line in the log; whoever wants to know the outcome reads again.
    static void setEnabled(bool isEnabled, LoginItem& loginItem, Log& log);
};

} // namespace clipwren
