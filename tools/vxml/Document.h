#pragma once
// Reading a FILE argument into a document, and the steps every command shares.
#include <functional>
#include <memory>
#include <string>

#include "Options.h"
#include "vx/vx.h"

namespace vxml {

struct LoadedDocument {
    std::string shownPath;  // how diagnostics name the file
    std::unique_ptr<vx::CXmlDocument> document;
};

// "-" reads standard input into a temporary file first, since the library parses files.
LoadedDocument LoadDocument(const std::string& file);

// Nothing was matched, so there is no element to show or write.
bool HasTree(const vx::CXmlDocument& document);

// The tool runs on a system whose text files end lines with LF; the library's default is CR LF.
void UseLineFeeds(vx::CXmlDocument& document);

// For print and tree: loads the FILE, reports its diagnostics on standard error, hands the
// document to show when it has a tree. 0 when there were no diagnostics, else 1.
int ShowDocument(const Options& options, const std::function<void(vx::CXmlDocument&)>& show);

}  // namespace vxml
