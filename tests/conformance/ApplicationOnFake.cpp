#include "tests/conformance/ApplicationConformance.h"
#include "tests/fakes/FakeServices.h"

#include <functional>

namespace clipwren {

struct FakeApplicationSubject {
    FakeApplication fake;

    Application& application() { return fake; }
    bool runEnds(const std::function<void()>& work) {
        work();
        return fake.isTerminated;
    }
    void comeBack() { fake.becomeActive(); }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, ApplicationConformance, FakeApplicationSubject);

} // namespace clipwren
