#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string>

#include "Check.h"
#include "Commands.h"
#include "Document.h"
#include "Output.h"

namespace vxml {
namespace {

// The encodings SaveToFile writes: a name qualifies when it begins with one of these, in any
// case. The library only answers true or false, so the tool keeps the list to say why.
constexpr const char* kSavableEncodings[] = {"Shift_jis", "EUC-JP", "ISO-2022-JP",
                                             "ISO-10646-UCS-2", "ISO-10646-UCS-4"};

bool IsSavable(const std::string& encoding) {
    for (const char* name : kSavableEncodings) {
        if (::strncasecmp(encoding.c_str(), name, std::strlen(name)) == 0) return true;
    }
    return false;
}

// Why path cannot be written, or empty when nothing stands in the way.
std::string WriteProblem(const std::string& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) == 0) {
        if (S_ISDIR(info.st_mode)) return "it is a directory";
        return ::access(path.c_str(), W_OK) == 0 ? "" : std::strerror(errno);
    }
    const std::filesystem::path parent = std::filesystem::path(path).parent_path();
    const std::filesystem::path folder = parent.empty() ? "." : parent;
    return ::access(folder.c_str(), W_OK | X_OK) == 0 ? "" : std::strerror(errno);
}

std::string WhyNotSaved(const std::string& encoding, const std::string& path) {
    if (!IsSavable(encoding)) {
        return "unsupported encoding '" + encoding +
               "' (vx saves Shift_JIS, EUC-JP, ISO-2022-JP, ISO-10646-UCS-2, ISO-10646-UCS-4)";
    }
    const std::string problem = WriteProblem(path);
    if (!problem.empty()) return "cannot write: " + problem;
    return "the text cannot be converted to " + encoding;
}

void ReportNotSaved(const std::string& path, const std::string& reason) {
    Write(stderr, "vxml: " + path + " not saved: " + reason + "\n");
}

}  // namespace

int RunSave(const Options& options) {
    const LoadedDocument loaded = LoadDocument(options.files.front());
    const std::string& out = *options.output;
    if (!ReportDiagnostics(stderr, loaded, Format::kText, options.language)) {
        ReportNotSaved(out, "the document has diagnostics");
        return 1;
    }
    vx::CXmlDocument& document = *loaded.document;
    document.SetEncoding(vx::CVelStrW(ToVelStr(*options.encoding)));
    UseLineFeeds(document);
    if (document.SaveToFile(ToVelStr(out))) return 0;
    ReportNotSaved(out, WhyNotSaved(*options.encoding, out));
    return 1;
}

}  // namespace vxml
