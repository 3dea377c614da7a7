#include "vx/memory/Pages.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <utility>

#include "vx/memory/PageChunks.h"
#include "vx/platform/Threads.h"

#if defined(__SANITIZE_ADDRESS__)
#define VX_POISON_PAGES 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VX_POISON_PAGES 1
#endif
#endif

#ifdef VX_POISON_PAGES
#include <sanitizer/asan_interface.h>
#endif

namespace vel {

namespace {

// Pages are aligned to their size: an object's page is its address with the low bits cleared, so
// objects carry no header.
//
// Under AddressSanitizer pages are heap blocks, as they are where the system maps no chunks:
// its leak check then reports a page a leaked object keeps, and scans pages for the heap blocks
// their objects point to.
#ifdef VX_POISON_PAGES
constexpr bool kPagesFromChunks = false;
#else
constexpr bool kPagesFromChunks = true;
#endif
// What a page takes of its slot: the heap keeps a header of two words in front of each block,
// and a page that leaves room for it lets the heap put the next page at the next slot instead
// of leaving most of a slot unused between them. (Aligned new would round the size up again.)
// Pages cut from chunks take the same, so that every page is alike.
constexpr std::size_t kPageBytes = kPageSize - 2 * sizeof(void*);
// Larger objects are heap blocks: a page would waste too much of its end on them.
constexpr std::size_t kLargestPaged = 512;
constexpr std::size_t kUnit = alignof(void*);
// Blocks of this size and more are mapped for themselves (the text of a whole document), so that
// filling them costs a fault per huge page; under AddressSanitizer they stay heap blocks, which
// its leak check sees.
#ifdef VX_POISON_PAGES
constexpr std::size_t kSmallestMapped = SIZE_MAX;
#else
constexpr std::size_t kSmallestMapped = kHugePageSize;
#endif

// Objects of a page may be freed on any thread (a document handed to another one), so its
// count is atomic; the thread filling it counts what it hands out in CFilling and adds that
// only when it gives the page up, so allocating costs no atomic operation.
struct CPage {
    // kFillingBias less the objects freed while the page is being filled; afterwards the
    // objects not yet freed.
    std::atomic<std::int64_t> live;
    CChunk* chunk;  // nullptr for a page that is a heap block
};
// More than a page can hold objects, so the count stays above zero while the page is filled.
constexpr std::int64_t kFillingBias = kPageSize;
constexpr std::size_t kPageHeader = sizeof(CPage);

// Which page-sized slots of the address space hold a live page, one bit each, so that a free
// tells a paged object from a heap block by its address alone. A heap block never lies on a
// live page, and a page's bit is cleared before its memory goes back to the heap. Leaves are
// made on first use and kept for the life of the process.
constexpr unsigned kAddressBits = 48;
constexpr unsigned kLeafBits = 16;  // pages per leaf, as a power of two: 2 GiB of addresses
constexpr unsigned kRootBits = kAddressBits - kPageBits - kLeafBits;
struct CPageMapLeaf {
    std::atomic<std::uint64_t> words[(std::size_t{1} << kLeafBits) / 64];
};
std::atomic<CPageMapLeaf*> g_pageMap[std::size_t{1} << kRootBits];

std::uintptr_t PageNumber(const void* memory) noexcept {
    return reinterpret_cast<std::uintptr_t>(memory) >> kPageBits;
}

std::atomic<std::uint64_t>& MapWord(CPageMapLeaf& leaf, std::uintptr_t page) noexcept {
    return leaf.words[(page & ((std::uintptr_t{1} << kLeafBits) - 1)) / 64];
}

std::uint64_t MapBit(std::uintptr_t page) noexcept {
    return std::uint64_t{1} << (page % 64);
}

// The leaf for page, made when missing; std::bad_alloc for an address the map cannot hold.
CPageMapLeaf& MakeMapLeaf(std::uintptr_t page) {
    if (page >> (kRootBits + kLeafBits)) throw std::bad_alloc();
    std::atomic<CPageMapLeaf*>& slot = g_pageMap[page >> kLeafBits];
    CPageMapLeaf* leaf = slot.load(std::memory_order_acquire);
    if (leaf) return *leaf;
    auto made = std::make_unique<CPageMapLeaf>();
    if (!slot.compare_exchange_strong(leaf, made.get(), std::memory_order_acq_rel)) return *leaf;
    return *made.release();
}

CPageMapLeaf* FindMapLeaf(std::uintptr_t page) noexcept {
    if (page >> (kRootBits + kLeafBits)) return nullptr;
    return g_pageMap[page >> kLeafBits].load(std::memory_order_acquire);
}

bool IsLivePage(std::uintptr_t page) noexcept {
    CPageMapLeaf* leaf = FindMapLeaf(page);
    return leaf && (MapWord(*leaf, page).load(std::memory_order_acquire) & MapBit(page));
}

// Whether memory lies where a page's objects can: a page leaves the end of its slot to the heap,
// and a heap that does not keep a header there could put a small block in it.
bool InPageArea(const void* memory) noexcept {
    return (reinterpret_cast<std::uintptr_t>(memory) & (kPageSize - 1)) < kPageBytes;
}

CPage* PageOf(const void* memory) noexcept {
    return reinterpret_cast<CPage*>(PageNumber(memory) << kPageBits);
}

struct CFilling {
    CPage* page = nullptr;
    char* next = nullptr;
    char* end = nullptr;
    std::int64_t handedOut = 0;  // objects allocated on page
};
// Frees on a thread are counted against the pages they last fell on and handed to a page's
// count in one step when they move on: objects of a page are mostly freed together, and one
// atomic subtraction per run costs much less than one per object. Two pages, because objects
// and their texts lie on pages of their own and are freed alternately. So the last two pages a
// thread freed on outside a parse go back only once it frees on others, parses again or ends.
struct CPendingFrees {
    CPage* page = nullptr;
    std::int64_t objects = 0;
};
struct CThreadPages {
    CFilling fillings[kStreamCount];
    CPendingFrees pending[2];  // the page freed on last first
    int scopes = 0;
    bool flushAtExit = false;
};
thread_local CThreadPages t_pages;
std::atomic<PageScopeEndHook> g_scopeEndHook{nullptr};

void Poison([[maybe_unused]] const void* memory, [[maybe_unused]] std::size_t size) {
#ifdef VX_POISON_PAGES
    ASAN_POISON_MEMORY_REGION(memory, size);
#endif
}

void Unpoison([[maybe_unused]] const void* memory, [[maybe_unused]] std::size_t size) {
#ifdef VX_POISON_PAGES
    ASAN_UNPOISON_MEMORY_REGION(memory, size);
#endif
}

void FreePageMemory(CPage* page) noexcept {
    if (page->chunk) {
        ReturnChunkPage(page->chunk, page);
    } else {
        std::free(page);
    }
}

CPage* NewPage() {
    CChunk* chunk = nullptr;
    void* memory = kPagesFromChunks ? TakeChunkPage(chunk) : nullptr;
    if (!memory && posix_memalign(&memory, kPageSize, kPageBytes) != 0) throw std::bad_alloc();
    auto* page = static_cast<CPage*>(memory);
    page->chunk = chunk;
    return page;
}

// Subtracts objects from the page's count, and frees the page when none are left.
void Release(CPage* page, std::int64_t objects) noexcept {
    if (CountDown(page->live, objects) != objects) return;
    const std::uintptr_t number = PageNumber(page);
    MapWord(*FindMapLeaf(number), number).fetch_and(~MapBit(number), std::memory_order_release);
    Unpoison(page, kPageBytes);
    FreePageMemory(page);
}

void GiveUpPage(CFilling& filling) noexcept {
    if (!filling.page) return;
    Release(filling.page, kFillingBias - filling.handedOut);
    filling = CFilling{};
}

void StartPage(CFilling& filling) {
    CPage* page = NewPage();
    const std::uintptr_t number = PageNumber(page);
    try {
        MapWord(MakeMapLeaf(number), number).fetch_or(MapBit(number), std::memory_order_release);
    } catch (const std::bad_alloc&) {
        FreePageMemory(page);
        throw;
    }
    page->live.store(kFillingBias, std::memory_order_relaxed);
    GiveUpPage(filling);
    filling.page = page;
    filling.next = reinterpret_cast<char*>(page) + kPageHeader;
    filling.end = reinterpret_cast<char*>(page) + kPageBytes;
    Poison(filling.next, static_cast<std::size_t>(filling.end - filling.next));
}

char* Take(CFilling& filling, std::size_t block) noexcept {
    char* memory = filling.next;
    filling.next += block;
    ++filling.handedOut;
    Unpoison(memory, block);
    return memory;
}

// Out of line, so that the usual allocation stays a few instructions.
[[gnu::noinline]] char* TakeFromNewPage(CFilling& filling, std::size_t block) {
    StartPage(filling);
    return Take(filling, block);
}

void Flush(CPendingFrees& pending) noexcept {
    if (pending.page) Release(pending.page, pending.objects);
    pending = CPendingFrees{};
}

void FlushAll() noexcept {
    for (CPendingFrees& pending : t_pages.pending)
        Flush(pending);
}

// Hands the thread's pending frees over when it ends.
struct CExitFlush {
    ~CExitFlush() { FlushAll(); }
};

// A free on a page other than the last one freed on; out of line, so that the usual case stays
// a few instructions.
[[gnu::noinline]] void CountFreeOnOtherPage(CPage* page) noexcept {
    CPendingFrees* pending = t_pages.pending;
    if (pending[1].page == page) {
        ++pending[1].objects;
        std::swap(pending[0], pending[1]);
        return;
    }
    if (!t_pages.flushAtExit) {
        [[maybe_unused]] static thread_local CExitFlush exitFlush;
        t_pages.flushAtExit = true;
    }
    Flush(pending[1]);
    pending[1] = pending[0];
    pending[0] = CPendingFrees{page, 1};
}

void CountFree(CPage* page) noexcept {
    CPendingFrees& last = t_pages.pending[0];
    if (last.page == page) {
        ++last.objects;
    } else {
        CountFreeOnOtherPage(page);
    }
}

// Out of line, so that the usual allocation stays a few instructions.
[[gnu::noinline]] void* AllocateUnpaged(std::size_t size) {
    if (size < kSmallestMapped) return ::operator new(size);
    void* memory = MapHuge(size);
    if (!memory) throw std::bad_alloc();
    return memory;
}

void FreeUnpaged(void* memory, std::size_t size) noexcept {
    if (size < kSmallestMapped) {
        ::operator delete(memory);
    } else {
        Unmap(memory, size);
    }
}

std::size_t BlockSize(std::size_t size) {
    // Never empty: the next object must not share its address, nor one at a page's end lie on
    // the next page.
    return size == 0 ? kUnit : (size + kUnit - 1) / kUnit * kUnit;
}

}  // namespace

CPageScope::CPageScope() noexcept {
    ++t_pages.scopes;
}

CPageScope::~CPageScope() {
    if (--t_pages.scopes > 0) return;
    // First, so that the strings the hook lets go of are freed with the rest.
    if (PageScopeEndHook hook = g_scopeEndHook.load(std::memory_order_acquire)) hook();
    for (CFilling& filling : t_pages.fillings)
        GiveUpPage(filling);
    FlushAll();  // what the parse freed goes back now
}

bool InPageScope() noexcept {
    return t_pages.scopes > 0;
}

PageScopeEndHook SetPageScopeEndHook(PageScopeEndHook hook) noexcept {
    return g_scopeEndHook.exchange(hook, std::memory_order_acq_rel);
}

CHeapScope::CHeapScope() noexcept : m_suspendedScopes(std::exchange(t_pages.scopes, 0)) {}

CHeapScope::~CHeapScope() {
    t_pages.scopes = m_suspendedScopes;
}

void* AllocateSmall(std::size_t size, ePageStream stream) {
    if (t_pages.scopes == 0 || size > kLargestPaged) return AllocateUnpaged(size);
    const std::size_t block = BlockSize(size);
    CFilling& filling = t_pages.fillings[stream];
    if (static_cast<std::size_t>(filling.end - filling.next) < block)
        return TakeFromNewPage(filling, block);
    return Take(filling, block);
}

bool IsPaged(const void* memory) noexcept {
    return InPageArea(memory) && IsLivePage(PageNumber(memory));
}

void FreeSmall(void* memory, std::size_t size) noexcept {
    if (!memory) return;
    CPage* page = PageOf(memory);
    // The pages last freed on are alive while this thread holds frees of them back: no look-up.
    const bool paged = size <= kLargestPaged && InPageArea(memory) &&
                       (page == t_pages.pending[0].page || page == t_pages.pending[1].page ||
                        IsLivePage(PageNumber(memory)));
    if (!paged) {
        FreeUnpaged(memory, size);
        return;
    }
    // A use after free of a paged object is then still caught by AddressSanitizer.
    Poison(memory, BlockSize(size));
    CountFree(page);
}

}  // namespace vel
