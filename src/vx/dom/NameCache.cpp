#include "vx/dom/NameCache.h"

#include "vx/platform/Package.h"

namespace vx {

CVelStrW CNameCache::Intern(const CVelStrW& text) {
    const auto found = m_index.find(text);
    if (found != m_index.end()) {
        m_order.splice(m_order.begin(), m_order, found->second);
    } else {
        m_order.push_front(text);
        m_index.emplace(text, m_order.begin());
        if (GetSize() > m_capacity) {
            m_index.erase(m_order.back());
            m_order.pop_back();
        }
    }
    return m_order.front();
}

namespace {

enum eCache { eElementNames, eAttributeNames, eNames, eAttributeValues, eCacheCount };

constexpr int kCapacities[eCacheCount] = {200, 250, 200, 350};
CNameCache* g_caches[eCacheCount] = {};
bool g_finalizerRegistered = false;

void ReleaseCaches() {
    for (CNameCache*& cache : g_caches) {
        delete cache;
        cache = nullptr;
    }
    g_finalizerRegistered = false;
}

CNameCache& GetCache(eCache which) {
    CNameCache*& cache = g_caches[which];
    if (!cache) {
        if (!g_finalizerRegistered) {
            RegisterFinalizer(ReleaseCaches);
            g_finalizerRegistered = true;
        }
        cache = new CNameCache(kCapacities[which]);
    }
    return *cache;
}

}  // namespace

CNameCache& ElementNameCache() {
    return GetCache(eElementNames);
}
CNameCache& AttributeNameCache() {
    return GetCache(eAttributeNames);
}
CNameCache& NameCache() {
    return GetCache(eNames);
}
CNameCache& AttributeValueCache() {
    return GetCache(eAttributeValues);
}

}  // namespace vx
