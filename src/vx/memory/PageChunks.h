#pragma once
// The memory of pages: cut from chunks of one huge page that the library maps itself, so that a
// parse takes a fault per 2 MiB instead of one per 4 KiB, and pages freed by one parse are
// reused by the next without depending on what the heap keeps or gives back.
#include <cstddef>

#include "vx/memory/SystemMemory.h"

namespace vel {

// Below the heap's threshold for consolidating its free lists on every release of a block, so
// that freeing a page that is a heap block (where no chunk can be mapped) stays cheap.
constexpr unsigned kPageBits = 15;
constexpr std::size_t kPageSize = std::size_t{1} << kPageBits;
constexpr std::size_t kPagesPerChunk = kHugePageSize / kPageSize;

struct CChunk;

// kPageSize bytes aligned to their size, and the chunk they belong to; nullptr when no chunk
// can be mapped. std::bad_alloc when the heap has no room to keep track of a new chunk.
void* TakeChunkPage(CChunk*& chunk);
// Gives a page back to its chunk. A chunk with no page in use is kept for reuse, up to a bound.
void ReturnChunkPage(CChunk* chunk, void* page) noexcept;
// How many chunks are mapped, and how many of those have no page in use.
struct CChunkCounts {
    int mapped;
    int unused;
};
CChunkCounts CountChunks() noexcept;

}  // namespace vel
