#include "tests/conformance/LogConformance.h"
#include "tests/fakes/FakeServices.h"

namespace clipwren {

struct FakeLogSubject {
    FakeLog fake;

    Log& log() { return fake; }
    std::vector<std::string> lines() { return fake.lines(); }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, LogConformance, FakeLogSubject);

} // namespace clipwren
