#include "tests/conformance/PasteboardConformance.h"
#include "tests/fakes/FakeServices.h"

namespace clipwren {

struct FakePasteboardSubject {
    FakePasteboard fake;

    Pasteboard& pasteboard() { return fake; }
    std::vector<std::filesystem::path> files() { return fake.items; }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, PasteboardConformance, FakePasteboardSubject);

} // namespace clipwren
