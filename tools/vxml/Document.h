#pragma once
// Reading a FILE argument into a document, and the steps every command shares.
#include <functional>
#include <memory>
#include <string>

#include "Options.h"
#include "vx/vx.h"

namespace vxml {

class TemporaryFile;

struct LoadedDocument {
    std::string shownPath;  // how diagnostics name the file
    std::string path;       // the file parsed
    std::unique_ptr<vx::CXmlDocument> document;
    std::shared_ptr<const TemporaryFile> stdinCopy;  // keeps path while the document is used
};

// "-" reads standard input into a temporary file first, since the library parses files.
LoadedDocument LoadDocument(const std::string& file);

// An empty file in TMPDIR (or /tmp), removed with the object.
class TemporaryFile {
  public:
    TemporaryFile();
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const std::string& Path() const { return m_path; }

  private:
    std::string m_path;
};

// Writes the file's bytes to standard output; throws std::runtime_error on failure.
void CopyToStandardOutput(const std::string& path);

// Nothing was matched, so there is no element to show or write.
bool HasTree(const vx::CXmlDocument& document);

// The tool runs on a system whose text files end lines with LF; the library's default is CR LF.
void UseLineFeeds(vx::CXmlDocument& document);

// For print and tree: loads the FILE, reports its diagnostics on standard error, hands the
// document to show when it has a tree. 0 when there were no diagnostics, else 1.
int ShowDocument(const Options& options, const std::function<void(vx::CXmlDocument&)>& show);

}  // namespace vxml
