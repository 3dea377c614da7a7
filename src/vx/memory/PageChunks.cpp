#include "vx/memory/PageChunks.h"

#include <bit>
#include <cstdint>
#include <mutex>

#include "vx/platform/Package.h"

namespace vel {

namespace {

static_assert(kPagesPerChunk == 64, "a chunk's pages are the bits of one word");
constexpr std::uint64_t kAllPagesFree = ~std::uint64_t{0};

// Empty chunks kept as they are for the next parse. Beyond these, the system may take the
// memory of up to kKeptChunks more back when it runs short (until then they cost no fault
// either); the rest are unmapped. A parse of a document of some hundred megabytes then finds
// its pages again, while a host that parsed it once does not hold on to them at any cost.
constexpr int kWarmChunks = 8;
constexpr int kKeptChunks = 256;

}  // namespace

struct CChunk {
    char* base;
    std::uint64_t freePages = kAllPagesFree;  // bit i: page i is not in use
    CChunk* previous = nullptr;
    CChunk* next = nullptr;
    // Taken from by one thread alone, and in no list meanwhile: pages of two threads parsing at
    // once interleaved in one chunk made each of them about a tenth slower.
    bool held = false;
};

namespace {

class CChunkList {
  public:
    CChunk* First() const noexcept { return m_first; }
    int Count() const noexcept { return m_count; }

    void Push(CChunk* chunk) noexcept {
        chunk->previous = nullptr;
        chunk->next = m_first;
        if (m_first) m_first->previous = chunk;
        m_first = chunk;
        ++m_count;
    }

    void Remove(CChunk* chunk) noexcept {
        (chunk->previous ? chunk->previous->next : m_first) = chunk->next;
        if (chunk->next) chunk->next->previous = chunk->previous;
        --m_count;
    }

    CChunk* Pop() noexcept {
        CChunk* first = m_first;
        if (first) Remove(first);
        return first;
    }

