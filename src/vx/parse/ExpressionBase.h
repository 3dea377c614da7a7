#pragma once
// The base of the grammar's production classes: their ids, the abstract production with its
// Interpreter contract, the owning list of mixed productions and the record of an ordered
// choice. The productions themselves are in Expressions.h.
#include <cstdint>
#include <memory>

#include "vx/memory/Pages.h"
#include "vx/memory/SmallVector.h"

namespace vx {

class CParse;

// Fixed ids of the production classes: tree building and list copying dispatch on them.
// 0..18 are the document-body productions in alphabetical order, then CDATA sections, then the
// document type declaration.
enum eParseClassType : std::uint8_t {
    eParseAttribute = 0,
    eParseAttValue = 1,
    eParseCharData = 2,
    eParseCharRef = 3,
    eParseChars = 4,
    eParseComment = 5,
    eParseContent = 6,
    eParseElement = 7,
    eParseEmptyElemTag = 8,
    eParseEntityRef = 9,
    eParseETag = 10,
    eParseMisc = 11,
    eParseMiscList = 12,
    eParseName = 13,
    eParsePI = 14,
    eParseReference = 15,
    eParseS = 16,
    eParseSTag = 17,
    eParseXMLDecl = 18,
    eParseCDSect = 19,
    eParseCDStart = 20,
    eParseCData = 21,
    eParseCDEnd = 22,
    eParseDoctypedecl = 23,
    eParseExternalID = 24,
    eParseSystemLiteral = 25,
    eParsePubidLiteral = 26,
    eParseMarkupDecl = 27,
    eParseElementDecl = 28,
    eParseContentSpec = 29,
    eParseMixed = 30,
    eParseChildren = 31,
    eParseChoice = 32,
    eParseCp = 33,
    eParseSeq = 34,
    eParseAttlistDecl = 35,
    eParseAttDef = 36,
    eParseAttType = 37,
    eParseStringType = 38,
    eParseTokenizedType = 39,
    eParseEnumeratedType = 40,
    eParseNotationType = 41,
    eParseEnumeration = 42,
    eParseNmtoken = 43,
    eParseDefaultDecl = 44,
    eParseEntityDecl = 45,
    eParseGEDecl = 46,
    eParseEntityDef = 47,
    eParseNDataDecl = 48,
    eParsePEDecl = 49,
    eParsePEDef = 50,
    eParseNotationDecl = 51,
    eParsePITarget = 52,
    eParseDeclSep = 53,
    eParsePEReference = 54,
    eParseExtSubset = 55,
    eParseTextDecl = 56,
    eParseExtSubsetDecl = 57,
    eParseConditionalSect = 58,
    eParseIncludeSect = 59,
    eParseIgnoreSect = 60,
    eParseIgnoreSectContents = 61,
    eParseIgnore = 62,
    eParseExtParsedEnt = 63,
    eParseEntityValue = 64,
    eParsePublicID = 65,
};

// A production. Interpreter(parser, start, end) recognises it at start in the parser's source
// and records what it matched:
// - end == start: the production is not present (result true);
// - end > start: it matched source[start, end) (result true);
// - result false: it began correctly but is malformed; the error is in the parser's list and
//   end is where it was found.
// Callers adopt a child's end only when it returned true (TryMatch in GrammarSteps.h), so a
// failed alternative costs nothing to undo; its errors stay reported.
class CAbstractExpression : public vel::CPageAllocated {
  public:
    virtual ~CAbstractExpression() = default;
    virtual bool Interpreter(CParse& parser, int start, int& end) = 0;
    virtual eParseClassType GetClassType() const = 0;

  protected:
    CAbstractExpression() = default;
    CAbstractExpression(const CAbstractExpression&) = default;
    CAbstractExpression& operator=(const CAbstractExpression&) = default;
};

// A list of owned productions of mixed classes.
using CExpressionList = CSmallVector<CAbstractExpression*>;

// A production recognised by name only: it is never present and consumes nothing.
template <eParseClassType Id>
class CParseNothing : public CAbstractExpression {
  public:
    bool Interpreter(CParse&, int start, int& end) override {
        end = start;
        return true;
    }
    eParseClassType GetClassType() const override { return Id; }
};

// The alternative an ordered choice took: its place among the alternatives (from 1; 0 for
// none) and an owned copy of the production that matched, copied with its own class's copy
// constructor.
class CParseAlternative {
  public:
    CParseAlternative() = default;
    CParseAlternative(const CParseAlternative& other);
    CParseAlternative& operator=(const CParseAlternative& other);
    CParseAlternative(CParseAlternative&&) noexcept = default;
    CParseAlternative& operator=(CParseAlternative&&) noexcept = default;
    ~CParseAlternative() = default;

    std::uint8_t GetIndex() const { return m_index; }
    // The production that matched as Item, or null when another one (or none) did.
    template <class Item>
    const Item* Get() const {
        return dynamic_cast<const Item*>(m_item.get());
    }

    // Tries Items at start in order and keeps the first that consumes input; one that fails
    // ends the choice with its failure. None: absent. Defined in GrammarSteps.h.
    template <class... Items>
    bool MatchFirstOf(CParse& parser, int start, int& end);
    template <class Item>
    void Set(std::uint8_t index, Item item);
    void Reset();

  private:
    template <class Item>
    bool Decides(CParse& parser, int start, int& end, std::uint8_t index, bool& result);

    std::unique_ptr<CAbstractExpression> m_item;
    CAbstractExpression* (*m_copy)(const CAbstractExpression&) = nullptr;
    std::uint8_t m_index = 0;
};

}  // namespace vx
