#include "vx/platform/Package.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <vector>

namespace vx {

namespace {

std::mutex g_finalizerMutex;
std::atomic<int> g_nestingLimit{kDefaultNestingLimit};
std::atomic<std::int64_t> g_expansionLimit{kDefaultExpansionLimit};
std::atomic<bool> g_externalLoading{true};
std::atomic<bool> g_singlePassReading{true};

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

void SetExpansionLimit(std::int64_t units) {
    g_expansionLimit.store(std::max<std::int64_t>(units, 0));
}

std::int64_t GetExpansionLimit() {
    return g_expansionLimit.load();
}

void SetExternalLoading(bool enabled) {
    g_externalLoading.store(enabled);
}

bool IsExternalLoadingEnabled() {
    return g_externalLoading.load();
}

void SetSinglePassReading(bool enabled) {
    g_singlePassReading.store(enabled);
}

bool IsSinglePassReadingEnabled() {
    return g_singlePassReading.load();
}

}  // namespace vx
