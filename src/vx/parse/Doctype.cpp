// The document type declaration: external identifiers and literals, the internal subset's
// markup declarations, declaration separators and parameter-entity references.
#include "vx/dom/XmlDtd.h"
#include "vx/parse/GrammarSteps.h"

namespace vx {

using namespace grammar;

// ---- literals and external identifiers ----

bool CParseQuotedLiteral::MatchLiteral(CParse& parser, int start, int& end,
                                       CParseError::eError unterminated) {
    const CVelStrW& src = parser.Source();
    const CDelimitedRun run = MatchQuotedLiteral(src, start);
    if (run.state == CDelimitedRun::eAbsent) return Absent(start, end);
    if (run.state == CDelimitedRun::eUnterminated)
        return Fail(parser, unterminated, run.first, end);
    m_literal = src.SubStr(run.first, run.Length());
    return Matched(run.close + 1, end);
}

bool CParseSystemLiteral::Interpreter(CParse& parser, int start, int& end) {
    return MatchLiteral(parser, start, end, CParseError::eErrSystemLiteralEnd);
}

bool CParsePubidLiteral::Interpreter(CParse& parser, int start, int& end) {
    return MatchLiteral(parser, start, end, CParseError::eErrPubidLiteralEnd);
}

namespace {

// White space that must be there (code 10), unlike the result-tested kind.
bool RequireSpace(CParse& parser, int& pos, int& end) {
    CParseS space;
    return RequireMatch(space, parser, pos, CParseError::eErrSpaceRequired, end);
}

}  // namespace

bool CParseExternalID::Interpreter(CParse& parser, int start, int& end) {
    const CVelStrW& src = parser.Source();
    const CKeywords& keywords = Keywords();
    CParseSystemLiteral system;
    // The public literal is read as a system literal: its characters are not checked.
    CParseSystemLiteral pubid;
    int pos = start;
    if (AcceptKeyword(src, pos, keywords.systemKeyword)) {
        if (!RequireSpace(parser, pos, end) ||
            !RequireMatch(system, parser, pos, CParseError::eErrNoSystemLiteral, end)) {
            return false;
        }
    } else if (AcceptKeyword(src, pos, keywords.publicKeyword)) {
        if (!RequireSpace(parser, pos, end) ||
            !RequireMatch(pubid, parser, pos, CParseError::eErrNoPubidLiteral, end) ||
            !RequireSpace(parser, pos, end) ||
            !RequireMatch(system, parser, pos, CParseError::eErrNoSystemLiteral, end)) {
            return false;
        }
    } else {
        return Absent(start, end);
    }
    m_systemLiteral = system.Literal();
    m_publicLiteral = pubid.Literal();
    return Matched(pos, end);
}

CXmlDtdExternalID CParseExternalID::ToDtdExternalID() const {
    CXmlDtdExternalID id;
    id.setSystemLiteral(m_systemLiteral);
    return id;
}

bool CParsePublicID::Interpreter(CParse& parser, int start, int& end) {
    int pos = start;
    if (!AcceptKeyword(parser.Source(), pos, Keywords().publicKeyword)) return Absent(start, end);
    CParsePubidLiteral literal;
    if (!MatchSpace(parser, pos, end) ||
        !ResultTest(literal, parser, pos, CParseError::eErrNoPubidLiteral, end)) {
        return false;
    }
    m_publicLiteral = literal.Literal();
    return Matched(pos, end);
}

// ---- parameter-entity references and declaration separators ----

bool CParsePEReference::Interpreter(CParse& parser, int start, int& end) {
    return MatchNamedReference(parser, u'%', start, m_name, end);
}

// A malformed reference stays reported and white space is tried all the same.
bool CParseDeclSep::Interpreter(CParse& parser, int start, int& end) {
    m_reference.reset();
    CParsePEReference reference;
    end = start;
    if (TryMatch(reference, parser, end)) {
        m_reference = std::move(reference);
        return true;
    }
    return Matched(SkipWhiteSpace(parser.Source(), start), end);
}

// ---- markup declarations ----

bool CParseMarkupDecl::Interpreter(CParse& parser, int start, int& end) {
    return m_decl.MatchFirstOf<CParseElementDecl, CParseAttlistDecl, CParseEntityDecl,
                               CParseNotationDecl, CParsePI, CParseComment>(parser, start, end);
}

// ---- the document type declaration ----

bool CParseDoctypedecl::Interpreter(CParse& parser, int start, int& end) {
    const CVelStrW& src = parser.Source();
    m_externalID.reset();
    int pos = start;
    if (!AcceptKeyword(src, pos, Keywords().doctypeOpen)) return Absent(start, end);
    CVelStrW rootName;
    if (!MatchSpaceAndName(parser, pos, CParseError::eErrNoRootName, rootName, end) ||
        !MatchExternalID(parser, pos, end)) {
        return false;
    }
    pos = SkipWhiteSpace(src, pos);
    if (AcceptChar(src, pos, u'[') && !MatchInternalSubset(parser, pos, end)) return false;
    if (!MatchDeclarationEnd(parser, pos, CParseError::eErrDoctypeDeclEnd, end)) return false;
    m_rootName = rootName;
    return true;
}

// (S ExternalID)?, the external subset being read at once. An identifier that reports an
// error is passed over as if it were not there; a subset that fails to load fails the
// declaration (its errors are reported by the loader).
bool CParseDoctypedecl::MatchExternalID(CParse& parser, int& pos, int& end) {
    const int idStart = SkipWhiteSpace(parser.Source(), pos);
    CParseExternalID id;
    int idEnd = idStart;
    if (!TryMatch(id, parser, idEnd)) return true;
    if (idStart == pos) return Fail(parser, CParseError::eErrSpaceRequired, idStart, end);
    m_externalID = id;
    if (!parser.ParseExtSussetEntityForFile(id.ToDtdExternalID().getSystemLiteral())) {
        end = idEnd;
        return false;
    }
    pos = idEnd;
    return true;
}

// (markupdecl | DeclSep)* "]", entered behind the "[". A declaration that fails ends the
// DOCTYPE with its own error; 15 and 19 are for text that starts no declaration.
bool CParseDoctypedecl::MatchInternalSubset(CParse& parser, int& pos, int& end) {
    const CVelStrW& src = parser.Source();
    while (!AcceptChar(src, pos, u']')) {
        CParseMarkupDecl decl;
        int next = pos;
        if (!decl.Interpreter(parser, pos, next)) {
            end = next;
            return false;
        }
        CParseDeclSep separator;
        if (next == pos && !TryMatch(separator, parser, next)) {
            return Fail(parser,
                        pos < src.GetLength() ? CParseError::eErrUnexpectedChar
                                              : CParseError::eErrUnexpectedEnd,
                        pos, end);
        }
        pos = next;
    }
    return true;
}

}  // namespace vx
