#include "tests/conformance/FilesConformance.h"
#include "tests/fakes/FakeFiles.h"

namespace clipwren {

struct FakeFilesSubject {
    FakeFiles fake;
    Files& files() { return fake; }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, FilesConformance, FakeFilesSubject);

} // namespace clipwren
