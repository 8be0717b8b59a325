#pragma once

#include "platform/Alerts.h"

namespace clipwren {

class Log;

// Alerts as message boxes above all other windows. Texts are plain text, whatever they look like.
class QtAlerts : public Alerts {
public:
    // The log takes the alerts that no window can show: without a QApplication, or when the connection to the
    // display server is broken.
    explicit QtAlerts(Log& log) : log(log) {}

    int runModal(const Alert& alert) override;

private:
    Log& log;
};

} // namespace clipwren
