#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string>

#include "Check.h"
#include "Commands.h"
#include "Document.h"
#include "Messages.h"
#include "Output.h"

namespace vxml {
namespace {

// SaveToFile cuts its output at the first zero byte, which the UCS forms have in their first
// character.
bool LosesText(const vx::SSaveEncoding& encoding) {
    return encoding.code == vcc::eUtf16LE || encoding.code == vcc::eUcs4LE;
}

std::string SavableNames() {
    std::string names;
    for (const vx::SSaveEncoding& encoding : vx::kSaveEncodings) {
        if (LosesText(encoding)) continue;
        names += (names.empty() ? "" : Say(Text::kListSeparator)) + ToUtf8(encoding.name);
    }
    return names;
}

// Why path cannot be written, or empty when nothing stands in the way.
std::string WriteProblem(const std::string& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) == 0) {
        if (S_ISDIR(info.st_mode)) return Say(Text::kIsDirectory);
        return ::access(path.c_str(), W_OK) == 0 ? "" : std::strerror(errno);
    }
    const std::filesystem::path parent = std::filesystem::path(path).parent_path();
    const std::filesystem::path folder = parent.empty() ? "." : parent;
    return ::access(folder.c_str(), W_OK | X_OK) == 0 ? "" : std::strerror(errno);
}

// Empty when the encoding is one save writes.
std::string EncodingProblem(const std::string& name) {
    const vx::SSaveEncoding* encoding = vx::FindSaveEncoding(vx::CVelStrW(ToVelStr(name)));
    if (!encoding) {
        return Say(Text::kNotSavable, {name, SavableNames()});
    }
    if (LosesText(*encoding)) {
        return Say(
            Text::kSaveLosesText,
            {ToUtf8(encoding->name), encoding->code == vcc::eUtf16LE ? "UTF-16LE" : "UCS-4LE"});
    }
    return "";
}

std::string WhyNotSaved(const std::string& encoding, const std::string& path) {
    const std::string problem = path == "-" ? "" : WriteProblem(path);
    if (!problem.empty()) return Say(Text::kCannotWrite, {problem});
    return Say(Text::kNotConvertible, {encoding});
}

void ReportNotSaved(const std::string& path, const std::string& reason) {
    Write(stderr, "vxml: " + Say(Text::kNotSaved, {path, reason}) + "\n");
}

// "-" is standard output: the library writes files, so it saves to a temporary one first.
bool SaveTo(const vx::CXmlDocument& document, const std::string& out) {
    if (out != "-") return document.SaveToFile(ToVelStr(out));
    const TemporaryFile file;
    if (!document.SaveToFile(ToVelStr(file.Path()))) return false;
    CopyToStandardOutput(file.Path());
    return true;
}

}  // namespace

int RunSave(const Options& options) {
    const std::string& out = *options.output;
    const std::string encodingProblem = EncodingProblem(*options.encoding);
    if (!encodingProblem.empty()) {
        ReportNotSaved(out, encodingProblem);
        return 1;
    }
    const LoadedDocument loaded = LoadDocument(options.files.front());
    if (!ReportDiagnostics(stderr, loaded, options)) {
        ReportNotSaved(out, Say(Text::kHasDiagnostics));
        return 1;
    }
    vx::CXmlDocument& document = *loaded.document;
    document.SetEncoding(vx::CVelStrW(ToVelStr(*options.encoding)));
    UseLineFeeds(document);
    if (SaveTo(document, out)) return 0;
    ReportNotSaved(out, WhyNotSaved(*options.encoding, out));
    return 1;
}

}  // namespace vxml
