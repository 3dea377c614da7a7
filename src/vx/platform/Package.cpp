#include "vx/platform/Package.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <vector>

namespace vx {

namespace {

std::mutex g_finalizerMutex;
std::atomic<int> g_nestingLimit{kDefaultNestingLimit};

std::vector<void (*)()>& Finalizers() {  // guarded by g_finalizerMutex
    static std::vector<void (*)()> finalizers;
    return finalizers;
}

// Taken one at a time so that a finalizer may register again without deadlocking.
void (*TakeLastFinalizer())() {
    std::lock_guard<std::mutex> lock(g_finalizerMutex);
    auto& finalizers = Finalizers();
    if (finalizers.empty()) return nullptr;
    void (*release)() = finalizers.back();
    finalizers.pop_back();
    return release;
}

}  // namespace

// Caches and constants are created on first use, so there is nothing to prepare.
void Initialize() {}

void Finalize() {
    while (void (*release)() = TakeLastFinalizer())
        release();
}

void RegisterFinalizer(void (*release)()) {
    if (!release) return;
    std::lock_guard<std::mutex> lock(g_finalizerMutex);
    auto& finalizers = Finalizers();
    // A clean-up registered twice would run twice in one Finalize.
    if (std::find(finalizers.begin(), finalizers.end(), release) == finalizers.end()) {
        finalizers.push_back(release);
    }
}

void SetNestingLimit(int depth) {
    g_nestingLimit.store(std::max(depth, 1));
}

int GetNestingLimit() {
    return g_nestingLimit.load();
}

}  // namespace vx
