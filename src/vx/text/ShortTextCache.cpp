#include "vx/text/ShortTextCache.h"

#include <utility>

namespace vx {

template <class MakeString>
CVelStrW CShortTextCache::Use(const char16_t* units, int length, MakeString make) {
    if (length > kMaxLength) return make();
    const std::uint64_t hash = velstr::HashUnits(units, length);
    const std::size_t slot = hash % kSlots;
    const auto check = static_cast<std::uint32_t>(hash >> 32);
    CVelStrW& held = m_slots[slot];
    if (m_hashes[slot] == check && held.GetLength() == length &&
        velstr::SameUnits(units, held.c_str(), length)) {
        return held;
    }
    m_hashes[slot] = check;
    Replace(slot, make());
    return held;
}

// The string a slot drops was mostly made long ago, and its count, which the release writes,
// has left the processor's caches: it is fetched now and released kPendingDrops drops later,
// so that the parse does not wait for it.
void CShortTextCache::Replace(std::size_t slot, CVelStrW text) {
    CVelStrW& dropped = m_dropped[m_nextDrop];
    m_nextDrop = (m_nextDrop + 1) % kPendingDrops;
    dropped = std::move(m_slots[slot]);
    __builtin_prefetch(dropped.c_str(), 1);
    m_slots[slot] = std::move(text);
}

CVelStrW CShortTextCache::Get(const char16_t* units, int length) {
    return Use(units, length, [&] { return CVelStrW(units, length); });
}

CVelStrW CShortTextCache::Get(const CVelStrW& text) {
    return Use(text.c_str(), text.GetLength(), [&] { return text; });
}

}  // namespace vx
