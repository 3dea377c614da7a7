#pragma once
// Process-wide settings of the parser. The nesting limit, which tree walks share, is in
// platform/Package.h.
#include <cstdint>

namespace vx {

// What references may copy in one parse (internal entities' text into attribute values, the
// nodes of external entities into the tree, a node counting as 16 units): past this many
// units, or four times the document's length if that is more (at most 1G units), the
// reference gets code 4. 0 lifts the limit, for hosts that trust their input.
constexpr std::int64_t kDefaultExpansionLimit = std::int64_t{1} << 24;
void SetExpansionLimit(std::int64_t units);
std::int64_t GetExpansionLimit();

// Hosts that parse untrusted input turn this off: the external entity loaders then refuse
// every system literal with code 5 and open no file. On by default.
void SetExternalLoading(bool enabled);
bool IsExternalLoadingEnabled();

// On by default: the root element and what follows it are read in one pass straight into the
// document, and the grammar's own productions read only what that pass cannot take exactly.
// Off, the productions read everything. The result is the same either way.
void SetSinglePassReading(bool enabled);
bool IsSinglePassReadingEnabled();

}  // namespace vx
