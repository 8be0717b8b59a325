#include "tests/support/TemporaryFolder.h"

#include <random>
#include <stdexcept>
#include <string>

namespace clipwren {

TemporaryFolder::TemporaryFolder() {
    std::random_device random;
    for (int attempt = 0; attempt < 100; ++attempt) {
        folder = std::filesystem::temp_directory_path() / ("clipwren-test-" + std::to_string(random()));
        if (std::filesystem::create_directory(folder)) return;
    }
    throw std::runtime_error("no temporary folder could be made");
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

} // namespace clipwren
