#pragma once
// What the tool adds to a diagnostic beyond the library's text: where it was found when that
// is not the document itself, and a hint for the codes a person cannot act on alone.
#include <string>
#include <vector>

#include "Document.h"

namespace vxml {

struct DiagnosticNote {
    bool external = false;     // found in an external subset or entity, not in the document
    std::string externalFile;  // that file, when it can be known
    std::string hint;          // one line for the reader, or empty
};

// One note per diagnostic of the loaded document, in list order.
std::vector<DiagnosticNote> NoteDiagnostics(const LoadedDocument& loaded, bool externalLoading);

// Why vx cannot detect the encoding of the file at path, and what it reads.
std::string EncodingHint(const std::string& path);

}  // namespace vxml
