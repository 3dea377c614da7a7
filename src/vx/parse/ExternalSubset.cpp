// What an external file holds: the text declaration, the declarations of an external subset
// and the content of an external parsed entity.
#include "vx/parse/GrammarSteps.h"

namespace vx {

using namespace grammar;

// The version is required here, unlike in XML 1.0; the encoding is optional.
bool CParseTextDecl::Interpreter(CParse& parser, int start, int& end) {
    const CVelStrW& src = parser.Source();
    const CKeywords& keywords = Keywords();
    m_version = CParseAttribute();
    m_encoding = CParseAttribute();
    int pos = start;
    if (!AcceptKeyword(src, pos, keywords.xmlDeclOpen)) return Absent(start, end);
    if (!MatchSpace(parser, pos, end)) return false;
    if (!CParseXMLDecl::MatchVersionInfo(parser, m_version, pos, end)) return false;
    if (!MatchEncoding(parser, pos, end)) return false;
    pos = SkipWhiteSpace(src, pos);
    if (!AcceptKeyword(src, pos, keywords.piClose)) {
        return Fail(parser, CParseError::eErrXmlDeclEnd, pos, end);
    }
    return Matched(pos, end);
}

// (S? encoding="...")?: any other attribute is code 12.
bool CParseTextDecl::MatchEncoding(CParse& parser, int& pos, int& end) {
    CParseAttribute attribute;
    int next = SkipWhiteSpace(parser.Source(), pos);
    if (!TryMatch(attribute, parser, next)) return true;
    if (attribute.GetName() != Keywords().encoding) {
        return Fail(parser, CParseError::eErrUnexpectedAttValue, next, end);
    }
    m_encoding = std::move(attribute);
    pos = next;
    return true;
}

// A declaration that fails ends the loop where it began; the loader reports the rest of the
// text as unmatched.
bool CParseExtSubsetDecl::Interpreter(CParse& parser, int start, int& end) {
    m_decls.Clear();
    end = start;
    for (;;) {
        CParseMarkupDecl decl;
        CParseConditionalSect section;
        CParseDeclSep separator;
        if (TryMatch(decl, parser, end)) {
            m_decls.PushBack(std::move(decl));
        } else if (!TryMatch(section, parser, end) && !TryMatch(separator, parser, end)) {
            return true;
        }
    }
}

// A text declaration that fails counts as absent: the declarations are read from start.
bool CParseExtSubset::Interpreter(CParse& parser, int start, int& end) {
    int pos = start;
    TryMatch(m_textDecl, parser, pos);
    return m_decls.Interpreter(parser, pos, end);
}

// A text declaration that fails stays reported and is read as content.
bool CParseExtParsedEnt::Interpreter(CParse& parser, int start, int& end) {
    ClearContent();
    CParseTextDecl textDecl;
    int pos = start;
    TryMatch(textDecl, parser, pos);
    m_content.emplace();
    return m_content->Interpreter(parser, pos, end);
}

}  // namespace vx
