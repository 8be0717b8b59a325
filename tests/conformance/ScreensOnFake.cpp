#include "tests/conformance/ScreensConformance.h"
#include "tests/fakes/FakePlatform.h"

namespace clipwren {

namespace {

struct FakeSubject {
    FakePlatform platform;
    Screens& screens() { return platform.screens; }
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, ScreensConformance, FakeSubject);

} // namespace clipwren
