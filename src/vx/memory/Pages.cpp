#include "vx/memory/Pages.h"

#include <atomic>
#include <cstdint>
#include <new>
#include <utility>

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

// Below the heap's threshold for consolidating its free lists on every release of a block, so
// that freeing a page stays cheap.
constexpr std::size_t kPageSize = 32 * 1024;
// Larger objects are heap blocks: a page would waste too much of its end on them.
constexpr std::size_t kLargestPaged = 512;
constexpr std::size_t kUnit = alignof(void*);

// Objects of a page may be freed on any thread (a document handed to another one), so its
// count is atomic; the thread filling it counts what it hands out in CFilling and adds that
// only when it gives the page up, so allocating costs no atomic operation.
struct CPage {
    // kFillingBias less the objects freed while the page is being filled; afterwards the
    // objects not yet freed.
    std::atomic<std::int64_t> live;
};
// More than a page can hold objects, so the count stays above zero while the page is filled.
constexpr std::int64_t kFillingBias = kPageSize;
constexpr std::size_t kPageHeader = sizeof(CPage);
// Each object is preceded by its page, or null for a heap block of its own.
constexpr std::size_t kObjectHeader = sizeof(CPage*);

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

// Subtracts objects from the page's count, and frees the page when none are left.
void Release(CPage* page, std::int64_t objects) noexcept {
    if (CountDown(page->live, objects) == objects) {
        Unpoison(page, kPageSize);
        ::operator delete(page);
    }
}

void GiveUpPage(CFilling& filling) noexcept {
    if (!filling.page) return;
    Release(filling.page, kFillingBias - filling.handedOut);
    filling = CFilling{};
}

void StartPage(CFilling& filling) {
    auto* page = static_cast<CPage*>(::operator new(kPageSize));
    page->live.store(kFillingBias, std::memory_order_relaxed);
    GiveUpPage(filling);
    filling.page = page;
    filling.next = reinterpret_cast<char*>(page) + kPageHeader;
    filling.end = reinterpret_cast<char*>(page) + kPageSize;
    Poison(filling.next, static_cast<std::size_t>(filling.end - filling.next));
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

void* WithHeader(void* block, CPage* page) {
    *static_cast<CPage**>(block) = page;
    return static_cast<char*>(block) + kObjectHeader;
}

std::size_t BlockSize(std::size_t size) {
    return (size + kObjectHeader + kUnit - 1) / kUnit * kUnit;
}

}  // namespace

CPageScope::CPageScope() noexcept {
    ++t_pages.scopes;
}

CPageScope::~CPageScope() {
    if (--t_pages.scopes > 0) return;
    for (CFilling& filling : t_pages.fillings)
        GiveUpPage(filling);
    FlushAll();  // what the parse freed goes back now
}

CHeapScope::CHeapScope() noexcept : m_suspendedScopes(std::exchange(t_pages.scopes, 0)) {}

CHeapScope::~CHeapScope() {
    t_pages.scopes = m_suspendedScopes;
}

void* AllocateSmall(std::size_t size, ePageStream stream) {
    const std::size_t block = BlockSize(size);
    if (t_pages.scopes == 0 || size > kLargestPaged) {
        return WithHeader(::operator new(block), nullptr);
    }
    CFilling& filling = t_pages.fillings[stream];
    if (static_cast<std::size_t>(filling.end - filling.next) < block) StartPage(filling);
    char* memory = filling.next;
    filling.next += block;
    ++filling.handedOut;
    Unpoison(memory, block);
    return WithHeader(memory, filling.page);
}

bool IsPaged(const void* memory) noexcept {
    return *reinterpret_cast<CPage* const*>(static_cast<const char*>(memory) - kObjectHeader);
}

void FreeSmall(void* memory, std::size_t size) noexcept {
    if (!memory) return;
    void* block = static_cast<char*>(memory) - kObjectHeader;
    CPage* page = *static_cast<CPage**>(block);
    if (!page) {
        ::operator delete(block);
        return;
    }
    // A use after free of a paged object is then still caught by AddressSanitizer.
    Poison(block, BlockSize(size));
    CountFree(page);
}

}  // namespace vel
