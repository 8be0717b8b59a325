#pragma once

#include <cstddef>
#include <mutex>
#include <vector>

namespace clipwren {

// Memory for very many pieces of one size, taken from the system in large chunks: a recording keeps hundreds
// of thousands of picture blocks, and asking the system's allocator for each costs more than filling it.
//
// A chunk goes back to the system when its last piece is given back, but for one that is kept at hand. All
// operations may be called from any thread.
class BlockPool {
public:
    // `pieceSize` is a multiple of what the piece must be aligned to, at most 64.
    explicit BlockPool(std::size_t pieceSize);
    ~BlockPool();
    BlockPool(const BlockPool&) = delete;
    BlockPool& operator=(const BlockPool&) = delete;

    // Uninitialised memory of the piece's size. Throws bad_alloc where the system has none left.
    void* take();
    void giveBack(void* piece);

    // Gives the chunk that is kept at hand back too, if nothing of it is taken.
    void releaseSpare();

    // A pool that is never destroyed: pieces may live as long as anything does.
    static BlockPool& makeLasting(std::size_t pieceSize);
    // releaseSpare() for all of those.
    static void releaseSpares();

    // How much is held from the system.
    std::size_t byteCount() const;

    // Where chunks come from and go back to. `isOnly`: the pool has no other, so that large pages would waste
    // memory. What `take` returns is aligned to its size, a power of two; null where there is none left.
    struct Source {
        void* (*take)(std::size_t size, bool isOnly);
        void (*giveBack)(void* memory, std::size_t size);
    };
    // The C++ library's memory at first. A platform may know better: memory that goes back to the system at
    // once, and pages of its largest size. Any thread; counts for the chunks made afterwards, and stays for
    // ever.
    static void setSource(const Source& newSource);

private:
    struct Chunk;
    Chunk* makeChunk();
    void release(Chunk* chunk);

    const std::size_t pieceSize;
    mutable std::mutex mutex;
    std::vector<Chunk*> open; // those with a free piece, in no order
    std::size_t chunkCount = 0;
};

// Lets standard containers and shared pointers of single objects use one pool for each of their types.
template <typename T>
struct BlockAllocator {
    using value_type = T;

    BlockAllocator() = default;
    template <typename Other>
    BlockAllocator(const BlockAllocator<Other>&) {}

    T* allocate(std::size_t) { return static_cast<T*>(pool().take()); }
    void deallocate(T* piece, std::size_t) { pool().giveBack(piece); }

    static BlockPool& pool() {
        static BlockPool& shared = BlockPool::makeLasting(sizeof(T));
        return shared;
    }

    friend bool operator==(const BlockAllocator&, const BlockAllocator&) { return true; }
};

} // namespace clipwren
