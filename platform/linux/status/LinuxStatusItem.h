#pragma once

#include "platform/linux/status/ItemHost.h"
#include "platform/linux/status/StatusItemState.h"
#include "platform/linux/status/SystemTray.h"
#include "platform/linux/status/TrayChoice.h"

#include <QObject>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>

namespace clipwren {

// The status item, shown where the desktop shows it best, in one place at a time, and again when a panel
// comes back or appears later. Without any panel its state is kept.
class LinuxStatusItem final : public StatusItem {
public:
    // The display outlives the item; `scale` is pixels a point. `nowhereToBeSeen` runs once, from the event
    // loop, when no panel has shown up for some seconds after the start.
    LinuxStatusItem(X11Connection& display, double scale, std::function<void()> nowhereToBeSeen);
    ~LinuxStatusItem() override;

    void setSymbolImage(const std::string& symbolName, const std::string& accessibilityDescription) override;
    void setContentTint(std::optional<Tint> tint) override;
    void setImagePosition(ImagePosition position) override;
    void setAttributedTitle(const AttributedTitle& title) override;
    void setToolTip(const std::string& text) override;
    void setMenu(std::shared_ptr<const Menu> menu) override;
    void setAction(std::function<void()> action) override;

private:
    void stateDidChange();
    void panelsDidChange(TrayKind which);
    void choose();

    StatusItemState state;
    X11Connection& display;
    const double scale;
    const PanelHabits habits;
    bool windowRefused = false;
    bool updatePending = false;
    SystemTray tray;
    ItemHost host;
    TrayKind shownAs = TrayKind::none;
    std::unique_ptr<StatusItemView> view;
    QTimer deadline;
};

} // namespace clipwren
