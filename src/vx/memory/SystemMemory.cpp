#include "vx/memory/SystemMemory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

namespace vel {

namespace {

std::size_t RoundUp(std::size_t size, std::size_t unit) noexcept {
    return (size + unit - 1) / unit * unit;
}

std::size_t SystemPageSize() noexcept {
    static const std::size_t size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return size;
}

std::size_t MappedSize(std::size_t size) noexcept {
    return RoundUp(size, SystemPageSize());
}

}  // namespace

void* MapAligned(std::size_t size) noexcept {
    const std::size_t mapped = MappedSize(size);
    if (mapped < size || mapped > SIZE_MAX - kHugePageSize) return nullptr;
    // Mapped with room to spare, so that an aligned start lies inside; the rest goes back.
    const std::size_t spare = mapped + kHugePageSize;
    void* memory = mmap(nullptr, spare, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) return nullptr;
    const auto start = reinterpret_cast<std::uintptr_t>(memory);
    const std::uintptr_t aligned = RoundUp(start, kHugePageSize);
    if (aligned > start) munmap(memory, aligned - start);
    const std::uintptr_t end = aligned + mapped;
    if (start + spare > end) munmap(reinterpret_cast<void*>(end), start + spare - end);
    return reinterpret_cast<void*>(aligned);
}

void AdviseHuge(void* memory, std::size_t size) noexcept {
    // Refused where the kernel has no huge pages: the memory then works in small pages.
    madvise(memory, MappedSize(size), MADV_HUGEPAGE);
}

void* MapHuge(std::size_t size) noexcept {
    void* memory = MapAligned(size);
    if (memory) AdviseHuge(memory, size);
    return memory;
}

void Unmap(void* memory, std::size_t size) noexcept {
    munmap(memory, MappedSize(size));
}

void DiscardLazily(void* memory, std::size_t size) noexcept {
    madvise(memory, MappedSize(size), MADV_FREE);
}

}  // namespace vel
