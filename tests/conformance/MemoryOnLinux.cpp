#include "platform/linux/LinuxMemory.h"
#include "tests/conformance/MemoryConformance.h"
#include "tests/support/TemporaryFolder.h"

#include <fstream>

namespace clipwren {

// A machine of files.
struct LinuxMemorySubject {
    TemporaryFolder root;
    LinuxMemory real{root.path()};

    Memory& memory() { return real; }
    void leave(std::int64_t bytes) {
        std::filesystem::create_directories(root.path() / "proc");
        std::ofstream(root.path() / "proc/meminfo") << "MemAvailable: " << bytes / 1024 << " kB\n";
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Linux, MemoryConformance, LinuxMemorySubject);

} // namespace clipwren
