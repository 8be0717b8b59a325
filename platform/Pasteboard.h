#pragma once

#include <filesystem>

namespace clipwren {

// The general clipboard. Main thread only.
class Pasteboard {
public:
    virtual ~Pasteboard() = default;

    virtual void clearContents() = 0;

    // Offers exactly one item, the file, in the forms in which programs of the platform paste files. It stays
    // there when this program ends. False when the clipboard cannot be owned.
    virtual bool writeFileURL(const std::filesystem::path& file) = 0;
};

} // namespace clipwren
