// Names, character runs, attributes and attribute values.
#include "vx/dom/NameCache.h"
#include "vx/dom/XmlDtd.h"
#include "vx/parse/GrammarSteps.h"
#include "vx/parse/ReferenceExpansion.h"

namespace vx {

using namespace grammar;

bool CParseChars::Interpreter(CParse& parser, int start, int& end) {
    const CVelStrW& src = parser.Source();
    m_text.Clear();
    end = start;
    while (end < src.GetLength() && IsChar(src[end]))
        ++end;
    if (end > start) m_text = src.SubStr(start, end - start);
    return true;
}

bool CParseName::Interpreter(CParse& parser, int start, int& end) {
    const CVelStrW& src = parser.Source();
    m_name.Clear();
    end = Scan(src, start);
    if (end > start) m_name = NameCache().Intern(src.c_str() + start, end - start);
    return true;
}

bool CParseAttribute::Interpreter(CParse& parser, int start, int& end) {
    const CVelStrW& src = parser.Source();
    CParseName name;
    int pos = start;
    if (!TryMatch(name, parser, pos)) return Absent(start, end);
    m_name = name.TakeName();
    AttributeNameCache().InternInPlace(m_name);
    pos = SkipWhiteSpace(src, pos);
    if (!AcceptChar(src, pos, u'=')) return Fail(parser, CParseError::eErrNoEq, pos, end);
    pos = SkipWhiteSpace(src, pos);
    // A value that is absent altogether is accepted as empty, deliberately.
    if (!m_value.Interpreter(parser, pos, end)) {
        return Fail(parser, CParseError::eErrAttValue, end, end);
    }
    return true;
}

bool CParseAttValue::Interpreter(CParse& parser, int start, int& end) {
    const CVelStrW& src = parser.Source();
    const CDelimitedRun literal = MatchQuotedLiteral(src, start);
    if (literal.state == CDelimitedRun::eAbsent) return Absent(start, end);
    if (literal.state == CDelimitedRun::eUnterminated) {
        return Fail(parser, CParseError::eErrAttValueEnd, literal.first, end);
    }
    bool sawReference = false;
    if (!ScanReferences(parser, literal.first, literal.close, sawReference, end)) return false;
    if (sawReference) {
        // Built on the heap: the cache keeps it, or it goes at once.
        vel::CHeapScope heap;
        CVelStrW expanded;
        if (!ConvertReferenceForString(expanded, src.SubStr(literal.first, literal.Length()),
                                       parser.GetDtd())) {
            return Fail(parser, CParseError::eErrUndefinedEntity, start, end);
        }
        m_value = AttributeValueCache().Intern(expanded);
    } else {
        m_value = AttributeValueCache().Intern(src.c_str() + literal.first, literal.Length());
    }
    end = literal.close + 1;
    return true;
}

namespace {

// The length of the text that the expansion copies for reference: that of a declared internal
// entity, nothing for the rest.
int ReplacementLength(const CParse& parser, const CParseReference& reference) {
    if (reference.GetKind() != CParseReference::eEntityRef) return 0;
    const CVelStrW name = reference.GetEntityRef().GetName();
    const CXmlDtd* dtd = parser.GetDtd();
    if (!dtd || FindPredefinedEntity(name, 0, name.GetLength()) || !dtd->hasInternalGE(name)) {
        return 0;
    }
    return dtd->getInternalGE(name).GetLength();
}

}  // namespace

// Checks the references of source[first, last) and refuses "<". Copies of entity text beyond
// the parse's allowance are refused with code 4 at the reference.
bool CParseAttValue::ScanReferences(CParse& parser, int first, int last, bool& sawReference,
                                    int& end) {
    const CVelStrW& src = parser.Source();
    for (int pos = first; pos < last;) {
        const char16_t ch = src[pos];
        if (ch == u'<') return Fail(parser, CParseError::eErrUnexpectedChar, pos, end);
        if (ch != u'&') {
            ++pos;
            continue;
        }
        // A malformed reference is reported by the reference and again here, on purpose.
        CParseReference reference;
        int next = pos;
        if (!reference.Interpreter(parser, pos, next)) {
            return Fail(parser, CParseError::eErrReference, next, end);
        }
        if (!parser.ChargeExpansion(ReplacementLength(parser, reference))) {
            return Fail(parser, CParseError::eErrNoMemory, pos, end);
        }
        sawReference = true;
        pos = next > pos ? next : pos + 1;
    }
    return true;
}

}  // namespace vx
