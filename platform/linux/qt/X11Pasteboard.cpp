#include "platform/linux/qt/X11Pasteboard.h"

#include "platform/linux/FileUri.h"
#include "platform/linux/x11/X11ClipboardKeeper.h"
#include "platform/linux/x11/X11FileSelection.h"

#include <QSocketNotifier>

#include <utility>

namespace clipwren {

X11Pasteboard::X11Pasteboard() = default;

X11Pasteboard::~X11Pasteboard() = default;

// Also after a connection was lost: the display may be there again.
bool X11Pasteboard::connect() {
    if (selection && !selection->isLost()) return true;
    notifier.reset();
    selection = X11FileSelection::connect();
    if (!selection) return false;
    notifier = std::make_unique<QSocketNotifier>(selection->fileDescriptor(), QSocketNotifier::Read);
    QObject::connect(notifier.get(), &QSocketNotifier::activated, &context, [this] { answer(); });
    return true;
}

void X11Pasteboard::answer() {
    selection->answer();
    // A lost connection's descriptor stays readable for ever.
    if (selection->isLost()) notifier->setEnabled(false);
}

void X11Pasteboard::clearContents() {
    clears = true;
    QMetaObject::invokeMethod(&context, [this] { clearNow(); }, Qt::QueuedConnection);
}

void X11Pasteboard::clearNow() {
    if (std::exchange(clears, false) && connect()) selection->clear();
}

bool X11Pasteboard::writeFileURL(const std::filesystem::path& file) {
    clears = false;
    return connect() && selection->offer(fileUri(file));
}

void X11Pasteboard::leaveBehind() {
    clearNow();
    if (selection && selection->isOwner()) startClipboardKeeper(*selection);
}

} // namespace clipwren
