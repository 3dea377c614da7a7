#pragma once
// Steps that the declarations of the document type definition share. Many of their parts are
// "result tests": the code is reported only when the part fails, not when it is absent. White
// space and names never fail, so such parts are in effect optional.
#include <memory>
#include <span>
#include <utility>

#include "vx/parse/Expressions.h"
#include "vx/parse/Parse.h"

namespace vx {

// The end of a production that matched up to pos.
inline bool Matched(int pos, int& end) {
    end = pos;
    return true;
}

// Moves pos behind the first of keywords that src holds there and copies it to matched.
bool AcceptFirstOf(const CVelStrW& src, int& pos, std::span<const CVelStrW> keywords,
                   CVelStrW& matched);

// Runs child at pos and moves pos behind it when it matched. A child that fails fails the
// caller too, with code reported after the child's own error; an absent child is no error.
bool ResultTest(CAbstractExpression& child, CParse& parser, int& pos, CParseError::eError code,
                int& end);

// As ResultTest, and an absent child fails with code as well.
bool RequireMatch(CAbstractExpression& child, CParse& parser, int& pos, CParseError::eError code,
                  int& end);

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

// ---- CParseAlternative ----

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

}  // namespace vx
