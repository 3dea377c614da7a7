#pragma once
// The vocabulary the productions are written in: the keywords, the small matching steps over
// the source, and the ways a production runs a child and ends. Internal to the parser.
//
// How each step treats a child production that is absent (consumed nothing, result true) and
// one that failed (result false, its error already reported):
//
//   step                        child absent                      child failed
//   TryMatch(child, pos)        false, pos unchanged, no error    false, pos unchanged
//   ResultTest(child, code)     true, pos unchanged, no error     code reported where the
//                                                                 child stopped, false
//   RequireMatch(child, code)   code reported at pos, false       as ResultTest
//   CParseAlternative::Decides  false: the choice tries the next  true with result false: the
//                               item                              choice fails
// A matched child moves pos behind it (Decides keeps it as the choice's item). A production
// itself ends with one of:
//   Absent(start, end)          not present: end = start, true
//   Matched(pos, end)           matched up to pos: end = pos, true
//   Fail(parser, code, pos)     malformed: code reported at pos, end = pos, false
// Errors are never taken back: a child's errors stay in the list whatever the caller does.
#include <memory>
#include <span>
#include <utility>

#include "vx/diag/ParseError.h"
#include "vx/dom/XmlCharData.h"
#include "vx/dom/XmlListContainer.h"
#include "vx/parse/Expressions.h"
#include "vx/parse/Parse.h"
#include "vx/text/VelStr.h"

namespace vx::grammar {

// ---- the child and end steps of the table above ----

// Runs child at pos; when it returned true and consumed something, moves pos to its end and
// returns true.
bool TryMatch(CAbstractExpression& child, CParse& parser, int& pos);

// Runs child at pos and moves pos behind it when it matched.
bool ResultTest(CAbstractExpression& child, CParse& parser, int& pos, CParseError::eError code,
                int& end);

bool RequireMatch(CAbstractExpression& child, CParse& parser, int& pos, CParseError::eError code,
                  int& end);

inline bool Absent(int start, int& end) {
    end = start;
    return true;
}

inline bool Matched(int pos, int& end) {
    end = pos;
    return true;
}

bool Fail(CParse& parser, CParseError::eError code, int pos, int& end);

// ---- keywords and matching steps ----

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

// The position after the white space run at pos (pos itself when there is none). Inline: most
// runs are empty or one unit, between the parts of every tag.
inline int SkipWhiteSpace(const CVelStrW& src, int pos) {
    const char16_t* units = src.c_str();
    const int length = src.GetLength();
    while (pos < length && IsWhiteSpace(units[pos]))
        ++pos;
    return pos;
}

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

// opener Name ";", the form of entity ("&") and parameter-entity ("%") references: the name
// goes to name. Code 19 when the source ends after the opener or the name, 23 without a name,
// 22 without the ";".
bool MatchNamedReference(CParse& parser, char16_t opener, int start, CVelStrW& name, int& end);

// ---- steps of the declarations ----
// Many parts of a declaration are result-tested: the code is reported only when the part
// fails, not when it is absent. White space and names never fail, so such parts are in effect
// optional.

// Moves pos behind the first of keywords that src holds there and copies it to matched.
bool AcceptFirstOf(const CVelStrW& src, int& pos, std::span<const CVelStrW> keywords,
                   CVelStrW& matched);

// White space, result-tested with code 10.
bool MatchSpace(CParse& parser, int& pos, int& end);

// A name, result-tested with code; name receives it (empty when absent).
bool MatchName(CParse& parser, int& pos, CParseError::eError code, CVelStrW& name, int& end);

// S Name: how a declaration goes on after its keyword.
bool MatchSpaceAndName(CParse& parser, int& pos, CParseError::eError nameCode, CVelStrW& name,
                       int& end);

// S? ">", the close of a declaration; code when the ">" is missing.
bool MatchDeclarationEnd(CParse& parser, int pos, CParseError::eError code, int& end);

// The rest of a parenthesised list after its "(": S? Item (S? separator S? Item)* S? ")",
// each item appended to items. Items are result-tested with itemCode; a missing ")" is code 41.
// A separator of 0 is decided by what follows the first item: "|", or else ",". With handOver
// set, a list whose first separator is handOver is absent (end = start), left to another
// production.
template <class Item>
bool MatchListAfterParen(CParse& parser, int start, int pos, int& end, char16_t& separator,
                         CParseError::eError itemCode, CSmallVector<Item>& items,
                         char16_t handOver = 0) {
    const CVelStrW& src = parser.Source();
    for (bool first = true;; first = false) {
        pos = SkipWhiteSpace(src, pos);
        Item item;
        const int itemStart = pos;
        if (!ResultTest(item, parser, pos, itemCode, end)) return false;
        if (pos > itemStart) items.PushBack(std::move(item));
        const int next = SkipWhiteSpace(src, pos);
        if (first && !separator) separator = IsCharAt(src, next, u'|') ? u'|' : u',';
        if (first && handOver && IsCharAt(src, next, handOver)) return Absent(start, end);
        if (!IsCharAt(src, next, separator)) break;
        pos = next + 1;
    }
    pos = SkipWhiteSpace(src, pos);
    if (!AcceptChar(src, pos, u')')) return Fail(parser, CParseError::eErrNoCloseParen, pos, end);
    end = pos;
    return true;
}

}  // namespace vx::grammar

namespace vx {

// ---- CParseAlternative: the templates of an ordered choice ----

template <class Item>
void CParseAlternative::Set(std::uint8_t index, Item item) {
    m_item = std::make_unique<Item>(std::move(item));
    m_copy = [](const CAbstractExpression& source) -> CAbstractExpression* {
        return new Item(static_cast<const Item&>(source));
    };
    m_index = index;
}

// True when Item decided the choice: it matched (kept) or failed (result false).
template <class Item>
bool CParseAlternative::Decides(CParse& parser, int start, int& end, std::uint8_t index,
                                bool& result) {
    Item item;
    result = item.Interpreter(parser, start, end);
    if (!result) return true;
    if (end == start) return false;
    Set(index, std::move(item));
    return true;
}

template <class... Items>
bool CParseAlternative::MatchFirstOf(CParse& parser, int start, int& end) {
    Reset();
    end = start;
    bool result = true;
    std::uint8_t index = 0;
    (Decides<Items>(parser, start, end, ++index, result) || ...);
    return result;
}

// ---- tree building ----

// A text node of class Node at the end of target; text is taken over, so that a fresh text
// costs no count change on its way into the tree.
template <class Node>
void AppendText(CXmlListContainer& target, CVelStrW text) {
    target.PushBack(std::make_unique<Node>(nullptr))->SetText(std::move(text));
}

}  // namespace vx
