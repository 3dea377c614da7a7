// Attribute-list declarations. Checked for syntax only: no default or fixed value ever reaches
// an element.
#include "vx/parse/GrammarSteps.h"

namespace vx {

using namespace grammar;

bool CParseAttlistDecl::Interpreter(CParse& parser, int start, int& end) {
    m_attDefs.Clear();
    int pos = start;
    if (!AcceptKeyword(parser.Source(), pos, Keywords().attlistDeclOpen)) {
        return Absent(start, end);
    }
    if (!MatchSpaceAndName(parser, pos, CParseError::eErrNoElementName, m_name, end)) return false;
    for (;;) {
        CParseAttDef attDef;
        int next = pos;
        if (!attDef.Interpreter(parser, pos, next)) {
            end = next;
            return false;
        }
        if (next == pos) break;
        m_attDefs.PushBack(std::move(attDef));
        pos = next;
    }
    return MatchDeclarationEnd(parser, pos, CParseError::eErrAttlistDeclEnd, end);
}

bool CParseAttDef::Interpreter(CParse& parser, int start, int& end) {
    CParseName name;
    int pos = SkipWhiteSpace(parser.Source(), start);
    if (pos == start || !TryMatch(name, parser, pos)) return Absent(start, end);
    m_name = name.GetName();
    return MatchSpace(parser, pos, end) &&
           ResultTest(m_type, parser, pos, CParseError::eErrNoAttType, end) &&
           MatchSpace(parser, pos, end) &&
           ResultTest(m_default, parser, pos, CParseError::eErrNoDefaultDecl, end) &&
           Matched(pos, end);
}

// ---- attribute types ----

bool CParseAttType::Interpreter(CParse& parser, int start, int& end) {
    return m_type.MatchFirstOf<CParseStringType, CParseTokenizedType, CParseEnumeratedType>(
        parser, start, end);
}

bool CParseStringType::Interpreter(CParse& parser, int start, int& end) {
    end = start;
    if (AcceptKeyword(parser.Source(), end, Keywords().cdata)) m_keyword = Keywords().cdata;
    return true;
}

bool CParseTokenizedType::Interpreter(CParse& parser, int start, int& end) {
    end = start;
    AcceptFirstOf(parser.Source(), end, Keywords().tokenizedTypes, m_keyword);
    return true;
}

bool CParseEnumeratedType::Interpreter(CParse& parser, int start, int& end) {
    return m_type.MatchFirstOf<CParseNotationType, CParseEnumeration>(parser, start, end);
}

bool CParseNotationType::Interpreter(CParse& parser, int start, int& end) {
    const CVelStrW& src = parser.Source();
    m_names.Clear();
    int pos = start;
    if (!AcceptKeyword(src, pos, Keywords().notation)) return Absent(start, end);
    if (!MatchSpace(parser, pos, end)) return false;
    if (!AcceptChar(src, pos, u'(')) return Fail(parser, CParseError::eErrNoOpenParen, pos, end);
    char16_t separator = u'|';
    return MatchListAfterParen(parser, start, pos, end, separator, CParseError::eErrNoNotationType,
                               m_names);
}

bool CParseEnumeration::Interpreter(CParse& parser, int start, int& end) {
    m_tokens.Clear();
    int pos = start;
    if (!AcceptChar(parser.Source(), pos, u'(')) return Absent(start, end);
    char16_t separator = u'|';
    return MatchListAfterParen(parser, start, pos, end, separator, CParseError::eErrNoEnumeration,
                               m_tokens);
}

bool CParseNmtoken::Interpreter(CParse& parser, int start, int& end) {
    const CVelStrW& src = parser.Source();
    end = start;
    while (end < src.GetLength() && CParseName::IsNameChar(src[end]))
        ++end;
    if (end > start) m_token = src.SubStr(start, end - start);
    return true;
}

// ---- defaults ----

bool CParseDefaultDecl::Interpreter(CParse& parser, int start, int& end) {
    const CVelStrW& src = parser.Source();
    const CKeywords& keywords = Keywords();
    const CVelStrW valueless[] = {keywords.requiredDefault, keywords.impliedDefault};
    m_keyword.Clear();
    int pos = start;
    if (AcceptFirstOf(src, pos, valueless, m_keyword)) return Matched(pos, end);
    if (!AcceptKeyword(src, pos, keywords.fixedDefault))
        return m_value.Interpreter(parser, start, end);
    m_keyword = keywords.fixedDefault;
    return MatchSpace(parser, pos, end) &&
           RequireMatch(m_value, parser, pos, CParseError::eErrFixedNeedsDefault, end) &&
           Matched(pos, end);
}

}  // namespace vx
