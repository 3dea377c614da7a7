#include "Notes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <set>

#include "Messages.h"
#include "Output.h"

namespace vxml {
namespace {

using vx::CParseError;

std::string OpenFailureReason(const std::string& path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK);
    if (fd < 0) return std::strerror(errno);
    struct stat info {};
    const bool known = ::fstat(fd, &info) == 0;
    ::close(fd);
    if (known && S_ISDIR(info.st_mode)) return Say(Text::kIsDirectory);
    if (known && !S_ISREG(info.st_mode)) return Say(Text::kNotRegularFile);
    return Say(Text::kNotReadable);
}

// The file's bytes up to and including the first '>', as far as vx looks.
std::string DeclarationBytes(const std::string& path) {
    std::string bytes;
    const int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK);
    if (fd < 0) return bytes;
    char block[512];
    ssize_t got = 0;
    while (bytes.find('>') == std::string::npos && bytes.size() < 65536 &&
           (got = ::read(fd, block, sizeof block)) > 0) {
        bytes.append(block, static_cast<std::size_t>(got));
    }
    ::close(fd);
    return bytes.substr(0,
                        bytes.find('>') == std::string::npos ? bytes.size() : bytes.find('>') + 1);
}

std::string StartProblem(const std::string& bytes) {
    if (bytes.rfind("\xEF\xBB\xBF", 0) == 0) {
        return Say(Text::kUtf8ByteOrderMark);
    }
    if (bytes.rfind("\xFE\xFF", 0) == 0 || (bytes.size() >= 2 && bytes[0] == '\0')) {
        return Say(Text::kBigEndian);
    }
    if (bytes.size() >= 2 && bytes[1] == '\0') {
        return Say(Text::kNoLessThanFirst);
    }
    if (bytes.size() < 4) return Say(Text::kShorterThanFour);
    if (bytes.rfind("<?xm", 0) != 0) return Say(Text::kNoDeclaration);
    if (bytes.back() != '>') return Say(Text::kDeclarationUnended);
    return "";
}

std::string ValueProblem(const std::string& declaration, std::size_t at) {
    const char quote = at < declaration.size() ? declaration[at] : '\0';
    const std::size_t close = declaration.find(quote, at + 1);
    if ((quote != '"' && quote != '\'') || close == std::string::npos) {
        return Say(Text::kEncodingUnquoted);
    }
    return Say(Text::kEncodingUnread, {declaration.substr(at + 1, close - at - 1)});
}

std::string DeclarationProblem(const std::string& declaration) {
    const std::size_t exact = declaration.find("encoding=");
    if (exact != std::string::npos) return ValueProblem(declaration, exact + 9);
    const std::size_t word = declaration.find("encoding");
    if (word == std::string::npos) return Say(Text::kNoEncoding);
    const std::size_t equals = declaration.find_first_not_of(" \t\r\n", word + 8);
    if (equals != std::string::npos && declaration[equals] == '=') {
        return Say(Text::kBlanksAroundEquals);
    }
    return Say(Text::kNoEquals);
}

// The system literals of a text, in order: SYSTEM "x", and the second literal of PUBLIC.
std::vector<std::string> SystemLiterals(const std::string& text) {
    std::vector<std::string> literals;
    for (const char* keyword : {"SYSTEM", "PUBLIC"}) {
        for (std::size_t at = text.find(keyword); at != std::string::npos;
             at = text.find(keyword, at + 6)) {
            std::size_t pos = at + 6;
            for (int literal = keyword[0] == 'S' ? 1 : 2; literal > 0; --literal) {
                pos = text.find_first_not_of(" \t\r\n", pos);
                if (pos == std::string::npos || (text[pos] != '"' && text[pos] != '\'')) break;
                const std::size_t close = text.find(text[pos], pos + 1);
                if (close == std::string::npos) break;
                if (literal == 1) literals.push_back(text.substr(pos + 1, close - pos - 1));
                pos = close + 1;
            }
        }
    }
    return literals;
}

// The files a document's system literals name, followed through the ones that load.
struct ExternalFile {
    std::string path;
    CParseError::eError failure;
    vx::CVelStrW text;
};

class ExternalFiles {
  public:
    ExternalFiles(const vx::CVelStrW& documentText, const std::string& documentPath) {
        Follow(ToUtf8(documentText), documentPath);
    }

    const ExternalFile* WithText(const vx::CVelStrW& text) const {
        for (const ExternalFile& file : m_files) {
            if (file.failure == CParseError::eErrNone && file.text == text) return &file;
        }
        return nullptr;
    }

    std::vector<const ExternalFile*> FailingWith(CParseError::eError code) const {
        std::vector<const ExternalFile*> found;
        for (const ExternalFile& file : m_files) {
            if (file.failure == code) found.push_back(&file);
        }
        return found;
    }

