#include "platform/linux/Files.h"
#include "platform/linux/IniStore.h"
#include "platform/linux/IniText.h"
#include "tests/conformance/StoreConformance.h"
#include "tests/support/TemporaryFolder.h"

namespace clipwren {

struct IniStoreSubject {
    TemporaryFolder folder;
    std::filesystem::path file = folder.path() / "clipwren" / "clipwren.ini";
    IniStore real{file};

    Store& store() { return real; }
    void putText(std::string_view key, std::string_view text) {
        IniText ini(readSmallFile(file, 1000).value_or(std::string()));
        const auto dot = key.find('.');
        ini.set(key.substr(0, dot), key.substr(dot + 1), text);
        ASSERT_TRUE(replaceFile(file, ini.text()));
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Ini, StoreConformance, IniStoreSubject);

} // namespace clipwren
