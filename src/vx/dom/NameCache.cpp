#include "vx/dom/NameCache.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <new>

#include "vx/memory/Pages.h"
#include "vx/platform/Package.h"

namespace vx {

namespace {

std::u16string_view View(const CVelStrW& text) {
    return {text.c_str(), static_cast<std::size_t>(text.GetLength())};
}

bool SameUnits(const CVelStrW& text, std::u16string_view units) {
    return static_cast<std::size_t>(text.GetLength()) == units.size() &&
           velstr::SameUnits(text.c_str(), units.data(), static_cast<int>(units.size()));
}

// At most half full, so probes stay short.
std::size_t TableSize(int capacity) {
    std::size_t size = 8;
    while (size < 2 * static_cast<std::size_t>(capacity))
        size *= 2;
    return size;
}

constexpr std::size_t kAddressSlots = 256;

}  // namespace

CNameCache::CNameCache(int capacity)
    : m_capacity(capacity),
      m_entries(capacity > 0 ? capacity : 0),
      m_slots(TableSize(capacity)),
      m_byAddress(kAddressSlots, -1) {}

// Inlined in both callers: every name a parse makes passes here once or twice.
[[gnu::always_inline]] inline int CNameCache::EntryFor(const CVelStrW& text) {
    // Equal addresses are one shared buffer, so equal texts.
    const int hint = m_byAddress[AddressSlot(text.c_str())];
    if (hint >= 0 && m_entries[hint].text.c_str() == text.c_str()) {
        MakeNewest(hint);
        return hint;
    }
    return Use(View(text), [&] { return text; });
}

CVelStrW CNameCache::Intern(const CVelStrW& text) {
    if (m_capacity <= 0) return text;
    return m_entries[EntryFor(text)].text;
}

void CNameCache::InternInPlace(CVelStrW& text) {
    if (m_capacity <= 0) return;
    const CVelStrW& cached = m_entries[EntryFor(text)].text;
    if (cached.c_str() != text.c_str()) text = cached;
}

CVelStrW CNameCache::Intern(const char16_t* text, int length) {
    if (m_capacity <= 0) return CVelStrW(text, length);
    return m_entries[Use({text, static_cast<std::size_t>(length)},
                         [&] { return CVelStrW(text, length); })]
        .text;
}

template <class MakeString>
int CNameCache::Use(std::u16string_view units, MakeString make) {
    // Tree building interns again what the parser has just interned: no need to look it up.
    if (m_newest >= 0 && SameUnits(m_entries[m_newest].text, units)) return m_newest;
    const auto hash =
        static_cast<std::uint32_t>(velstr::HashUnits(units.data(), static_cast<int>(units.size())));
    std::size_t slot = FindSlot(units, hash);
    int entry = m_slots[slot].entry;
    if (entry >= 0) {
        MakeNewest(entry);
        m_byAddress[AddressSlot(m_entries[entry].text.c_str())] = entry;
        return entry;
    }
    const bool full = m_size == m_capacity;
    entry = FreeEntry();
    if (full) slot = EmptySlot(hash);  // the drop may have moved the gap nearer
    Entry& fresh = m_entries[entry];
    fresh.text = make();
    // A cached string outlives the parse that made it, yet most are dropped again within the
    // parse: the cache shares the parse's own string and copies it off the pages only if it
    // still holds it when the parse ends.
    if (vel::InPageScope()) {
        m_mayHoldPages = true;
    } else {
        fresh.text = fresh.text.OffPages();
    }
    fresh.slot = static_cast<std::uint32_t>(slot);
    m_slots[slot] = {hash, entry};
    m_byAddress[AddressSlot(fresh.text.c_str())] = entry;
    LinkNewest(entry);
    // The next string to drop is known now, and releasing it touches its count, which by
    // then has mostly left the processor's caches: fetch it while other work goes on.
    if (full) __builtin_prefetch(m_entries[m_oldest].text.c_str(), 1);
    return entry;
}

void CNameCache::MoveOffPages() noexcept {
    if (!m_mayHoldPages) return;
    m_mayHoldPages = false;
    try {
        for (int entry = 0; entry < m_size; ++entry) {
            CVelStrW& text = m_entries[entry].text;
            const char16_t* before = text.c_str();
            text = text.OffPages();
            if (text.c_str() != before) m_byAddress[AddressSlot(text.c_str())] = entry;
        }
    } catch (const std::bad_alloc&) {
        Clear();
    }
}

void CNameCache::Clear() noexcept {
    std::fill(m_entries.begin(), m_entries.end(), Entry{});
    std::fill(m_slots.begin(), m_slots.end(), Slot{});
    std::fill(m_byAddress.begin(), m_byAddress.end(), -1);
    m_size = 0;
    m_newest = m_oldest = -1;
}

int CNameCache::FreeEntry() {
    if (m_size < m_capacity) return m_size++;
    const int entry = m_oldest;
    Unlink(entry);
    EraseSlot(m_entries[entry].slot);
    return entry;
}

// Small and on every intern's path, as are the steps after it.
[[gnu::always_inline]] inline void CNameCache::MakeNewest(int entry) {
    if (entry == m_newest) return;
    Unlink(entry);
    LinkNewest(entry);
}

[[gnu::always_inline]] inline std::size_t CNameCache::AddressSlot(const char16_t* units) const {
    // Buffers are at least 16 bytes apart.
    return (reinterpret_cast<std::uintptr_t>(units) >> 4) % kAddressSlots;
}

std::size_t CNameCache::FindSlot(std::u16string_view units, std::uint32_t hash) const {
    const std::size_t mask = m_slots.size() - 1;
    std::size_t slot = hash & mask;
    for (; m_slots[slot].entry >= 0; slot = (slot + 1) & mask) {
        const Slot& held = m_slots[slot];
        if (held.hash == hash && SameUnits(m_entries[held.entry].text, units)) break;
    }
    return slot;
}

std::size_t CNameCache::EmptySlot(std::uint32_t hash) const {
    const std::size_t mask = m_slots.size() - 1;
    std::size_t slot = hash & mask;
    while (m_slots[slot].entry >= 0)
        slot = (slot + 1) & mask;
    return slot;
}

// Empties slot and moves back the entries after it that could not sit in their own slot, so
// that no probe meets a gap before its entry (deletion in linear probing, without markers).
void CNameCache::EraseSlot(std::size_t slot) {
    const std::size_t mask = m_slots.size() - 1;
    for (std::size_t next = (slot + 1) & mask; m_slots[next].entry >= 0; next = (next + 1) & mask) {
        // The entry at next stays when its home is nearer to next than the gap is.
        const std::size_t home = m_slots[next].hash & mask;
        if (((next - home) & mask) >= ((next - slot) & mask)) {
            m_slots[slot] = m_slots[next];
            m_entries[m_slots[slot].entry].slot = static_cast<std::uint32_t>(slot);
            slot = next;
        }
    }
    m_slots[slot].entry = -1;
}

[[gnu::always_inline]] inline void CNameCache::Unlink(int entry) {
    Entry& e = m_entries[entry];
    (e.newer >= 0 ? m_entries[e.newer].older : m_newest) = e.older;
    (e.older >= 0 ? m_entries[e.older].newer : m_oldest) = e.newer;
    e.newer = e.older = -1;
}

[[gnu::always_inline]] inline void CNameCache::LinkNewest(int entry) {
    Entry& e = m_entries[entry];
    e.older = m_newest;
    (m_newest >= 0 ? m_entries[m_newest].newer : m_oldest) = entry;
    m_newest = entry;
}

namespace {

enum eCache { eElementNames, eAttributeNames, eNames, eAttributeValues, eCacheCount };

// One thread's caches, in the list of all threads' caches so that Finalize reaches those of
// threads that are still running.
struct CThreadCaches {
    explicit CThreadCaches(std::atomic<CThreadCaches*>& owner) : owner(owner) {}

