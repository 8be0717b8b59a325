#include "tests/fakes/FakeFiles.h"

#include <fstream>
#include <system_error>

namespace clipwren {

namespace fs = std::filesystem;

class FakeFiles::Written : public NewFile {
public:
    Written(FakeFiles& owner, std::shared_ptr<Entry> entry) : owner(owner), entry(std::move(entry)) {}
    ~Written() override { entry->isHeld = false; }

    bool write(std::span<const std::uint8_t> bytes) override {
        if (owner.isDead()) return false;
        const bool succeeds = owner.begin();
        // A disk that becomes full takes what still fits.
        const auto taken = succeeds ? bytes : bytes.first(bytes.size() / 2);
        std::ofstream(entry->path, std::ios::binary | std::ios::app)
            .write(reinterpret_cast<const char*>(taken.data()), static_cast<std::streamsize>(taken.size()));
        return succeeds;
    }
    bool sync() override {
        if (!owner.begin()) return false;
        entry->safeBytes = fs::file_size(entry->path);
        return true;
    }
    bool rename(const fs::path& name) override {
        std::error_code error;
        if (!owner.begin()) return false;
        fs::rename(entry->path, name, error);
        if (error) return false;
        entry->path = name;
        return true;
    }
    void remove() override {
        std::error_code ignored;
        if (owner.begin(true)) fs::remove(entry->path, ignored);
    }

private:
    FakeFiles& owner;
    const std::shared_ptr<Entry> entry;
};

bool FakeFiles::begin(bool isRemoval) {
    if (isDead()) return false;
    ++operations;
    if (faultyOperation == 0 || operations < faultyOperation) return true;
    return operations == faultyOperation ? false : fault == Fault::once || isRemoval;
}

std::unique_ptr<NewFile> FakeFiles::create(const fs::path& file) {
    std::error_code ignored;
    if (fs::exists(fs::symlink_status(file, ignored)) || !begin()) return nullptr;
    if (!std::ofstream(file, std::ios::binary)) return nullptr;
    entries.push_back(std::make_shared<Entry>(Entry{file}));
    return std::make_unique<Written>(*this, entries.back());
}

bool FakeFiles::removeAbandoned(const fs::path& file) {
    std::error_code error;
    if (!fs::is_regular_file(fs::symlink_status(file, error))) return false;
    for (const auto& entry : entries)
        if (entry->isHeld && entry->path == file) return false;
    return begin(true) && fs::remove(file, error);
}

void FakeFiles::losePower() {
    std::error_code ignored;
    for (const auto& entry : entries)
        fs::resize_file(entry->path, entry->safeBytes, ignored);
    restart();
}

void FakeFiles::restart() {
    entries.clear();
    faultyOperation = 0;
}

} // namespace clipwren
