// convert: the file's own text in another encoding, checked by reading it back before it
// replaces anything.
#include <strings.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "Check.h"
#include "Commands.h"
#include "Document.h"
#include "Messages.h"
#include "Output.h"
#include "vx/platform/File.h"

namespace vxml {
namespace {

using vx::CVelStrW;

struct Target {
    const char* name;   // as given to --encoding, in any case
    const char* label;  // as the declaration names it
    vcc::eCodeType code;
    bool byteOrderMark;
    bool needsDeclaration;  // vx reads it only by the declaration's encoding
};

constexpr Target kTargets[] = {
    {"UTF-8", "UTF-8", vcc::eUtf8, false, true},
    {"UTF-16LE", "UTF-16", vcc::eUtf16LE, true, false},
    {"UCS-4LE", "ISO-10646-UCS-4", vcc::eUcs4LE, false, false},
    {"Shift_JIS", "Shift_JIS", vcc::eShiftJIS, false, true},
    {"MS932", "MS932", vcc::eWindows932, false, true},
    {"EUC-JP", "EUC-JP", vcc::eEucJP, false, true},
    {"ISO-2022-JP", "ISO-2022-JP", vcc::eIso2022JP, false, true},
};

const Target& FindTarget(const std::string& name) {
    for (const Target& target : kTargets) {
        if (::strcasecmp(name.c_str(), target.name) == 0) return target;
    }
    throw UsageError(Say(Text::kConvertTargets, {name}));
}

// Why nothing was written.
class NotWritten : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// ---- the declaration ----

bool IsBlank(char16_t ch) {
    return ch == u' ' || ch == u'\t' || ch == u'\r' || ch == u'\n';
}

int SkipBlanks(const CVelStrW& text, int pos, int end) {
    while (pos < end && IsBlank(text[pos]))
        ++pos;
    return pos;
}

// The quoted value of name="value" inside [0, end): its first and past-last index.
bool FindValue(const CVelStrW& text, const CVelStrW& name, int end, int& first, int& last) {
    const int at = text.Pos(name);
    if (at < 0 || at >= end) return false;
    int pos = SkipBlanks(text, at + name.GetLength(), end);
    if (pos >= end || text[pos] != u'=') return false;
    pos = SkipBlanks(text, pos + 1, end);
    if (pos >= end || (text[pos] != u'"' && text[pos] != u'\'')) return false;
    const char16_t quote = text[pos];
    first = pos + 1;
    for (last = first; last < end && text[last] != quote; ++last) {
    }
    return last < end;
}

// A change of the text in [first, last) to a replacement of another length.
struct Edit {
    int first = 0;
    int last = 0;
    CVelStrW replacement;
};

// Where the declaration's encoding value is, or where an encoding goes; none when the text
// has no declaration or the target can do without an encoding.
std::optional<Edit> EncodingEdit(const CVelStrW& text, const Target& target) {
    const CVelStrW label(ToVelStr(target.label));
    const int end = text.MatchAt(0, CVelStrW(u"<?xml")) ? text.Pos(CVelStrW(u"?>")) : -1;
    if (end < 0) {
        if (!target.needsDeclaration) return std::nullopt;
        throw NotWritten(Say(Text::kDeclarationNeeded, {target.name}));
    }
    Edit edit;
    if (FindValue(text, CVelStrW(u"encoding"), end, edit.first, edit.last)) {
        edit.replacement = label;
        return edit;
    }
    if (!target.needsDeclaration) return std::nullopt;
    if (!FindValue(text, CVelStrW(u"version"), end, edit.first, edit.last)) edit.last = 4;
    edit.first = ++edit.last;  // after the version's closing quote
    edit.replacement = CVelStrW(u" encoding=\"");
    edit.replacement += label;
    edit.replacement += u'"';
    return edit;
}

CVelStrW Apply(const CVelStrW& text, const Edit& edit) {
    CVelStrW result = text.SubStr(0, edit.first);
    result += edit.replacement;
    result += text.SubStr(edit.last);
    return result;
}

// ---- encoding ----

std::string ConvertText(const CVelStrW& text, vcc::eCodeType code) {
    const int sourceBytes = text.GetLength() * 2;
    int size = 0;
    if (!vcc::GetBufSizeByByte(&size, sourceBytes, vcc::eUtf16LE, code)) {
        throw NotWritten(Say(Text::kTooLarge));
    }
    std::string bytes(static_cast<std::size_t>(size), '\0');
    if (!vcc::ConvertTo(reinterpret_cast<const char*>(text.c_str()), sourceBytes, vcc::eUtf16LE,
                        bytes.data(), &size, code)) {
        return {};
    }
    bytes.resize(static_cast<std::size_t>(size));
    return bytes;
}

// Named by its line and column in the file's own text.
[[noreturn]] void ThrowUnwritable(const CVelStrW& text, const Target& target) {
    int line = 1, column = 1;
    for (int i = 0; i < text.GetLength(); ++i, ++column) {
        const bool pair = text[i] >= 0xD800 && text[i] < 0xDC00 && i + 1 < text.GetLength();
        const CVelStrW one = text.SubStr(i, pair ? 2 : 1);
        if (ConvertText(one, target.code).empty() && !one.IsEmpty()) {
            const char32_t point =
                pair ? 0x10000 + ((one[0] - 0xD800) << 10) + (one[1] - 0xDC00) : one[0];
            char name[16];
            std::snprintf(name, sizeof name, "U+%04X", static_cast<unsigned>(point));
            throw NotWritten(
                Say(Text::kUnwritableCharacter,
                    {name, std::to_string(line), std::to_string(column), target.name}));
        }
        if (text[i] == u'\n') line += 1, column = 0;
        i += pair;
    }
    throw NotWritten(Say(Text::kNotConvertible, {target.name}));
}

std::string Encode(const CVelStrW& text, const Target& target) {
    std::string bytes = ConvertText(text, target.code);
    if (bytes.empty() && !text.IsEmpty()) ThrowUnwritable(text, target);
    return target.byteOrderMark ? "\xFF\xFE" + bytes : bytes;
}

// ---- reading it back ----

CVelStrW Normalised(CVelStrW text) {
    vx::NormalizeRetCode(text);
    return text;
}

// Positions after the edit on its line move by the change of length.
class PositionMap {
  public:
    PositionMap(const CVelStrW& text, const std::optional<Edit>& edit) {
        if (!edit) return;
        const CVelStrW before = Normalised(text.SubStr(0, edit->last));
        int lineStart = 0;
        m_line = 1;
        for (int i = 0; i < before.GetLength(); ++i) {
            if (before[i] == u'\n') ++m_line, lineStart = i + 1;
        }
        m_column = before.GetLength() - lineStart + 1;
        m_shift = edit->replacement.GetLength() - (edit->last - edit->first);
    }

