#pragma once
// Equal short texts handed out as one shared string. A document repeats its short runs of
// character data (indentation, recurring values) again and again; sharing them saves an
// allocation and the memory of every repeat. Each slot keeps the last text that hashed to it,
// so a miss costs no more than the copy that is made anyway.
#include <vector>

#include "vx/text/VelStr.h"

namespace vx {

class CShortTextCache {
  public:
    CShortTextCache() : m_slots(kSlots) {}

    // A string equal to units[0, length): an earlier equal one while the cache holds it.
    CVelStrW Get(const char16_t* units, int length);
    // The same for text, which is itself kept when no equal string is.
    CVelStrW Get(const CVelStrW& text);

  private:
    static constexpr int kMaxLength = 32;
    static constexpr int kSlots = 1024;

    // The slot for units, or null for a text too long to be worth sharing.
    CVelStrW* Slot(const char16_t* units, int length);

    std::vector<CVelStrW> m_slots;
};

}  // namespace vx
