#pragma once
// Package entry points and process-wide settings.

namespace vx {

// Both are safe to call more than once. Finalize releases what the library keeps for the
// life of the process (name caches, keyword constants), so a leak checker sees nothing left.
void Initialize();
void Finalize();

// Called by Finalize, last registered first. Layers above register their own clean-up.
void RegisterFinalizer(void (*release)());

// Element nesting deeper than this throws std::runtime_error("dummy") instead of exhausting
// the stack. The default keeps parsing, copying, writing and destroying within an 8 MiB stack
// under AddressSanitizer.
constexpr int kDefaultNestingLimit = 1000;
void SetNestingLimit(int depth);
int GetNestingLimit();

// Hosts that parse untrusted input turn this off: the external entity loaders then refuse
// every system literal with code 5 and open no file. On by default.
void SetExternalLoading(bool enabled);
bool IsExternalLoadingEnabled();

}  // namespace vx
