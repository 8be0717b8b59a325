#include "tests/conformance/WorkspaceConformance.h"
#include "tests/fakes/FakeServices.h"

namespace clipwren {

struct FakeWorkspaceSubject {
    FakeWorkspace fake;

    Workspace& workspace() { return fake; }
    std::vector<std::filesystem::path> shown(std::size_t) { return fake.opened; }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, WorkspaceConformance, FakeWorkspaceSubject);

} // namespace clipwren
