#include "tests/conformance/MemoryConformance.h"
#include "tests/fakes/FakeServices.h"

namespace clipwren {

struct FakeMemorySubject {
    FakeMemory fake;

    FakeMemorySubject() { fake.isKnown = false; }
    Memory& memory() { return fake; }
    void leave(std::int64_t bytes) {
        fake.isKnown = true;
        fake.left = bytes;
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, MemoryConformance, FakeMemorySubject);

} // namespace clipwren
