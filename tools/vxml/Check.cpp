#include "Check.h"

#include <array>

#include "Output.h"

namespace vxml {
namespace {

using vx::CParseError;

// English for each code, in code order; index 0 is "no error".
constexpr std::array<const char*, 63> kEnglishMessages = {
    "",
    "The file does not exist.",
    "Opening the file failed.",
    "Detecting the character encoding failed.",
    "Out of memory.",
    "An unsupported feature was used.",
    "Converting the character encoding failed.",
    "Parsing stopped part-way.",
    "There is no XML declaration.",
    "The XML declaration has no version information.",
    "At least one white-space character is required.",
    "Unsupported version number.",
    "An unexpected attribute value is written.",
    "The XML declaration is not closed correctly.",
    "The comment terminator ( '-->' ) is missing.",
    "An unexpected character appeared.",
    "The processing-instruction terminator ( '?>' ) is missing.",
    "An attribute is duplicated.",
    "The element terminator ( '/>' ) is missing.",
    "The source ended at an unexpected position.",
    "The closing tag is missing.",
    "Invalid character reference.",
    "The end of the entity reference ( ';' ) is missing.",
    "The entity name is missing.",
    "The equals sign of the attribute value is missing.",
    "The closing quote of the attribute value is missing.",
    "The attribute value is missing or invalid.",
    "Parsing succeeded but building the XML tree failed.",
    "An unknown element type was met.",
    "The start-tag name and the end-tag name differ.",
    "The reference is malformed.",
    "The end marker of the CDATA section is missing.",
    "The closing quote of the system literal is missing.",
    "The closing quote of the public literal is missing.",
    "The system literal is missing.",
    "The public literal is missing.",
    "The bracket closing #PCDATA must be ')*'",
    "The element name is missing.",
    "The element type declaration is missing.",
    "The terminator ( '>' ) of the element type declaration is missing.",
    "The opening parenthesis is missing.",
    "The closing parenthesis is missing.",
    "The notation attribute is missing.",
    "The OR sign ( '|' ) is missing.",
    "The enumerated-type name is missing.",
    "With #FIXED a default value is required.",
    "The attribute name is missing.",
    "The terminator of the attribute-list declaration is missing.",
    "The attribute type is missing.",
    "The default declaration is missing.",
    "The parameter-entity reference is malformed.",
    "The string 'NDATA' is missing.",
    "The notation name is missing.",
    "The entity declaration is missing.",
    "The terminator of the entity declaration is missing.",
    "The '%' sign is missing.",
    "The external entity declaration (external identifier) is missing.",
    "Neither an external identifier nor a notation identifier is present.",
    "The root element name is missing.",
    "The terminator of the DOCTYPE declaration is missing.",
    "The element content model is missing.",
    "System literals beginning with http:// are not implemented.",
    "An entity reference was used without the general entity being defined.",
};

std::string EnglishMessage(int code) {
    if (code >= 0 && code < static_cast<int>(kEnglishMessages.size())) {
        return kEnglishMessages[code];
    }
    return "Unexpected error. The error number was not found. (" + std::to_string(code) + ")";
}

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

std::string MessageOf(const CParseError& error, Language language) {
    return language == Language::kEnglish ? EnglishMessage(error.GetErrCode())
                                          : ToUtf8(error.GetErrMsg());
}

// File errors carry (-1,-1) as their position; that names no place in the text.
bool HasShownPosition(const CParseError& error) {
    return error.HasPosition() && !(error.GetLine() == -1 && error.GetColumn() == -1);
}

bool IsFileError(const CParseError& error) {
    return error.GetLine() == -1 && error.GetColumn() == -1 && !error.GetSource().IsEmpty();
}

std::string FormatText(const std::string& path, const CParseError& error, Language language) {
    std::string line = path;
    if (HasShownPosition(error)) {
        line += ":" + std::to_string(error.GetLine()) + ":" + std::to_string(error.GetColumn());
    }
    line += std::string(": ") + LevelName(error.GetErrLevel()) + " " +
            std::to_string(error.GetErrCode()) + ": " + MessageOf(error, language);
    if (IsFileError(error)) {
        line += " (" + ToUtf8(error.GetSource()) + ")";
    }
    return line;
}

std::string JsonPosition(const CParseError& error, int value) {
    return HasShownPosition(error) ? std::to_string(value) : "null";
}

std::string FormatJson(const std::string& path, const CParseError& error, Language language) {
    return "{\"file\":" + JsonString(path) + ",\"code\":" + std::to_string(error.GetErrCode()) +
           ",\"level\":" + JsonString(LevelName(error.GetErrLevel())) +
           ",\"line\":" + JsonPosition(error, error.GetLine()) +
           ",\"column\":" + JsonPosition(error, error.GetColumn()) +
           ",\"message\":" + JsonString(MessageOf(error, language)) + "}";
}

std::string FormatDiagnostic(const std::string& path, const CParseError& error, Format format,
                             Language language) {
    switch (format) {
        case Format::kNative:
            return ToUtf8(error.MakeErrMsg());
        case Format::kJson:
            return FormatJson(path, error, language);
        case Format::kText:
            break;
    }
    return FormatText(path, error, language);
}

}  // namespace

bool ReportDiagnostics(std::FILE* stream, const LoadedDocument& loaded, Format format,
                       Language language) {
    const vx::CParseErrorList errors = loaded.document->GetErrList();
    for (int i = 0; i < errors.GetSize(); ++i) {
        Write(stream, FormatDiagnostic(loaded.shownPath, errors.GetAt(i), format, language) + "\n");
    }
    return errors.IsEmpty();
}

int RunCheck(const Options& options) {
    if (options.noExternal) vx::SetExternalLoading(false);
    bool allClean = true;
    for (const std::string& file : options.files) {
        const LoadedDocument loaded = LoadDocument(file);
        allClean = ReportDiagnostics(stdout, loaded, options.format, options.language) && allClean;
    }
    return allClean ? 0 : 1;
}

}  // namespace vxml
