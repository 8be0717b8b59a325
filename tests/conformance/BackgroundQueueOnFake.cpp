#include "tests/conformance/BackgroundQueueConformance.h"
#include "tests/fakes/FakeServices.h"

namespace clipwren {

struct FakeBackgroundQueueSubject {
    FakeBackgroundQueue fake;

    BackgroundQueue& queue() { return fake; }
    void finish() { fake.run(); }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, BackgroundQueueConformance, FakeBackgroundQueueSubject);

} // namespace clipwren
