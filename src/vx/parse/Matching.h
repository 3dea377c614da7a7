#pragma once
// What every production uses to read the source: the keyword constants and the small matching
// steps (a keyword or a character at a position, optional white space, a quoted literal), the
// calling idiom for a sub-production and the two ways a production ends early.
#include "vx/diag/ParseError.h"
#include "vx/text/VelStr.h"

namespace vx {

class CParse;
class CAbstractExpression;

// Keywords and delimiters, created once on first use and released by vx::Finalize().
// Productions that need a new keyword add a member here.
struct CKeywords {
    // XML declaration and processing instructions
    CVelStrW xmlDeclOpen{u"<?xml"};
    CVelStrW piOpen{u"<?"};
    CVelStrW piClose{u"?>"};
    CVelStrW version{u"version"};
    CVelStrW encoding{u"encoding"};
    CVelStrW standalone{u"standalone"};
    CVelStrW standard{u"standard"};  // what GetStandard looks up, on purpose
    CVelStrW version10{u"1.0"};
    // comments and CDATA sections
    CVelStrW commentOpen{u"<!--"};
    CVelStrW commentClose{u"-->"};
    CVelStrW cdataOpen{u"<![CDATA["};
    CVelStrW cdataClose{u"]]>"};
    // tags
    CVelStrW tagOpen{u"<"};
    CVelStrW tagClose{u">"};
    CVelStrW emptyTagClose{u"/>"};
    CVelStrW endTagOpen{u"</"};
    // references
    CVelStrW hexCharRefOpen{u"&#x"};
    CVelStrW charRefOpen{u"&#"};
    CVelStrW amp{u"amp"};
    CVelStrW lt{u"lt"};
    CVelStrW gt{u"gt"};
    CVelStrW quot{u"quot"};
    CVelStrW apos{u"apos"};
    CVelStrW ampText{u"&"};
    CVelStrW ltText{u"<"};
    CVelStrW gtText{u">"};
    CVelStrW quotText{u"\""};
    CVelStrW aposText{u"'"};
    // what CXmlElement::ParseFromMemory puts before a fragment
    CVelStrW fragmentDecl{u"<?xml version=\"1.0\" encoding=\"ISO-10646-UCS-2\" ?>"};

    // ---- document type declaration ----
    CVelStrW doctypeOpen{u"<!DOCTYPE"};
    CVelStrW systemKeyword{u"SYSTEM"};
    CVelStrW publicKeyword{u"PUBLIC"};
    // element declarations
    CVelStrW elementDeclOpen{u"<!ELEMENT"};
    CVelStrW empty{u"EMPTY"};
    CVelStrW any{u"ANY"};
    CVelStrW pcdata{u"#PCDATA"};
    CVelStrW mixedClose{u")*"};
    // attribute-list declarations
    CVelStrW attlistDeclOpen{u"<!ATTLIST"};
    CVelStrW cdata{u"CDATA"};
    // Tried in this order, the first prefix wins: "IDREF" reads as "ID". The name-token types
    // are spelled "MNTOKEN", so "NMTOKEN" matches no type.
    CVelStrW tokenizedTypes[7]{u"ID",       u"IDREF",   u"IDREFS",  u"ENTITY",
                               u"ENTITIES", u"MNTOKEN", u"MNTOKENS"};
    CVelStrW notation{u"NOTATION"};
    CVelStrW requiredDefault{u"#REQUIRED"};
    CVelStrW impliedDefault{u"#IMPLIED"};
    CVelStrW fixedDefault{u"#FIXED"};
    // entity and notation declarations
    CVelStrW entityDeclOpen{u"<!ENTITY"};
    CVelStrW ndata{u"NDATA"};
    CVelStrW notationDeclOpen{u"<!NOTATION"};
    // system literals of external entities
    CVelStrW fileScheme{u"file:///"};
    CVelStrW httpScheme{u"http://"};
};

const CKeywords& Keywords();

// True when pos is inside src and holds ch.
inline bool IsCharAt(const CVelStrW& src, int pos, char16_t ch) {
    return pos >= 0 && pos < src.GetLength() && src[pos] == ch;
}

// Moves pos past keyword when src holds it there.
inline bool AcceptKeyword(const CVelStrW& src, int& pos, const CVelStrW& keyword) {
    if (!src.MatchAt(pos, keyword)) return false;
    pos += keyword.GetLength();
    return true;
}

// Moves pos past ch when src holds it there.
inline bool AcceptChar(const CVelStrW& src, int& pos, char16_t ch) {
    if (!IsCharAt(src, pos, ch)) return false;
    ++pos;
    return true;
}

// The S production's characters: #x20, #x9, #xD, #xA.
inline bool IsWhiteSpace(char16_t ch) {
    return ch == 0x20 || ch == 0x9 || ch == 0xD || ch == 0xA;
}

// The text of the predefined entity (amp, lt, gt, quot, apos) named by text[first, last), or
// null.
const CVelStrW* FindPredefinedEntity(const CVelStrW& text, int first, int last);

// The position after the white space run at pos (pos itself when there is none).
int SkipWhiteSpace(const CVelStrW& src, int pos);

// A run between an opening and a closing delimiter, the closing one being the first after the
// opening one.
struct CDelimitedRun {
    enum eState { eAbsent, eUnterminated, eFound };
    eState state = eAbsent;
    int first = 0;  // after the opening delimiter
    int close = 0;  // index of the closing delimiter when found
    int Length() const { return close - first; }
};
CDelimitedRun MatchDelimited(const CVelStrW& src, int start, const CVelStrW& open,
                             const CVelStrW& close);
// A literal between double quotes or between apostrophes.
CDelimitedRun MatchQuotedLiteral(const CVelStrW& src, int start);

// The calling idiom of sub-productions: run child at pos; when it returned true and consumed
// something, move pos to its end and return true. A child that returned false counts as
// absent (its errors stay in the parser's list).
bool TryMatch(CAbstractExpression& child, CParse& parser, int& pos);

// A production that is not present: end = start, result true.
inline bool Absent(int start, int& end) {
    end = start;
    return true;
}

// A production that found a malformed construct: report code at pos, hand pos on in end.
bool Fail(CParse& parser, CParseError::eError code, int pos, int& end);

}  // namespace vx
