#pragma once
// Diagnostics as the tool prints them, and the check command.
#include <cstdio>

#include "Document.h"
#include "Options.h"
#include "vx/vx.h"

namespace vxml {

// Writes one line per diagnostic of the document, in list order; true when there were none.
bool ReportDiagnostics(std::FILE* stream, const LoadedDocument& loaded, Format format,
                       Language language);

int RunCheck(const Options& options);

}  // namespace vxml
