#pragma once
// Memory mapped from the system directly, for what the heap serves badly: the chunks that pages
// are cut from and blocks of megabytes. Both are aligned to the size of a huge page and asked to
// be backed by huge pages, because on first touch a fault per 4 KiB page costs more than reading
// the memory does. Where the system has no huge pages the memory works as well, in small pages.
#include <cstddef>

namespace vel {

constexpr std::size_t kHugePageSize = std::size_t{1} << 21;

// size bytes (rounded up to whole system pages) at an address aligned to kHugePageSize, zeroed;
// nullptr when the system maps no more.
void* MapAligned(std::size_t size) noexcept;
// Asks for huge pages where memory is touched from now on.
void AdviseHuge(void* memory, std::size_t size) noexcept;
// MapAligned, backed by huge pages.
void* MapHuge(std::size_t size) noexcept;
// Gives back what MapHuge returned; size as asked for.
void Unmap(void* memory, std::size_t size) noexcept;
// Lets the system take the memory back when it needs it, while it stays mapped: until then,
// reusing it costs no fault. Its contents are lost.
void DiscardLazily(void* memory, std::size_t size) noexcept;

}  // namespace vel
