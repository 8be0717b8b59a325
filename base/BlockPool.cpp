#include "base/BlockPool.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <new>

namespace clipwren {

namespace {

// Aligned to its own size, so that a piece tells its chunk. It is also the size of a large memory page.
constexpr std::size_t chunkSize = std::size_t{1} << 21;
constexpr std::size_t alignment = 64;

void* takeFromLibrary(std::size_t size, bool) {
    return ::operator new(size, std::align_val_t{size}, std::nothrow);
}

void giveBackToLibrary(void* memory, std::size_t size) { ::operator delete(memory, std::align_val_t{size}); }

constexpr BlockPool::Source library{takeFromLibrary, giveBackToLibrary};
std::atomic<const BlockPool::Source*> source = &library;

std::mutex lastingMutex;
std::vector<BlockPool*>& lasting() {
    static auto& pools = *new std::vector<BlockPool*>();
    return pools;
}

} // namespace

struct BlockPool::Chunk {
    void (*giveBack)(void* memory, std::size_t size); // to where it came from
    void* freePieces = nullptr;                       // given back; each begins with the address of the next
    std::size_t untouched = 0; // where the pieces begin that were never taken: their pages cost nothing yet
    std::size_t taken = 0;
    std::size_t openIndex = 0; // its place among the open ones

    static Chunk* of(void* piece) {
        const std::size_t offset = reinterpret_cast<std::uintptr_t>(piece) % chunkSize;
        return reinterpret_cast<Chunk*>(static_cast<std::byte*>(piece) - offset);
    }
    bool isFull(std::size_t pieceSize) const { return !freePieces && untouched + pieceSize > chunkSize; }
};

BlockPool::BlockPool(std::size_t pieceSize) : pieceSize(std::max(pieceSize, sizeof(void*))) {}

BlockPool::~BlockPool() {
    for (Chunk* chunk : open)
        chunk->giveBack(chunk, chunkSize);
}

BlockPool::Chunk* BlockPool::makeChunk() {
    open.reserve(open.size() + 1); // what may fail comes first
    const Source& from = *source;
    void* memory = from.take(chunkSize, chunkCount == 0);
    if (!memory) throw std::bad_alloc();
    auto* chunk = new (memory) Chunk{.giveBack = from.giveBack};
    chunk->untouched = (sizeof(Chunk) + alignment - 1) / alignment * alignment;
    chunk->openIndex = open.size();
    open.push_back(chunk);
    ++chunkCount;
    return chunk;
}

void* BlockPool::take() {
    const std::lock_guard lock(mutex);
    Chunk* chunk = open.empty() ? makeChunk() : open.back();
    void* piece = chunk->freePieces;
    if (piece) {
        chunk->freePieces = *static_cast<void**>(piece);
    } else {
        piece = reinterpret_cast<std::byte*>(chunk) + chunk->untouched;
        chunk->untouched += pieceSize;
    }
    ++chunk->taken;
    if (chunk->isFull(pieceSize)) open.pop_back();
    return piece;
}

void BlockPool::giveBack(void* piece) {
    const std::lock_guard lock(mutex);
    Chunk* chunk = Chunk::of(piece);
    if (chunk->isFull(pieceSize)) {
        chunk->openIndex = open.size();
        open.push_back(chunk);
    }
    *static_cast<void**>(piece) = chunk->freePieces;
    chunk->freePieces = piece;
    --chunk->taken;
    if (chunk->taken == 0 && open.size() > 1) release(chunk);
}

void BlockPool::release(Chunk* chunk) {
    open[chunk->openIndex] = open.back();
    open[chunk->openIndex]->openIndex = chunk->openIndex;
    open.pop_back();
    --chunkCount;
    chunk->giveBack(chunk, chunkSize);
}

void BlockPool::releaseSpare() {
    const std::lock_guard lock(mutex);
    const auto spare = std::ranges::find(open, std::size_t{0}, &Chunk::taken);
    if (spare != open.end()) release(*spare);
}

BlockPool& BlockPool::makeLasting(std::size_t pieceSize) {
    const std::lock_guard lock(lastingMutex);
    return *lasting().emplace_back(new BlockPool(pieceSize));
}

void BlockPool::releaseSpares() {
    const std::lock_guard lock(lastingMutex);
    for (BlockPool* pool : lasting())
        pool->releaseSpare();
}

void BlockPool::setSource(const Source& newSource) { source = &newSource; }

std::size_t BlockPool::byteCount() const {
    const std::lock_guard lock(mutex);
    return chunkCount * chunkSize;
}

} // namespace clipwren
