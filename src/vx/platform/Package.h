#pragma once
// Package entry points and the nesting limit, which the parser and the tree walks share. The
// parser's own settings are in parse/Settings.h.

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

}  // namespace vx
