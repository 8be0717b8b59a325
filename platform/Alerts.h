#pragma once

#include <string>
#include <vector>

namespace clipwren {

enum class AlertStyle { warning = 0 };

struct Alert {
    std::string messageText;
    std::string informativeText;
    AlertStyle style = AlertStyle::warning;
    std::vector<std::string> buttons; // the first is the default; none: the platform's single default button
};

// Main thread only.
class Alerts {
public:
    virtual ~Alerts() = default;

    // Shows the alert and returns when it is answered, with the index of the button; a closed alert answers
    // with the last one. Work of the main queue goes on meanwhile. Where no window can be shown, the text
    // goes to the log and the answer comes at once.
    virtual int runModal(const Alert& alert) = 0;
};

} // namespace clipwren
