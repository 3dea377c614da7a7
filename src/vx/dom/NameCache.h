#pragma once
// Caches that let equal names and attribute values share one stored string. Each keeps its
// most recently used strings, up to a fixed capacity. Every thread has caches of its own, so
// threads parse at once without a lock, and each sees its caches as if it were alone.
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "vx/text/VelStr.h"

namespace vx {

class CNameCache {
  public:
    explicit CNameCache(int capacity);
    CNameCache(const CNameCache&) = delete;
    CNameCache& operator=(const CNameCache&) = delete;

    // The cached string equal to text (code unit for code unit), moved to the front as most
    // recently used; text itself is cached when no equal string is. Past the capacity the
    // least recently used string is dropped.
    CVelStrW Intern(const CVelStrW& text);
    // The same for the units text[0, length), which are copied only when no equal string is
    // cached: a parser interns straight from its source.
    CVelStrW Intern(const char16_t* text, int length);
    // Intern in place: text becomes the cached string. A node that takes its name this way
    // costs no count change when the name came from this cache, as it mostly does.
    void InternInPlace(CVelStrW& text);

    // Replaces each cached string that lies on a parse's pages by a heap copy, so that the
    // cache pins no page once the parse has ended. Should memory run out, the cache is emptied.
    void MoveOffPages() noexcept;

    int GetCapacity() const noexcept { return m_capacity; }
    int GetSize() const noexcept { return m_size; }

  private:
    // A cached string, linked into the recency order by entry index (-1: none), and the slot
    // of the table that holds it.
    struct Entry {
        CVelStrW text;
        int newer = -1;
        int older = -1;
        std::uint32_t slot = 0;
    };
    // The table holds each entry's hash beside its index, so that probes and moves read only
    // the table, and an entry's string only where the hashes agree.
    struct Slot {
        std::uint32_t hash = 0;
        int entry = -1;  // -1: empty
    };

    // The entry equal to text, made the most recently used; text is cached when none is.
    int EntryFor(const CVelStrW& text);
    // The entry holding units, made the most recently used; make() gives the string to cache
    // when there is none.
    template <class MakeString>
    int Use(std::u16string_view units, MakeString make);
    // Room for a new entry: the next unused one, or the least recently used, dropped.
    int FreeEntry();
    void MakeNewest(int entry);
    // The slot holding units, or the empty slot where they would go.
    std::size_t FindSlot(std::u16string_view units, std::uint32_t hash) const;
    std::size_t EmptySlot(std::uint32_t hash) const;
    void EraseSlot(std::size_t slot);
    void Unlink(int entry);
    void LinkNewest(int entry);
    void Clear() noexcept;
    std::size_t AddressSlot(const char16_t* units) const;

    int m_capacity;
    int m_size = 0;
    int m_newest = -1;
    int m_oldest = -1;
    // Whether strings were cached while pages were in use: only then can one lie on a page.
    bool m_mayHoldPages = false;
    // Every intern runs during a parse, so the cache is a fixed block that never allocates:
    // the entries, and an open-addressing table probed linearly, at most half full.
    std::vector<Entry> m_entries;
    std::vector<Slot> m_slots;
    // Entry indexes by the address of the cached string's units, so that a string this cache
    // handed out is found again without hashing its text. A hint only: checked on use.
    std::vector<int> m_byAddress;
};

// The calling thread's caches, created on its first use; released when the thread ends or by
// vx::Finalize, whichever comes first.
CNameCache& ElementNameCache();     // 200 element names
CNameCache& AttributeNameCache();   // 250 attribute names
CNameCache& NameCache();            // 200 other names
CNameCache& AttributeValueCache();  // 350 attribute values

}  // namespace vx
