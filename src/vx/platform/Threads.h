#pragma once
// Counts shared between threads (of strings, of pages) that stay cheap in a process with one
// thread: until a second thread has run, no atomic read-modify-write is needed, and that costs a
// parse more than anything else threads add (the C++ runtime's shared_ptr makes the same test).
#include <atomic>
#if __has_include(<sys/single_threaded.h>)
#include <sys/single_threaded.h>
#endif

namespace vel {

// True only while one thread has run; once false it stays false.
inline bool IsSingleThreaded() noexcept {
#if __has_include(<sys/single_threaded.h>)
    return __libc_single_threaded != 0;
#else
    return false;
#endif
}

// Adds amount to count; the caller's reference keeps the object alive, so nothing is ordered.
template <typename T>
void CountUp(std::atomic<T>& count, T amount) noexcept {
    if (IsSingleThreaded()) {
        count.store(count.load(std::memory_order_relaxed) + amount, std::memory_order_relaxed);
    } else {
        count.fetch_add(amount, std::memory_order_relaxed);
    }
}

// Subtracts amount from count and returns the count before. Ordered so that the thread that
// takes the count to zero sees every other thread's use of the object before it frees it.
template <typename T>
T CountDown(std::atomic<T>& count, T amount) noexcept {
    if (IsSingleThreaded()) {
        const T before = count.load(std::memory_order_relaxed);
        count.store(before - amount, std::memory_order_relaxed);
        return before;
    }
    return count.fetch_sub(amount, std::memory_order_acq_rel);
}

}  // namespace vel
