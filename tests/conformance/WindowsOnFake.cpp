#include "tests/conformance/WindowsConformance.h"
#include "tests/fakes/FakeWindows.h"

namespace clipwren {

namespace {

struct FakeSubject {
    FakeWindows fake;
    Point pointer{-100, -100};
    std::shared_ptr<FakeWindowState> pressed;

    Windows& windows() { return fake; }
    Rect frame() const { return {100, 100, 400, 300}; }
    void moveTo(Point point) {
        pointer = point;
        if (pressed) pressed->mouseDragged(point);
    }
    void press() {
        const auto visible = fake.visible();
        if (visible.empty()) return;
        pressed = visible.back();
        pressed->mouseDown(pointer);
    }
    void release() {
        if (const auto target = std::exchange(pressed, nullptr)) target->mouseUp(pointer);
    }
    void tap(std::uint32_t keyCode) { fake.pressKey(keyCode); }
    void settle() { fake.handOutKeptKeys(); }
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, WindowsConformance, FakeSubject);

} // namespace clipwren
