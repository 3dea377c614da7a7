#include "Check.h"

#include <vector>

#include "Messages.h"
#include "Notes.h"
#include "Output.h"

namespace vxml {
namespace {

using vx::CParseError;

const char* LevelName(CParseError::eErrLevel level) {
    switch (level) {
        case CParseError::eErrLevelFatal:
            return "fatal";
        case CParseError::eErrLevelError:
            return "error";
        case CParseError::eErrLevelWarning:
            return "warning";
        case CParseError::eErrLevelNotice:
            return "notice";
        case CParseError::eErrLevelNone:
            break;
    }
    return "none";
}

std::string MessageOf(const CParseError& error) {
    return CurrentLanguage() == Language::kEnglish ? ToString(error.GetEnglishErrMsg())
                                                   : ToUtf8(error.GetErrMsg());
}

// File errors carry (-1,-1) as their position; that names no place in the text.
bool HasShownPosition(const CParseError& error) {
    return error.HasPosition() && !(error.GetLine() == -1 && error.GetColumn() == -1);
}

bool IsFileError(const CParseError& error) {
    return error.GetLine() == -1 && error.GetColumn() == -1 && !error.GetSource().IsEmpty();
}

// A position in external text is shown on the external file when it is known.
std::string Location(const std::string& path, const CParseError& error,
                     const DiagnosticNote& note) {
    if (!HasShownPosition(error)) return path;
    const std::string& file = note.externalFile.empty() ? path : note.externalFile;
    return file + ":" + std::to_string(error.GetLine()) + ":" + std::to_string(error.GetColumn());
}

std::string ExternalRemark(const std::string& path, const CParseError& error,
                           const DiagnosticNote& note) {
    if (!note.external) return "";
    if (note.externalFile.empty()) return Say(Text::kInExternalText);
    if (HasShownPosition(error)) return Say(Text::kExternalTextFor, {path});
    return Say(Text::kExternalFile, {note.externalFile});
}

std::string FormatText(const std::string& path, const CParseError& error,
                       const DiagnosticNote& note) {
    std::string line = Location(path, error, note);
    line += std::string(": ") + LevelName(error.GetErrLevel()) + " " +
            std::to_string(error.GetErrCode()) + ": " + MessageOf(error);
    if (IsFileError(error)) {
        line += " (" + ToUtf8(error.GetSource()) + ")";
    }
    line += ExternalRemark(path, error, note);
    if (!note.hint.empty()) line += "\n" + Say(Text::kHint, {note.hint});
    return line;
}

std::string JsonPosition(const CParseError& error, int value) {
    return HasShownPosition(error) ? std::to_string(value) : "null";
}

// "external" is the file's path, or true when it cannot be known; both it and "hint" appear
// only when there is something to say.
std::string JsonNote(const DiagnosticNote& note) {
    std::string fields;
    if (note.external) {
        fields +=
            ",\"external\":" + (note.externalFile.empty() ? "true" : JsonString(note.externalFile));
    }
    if (!note.hint.empty()) fields += ",\"hint\":" + JsonString(note.hint);
    return fields;
}

std::string FormatJson(const std::string& path, const CParseError& error,
                       const DiagnosticNote& note) {
    return "{\"file\":" + JsonString(path) + ",\"code\":" + std::to_string(error.GetErrCode()) +
           ",\"level\":" + JsonString(LevelName(error.GetErrLevel())) +
           ",\"line\":" + JsonPosition(error, error.GetLine()) +
           ",\"column\":" + JsonPosition(error, error.GetColumn()) +
           ",\"message\":" + JsonString(MessageOf(error)) + JsonNote(note) + "}";
}

std::string FormatDiagnostic(const std::string& path, const CParseError& error,
                             const DiagnosticNote& note, const Options& options) {
    switch (options.format) {
        case Format::kNative:
            return ToUtf8(error.MakeErrMsg());
        case Format::kJson:
            return FormatJson(path, error, note);
        case Format::kText:
            break;
    }
    return FormatText(path, error, note);
}

}  // namespace

std::string FormatDiagnostics(const LoadedDocument& loaded, const Options& options) {
    const vx::CParseErrorList errors = loaded.document->GetErrList();
    if (errors.IsEmpty()) return "";
    const std::vector<DiagnosticNote> notes = NoteDiagnostics(loaded, !options.noExternal);
    std::string text;
    for (int i = 0; i < errors.GetSize(); ++i) {
        text += FormatDiagnostic(loaded.shownPath, errors.GetAt(i), notes[i], options) + "\n";
    }
    return text;
}

bool ReportDiagnostics(std::FILE* stream, const LoadedDocument& loaded, const Options& options) {
    const std::string text = FormatDiagnostics(loaded, options);
    Write(stream, text);
    return text.empty();
}

}  // namespace vxml
