#pragma once

#include "platform/SettingsView.h"

#include <QWidget>

#include <string>

namespace clipwren {

// A symbol in a row, drawn sharp at every scale. Whoever hears the window is told its accessible name.
class PermissionIcon : public QWidget {
public:
    PermissionIcon();

    // An unknown name shows nothing.
    void setSymbol(const std::string& newSymbolName, SymbolTint newTint);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::string symbolName;
    SymbolTint tint = SymbolTint::systemRed;
};

} // namespace clipwren
