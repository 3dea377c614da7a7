#include "vx/parse/DeclarationSteps.h"

namespace vx {

namespace {

bool RunRequired(CAbstractExpression& child, CParse& parser, int& pos, CParseError::eError code,
                 bool absentFails, int& end) {
    int childEnd = pos;
    const bool ok = child.Interpreter(parser, pos, childEnd);
    if (!ok || (absentFails && childEnd == pos)) return Fail(parser, code, childEnd, end);
    pos = childEnd;
    return true;
}

}  // namespace

bool AcceptFirstOf(const CVelStrW& src, int& pos, std::span<const CVelStrW> keywords,
                   CVelStrW& matched) {
    for (const CVelStrW& keyword : keywords) {
        if (AcceptKeyword(src, pos, keyword)) {
            matched = keyword;
            return true;
        }
    }
    return false;
}

bool ResultTest(CAbstractExpression& child, CParse& parser, int& pos, CParseError::eError code,
                int& end) {
    return RunRequired(child, parser, pos, code, false, end);
}

bool RequireMatch(CAbstractExpression& child, CParse& parser, int& pos, CParseError::eError code,
                  int& end) {
    return RunRequired(child, parser, pos, code, true, end);
}

bool MatchSpace(CParse& parser, int& pos, int& end) {
    CParseS space;
    return ResultTest(space, parser, pos, CParseError::eErrSpaceRequired, end);
}

bool MatchName(CParse& parser, int& pos, CParseError::eError code, CVelStrW& name, int& end) {
    CParseName match;
    if (!ResultTest(match, parser, pos, code, end)) return false;
    name = match.GetName();
    return true;
}

bool MatchSpaceAndName(CParse& parser, int& pos, CParseError::eError nameCode, CVelStrW& name,
                       int& end) {
    return MatchSpace(parser, pos, end) && MatchName(parser, pos, nameCode, name, end);
}

bool MatchDeclarationEnd(CParse& parser, int pos, CParseError::eError code, int& end) {
    pos = SkipWhiteSpace(parser.Source(), pos);
    if (!AcceptChar(parser.Source(), pos, u'>')) return Fail(parser, code, pos, end);
    end = pos;
    return true;
}

// ---- CParseAlternative ----

CParseAlternative::CParseAlternative(const CParseAlternative& other)
    : m_item(other.m_item ? other.m_copy(*other.m_item) : nullptr),
      m_copy(other.m_copy),
      m_index(other.m_index) {}

CParseAlternative& CParseAlternative::operator=(const CParseAlternative& other) {
    if (this != &other) *this = CParseAlternative(other);
    return *this;
}

void CParseAlternative::Reset() {
    m_item.reset();
    m_copy = nullptr;
    m_index = 0;
}

}  // namespace vx
