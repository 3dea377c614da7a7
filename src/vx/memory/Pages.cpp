#include "vx/memory/Pages.h"

#include <cstdint>
#include <new>
#include <utility>

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

struct CPage {
    std::int64_t live;  // objects not yet freed, plus one while the page is being filled
};
constexpr std::size_t kPageHeader = sizeof(CPage);
// Each object is preceded by its page, or null for a heap block of its own.
constexpr std::size_t kObjectHeader = sizeof(CPage*);

struct CFilling {
    CPage* page = nullptr;
    char* next = nullptr;
    char* end = nullptr;
};
struct CThreadPages {
    CFilling fillings[kStreamCount];
    int scopes = 0;
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

void Release(CPage* page) noexcept {
    if (--page->live == 0) {
        Unpoison(page, kPageSize);
        ::operator delete(page);
    }
}

void GiveUpPage(CFilling& filling) noexcept {
    if (!filling.page) return;
    Release(filling.page);
    filling = CFilling{};
}

void StartPage(CFilling& filling) {
    auto* page = static_cast<CPage*>(::operator new(kPageSize));
    page->live = 1;
    GiveUpPage(filling);
    filling.page = page;
    filling.next = reinterpret_cast<char*>(page) + kPageHeader;
    filling.end = reinterpret_cast<char*>(page) + kPageSize;
    Poison(filling.next, static_cast<std::size_t>(filling.end - filling.next));
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
    ++filling.page->live;
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
    Release(page);
}

}  // namespace vel
