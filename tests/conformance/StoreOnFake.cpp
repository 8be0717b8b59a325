#include "tests/conformance/StoreConformance.h"
#include "tests/fakes/FakeStore.h"

namespace clipwren {

struct FakeStoreSubject {
    FakeStore fake;

    Store& store() { return fake; }
    void putText(const char* key, const char* text) { fake.values[key] = text; }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, StoreConformance, FakeStoreSubject);

} // namespace clipwren
