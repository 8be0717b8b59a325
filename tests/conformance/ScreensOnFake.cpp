#include "tests/conformance/ScreensConformance.h"
#include "tests/fakes/FakePlatform.h"

namespace clipwren {

namespace {

struct FakeSubject {
    FakePlatform platform;
    bool isPlugged = false;

    Screens& screens() { return platform.screens; }
    void plug() {
        auto attached = platform.screens.attached;
        if (std::exchange(isPlugged, !isPlugged))
            attached.pop_back();
        else
            attached.push_back({{5000, 0, 800, 600}, 77});
        platform.screens.change(attached);
    }
    bool passUntil(const std::function<bool()>& condition) { return condition(); }
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, ScreensConformance, FakeSubject);

} // namespace clipwren
