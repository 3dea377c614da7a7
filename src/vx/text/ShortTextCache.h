#pragma once
// Equal short texts handed out as one shared string. A document repeats its short runs of
// character data (indentation, recurring values) again and again; sharing them saves an
// allocation and the memory of every repeat. Each slot keeps the last text that hashed to it,
// so a miss costs no more than the copy that is made anyway.
#include <cstdint>
#include <vector>

#include "vx/text/VelStr.h"

namespace vx {

class CShortTextCache {
  public:
    CShortTextCache() : m_slots(kSlots), m_hashes(kSlots) {}

    // A string equal to units[0, length): an earlier equal one while the cache holds it.
    CVelStrW Get(const char16_t* units, int length);
    // The same for text, which is itself kept when no equal string is.
    CVelStrW Get(const CVelStrW& text);

  private:
    static constexpr int kMaxLength = 32;
    static constexpr int kSlots = 1024;
    static constexpr int kPendingDrops = 8;

    // The slot's string equal to units, or the one make() gives, which takes the slot.
    template <class MakeString>
    CVelStrW Use(const char16_t* units, int length, MakeString make);
    void Replace(std::size_t slot, CVelStrW text);

    std::vector<CVelStrW> m_slots;
    // Bits of each slot's hash that its index does not hold: a text whose bits differ is not
    // the slot's, which is then known without reading the slot's string.
    std::vector<std::uint32_t> m_hashes;
    // Strings dropped from slots, released a few drops later (see Replace).
    CVelStrW m_dropped[kPendingDrops];
    int m_nextDrop = 0;
};

}  // namespace vx
