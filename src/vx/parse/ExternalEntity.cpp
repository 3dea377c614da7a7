// External parsed entities and the external subset: a file named by a system literal, read
// by the same parser on behalf of the document being parsed.
#include <memory>
#include <string>
#include <utility>

#include "vx/dom/XmlDocument.h"
#include "vx/parse/GrammarSteps.h"
#include "vx/parse/Settings.h"
#include "vx/platform/Path.h"

namespace vx {

using namespace grammar;

namespace {

// Makes text the parser's source for one scope.
class CSourceSwap {
  public:
    CSourceSwap(CParse& parser, CVelStrW text) : m_parser(parser), m_saved(parser.GetSource()) {
        m_parser.SetSource(std::move(text));
    }
    ~CSourceSwap() { m_parser.SetSource(std::move(m_saved)); }
    CSourceSwap(const CSourceSwap&) = delete;
    CSourceSwap& operator=(const CSourceSwap&) = delete;

  private:
    CParse& m_parser;
    CVelStrW m_saved;
};

}  // namespace

// The path a system literal names, or false for "http://": network resources are never
// fetched. Relative paths, "file:///" ones included, are resolved against the directory of
// the document being parsed, however deep the entity that refers to them.
bool CParse::ResolveSystemLiteral(const CVelStrW& literal, const CVelStr& documentName,
                                  CVelStr& path) {
    const CKeywords& keywords = Keywords();
    CVelStrW rest = literal;
    if (literal.MatchAt(0, keywords.fileScheme)) {
        rest = literal.SubStr(keywords.fileScheme.GetLength());
    } else if (literal.MatchAt(0, keywords.httpScheme)) {
        return false;
    }
    const std::string full =
        vel::MakeFullPath(CVelStr(rest).c_str(), vel::ExtractFilePath(documentName.c_str()));
    path = CVelStr(full.c_str(), static_cast<int>(full.size()));
    return true;
}

// Line ends of the external text are left as they are; positions of its diagnostics refer to
// it, not to the document.
bool CParse::RunOnExternalFile(CAbstractExpression& production, const CVelStrW& systemLiteral) {
    // Checked before anything else, so that no literal, "http://" included, reaches a file.
    if (!IsExternalLoadingEnabled()) {
        AddError(CParseError::eErrUnsupported);
        return false;
    }
    CVelStr path;
    if (!ResolveSystemLiteral(systemLiteral, m_fileName, path)) {
        AddError(CParseError::eErrHttpNotImplemented);
        return false;
    }
    CVelStrW text;
    const CParseError::eError failure = LoadWideText(path, text);
    if (failure != CParseError::eErrNone) {
        AddError(failure);
        return false;
    }
    bool matched = false;
    {
        CSourceSwap swap(*this, std::move(text));
        int end = 0;
        matched = production.Interpreter(*this, 0, end) && end == m_source.GetLength();
    }
    if (!matched) AddError(CParseError::eErrParseStopped);
    return matched;
}

CXmlParsedEntity* CParse::ParseExtParsedEntityForFile(CVelStrW systemLiteral) {
    return RunPublic(__LINE__, "CParse::ParseExtParsedEntityForFile", [&]() -> CXmlParsedEntity* {
        CParseExtParsedEnt production;
        if (!RunOnExternalFile(production, systemLiteral)) return nullptr;
        auto entity = std::make_unique<CXmlParsedEntity>(nullptr);
        if (!SetElementContentInfo(&entity->GetContent(), production.GetContent())) return nullptr;
        return entity.release();
    });
}

bool CParse::ParseExtSussetEntityForFile(CVelStrW systemLiteral) {
    return RunPublic(__LINE__, "CParse::ParseExtSussetEntityForFile", [&] {
        CParseExtSubset production;
        return RunOnExternalFile(production, systemLiteral);
    });
}

}  // namespace vx
