#pragma once
// Process-wide caches that let equal names and attribute values share one stored string.
// Each keeps its most recently used strings, up to a fixed capacity.
#include <list>
#include <unordered_map>

#include "vx/text/VelStr.h"

namespace vx {

class CNameCache {
  public:
    explicit CNameCache(int capacity) : m_capacity(capacity) {}
    CNameCache(const CNameCache&) = delete;
    CNameCache& operator=(const CNameCache&) = delete;

    // The cached string equal to text (code unit for code unit), moved to the front as most
    // recently used; text itself is cached when no equal string is. Past the capacity the
    // least recently used string is dropped.
    CVelStrW Intern(const CVelStrW& text);

    int GetCapacity() const noexcept { return m_capacity; }
    int GetSize() const noexcept { return static_cast<int>(m_order.size()); }

  private:
    int m_capacity;
    std::list<CVelStrW> m_order;  // most recently used first
    std::unordered_map<CVelStrW, std::list<CVelStrW>::iterator> m_index;
};

// Created on first use; vx::Finalize releases them.
CNameCache& ElementNameCache();     // 200 element names
CNameCache& AttributeNameCache();   // 250 attribute names
CNameCache& NameCache();            // 200 other names
CNameCache& AttributeValueCache();  // 350 attribute values

}  // namespace vx
