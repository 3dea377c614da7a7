#include "vx/parse/Settings.h"

#include <algorithm>
#include <atomic>

namespace vx {

namespace {

std::atomic<std::int64_t> g_expansionLimit{kDefaultExpansionLimit};
std::atomic<bool> g_externalLoading{true};
std::atomic<bool> g_singlePassReading{true};

}  // namespace

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
