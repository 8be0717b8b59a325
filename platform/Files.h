#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>

namespace clipwren {

// A file in the making. One thread at a time. Its process holds it: as long as this object lives, and the
// process does, no `removeAbandoned` takes the file away.
class NewFile {
public:
    // Closes the file, which stays.
    virtual ~NewFile() = default;

    // Appends the bytes. False when not all of them could be, as on a full disk.
    virtual bool write(std::span<const std::uint8_t> bytes) = 0;
    // Returns once all bytes would survive a power failure. False when that cannot be.
    virtual bool sync() = 0;
    // Gives the file another name in its folder in one step; a file of that name is replaced. After a power
    // failure it has the one name or the other. False when it has kept its name.
    virtual bool rename(const std::filesystem::path& name) = 0;
    // Takes the file away again. A failure is not reported.
    virtual void remove() = 0;
};

// What has to be done to files beyond what the language's own library can. Any thread.
class Files {
public:
    virtual ~Files() = default;

    // Makes an empty file. Nothing when there is something of that name already, and when it cannot be made.
    virtual std::unique_ptr<NewFile> create(const std::filesystem::path& file) = 0;
    // Removes a file that `create` has made and that no living process holds any more. False when there is no
    // such file, when it is held, or when that cannot be told here.
    virtual bool removeAbandoned(const std::filesystem::path& file) = 0;
};

} // namespace clipwren
