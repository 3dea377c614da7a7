#pragma once
// The commands besides check; each returns the tool's exit status.
#include "Options.h"

namespace vxml {

int RunPrint(const Options& options);
int RunTree(const Options& options);
int RunSave(const Options& options);
int RunConvert(const Options& options);

}  // namespace vxml
