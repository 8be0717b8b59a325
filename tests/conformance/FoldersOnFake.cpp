#include "tests/conformance/FoldersConformance.h"
#include "tests/fakes/FakeFolders.h"

namespace clipwren {

struct FakeFoldersSubject {
    FakeFolders fake;

    FakeFoldersSubject() { fake.homeFolder = "/home/ada"; }
    Folders& folders() { return fake; }
    std::filesystem::path home() { return fake.homeFolder; }
    void report(std::optional<std::filesystem::path> pictures) { fake.picturesFolder = std::move(pictures); }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, FoldersConformance, FakeFoldersSubject);

} // namespace clipwren
