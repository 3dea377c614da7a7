#pragma once
// Diagnostics as the tool prints them, and the check command.
#include <cstdio>
#include <string>

#include "Document.h"
#include "Options.h"
#include "vx/vx.h"

namespace vxml {

// One line per diagnostic of the document, in list order, in options.format, each followed
// by its hint line in the text format; empty when there were none.
std::string FormatDiagnostics(const LoadedDocument& loaded, const Options& options);

// Writes FormatDiagnostics to stream; true when there were no diagnostics.
bool ReportDiagnostics(std::FILE* stream, const LoadedDocument& loaded, const Options& options);

int RunCheck(const Options& options);

}  // namespace vxml