  private:
    void Follow(const std::string& text, const std::string& documentPath) {
        for (const std::string& literal : SystemLiterals(text)) {
            vx::CVelStr resolved;
            if (!vx::CParse::ResolveSystemLiteral(vx::CVelStrW(ToVelStr(literal)),
                                                  ToVelStr(documentPath), resolved)) {
                continue;
            }
            const std::string path = ToString(resolved);
            if (!m_seen.insert(path).second || m_files.size() > 100) continue;
            ExternalFile file{path, CParseError::eErrNone, {}};
            file.failure = vx::CParse::LoadWideText(ToVelStr(path), file.text);
            m_files.push_back(file);
            if (file.failure == CParseError::eErrNone) Follow(ToUtf8(file.text), documentPath);
        }
    }

    std::vector<ExternalFile> m_files;
    std::set<std::string> m_seen;
};

bool IsLoadFailure(CParseError::eError code) {
    return code == CParseError::eErrFileOpen || code == CParseError::eErrCodeTypeDetect ||
           code == CParseError::eErrNoMemory || code == CParseError::eErrCodeConvert ||
           code == CParseError::eErrHttpNotImplemented;
}

std::string LoadFailureHint(CParseError::eError code, const std::string& path) {
    if (code == CParseError::eErrFileOpen) return path + ": " + OpenFailureReason(path);
    if (code == CParseError::eErrCodeTypeDetect) return path + ": " + EncodingHint(path);
    return "";
}

class Annotator {
  public:
    Annotator(const LoadedDocument& loaded, const vx::CVelStrW& text)
        : m_errors(loaded.document->GetErrList()),
          m_hasTree(HasTree(*loaded.document)),
          m_externals(text, loaded.path) {
        m_normalised = text;
        vx::NormalizeRetCode(m_normalised);
    }

    std::vector<DiagnosticNote> Notes() {
        std::vector<DiagnosticNote> notes(m_errors.GetSize());
        for (int i = 0; i < m_errors.GetSize(); ++i) {
            const CParseError& error = m_errors.GetAt(i);
            if (error.HasPosition()) {
                NotePositioned(error, notes[i]);
            } else if (IsLoadFailure(error.GetErrCode())) {
                NoteLoadFailure(error.GetErrCode(), notes[i]);
            } else if (error.GetErrCode() == CParseError::eErrParseStopped) {
                // The document's own stop is reported last, and only when no tree was built.
                notes[i].external = m_hasTree || i + 1 < m_errors.GetSize();
            }
        }
        return notes;
    }

  private:
    void NotePositioned(const CParseError& error, DiagnosticNote& note) const {
        if (error.GetSource() == m_normalised) return;
        note.external = true;
        if (const ExternalFile* file = m_externals.WithText(error.GetSource())) {
            note.externalFile = file->path;
        }
    }

    // The files that failed with this code are named in order when they are as many as the
    // diagnostics with it; otherwise which is which cannot be known.
    void NoteLoadFailure(CParseError::eError code, DiagnosticNote& note) {
        note.external = true;
        const std::vector<const ExternalFile*> files = m_externals.FailingWith(code);
        int& used = m_used[code];
        if (static_cast<int>(files.size()) != CountWithoutPosition(code)) return;
        note.externalFile = files[used++]->path;
        note.hint = LoadFailureHint(code, note.externalFile);
    }

    int CountWithoutPosition(CParseError::eError code) const {
        int count = 0;
        for (int i = 0; i < m_errors.GetSize(); ++i) {
            const CParseError& error = m_errors.GetAt(i);
            count += !error.HasPosition() && error.GetErrCode() == code;
        }
        return count;
    }

    vx::CParseErrorList m_errors;
    bool m_hasTree;
    vx::CVelStrW m_normalised;
    ExternalFiles m_externals;
    int m_used[64] = {};
};

}  // namespace

std::string EncodingHint(const std::string& path) {
    const std::string bytes = DeclarationBytes(path);
    std::string problem = StartProblem(bytes);
    if (problem.empty()) problem = DeclarationProblem(bytes);
    return Say(Text::kEncodingHint, {problem});
}

std::vector<DiagnosticNote> NoteDiagnostics(const LoadedDocument& loaded, bool externalLoading) {
    const vx::CParseErrorList errors = loaded.document->GetErrList();
    std::vector<DiagnosticNote> notes(errors.GetSize());
    if (errors.IsEmpty()) return notes;
    vx::CVelStrW text;
    const CParseError::eError failure = vx::CParse::LoadWideText(ToVelStr(loaded.path), text);
    if (failure != CParseError::eErrNone) {
        // The document itself could not be read: its one diagnostic says why.
        if (failure == CParseError::eErrFileOpen) notes[0].hint = OpenFailureReason(loaded.path);
        if (failure == CParseError::eErrCodeTypeDetect) notes[0].hint = EncodingHint(loaded.path);
        return notes;
    }
    if (!externalLoading) return notes;
    return Annotator(loaded, text).Notes();
}

}  // namespace vxml
