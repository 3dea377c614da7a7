// The parse driver: file or buffer in, document out.
#include "vx/parse/Parse.h"

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <utility>

#include "vx/dom/XmlDocument.h"
#include "vx/parse/GrammarSteps.h"
#include "vx/parse/Settings.h"
#include "vx/parse/SinglePassReader.h"
#include "vx/platform/Package.h"

namespace vx {

using namespace grammar;

CParse::CParse() : m_dtd(new CXmlDtd(nullptr)) {}

CParse::~CParse() {
    delete m_dtd;
}

CParse::CNestingScope::CNestingScope(CParse& parser) : m_parser(parser) {
    if (m_parser.m_depth >= GetNestingLimit()) throw std::runtime_error("dummy");
    ++m_parser.m_depth;
}

CXmlDocument* CParse::ParseForFile(CVelStr fileName) {
    return RunPublic(__LINE__, "CParse::ParseForFile", [&] {
        auto parser = std::make_unique<CParse>();
        auto document = std::make_unique<CXmlDocument>(nullptr);
        CVelStrW text;
        const CParseError::eError failure = LoadWideText(fileName, text);
        if (failure == CParseError::eErrFileOpen) {
            document->AddError(CParseError(failure, -1, -1, CVelStrW(fileName)));
        } else if (failure != CParseError::eErrNone) {
            document->AddError(failure);
        } else {
            document.reset(parser->ParseForBuf(std::move(text), fileName));
        }
        return document.release();
    });
}

CXmlDocument* CParse::ParseForBuf(CVelStrW text) {
    return RunPublic(__LINE__, "CParse::ParseForBuf", [&] {
        CParse parser;
        return parser.ParseForBuf(std::move(text), CVelStr());
    });
}

CXmlDocument* CParse::ParseForBuf(CVelStrW text, CVelStr fileName) {
    return RunPublic(__LINE__, "CParse::ParseForBuf", [&] {
        auto document = std::make_unique<CXmlDocument>(nullptr);
        m_fileName = std::move(fileName);
        NormalizeRetCode(text);
        SetSource(std::move(text));
        m_readTarget = &document->GetRootElement();
        m_rootRead = false;
        m_readTails.clear();
        // Nothing may point into the document once it is handed on, or deleted by an exception.
        struct CForget {
            CParse& parser;
            ~CForget() {
                parser.m_readTarget = nullptr;
                parser.m_readTails.clear();
            }
        } forget{*this};
        if (Interpreter() == m_source.GetLength()) {
            if (!MakeXmlTree(*document)) AddError(CParseError::eErrMakeTree);
        } else {
            AddError(CParseError::eErrParseStopped);
            // The productions would have built no tree.
            if (m_rootRead) CSinglePassReader::Discard(*m_readTarget);
        }
        document->SetErrList(GetErrList());
        return document.release();
    });
}

int CParse::Interpreter() {
    return RunPublic(__LINE__, "CParse::Interpreter", [&] { return MatchDocument(); });
}

// document: prolog element Misc*. The declaration is required, so a document without one gets
// code 8 and is read from position 0 all the same.
int CParse::MatchDocument() {
    int end = 0;
    int pos = 0;
    if (TryMatch(m_xmlDecl, *this, pos)) end = pos;
    if (TryMatch(m_prologMisc, *this, pos)) end = pos;
    CParseDoctypedecl doctype;
    if (TryMatch(doctype, *this, pos)) {
        end = pos;
        if (TryMatch(m_doctypeMisc, *this, pos)) end = pos;
    }
    int rootEnd = pos;
    bool matched = true;
    if (ReadRoot(pos, rootEnd, matched)) {
        if (!matched) return end;
    } else if (!m_root.Interpreter(*this, pos, rootEnd)) {
        return end;
    }
    end = pos = rootEnd;
    if (TryMatch(m_trailingMisc, *this, pos)) end = pos;
    return end;
}

bool CParse::ReadRoot(int start, int& end, bool& matched) {
    // While a log file is open the tree builder logs every element it fills; the reader, which
    // fills them itself, would not.
    if (!m_readTarget || m_recordSuppressed || !IsSinglePassReadingEnabled() || vel::MayLog()) {
        return false;
    }
    const CSinglePassReader::eResult result =
        CSinglePassReader(*this).ReadElement(start, end, *m_readTarget);
    m_rootRead = result == CSinglePassReader::eRead;
    matched = m_rootRead;
    return result != CSinglePassReader::eRefused;
}

void CParse::AddError(CParseError::eError code) {
    RunLogged(__LINE__, "CParse::AddError", [&] { m_errors.PushBack(CParseError(code)); });
}

void CParse::AddError(CParseError::eError code, int position) {
    RunLogged(__LINE__, "CParse::AddError", [&] {
        if (!m_lineIndex) m_lineIndex = std::make_unique<CLineIndex>(m_source);
        int line = 0;
        int column = 0;
        m_lineIndex->GetLineAndCol(position, line, column);
        AddError(code, line, column);
    });
}

void CParse::AddError(CParseError::eError code, int line, int column) {
    RunLogged(__LINE__, "CParse::AddError",
              [&] { m_errors.PushBack(CParseError(code, line, column, m_source)); });
}

CParseErrorList CParse::GetErrList() const {
    return RunLogged(__LINE__, "CParse::GetErrList", [&] { return m_errors; });
}

CVelStrW CParse::GetSource() const {
    return RunLogged(__LINE__, "CParse::GetSource", [&] { return m_source; });
}

bool CParse::ChargeExpansion(std::int64_t units) {
    constexpr std::int64_t kCeiling = std::int64_t{1} << 30;
    const std::int64_t limit = GetExpansionLimit();
    m_expansion += units;
    if (limit == 0) return true;
    return m_expansion <=
           std::max(limit, std::min(kCeiling, 4 * std::int64_t{m_source.GetLength()}));
}

void CParse::SetSource(CVelStrW text) {
    m_source = std::move(text);
    m_lineIndex.reset();
}

}  // namespace vx
