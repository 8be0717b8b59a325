#pragma once

#include <optional>

namespace clipwren {

class X11FileSelection;

// An X11 selection lives no longer than its owner. The keeper is a second process of this program, without
// windows or toolkit, that owns the clipboard after the program has ended, until another program takes it or
// the display goes away. Clipboard managers are not asked to keep it: xfce4-clipman does not answer, and what
// others keep need not be all three forms. One that takes the clipboard by itself ends the keeper.

// To be called first in main, before anything else of the program is made. None when the arguments do not ask
// for a keeper; otherwise this process was one, and ends with the status.
std::optional<int> runClipboardKeeper(int argc, char** argv);

// Starts a keeper for what the selection offers and goes on answering until it has taken over, a second at
// most. The clipboard is never without owner in between, and is not taken from a program that has taken it
// meanwhile. False when no keeper has reported; a late one may still take over.
bool startClipboardKeeper(X11FileSelection& selection);

} // namespace clipwren