  private:
    CChunk* m_first = nullptr;
    int m_count = 0;
};

// Pages are taken and given back one per 32 KiB of objects, so a lock costs little.
struct CChunks {
    std::mutex mutex;
    CChunkList partial;  // chunks with pages both free and in use; pages are taken from the first
    CChunkList empty;    // the most recently emptied first
    int mapped = 0;
    int heldUnused = 0;  // held chunks with no page in use
    // The first chunk of a process is mapped in small pages, so that a process that only reads
    // small documents keeps a few of them resident rather than 2 MiB; it is asked for huge
    // pages once a second chunk is needed.
    CChunk* smallPaged = nullptr;
    // Set when the system refused a chunk: pages come from the heap from then on, rather than
    // asking again for each.
    bool refused = false;
};
CChunks g_chunks;

// Takes a chunk out of the counts before it is unmapped; called with the lock held.
void ForgetChunk(CChunk* chunk) noexcept {
    --g_chunks.mapped;
    if (g_chunks.smallPaged == chunk) g_chunks.smallPaged = nullptr;
}

void UnmapChunk(CChunk* chunk) noexcept {
    Unmap(chunk->base, kHugePageSize);
    delete chunk;
}

// Whether an emptied chunk is kept; called with the lock held.
bool KeepEmptyChunk(CChunk* chunk) noexcept {
    const int kept = g_chunks.empty.Count();
    if (kept >= kWarmChunks + kKeptChunks) return false;
    if (kept >= kWarmChunks) DiscardLazily(chunk->base, kHugePageSize);
    g_chunks.empty.Push(chunk);
    return true;
}

// Puts a chunk no longer held where its free pages are found again; true when it is to be
// unmapped. Called with the lock held.
bool LetGo(CChunk* chunk) noexcept {
    chunk->held = false;
    if (chunk->freePages == 0) return false;  // full: back in a list when a page comes back
    if (chunk->freePages != kAllPagesFree) {
        g_chunks.partial.Push(chunk);
        return false;
    }
    --g_chunks.heldUnused;
    if (KeepEmptyChunk(chunk)) return false;
    ForgetChunk(chunk);
    return true;
}

// The chunk the thread takes its pages from, let go when the thread ends.
struct CHeldChunk {
    CChunk* chunk = nullptr;
    ~CHeldChunk() { Release(false); }
    // Lets the chunk go; with onlyUnused, only when none of its pages is in use.
    void Release(bool onlyUnused) noexcept {
        CChunk* unmapped = nullptr;
        {
            std::lock_guard<std::mutex> lock(g_chunks.mutex);
            if (!chunk || (onlyUnused && chunk->freePages != kAllPagesFree)) return;
            if (LetGo(chunk)) unmapped = chunk;
            chunk = nullptr;
        }
        if (unmapped) UnmapChunk(unmapped);
    }
};
thread_local CHeldChunk t_held;

void ReleaseEmptyChunks() {
    t_held.Release(true);
    CChunkList released;
    {
        std::lock_guard<std::mutex> lock(g_chunks.mutex);
        while (CChunk* chunk = g_chunks.empty.Pop()) {
            released.Push(chunk);
            ForgetChunk(chunk);
        }
    }
    while (CChunk* chunk = released.Pop())
        UnmapChunk(chunk);
}

// Called with the lock held.
void CountMapped(CChunk* chunk) noexcept {
    if (g_chunks.mapped++ == 0) {
        g_chunks.smallPaged = chunk;
    } else if (g_chunks.smallPaged) {
        AdviseHuge(g_chunks.smallPaged->base, kHugePageSize);
        g_chunks.smallPaged = nullptr;
    }
}

// A new chunk, or nullptr when the system maps none. Called with the lock held.
CChunk* MapChunk() {
    if (g_chunks.refused) return nullptr;
    const bool first = g_chunks.mapped == 0;
    if (first) vx::RegisterFinalizer(ReleaseEmptyChunks);
    void* base = first ? MapAligned(kHugePageSize) : MapHuge(kHugePageSize);
    if (!base) {
        g_chunks.refused = true;
        return nullptr;
    }
    CChunk* chunk = nullptr;
    try {
        chunk = new CChunk{static_cast<char*>(base)};
    } catch (...) {
        Unmap(base, kHugePageSize);
        throw;
    }
    CountMapped(chunk);
    return chunk;
}

// A chunk for the thread to hold: one with free pages, or a new one. Called with the lock held.
CChunk* HoldAnother() {
    CChunk* chunk = g_chunks.partial.Pop();
    if (!chunk) chunk = g_chunks.empty.Pop();
    if (!chunk) chunk = MapChunk();
    if (!chunk) return nullptr;
    if (chunk->freePages == kAllPagesFree) ++g_chunks.heldUnused;
    chunk->held = true;
    return chunk;
}

}  // namespace

void* TakeChunkPage(CChunk*& chunk) {
    std::lock_guard<std::mutex> lock(g_chunks.mutex);
    CChunk*& held = t_held.chunk;
    if (!held || held->freePages == 0) {
        CChunk* next = HoldAnother();
        if (!next) return nullptr;
        if (held) held->held = false;  // full, so in no list
        held = next;
    }
    chunk = held;
    if (chunk->freePages == kAllPagesFree) --g_chunks.heldUnused;
    const int index = std::countr_zero(chunk->freePages);
    chunk->freePages &= chunk->freePages - 1;
    return chunk->base + static_cast<std::size_t>(index) * kPageSize;
}

void ReturnChunkPage(CChunk* chunk, void* page) noexcept {
    const auto index = static_cast<unsigned>((static_cast<char*>(page) - chunk->base) >> kPageBits);
    {
        std::lock_guard<std::mutex> lock(g_chunks.mutex);
        const bool wasFull = chunk->freePages == 0;
        chunk->freePages |= std::uint64_t{1} << index;
        if (chunk->held) {
            if (chunk->freePages == kAllPagesFree) ++g_chunks.heldUnused;
            return;
        }
        if (chunk->freePages != kAllPagesFree) {
            if (wasFull) g_chunks.partial.Push(chunk);
            return;
        }
        g_chunks.partial.Remove(chunk);
        if (KeepEmptyChunk(chunk)) return;
        ForgetChunk(chunk);
    }
    UnmapChunk(chunk);
}

CChunkCounts CountChunks() noexcept {
    std::lock_guard<std::mutex> lock(g_chunks.mutex);
    return {g_chunks.mapped, g_chunks.empty.Count() + g_chunks.heldUnused};
}

}  // namespace vel
