#pragma once

#include "platform/Pasteboard.h"

#include <QObject>

#include <memory>

class QSocketNotifier;

namespace clipwren {

class X11FileSelection;

// The clipboard of an X11 display, answered from Qt's event loop but on a connection of its own: Qt's
// clipboard waits up to five seconds for a clipboard manager when the program ends.
//
// Clearing takes place at the end of the event loop's turn, unless a file is written in the same turn: a
// clipboard manager that sees an empty clipboard may put its old contents back in.
class X11Pasteboard : public Pasteboard {
public:
    X11Pasteboard();
    ~X11Pasteboard() override;

    void clearContents() override;
    bool writeFileURL(const std::filesystem::path& file) override;

    // Once, after the event loop has ended: gives what is still offered to a keeper, so that it stays when
    // this process ends. Takes two seconds at the very most, usually less than a tenth of one.
    void leaveBehind();

private:
    bool connect();
    void clearNow();
    void answer();

    bool clears = false; // at the end of this turn
    std::unique_ptr<X11FileSelection> selection;
    std::unique_ptr<QSocketNotifier> notifier;
    QObject context; // of calls that wait
};

} // namespace clipwren