    CNameCache caches[eCacheCount] = {CNameCache(200), CNameCache(250), CNameCache(200),
                                      CNameCache(350)};
    std::atomic<CThreadCaches*>& owner;  // the thread's pointer to these
    CThreadCaches* previous = nullptr;
    CThreadCaches* next = nullptr;
};

std::mutex g_threadsMutex;
CThreadCaches* g_threads = nullptr;  // guarded by g_threadsMutex

// Null until the thread's first intern, and again once its caches are released. Atomic
// because Finalize, on another thread, clears it.
thread_local std::atomic<CThreadCaches*> t_caches{nullptr};

void DropLocked(CThreadCaches* caches) {
    (caches->previous ? caches->previous->next : g_threads) = caches->next;
    if (caches->next) caches->next->previous = caches->previous;
    caches->owner.store(nullptr, std::memory_order_relaxed);
    delete caches;
}

void ReleaseAllCaches() {
    std::lock_guard<std::mutex> lock(g_threadsMutex);
    while (g_threads)
        DropLocked(g_threads);
}

// Releases the thread's caches when it ends, unless Finalize has done so.
struct CThreadExit {
    ~CThreadExit() {
        std::lock_guard<std::mutex> lock(g_threadsMutex);
        if (CThreadCaches* caches = t_caches.load(std::memory_order_relaxed)) DropLocked(caches);
    }
};

void MoveThreadCachesOffPages() noexcept {
    if (CThreadCaches* caches = t_caches.load(std::memory_order_relaxed)) {
        for (CNameCache& cache : caches->caches)
            cache.MoveOffPages();
    }
}

[[gnu::noinline]] CThreadCaches& CreateThreadCaches() {
    [[maybe_unused]] static thread_local CThreadExit exitHook;
    vel::SetPageScopeEndHook(MoveThreadCachesOffPages);
    auto* caches = new CThreadCaches(t_caches);
    {
        std::lock_guard<std::mutex> lock(g_threadsMutex);
        caches->next = g_threads;
        if (g_threads) g_threads->previous = caches;
        g_threads = caches;
        t_caches.store(caches, std::memory_order_relaxed);
    }
    RegisterFinalizer(ReleaseAllCaches);
    return *caches;
}

CNameCache& GetCache(eCache which) {
    CThreadCaches* caches = t_caches.load(std::memory_order_relaxed);
    return (caches ? *caches : CreateThreadCaches()).caches[which];
}

}  // namespace

CNameCache& ElementNameCache() {
    return GetCache(eElementNames);
}
CNameCache& AttributeNameCache() {
    return GetCache(eAttributeNames);
}
CNameCache& NameCache() {
    return GetCache(eNames);
}
CNameCache& AttributeValueCache() {
    return GetCache(eAttributeValues);
}

}  // namespace vx
