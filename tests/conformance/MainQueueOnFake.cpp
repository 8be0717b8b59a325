#include "tests/conformance/MainQueueConformance.h"
#include "tests/fakes/FakeMainQueue.h"

namespace clipwren {

struct FakeMainQueueSubject {
    FakeMainQueue fake;

    MainQueue& queue() { return fake; }
    double now() { return fake.now(); }
    void pass(double seconds) { fake.advance(seconds); }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, MainQueueConformance, FakeMainQueueSubject);

} // namespace clipwren
