#include "vx/text/ShortTextCache.h"

namespace vx {

namespace {

bool Holds(const CVelStrW& slot, const char16_t* units, int length) {
    return slot.GetLength() == length && velstr::SameUnits(units, slot.c_str(), length);
}

}  // namespace

CVelStrW* CShortTextCache::Slot(const char16_t* units, int length) {
    if (length > kMaxLength) return nullptr;
    return &m_slots[velstr::HashUnits(units, length) % kSlots];
}

CVelStrW CShortTextCache::Get(const char16_t* units, int length) {
    CVelStrW* slot = Slot(units, length);
    if (!slot) return CVelStrW(units, length);
    if (!Holds(*slot, units, length)) *slot = CVelStrW(units, length);
    return *slot;
}

CVelStrW CShortTextCache::Get(const CVelStrW& text) {
    CVelStrW* slot = Slot(text.c_str(), text.GetLength());
    if (!slot) return text;
    if (!Holds(*slot, text.c_str(), text.GetLength())) *slot = text;
    return *slot;
}

}  // namespace vx
