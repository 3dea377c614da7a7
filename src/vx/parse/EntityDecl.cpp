// Entity and notation declarations. Only general entities leave a trace outside the
// productions: they are stored in the parser's DTD.
#include "vx/dom/XmlDocument.h"
#include "vx/dom/XmlDtd.h"
#include "vx/parse/GrammarSteps.h"
#include "vx/text/CommonFunc.h"

namespace vx {

using namespace grammar;

bool CParseEntityDecl::Interpreter(CParse& parser, int start, int& end) {
    return m_decl.MatchFirstOf<CParsePEDecl, CParseGEDecl>(parser, start, end);
}

bool CParseGEDecl::Interpreter(CParse& parser, int start, int& end) {
    int pos = start;
    if (!AcceptKeyword(parser.Source(), pos, Keywords().entityDeclOpen)) return Absent(start, end);
    CVelStrW name;
    CParseEntityDef definition;
    if (!MatchSpaceAndName(parser, pos, CParseError::eErrNoEntityName, name, end) ||
        !MatchSpace(parser, pos, end) ||
        !ResultTest(definition, parser, pos, CParseError::eErrNoEntityDecl, end) ||
        !MatchDeclarationEnd(parser, pos, CParseError::eErrEntityDeclEnd, end)) {
        return false;
    }
    m_name = name;
    m_definition = std::move(definition);
    return Store(parser);
}

// No look-up comes first, so the last declaration of a name wins. An external entity is loaded
// and parsed here, once; when that fails the declaration fails (the loader reported why).
bool CParseGEDecl::Store(CParse& parser) const {
    CXmlDtd* dtd = parser.GetDtd();
    if (!dtd) return true;
    const CParseAlternative& definition = m_definition.GetDefinition();
    if (const CParseEntityValue* value = definition.Get<CParseEntityValue>()) {
        dtd->setInternalGE(m_name, value->getValue());
    } else if (const CParseExternalID* externalID = definition.Get<CParseExternalID>()) {
        // An NDATA part changes nothing: the file is loaded as a parsed entity all the same.
        const CXmlDtdExternalID id = externalID->ToDtdExternalID();
        CXmlParsedEntity* entity = parser.ParseExtParsedEntityForFile(id.getSystemLiteral());
        if (!entity) return false;
        dtd->setExternalGE(m_name, id, entity);
    }
    return true;
}

bool CParsePEDecl::Interpreter(CParse& parser, int start, int& end) {
    const CVelStrW& src = parser.Source();
    int pos = start;
    if (!AcceptKeyword(src, pos, Keywords().entityDeclOpen)) return Absent(start, end);
    if (!MatchSpace(parser, pos, end)) return false;
    // Without "%" this is a general entity, so code 55 is never raised. The name must follow
    // the "%" directly: a blank there leaves it empty.
    if (!AcceptChar(src, pos, u'%')) return Absent(start, end);
    return MatchName(parser, pos, CParseError::eErrNoEntityName, m_name, end) &&
           MatchSpace(parser, pos, end) &&
           ResultTest(m_definition, parser, pos, CParseError::eErrNoExternalID, end) &&
           MatchDeclarationEnd(parser, pos, CParseError::eErrEntityDeclEnd, end);
}

bool CParseEntityDef::Interpreter(CParse& parser, int start, int& end) {
    m_ndata.reset();
    if (!m_definition.MatchFirstOf<CParseEntityValue, CParseExternalID>(parser, start, end)) {
        return false;
    }
    if (!m_definition.Get<CParseExternalID>()) return true;
    const int idEnd = end;
    CParseNDataDecl ndata;
    if (!ndata.Interpreter(parser, idEnd, end)) return false;
    if (end > idEnd) m_ndata = std::move(ndata);
    return true;
}

bool CParsePEDef::Interpreter(CParse& parser, int start, int& end) {
    return m_definition.MatchFirstOf<CParseEntityValue, CParseExternalID>(parser, start, end);
}

bool CParseNDataDecl::Interpreter(CParse& parser, int start, int& end) {
    const CVelStrW& src = parser.Source();
    int pos = SkipWhiteSpace(src, start);
    if (!AcceptKeyword(src, pos, Keywords().ndata)) return Absent(start, end);
    pos = SkipWhiteSpace(src, pos);
    CParseName name;
    if (!RequireMatch(name, parser, pos, CParseError::eErrNoNotationName, end)) return false;
    m_notationName = name.GetName();
    return Matched(pos, end);
}

// ---- entity values ----

bool CParseEntityValue::Interpreter(CParse& parser, int start, int& end) {
    const CVelStrW& src = parser.Source();
    const CDelimitedRun literal = MatchQuotedLiteral(src, start);
    if (literal.state == CDelimitedRun::eAbsent) return Absent(start, end);
    // The attribute value's code, reused.
    if (literal.state == CDelimitedRun::eUnterminated) {
        return Fail(parser, CParseError::eErrAttValueEnd, literal.first, end);
    }
    if (!CheckReferences(parser, literal.first, literal.close, end)) return false;
    m_value = ConvertEntityToChar(ConvertNumToChar(src.SubStr(literal.first, literal.Length())));
    return Matched(literal.close + 1, end);
}

// Every "%" must begin a parameter-entity reference and every "&" a reference. They are
// checked only: a parameter-entity reference stays in the value as written.
bool CParseEntityValue::CheckReferences(CParse& parser, int first, int last, int& end) {
    const CVelStrW& src = parser.Source();
    for (int pos = first; pos < last;) {
        if (src[pos] == u'%') {
            CParsePEReference reference;
            if (!RequireMatch(reference, parser, pos, CParseError::eErrPEReference, end)) {
                return false;
            }
        } else if (src[pos] == u'&') {
            CParseReference reference;
            if (!RequireMatch(reference, parser, pos, CParseError::eErrReference, end)) {
                return false;
            }
        } else {
            ++pos;
        }
    }
    return true;
}

// ---- notations ----

bool CParseNotationDecl::Interpreter(CParse& parser, int start, int& end) {
    m_identifier.Reset();
    int pos = start;
    if (!AcceptKeyword(parser.Source(), pos, Keywords().notationDeclOpen)) {
        return Absent(start, end);
    }
    if (!MatchSpaceAndName(parser, pos, CParseError::eErrNoEntityName, m_name, end) ||
        !MatchSpace(parser, pos, end)) {
        return false;
    }
    // "PUBLIC" with a single literal fails as an external identifier (its errors stay
    // reported) and is then read as a public identifier.
    CParseExternalID externalID;
    CParsePublicID publicID;
    if (TryMatch(externalID, parser, pos)) {
        m_identifier.Set(1, std::move(externalID));
    } else if (TryMatch(publicID, parser, pos)) {
        m_identifier.Set(2, std::move(publicID));
    } else {
        return Fail(parser, CParseError::eErrNoExternalOrNotationID, pos, end);
    }
    // The entity declaration's terminator code, on purpose.
    return MatchDeclarationEnd(parser, pos, CParseError::eErrEntityDeclEnd, end);
}

}  // namespace vx
