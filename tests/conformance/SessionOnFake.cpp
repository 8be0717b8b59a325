#include "tests/conformance/SessionConformance.h"
#include "tests/fakes/FakeServices.h"

namespace clipwren {

struct FakeSessionSubject {
    FakeSession fake;

    Session& session() { return fake; }
    void willLock() { fake.willLock(); }
    void willShutDown() { fake.willShutDown(); }
    int delays() const { return fake.delayCount(); }
    bool passUntil(const std::function<bool()>& condition) { return condition(); }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, SessionConformance, FakeSessionSubject);

} // namespace clipwren
