// What stands around the root element and between content: the XML declaration, comments,
// processing instructions, white space and Misc*.
#include <utility>

#include "vx/parse/GrammarSteps.h"

namespace vx {

using namespace grammar;

// ---- XML declaration ----

bool CParseXMLDecl::Interpreter(CParse& parser, int start, int& end) {
    const CVelStrW& src = parser.Source();
    m_attributes.Clear();
    int pos = start;
    if (!AcceptKeyword(src, pos, Keywords().xmlDeclOpen)) {
        return Fail(parser, CParseError::eErrNoXmlDecl, start, end);
    }
    // The white space the grammar requires here is deliberately optional.
    pos = SkipWhiteSpace(src, pos);
    CParseAttribute found[3];
    if (!MatchAttributes(parser, pos, found)) {
        end = pos;
        return false;
    }
    pos = SkipWhiteSpace(src, pos);
    if (!AcceptKeyword(src, pos, Keywords().piClose)) {
        return Fail(parser, CParseError::eErrXmlDeclEnd, pos, end);
    }
    for (CParseAttribute& attribute : found)
        m_attributes.PushBack(std::move(attribute));
    end = pos;
    return true;
}

// version, then up to two of encoding and standalone in any order; neither their values nor a
// repeated name is checked.
bool CParseXMLDecl::MatchAttributes(CParse& parser, int& pos, CParseAttribute (&found)[3]) {
    const CKeywords& keywords = Keywords();
    const CVelStrW& src = parser.Source();
    if (!MatchVersionInfo(parser, found[0], pos, pos)) return false;
    for (int slot = 1; slot < 3; ++slot) {
        int next = SkipWhiteSpace(src, pos);
        CParseAttribute attribute;
        if (next == pos || !TryMatch(attribute, parser, next)) break;
        const CVelStrW name = attribute.GetName();
        if (name != keywords.encoding && name != keywords.standalone) {
            return Fail(parser, CParseError::eErrUnexpectedAttValue, next, pos);
        }
        found[slot] = std::move(attribute);
        pos = next;
    }
    return true;
}

bool CParseXMLDecl::MatchVersionInfo(CParse& parser, CParseAttribute& version, int& pos, int& end) {
    const CKeywords& keywords = Keywords();
    int next = pos;
    // A malformed attribute counts as absent: code 9 stands where it began.
    if (!TryMatch(version, parser, next) || version.GetName() != keywords.version) {
        return Fail(parser, CParseError::eErrNoVersionInfo, next, end);
    }
    if (version.GetAttValue().GetValue() != keywords.version10) {
        return Fail(parser, CParseError::eErrVersionNum, next, end);
    }
    pos = next;
    return true;
}

bool CParseXMLDecl::GetAttValueByName(const CVelStrW& name, CVelStrW& value) const {
    for (const CParseAttribute& attribute : m_attributes) {
        if (attribute.GetName() == name) {
            value = attribute.GetAttValue().GetValue();
            return true;
        }
    }
    return false;
}

bool CParseXMLDecl::GetVersion(CVelStrW& value) const {
    return GetAttValueByName(Keywords().version, value);
}

bool CParseXMLDecl::GetEncording(CVelStrW& value) const {
    return GetAttValueByName(Keywords().encoding, value);
}

bool CParseXMLDecl::GetStandard(CVelStrW& value) const {
    return GetAttValueByName(Keywords().standard, value);
}

// ---- comments, processing instructions, white space ----

bool CParseComment::Interpreter(CParse& parser, int start, int& end) {
    const CVelStrW& src = parser.Source();
    const CKeywords& keywords = Keywords();
    const CDelimitedRun run =
        MatchDelimited(src, start, keywords.commentOpen, keywords.commentClose);
    if (run.state == CDelimitedRun::eAbsent) return Absent(start, end);
    if (run.state == CDelimitedRun::eUnterminated) {
        return Fail(parser, CParseError::eErrCommentEnd, run.first, end);
    }
    // An illegal character gets the terminator's code too, on purpose.
    for (int pos = run.first; pos < run.close; ++pos) {
        if (!CParseChars::IsChar(src[pos]))
            return Fail(parser, CParseError::eErrCommentEnd, pos, end);
    }
    m_text = src.SubStr(run.first, run.Length());
    end = run.close + keywords.commentClose.GetLength();
    return true;
}

bool CParsePI::Interpreter(CParse& parser, int start, int& end) {
    const CVelStrW& src = parser.Source();
    const CKeywords& keywords = Keywords();
    const CDelimitedRun run = MatchDelimited(src, start, keywords.piOpen, keywords.piClose);
    if (run.state == CDelimitedRun::eAbsent) return Absent(start, end);
    if (run.state == CDelimitedRun::eUnterminated) {
        return Fail(parser, CParseError::eErrPIEnd, run.first, end);
    }
    m_text = src.SubStr(run.first, run.Length());
    end = run.close + keywords.piClose.GetLength();
    return true;
}

bool CParseS::Interpreter(CParse& parser, int start, int& end) {
    const CVelStrW& src = parser.Source();
    end = SkipWhiteSpace(src, start);
    if (end > start) m_text = src.SubStr(start, end - start);
    return true;
}

// ---- Misc* ----

bool CParseMisc::Interpreter(CParse& parser, int start, int& end) {
    end = start;
    if (TryMatch(m_comment, parser, end)) {
        m_kind = eComment;
    } else if (TryMatch(m_pi, parser, end)) {
        m_kind = ePI;
    } else if (TryMatch(m_s, parser, end)) {
        m_kind = eS;
    }
    return true;
}

bool CParseMiscList::Interpreter(CParse& parser, int start, int& end) {
    end = start;
    while (end < parser.Source().GetLength()) {
        CParseMisc misc;
        if (!TryMatch(misc, parser, end)) break;
        m_list.PushBack(std::move(misc));
    }
    return true;
}

}  // namespace vx
