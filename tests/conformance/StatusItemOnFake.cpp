#include "tests/conformance/StatusItemConformance.h"
#include "tests/fakes/FakeStatusBar.h"

namespace clipwren {

namespace {

struct FakeSubject {
    FakeStatusBar bar;
    std::unique_ptr<StatusItem> made = bar.makeStatusItem();
    const FakeStatusItemState& state() const { return *bar.item; }

    StatusItem& item() { return *made; }
    void drop() { made.reset(); }
    bool exists() const { return state().exists; }
    std::string text() const { return state().title.text; }
    std::string toolTip() const { return state().toolTip; }
    bool isRed() const { return state().tint == Tint::systemRed; }
    std::vector<std::string> menu() const {
        std::vector<std::string> titles;
        if (state().menu)
            for (const MenuItem& line : state().menu->items)
                titles.push_back(line.title);
        return titles;
    }
    bool click() const { return state().click(); }
    void choose(int line) const {
        const MenuItem chosen = state().menu->items[static_cast<std::size_t>(line)];
        if (chosen.action) chosen.action();
    }
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, StatusItemConformance, FakeSubject);

} // namespace clipwren
