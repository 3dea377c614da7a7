#pragma once
// Counts of units and elements are int, as the library's interfaces are: every sum or product
// that makes one goes through here, so that nothing wraps.
#include <cstdint>
#include <limits>
#include <stdexcept>

namespace vel {

constexpr std::int64_t kMaxCount = std::numeric_limits<int>::max();

// count as an int, or std::length_error when it does not fit.
inline int CheckedCount(std::int64_t count) {
    if (count < 0 || count > kMaxCount) throw std::length_error("vx: count out of range");
    return static_cast<int>(count);
}

// The capacity to grow to: wanted, or the largest int when wanted is past it.
inline int CappedCount(std::int64_t wanted) noexcept {
    return wanted > kMaxCount ? static_cast<int>(kMaxCount) : static_cast<int>(wanted);
}

}  // namespace vel
