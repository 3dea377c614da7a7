#pragma once
// Package entry points and process-wide settings.
#include <cstdint>

namespace vx {

// Both are safe to call more than once. Finalize releases what the library keeps for the
// life of the process (name caches, keyword constants), so a leak checker sees nothing left.
void Initialize();
void Finalize();

// Called by Finalize, last registered first. Layers above register their own clean-up.
void RegisterFinalizer(void (*release)());

// Element nesting deeper than this throws std::runtime_error("dummy") instead of exhausting
// the stack, in parsing and in the walks that recurse over a tree (copying, GetSource,
// GetText, ConvertReturnCode). The default keeps them within an 8 MiB stack under
// AddressSanitizer. Destroying a tree works at any depth.
constexpr int kDefaultNestingLimit = 1000;
void SetNestingLimit(int depth);
int GetNestingLimit();

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
