// Element type declarations and their content models. Checked for syntax only: nothing is
// validated against them.
#include "vx/parse/GrammarSteps.h"

namespace vx {

using namespace grammar;

bool CParseElementDecl::Interpreter(CParse& parser, int start, int& end) {
    int pos = start;
    if (!AcceptKeyword(parser.Source(), pos, Keywords().elementDeclOpen)) {
        return Absent(start, end);
    }
    // A content model that fails gets the element-name code too, on purpose.
    return MatchSpaceAndName(parser, pos, CParseError::eErrNoElementName, m_name, end) &&
           MatchSpace(parser, pos, end) &&
           ResultTest(m_contentSpec, parser, pos, CParseError::eErrNoElementName, end) &&
           MatchDeclarationEnd(parser, pos, CParseError::eErrElementDeclEnd, end);
}

bool CParseContentSpec::Interpreter(CParse& parser, int start, int& end) {
    const CKeywords& keywords = Keywords();
    const CVelStrW bareKeywords[] = {keywords.empty, keywords.any};
    m_keyword.Clear();
    m_model.Reset();
    end = start;
    if (AcceptFirstOf(parser.Source(), end, bareKeywords, m_keyword)) return true;
    return m_model.MatchFirstOf<CParseMixed, CParseChildren>(parser, start, end);
}

bool CParseMixed::Interpreter(CParse& parser, int start, int& end) {
    const CVelStrW& src = parser.Source();
    m_names.Clear();
    int pos = start;
    if (!AcceptChar(src, pos, u'(')) return Absent(start, end);
    pos = SkipWhiteSpace(src, pos);
    if (!AcceptKeyword(src, pos, Keywords().pcdata)) return Absent(start, end);
    for (;;) {
        pos = SkipWhiteSpace(src, pos);
        if (!AcceptChar(src, pos, u'|')) break;
        pos = SkipWhiteSpace(src, pos);
        CParseName name;
        if (!TryMatch(name, parser, pos)) {
            return Fail(parser, CParseError::eErrUnexpectedChar, pos, end);
        }
        m_names.PushBack(name.GetName());
    }
    if (AcceptKeyword(src, pos, Keywords().mixedClose)) return Matched(pos, end);
    if (!IsCharAt(src, pos, u')')) return Fail(parser, CParseError::eErrUnexpectedChar, pos, end);
    // Names may only be listed when "*" follows.
    if (!m_names.IsEmpty()) return Fail(parser, CParseError::eErrMixedEnd, pos, end);
    return Matched(pos + 1, end);
}

// ---- content particles ----

bool CParseParticle::MatchParticle(CParse& parser, int start, int& end, bool nameAllowed) {
    m_particle.Reset();
    m_occurrence = 0;
    CParseName name;
    end = start;
    if (nameAllowed && TryMatch(name, parser, end)) {
        m_particle.Set(1, std::move(name));
    } else if (!CParseParticleGroup::MatchSeqOrChoice(parser, start, end, m_particle,
                                                      nameAllowed ? 2 : 1)) {
        return false;
    }
    if (end == start) return true;
    for (const char16_t occurrence : {u'?', u'*', u'+'}) {
        if (AcceptChar(parser.Source(), end, occurrence)) {
            m_occurrence = occurrence;
            break;
        }
    }
    return true;
}

bool CParseCp::Interpreter(CParse& parser, int start, int& end) {
    return MatchParticle(parser, start, end, true);
}

bool CParseChildren::Interpreter(CParse& parser, int start, int& end) {
    return MatchParticle(parser, start, end, false);
}

bool CParseParticleGroup::MatchGroup(CParse& parser, int start, int& end, char16_t& separator,
                                     char16_t handOver) {
    m_particles.Clear();
    int pos = start;
    if (!AcceptChar(parser.Source(), pos, u'(')) return Absent(start, end);
    CParse::CNestingScope level(parser);
    return MatchListAfterParen(parser, start, pos, end, separator, CParseError::eErrNoContentSpec,
                               m_particles, handOver);
}

// Trying a seq and then a choice would read a group whose first separator is "|" twice, and
// nested groups of that kind in exponential time; the group is read once instead.
bool CParseParticleGroup::MatchSeqOrChoice(CParse& parser, int start, int& end,
                                           CParseAlternative& result, std::uint8_t seqIndex) {
    CParseSeq seq;
    char16_t separator = 0;
    if (!seq.MatchGroup(parser, start, end, separator, 0)) return false;
    if (end == start) return true;
    if (separator != u'|') {
        result.Set(seqIndex, std::move(seq));
        return true;
    }
    CParseChoice choice;
    choice.m_particles = std::move(seq.m_particles);
    result.Set(seqIndex + 1, std::move(choice));
    return true;
}

bool CParseSeq::Interpreter(CParse& parser, int start, int& end) {
    char16_t separator = u',';
    return MatchGroup(parser, start, end, separator, u'|');
}

bool CParseChoice::Interpreter(CParse& parser, int start, int& end) {
    char16_t separator = u'|';
    return MatchGroup(parser, start, end, separator, 0);
}

}  // namespace vx
