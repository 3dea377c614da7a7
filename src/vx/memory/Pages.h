#pragma once
// Small objects made while a document is read come from pages of a few kilobytes instead of a
// heap block each: a parse makes millions of them (production objects, nodes, their lists) and
// frees them together. Pages are aligned to their size, so an object's page follows from its
// address, and the page counts its live objects; a page is freed when that count reaches zero
// and the page is no longer being filled, as pugixml's allocator does. Outside a CPageScope
// every object is an ordinary heap block, so objects a host makes while editing cost what they
// always did and free their memory at once.
//
// Each thread fills pages of its own; an object may be freed on any thread, also while the
// thread that made it is still filling its page.
#include <cstddef>

namespace vel {

// While at least one scope exists on the calling thread, AllocateSmall takes memory from
// pages. Scopes nest; the page being filled is given up when the outermost one ends.
class CPageScope {
  public:
    CPageScope() noexcept;
    ~CPageScope();
    CPageScope(const CPageScope&) = delete;
    CPageScope& operator=(const CPageScope&) = delete;
};

// Whether a CPageScope is in force on the calling thread (none while a CHeapScope suspends it).
bool InPageScope() noexcept;

// Run on a thread when its outermost CPageScope ends, before its pages are given up: a store
// that outlives parses keeps the parse's strings while it runs and copies what it still holds
// off the pages here. One hook for the process: setting one returns the one it replaces.
using PageScopeEndHook = void (*)() noexcept;
PageScopeEndHook SetPageScopeEndHook(PageScopeEndHook hook) noexcept;

// Suspends the pages of the calling thread while it exists: for what outlives the parse that
// makes it (process-wide caches), which would otherwise keep a whole page alive.
class CHeapScope {
  public:
    CHeapScope() noexcept;
    ~CHeapScope();
    CHeapScope(const CHeapScope&) = delete;
    CHeapScope& operator=(const CHeapScope&) = delete;

  private:
    int m_suspendedScopes;
};

// Objects and texts fill separate pages. The production objects of a parse are freed while the
// document is built, but much of the text they read lives on in the document's nodes: apart,
// the pages of the one are freed while those of the other stay.
enum ePageStream { eObjectPages = 0, eTextPages = 1, kStreamCount = 2 };

// Memory for an object of size bytes, aligned for pointers and 8-byte integers (not more);
// std::bad_alloc when there is none. Blocks of megabytes (a document's text), in a scope or not,
// are mapped from the system for themselves.
void* AllocateSmall(std::size_t size, ePageStream stream = eObjectPages);
// Frees what AllocateSmall returned; size is the size that was asked for. Null is ignored.
void FreeSmall(void* memory, std::size_t size) noexcept;

// Whether memory, from AllocateSmall, lies on a page.
bool IsPaged(const void* memory) noexcept;

// A base that makes new and delete of a class (and of its derived classes) use the pages.
class CPageAllocated {
  public:
    static void* operator new(std::size_t size) { return AllocateSmall(size); }
    // Declaring the form above hides the placement form, which containers use.
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void* memory, std::size_t size) noexcept {
        FreeSmall(memory, size);
    }
};

}  // namespace vel
