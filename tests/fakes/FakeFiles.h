#pragma once

#include "platform/Files.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace clipwren {

// Files in the test's own folders, on a disk that fails when the test says so.
class FakeFiles : public Files {
public:
    enum class Fault {
        once,    // the operation fails, and the next ones go as ever
        forGood, // it fails, and so does everything after it but removing: the disk is full
        death    // it fails half way, and after it nothing has any effect: the process has been killed
    };
    // What happens at which operation; the first one is 1. None fails at 0.
    int faultyOperation = 0;
    Fault fault = Fault::once;
    // How many there were: files made, written, synced, renamed and removed.
    int operations = 0;

    // The power fails: nobody holds any file, and files lose what was not synced.
    void losePower();
    // The process ends, and with it what it held. A new one finds a sound disk.
    void restart();

    std::unique_ptr<NewFile> create(const std::filesystem::path& file) override;
    bool removeAbandoned(const std::filesystem::path& file) override;

private:
    struct Entry {
        std::filesystem::path path;
        std::uintmax_t safeBytes = 0;
        bool isHeld = true;
    };
    class Written;

    // Whether the operation that begins succeeds.
    bool begin(bool isRemoval = false);
    bool isDead() const {
        return fault == Fault::death && faultyOperation > 0 && operations >= faultyOperation;
    }

    std::vector<std::shared_ptr<Entry>> entries;
};

} // namespace clipwren
