#include "tests/conformance/LoginItemConformance.h"
#include "tests/fakes/FakeServices.h"

namespace clipwren {

struct FakeLoginItemSubject {
    FakeLoginItem fake;

    LoginItem& loginItem() { return fake; }
    void disable() { fake.current = LoginItemStatus::requiresApproval; }
    void refuse(bool refuses) {
        fake.refusal = refuses ? std::optional(PlatformError{"refused"}) : std::nullopt;
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, LoginItemConformance, FakeLoginItemSubject);

} // namespace clipwren
