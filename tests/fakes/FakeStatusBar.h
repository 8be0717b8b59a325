#pragma once

#include "platform/StatusItem.h"

namespace clipwren {

// What a status item shows right now.
struct FakeStatusItemState {
    std::string symbolName;
    std::vector<std::string> symbolHistory; // every change of the symbol
    std::string accessibilityDescription;
    std::optional<Tint> tint;
    ImagePosition imagePosition = ImagePosition::imageOnly;
    AttributedTitle title;
    std::string toolTip;
    std::shared_ptr<const Menu> menu;
    std::function<void()> action;
    bool exists = true;

    // A click as the panel sends it; true when the menu opened instead of an action being run.
    bool click() const {
        if (menu) return true;
        if (const auto run = action) run();
        return false;
    }
};

class FakeStatusBar : public StatusBar {
public:
    bool isAvailable = true;
    std::shared_ptr<FakeStatusItemState> item; // the newest

    std::unique_ptr<StatusItem> makeStatusItem() override {
        if (!isAvailable) return nullptr;
        item = std::make_shared<FakeStatusItemState>();
        return std::make_unique<Item>(item);
    }

private:
    class Item : public StatusItem {
    public:
        explicit Item(std::shared_ptr<FakeStatusItemState> state) : state(std::move(state)) {}
        ~Item() override { state->exists = false; }
        void setSymbolImage(const std::string& symbolName,
                            const std::string& accessibilityDescription) override {
            if (state->symbolName != symbolName) state->symbolHistory.push_back(symbolName);
            state->symbolName = symbolName;
            state->accessibilityDescription = accessibilityDescription;
        }
        void setContentTint(std::optional<Tint> tint) override { state->tint = tint; }
        void setImagePosition(ImagePosition position) override { state->imagePosition = position; }
        void setAttributedTitle(const AttributedTitle& title) override { state->title = title; }
        void setToolTip(const std::string& text) override { state->toolTip = text; }
        void setMenu(std::shared_ptr<const Menu> menu) override { state->menu = std::move(menu); }
        void setAction(std::function<void()> action) override { state->action = std::move(action); }

    private:
        std::shared_ptr<FakeStatusItemState> state;
    };
};

} // namespace clipwren
