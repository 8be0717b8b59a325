#include "tests/conformance/HotKeysConformance.h"
#include "tests/fakes/FakeHotKeys.h"

namespace clipwren {

namespace {

struct FakeSubject {
    FakeHotKeys fake;
    HotKeys& hotKeys() { return fake; }
    void press(std::uint32_t modifiers) { fake.press(KeyCode::g, modifiers); }
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, HotKeysConformance, FakeSubject);

} // namespace clipwren