    int Column(int line, int column) const {
        return line == m_line && column >= m_column ? column + m_shift : column;
    }

  private:
    int m_line = 0;
    int m_column = 0;
    int m_shift = 0;
};

struct Reading {
    const vx::CXmlDocument& document;
    CVelStrW text;  // the document's text, line ends normalised
};

bool SameError(const vx::CParseError& a, const Reading& first, const vx::CParseError& b,
               const Reading& second, const PositionMap& map) {
    const bool inDocument = a.GetSource() == first.text;
    if (a.GetErrCode() != b.GetErrCode() || a.HasPosition() != b.HasPosition() ||
        inDocument != (b.GetSource() == second.text) || a.GetLine() != b.GetLine()) {
        return false;
    }
    if (!inDocument) return a.GetColumn() == b.GetColumn() && a.GetSource() == b.GetSource();
    return map.Column(a.GetLine(), a.GetColumn()) == b.GetColumn();
}

bool SameDiagnostics(const Reading& first, const Reading& second, const PositionMap& map) {
    const vx::CParseErrorList a = first.document.GetErrList(), b = second.document.GetErrList();
    if (a.GetSize() != b.GetSize()) return false;
    for (int i = 0; i < a.GetSize(); ++i) {
        if (!SameError(a.GetAt(i), first, b.GetAt(i), second, map)) return false;
    }
    return true;
}

CVelStrW DocumentText(const vx::CXmlDocument& document) {
    vx::CVelStringBuffer<CVelStrW> source;
    document.GetSource(source);
    return source.ToString();
}

// Parses bytes as the file at documentPath would be parsed, so that external subsets and
// entities resolve as they do for the original.
void CheckReadBack(const std::string& bytes, const CVelStrW& written,
                   const std::string& documentPath, const Reading& original,
                   const PositionMap& map) {
    const TemporaryFile file;
    if (std::FILE* out = std::fopen(file.Path().c_str(), "wb")) {
        Write(out, bytes);
        std::fclose(out);
    }
    CVelStrW text;
    if (vx::CParse::LoadWideText(ToVelStr(file.Path()), text) != vx::CParseError::eErrNone) {
        throw NotWritten(Say(Text::kUnreadableResult));
    }
    if (text != written) throw NotWritten(Say(Text::kOtherText));
    vx::CParse parser;
    std::unique_ptr<vx::CXmlDocument> copy(parser.ParseForBuf(text, ToVelStr(documentPath)));
    if (!SameDiagnostics(original, {*copy, Normalised(text)}, map)) {
        throw NotWritten(Say(Text::kOtherDiagnostics));
    }
    copy->SetEncoding(original.document.GetEncoding());
    if (DocumentText(*copy) != DocumentText(original.document)) {
        throw NotWritten(Say(Text::kOtherTree));
    }
}

void WriteOut(const std::string& out, const std::string& bytes) {
    if (out == "-") {
        Write(stdout, bytes);
        return;
    }
    if (!vel::ReplaceFileContents(out.c_str(), bytes.data(), static_cast<int>(bytes.size()))) {
        throw NotWritten(Say(Text::kCannotWrite, {std::strerror(vel::CVelFile::GetLastError())}));
    }
}

void Convert(const LoadedDocument& loaded, const Target& target, const std::string& out) {
    CVelStrW text;
    if (vx::CParse::LoadWideText(ToVelStr(loaded.path), text) != vx::CParseError::eErrNone) {
        throw NotWritten(Say(Text::kSourceUnreadable, {loaded.shownPath}));
    }
    const std::optional<Edit> edit = EncodingEdit(text, target);
    const CVelStrW written = edit ? Apply(text, *edit) : text;
    const std::string bytes = Encode(written, target);
    CheckReadBack(bytes, written, loaded.path, {*loaded.document, Normalised(text)},
                  PositionMap(text, edit));
    WriteOut(out, bytes);
}

}  // namespace

int RunConvert(const Options& options) {
    const Target& target = FindTarget(*options.encoding);
    const LoadedDocument loaded = LoadDocument(options.files.front());
    ReportDiagnostics(stderr, loaded, options);
    try {
        Convert(loaded, target, *options.output);
    } catch (const NotWritten& reason) {
        Write(stderr, "vxml: " + Say(Text::kNotWritten, {*options.output, reason.what()}) + "\n");
        return 1;
    }
    return 0;
}

}  // namespace vxml
