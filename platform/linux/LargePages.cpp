#include "platform/linux/LargePages.h"

#include <cstdint>
#include <sys/mman.h>

namespace clipwren {

namespace {

// Twice as many addresses as needed hold a place of the right alignment; the rest goes back.
void* takeAligned(std::size_t size, bool isOnly) {
    void* memory = mmap(nullptr, 2 * size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) return nullptr;
    auto* begin = static_cast<std::byte*>(memory);
    const std::size_t before = (size - reinterpret_cast<std::uintptr_t>(memory) % size) % size;
    if (before > 0) munmap(begin, before);
    munmap(begin + before + size, size - before);
    if (!isOnly) (void)madvise(begin + before, size, MADV_HUGEPAGE);
    return begin + before;
}

void giveBack(void* memory, std::size_t size) { munmap(memory, size); }

} // namespace

const BlockPool::Source& largePages() {
    static constexpr BlockPool::Source source{takeAligned, giveBack};
    return source;
}

} // namespace clipwren
