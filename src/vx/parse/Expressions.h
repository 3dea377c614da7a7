#pragma once
// The grammar: one class per production of XML 1.0, on the base of ExpressionBase.h. Copies
// are deep. Getters return strings by value (they share their buffer).
//
// Where each section of this header is defined:
//   names, characters, white space        Attribute.cpp (CParseS: Prolog.cpp)
//   attributes                            Attribute.cpp
//   prolog                                Prolog.cpp
//   character data, CDATA, references     CharData.cpp
//   elements and content                  Element.cpp
//   external identifiers and literals     Doctype.cpp
//   parameter-entity references           Doctype.cpp
//   element declarations                  ElementDecl.cpp
//   attribute-list declarations           AttlistDecl.cpp
//   entity and notation declarations      EntityDecl.cpp
//   markup declarations, DOCTYPE          Doctype.cpp
//   external subset and parsed entities   ExternalSubset.cpp
// The steps the productions share (TryMatch, Fail, the keywords, ...) are in GrammarSteps.h;
// the document production and tree building are members of CParse (Parse.cpp,
// TreeBuilder.cpp).
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

#include "vx/diag/ParseError.h"
#include "vx/memory/SmallVector.h"
#include "vx/parse/ExpressionBase.h"
#include "vx/text/CharClasses.h"
#include "vx/text/VelStr.h"

namespace vx {

class CParse;

// ---- names, characters, white space ----

// Char*: a run of legal characters. Never reports an error.
class CParseChars : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseChars; }
    CVelStrW GetText() const { return m_text; }

    static bool IsChar(char16_t ch) { return chars::IsChar(ch); }

  private:
    CVelStrW m_text;
};

// Name, interned through NameCache(). Never reports an error.
class CParseName : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseName; }
    CVelStrW GetName() const { return m_name; }
    // The name, left empty here: for the production that matched this one and keeps its name.
    CVelStrW TakeName() noexcept { return std::move(m_name); }

    static bool IsBaseChar(char16_t ch) { return chars::IsBaseChar(ch); }
    static bool IsDigit(char16_t ch) { return chars::IsDigit(ch); }
    static bool IsCombiningChar(char16_t ch) { return chars::IsCombiningChar(ch); }
    static bool IsExtender(char16_t ch) { return chars::IsExtender(ch); }
    static bool IsLetter(char16_t ch) { return chars::IsLetter(ch); }
    static bool IsNameChar(char16_t ch) { return chars::IsNameChar(ch); }
    // The end of the name at start in src, or start when none begins there.
    static int Scan(const CVelStrW& src, int start) {
        return chars::ScanName(src.c_str(), start, src.GetLength());
    }

  private:
    CVelStrW m_name;
};

// S. Unlike the other recorders it keeps its previous text when absent.
class CParseS : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseS; }
    CVelStrW GetText() const { return m_text; }

  private:
    CVelStrW m_text;
};

// ---- attributes ----

// A quoted value with its references replaced (codes 15, 25, 30, 62).
class CParseAttValue : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseAttValue; }
    CVelStrW GetValue() const { return m_value; }

  private:
    bool ScanReferences(CParse& parser, int first, int last, bool& sawReference, int& end);

    CVelStrW m_value;
};

// Name Eq AttValue (codes 24, 26).
class CParseAttribute : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseAttribute; }
    CVelStrW GetName() const { return m_name; }
    const CParseAttValue& GetAttValue() const { return m_value; }

  private:
    CVelStrW m_name;
    CParseAttValue m_value;
};

using CAttributeList = CSmallVector<CParseAttribute>;

// ---- prolog ----

class CParseXMLDecl : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseXMLDecl; }

    // The value of the first attribute named exactly name; value is untouched when there is
    // none.
    bool GetAttValueByName(const CVelStrW& name, CVelStrW& value) const;
    bool GetVersion(CVelStrW& value) const;
    bool GetEncording(CVelStrW& value) const;
    // Looks up "standard", not "standalone", so it finds nothing in an accepted declaration.
    bool GetStandard(CVelStrW& value) const;

    // version="1.0" at pos (codes 9 and 11), shared with the text declaration: on success pos
    // moves past it, on failure end is where it was found.
    static bool MatchVersionInfo(CParse& parser, CParseAttribute& version, int& pos, int& end);

  private:
    bool MatchAttributes(CParse& parser, int& pos, CParseAttribute (&found)[3]);

    CAttributeList m_attributes;  // version, then two slots (empty when not written)
};

class CParseComment : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseComment; }
    CVelStrW GetText() const { return m_text; }

  private:
    CVelStrW m_text;
};

// The text between "<?" and "?>", target and data together.
class CParsePI : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParsePI; }
    CVelStrW GetText() const { return m_text; }

  private:
    CVelStrW m_text;
};

// Comment | PI | S, tried in that order. Never returns false.
class CParseMisc : public CAbstractExpression {
  public:
    enum eKind : std::uint8_t { eComment = 0, ePI = 1, eS = 2, eNone = 3 };

    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseMisc; }
    eKind GetKind() const { return m_kind; }
    const CParseComment& GetComment() const { return m_comment; }
    const CParsePI& GetPI() const { return m_pi; }
    const CParseS& GetS() const { return m_s; }

  private:
    CParseComment m_comment;
    CParsePI m_pi;
    CParseS m_s;
    eKind m_kind = eNone;
};

// Misc*. Never returns false.
class CParseMiscList : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseMiscList; }
    const CSmallVector<CParseMisc>& GetList() const { return m_list; }

  private:
    CSmallVector<CParseMisc> m_list;
};

// ---- character data, CDATA sections, references ----

// Text up to "<", "&" or "]]>". Never reports an error.
class CParseCharData : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseCharData; }
    CVelStrW GetCharData() const { return m_text; }
    // The text, left empty here: tree building takes it for the node that replaces this.
    CVelStrW TakeCharData() noexcept { return std::move(m_text); }
    // The end of the run of character data at start in src (start when there is none).
    static int Scan(const CVelStrW& src, int start);

  private:
    CVelStrW m_text;
};

class CParseCDStart : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseCDStart; }
};

// The text up to the first "]]>" (code 31 when there is none).
class CParseCData : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseCData; }
    CVelStrW GetCData() const { return m_text; }

  private:
    CVelStrW m_text;
};

class CParseCDEnd : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseCDEnd; }
};

class CParseCDSect : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseCDSect; }
    CVelStrW GetCData() const { return m_text; }
    CVelStrW TakeCData() noexcept { return std::move(m_text); }

  private:
    CVelStrW m_text;
};

// "&name;" (codes 19, 22, 23). The entity is not looked up here.
class CParseEntityRef : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseEntityRef; }
    CVelStrW GetName() const { return m_name; }

  private:
    CVelStrW m_name;
};

// "&#x...;" or "&#...;" (code 21). One cut off by the end of the source is absent.
class CParseCharRef : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseCharRef; }
    // The referenced character cut to 16 bits, or empty for the value 0. No Char test.
    CVelStrW ToStr() const;
    // The same as units: 1 with the character in unit, or 0.
    int ToUnits(char16_t& unit) const;
    // The same for the checked digits text[first..end) ("x" and hexadecimal ones, or decimal
    // ones).
    static int DigitsToUnits(const CVelStrW& text, int first, int end, char16_t& unit);
    // The end of the hexadecimal or decimal digits at first in src, and what they give, as
    // DigitsToUnits gives it.
    static int ScanDigits(const CVelStrW& src, int first, bool hex, char16_t& unit, int& units);

  private:
    static int ValueToUnits(std::int32_t value, char16_t& unit);

    CVelStrW m_digits;  // "x" and the digits for a hexadecimal reference
};

// CharRef | EntityRef, the character reference tried first (code 30 after either failed).
class CParseReference : public CAbstractExpression {
  public:
    enum eKind : std::uint8_t { eEntityRef = 0, eCharRef = 1, eNone = 2 };

    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseReference; }
    eKind GetKind() const { return m_kind; }
    const CParseEntityRef& GetEntityRef() const { return m_entityRef; }
    const CParseCharRef& GetCharRef() const { return m_charRef; }

  private:
    CParseEntityRef m_entityRef;
    CParseCharRef m_charRef;
    eKind m_kind = eNone;
};

// ---- elements ----

// What start tags and empty-element tags share: "<" Name (S Attribute)* S? and then the
// closing delimiter of the one form or the other.
class CParseTag : public CAbstractExpression {
  public:
    CVelStrW GetName() const { return m_name; }
    const CAttributeList& GetAttributes() const { return m_attributes; }
    // After a match left to the other form because its closer stood there: the position after
    // that closer, else -1. The name and attributes are then what the other form would read.
    int GetOtherCloserEnd() const { return m_otherCloserEnd; }

  protected:
    // Matches the tag closed by closer; a tag closed by other is left to the other form.
    bool MatchTag(CParse& parser, int start, int& end, const CVelStrW& closer,
                  const CVelStrW& other);
    // Takes the name and attributes of a match of the other form that was left to this one.
    void TakeOver(CParseTag&& other);

  private:
    bool MatchAttributes(CParse& parser, int& pos, int& end);

    CVelStrW m_name;
    CAttributeList m_attributes;
    int m_otherCloserEnd = -1;
};

class CParseEmptyElemTag;

// A start tag, closed by ">" (codes 15, 17, 19).
class CParseSTag : public CParseTag {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseSTag; }
    // The start tag that an empty-element match read up to ">", which a match of its own would
    // read again with the same result and no error. Returns the position after ">".
    int TakeOver(CParseEmptyElemTag&& scan);
};

// An empty-element tag, closed by "/>" (codes 15, 17, 19).
class CParseEmptyElemTag : public CParseTag {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseEmptyElemTag; }
};

// "</" Name S? ">" (codes 15, 19).
class CParseETag : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseETag; }
    CVelStrW GetName() const { return m_name; }

  private:
    CVelStrW m_name;
};

// The children of an element in document order: CParseCharData, CParseElement,
// CParseReference, CParseCDSect, CParsePI and CParseComment, owned. Never returns false.
class CParseContent : public CAbstractExpression {
  public:
    CParseContent() = default;
    CParseContent(const CParseContent& other);
    CParseContent& operator=(const CParseContent& other);
    ~CParseContent() override;

    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseContent; }
    const CExpressionList& GetList() const { return m_children; }
    // Deletes the children.
    void Clear();
    // Deletes the child at index once tree building has taken it over, so that a large
    // content's memory goes while the document grows; its slot stays, empty, until Clear.
    void ReleaseChild(int index);

    // Appends to dst a copy of each item of src. Only the six content classes are known; any
    // other is a programming error (logged, vel::CVelException), items copied before stay.
    static void CopyListToList(CExpressionList& dst, const CExpressionList& src);

  private:
    template <class Item>
    bool TryAppend(CParse& parser, int& pos);

    CExpressionList m_children;
};

// EmptyElemTag | STag content ETag, the empty-element form tried first (codes 20, 29).
class CParseElement : public CAbstractExpression {
  public:
    enum eForm : std::uint8_t { eEmptyElemTag = 0, eSTagContent = 1, eNone = 2 };

    CParseElement() = default;
    CParseElement(const CParseElement& other);
    CParseElement(CParseElement&& other) noexcept = default;
    CParseElement& operator=(const CParseElement& other);
    ~CParseElement() override = default;

    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseElement; }

    eForm GetForm() const { return m_form; }
    // The matched tag of the recorded form, else null.
    const CParseEmptyElemTag* GetEmptyElemTag() const;
    const CParseSTag* GetSTag() const;
    // The content of a start-tag element, or null (also when the element had none).
    CParseContent* GetContent() const;
    // Releases the content's children once tree building has taken them.
    void ClearContent();
    // Deep copy of the members of other's form.
    void CopyMember(const CParseElement& other);

  private:
    bool MatchSTagContentETag(CParse& parser, int start, int& end, CParseEmptyElemTag&& scan);

    std::unique_ptr<CParseEmptyElemTag> m_emptyElemTag;
    std::unique_ptr<CParseSTag> m_sTag;
    std::unique_ptr<CParseETag> m_eTag;  // stays null after parsing: the end tag is discarded
    std::unique_ptr<CParseContent> m_content;
    eForm m_form = eNone;
};

// =============================================================================================
// Document type declaration productions (ids 23 to 65). Declarations are checked for syntax and
// kept in the production objects; only general entities reach the parser's CXmlDtd.
// =============================================================================================

class CXmlDtdExternalID;

// ---- external identifiers and literals ----

// A literal between apostrophes or quotation marks; its characters are not checked.
class CParseQuotedLiteral : public CAbstractExpression {
  public:
    CVelStrW Literal() const { return m_literal; }

  protected:
    bool MatchLiteral(CParse& parser, int start, int& end, CParseError::eError unterminated);

  private:
    CVelStrW m_literal;
};

// Code 32 when unterminated.
class CParseSystemLiteral : public CParseQuotedLiteral {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseSystemLiteral; }
};

// Code 33 when unterminated.
class CParsePubidLiteral : public CParseQuotedLiteral {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParsePubidLiteral; }
};

// "SYSTEM" S SystemLiteral | "PUBLIC" S literal S SystemLiteral (codes 10, 34, 35). Both
// literals of the PUBLIC form are read as system literals.
class CParseExternalID : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseExternalID; }
    CVelStrW getSystemLiteral() const { return m_systemLiteral; }
    CVelStrW getPublicLiteral() const { return m_publicLiteral; }
    // The identifier as the DTD model keeps it: always of the SYSTEM kind, the PUBLIC form
    // included.
    CXmlDtdExternalID ToDtdExternalID() const;

  private:
    CVelStrW m_systemLiteral;
    CVelStrW m_publicLiteral;
};

// "PUBLIC" S PubidLiteral, the identifier of a notation (codes 10, 35).
class CParsePublicID : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParsePublicID; }
    CVelStrW GetPublicLiteral() const { return m_publicLiteral; }

  private:
    CVelStrW m_publicLiteral;
};

// ---- parameter-entity references and declaration separators ----

// "%" Name ";" (codes 19, 22, 23). Recognised only: parameter entities are never expanded.
class CParsePEReference : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParsePEReference; }
    CVelStrW GetName() const { return m_name; }

  private:
    CVelStrW m_name;
};

// PEReference | S. Never returns false.
class CParseDeclSep : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseDeclSep; }
    const std::optional<CParsePEReference>& GetPEReference() const { return m_reference; }

  private:
    std::optional<CParsePEReference> m_reference;
};

// The target of a processing instruction is read with the instruction; this consumes nothing.
class CParsePITarget : public CParseNothing<eParsePITarget> {};

// ---- element declarations ----

// A content particle or model: one alternative, then "?", "*" or "+" (0 when none).
class CParseParticle : public CAbstractExpression {
  public:
    const CParseAlternative& GetParticle() const { return m_particle; }
    char16_t GetOccurrence() const { return m_occurrence; }

  protected:
    // A name when nameAllowed, or else a seq or a choice; then the occurrence.
    bool MatchParticle(CParse& parser, int start, int& end, bool nameAllowed);

  private:
    CParseAlternative m_particle;
    char16_t m_occurrence = 0;
};

// Name | choice | seq, then an occurrence.
class CParseCp : public CParseParticle {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseCp; }
};

using CParticleList = CSmallVector<CParseCp>;

// "(" S? cp (S? separator S? cp)* S? ")" (codes 41, 60). Each level counts against the
// parser's nesting limit.
class CParseParticleGroup : public CAbstractExpression {
  public:
    const CParticleList& GetParticles() const { return m_particles; }

    // seq | choice, reading the group once: a first separator "|" makes it a choice, anything
    // else a seq. The group goes to result with the index seqIndex, or seqIndex + 1 for a
    // choice.
    static bool MatchSeqOrChoice(CParse& parser, int start, int& end, CParseAlternative& result,
                                 std::uint8_t seqIndex);

  protected:
    // separator 0: the separator after the first particle decides, and is handed back.
    bool MatchGroup(CParse& parser, int start, int& end, char16_t& separator, char16_t handOver);

  private:
    CParticleList m_particles;
};

// Absent when its first separator is "|", which leaves the group to CParseChoice.
class CParseSeq : public CParseParticleGroup {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseSeq; }
};

class CParseChoice : public CParseParticleGroup {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseChoice; }
};

// (seq | choice), then an occurrence.
class CParseChildren : public CParseParticle {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseChildren; }
};

// "(" S? "#PCDATA" (S? "|" S? Name)* S? ")*", or without names ")" (codes 15, 36). Absent
// unless "(" and "#PCDATA" are there.
class CParseMixed : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseMixed; }
    const CSmallVector<CVelStrW>& GetNames() const { return m_names; }

  private:
    CSmallVector<CVelStrW> m_names;
};

// "EMPTY" | "ANY" | Mixed | children.
class CParseContentSpec : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseContentSpec; }
    // "EMPTY" or "ANY", else empty and the model holds Mixed or children.
    CVelStrW GetKeyword() const { return m_keyword; }
    const CParseAlternative& GetModel() const { return m_model; }

  private:
    CVelStrW m_keyword;
    CParseAlternative m_model;
};

// "<!ELEMENT" S Name S contentspec S? ">" (codes 10, 37, 39).
class CParseElementDecl : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseElementDecl; }
    CVelStrW GetName() const { return m_name; }
    const CParseContentSpec& GetContentSpec() const { return m_contentSpec; }

  private:
    CVelStrW m_name;
    CParseContentSpec m_contentSpec;
};

// ---- attribute-list declarations ----

// One or more name characters.
class CParseNmtoken : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseNmtoken; }
    CVelStrW GetToken() const { return m_token; }

  private:
    CVelStrW m_token;
};

// "(" S? Nmtoken (S? "|" S? Nmtoken)* S? ")" (codes 41, 44).
class CParseEnumeration : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseEnumeration; }
    const CSmallVector<CParseNmtoken>& GetTokens() const { return m_tokens; }

  private:
    CSmallVector<CParseNmtoken> m_tokens;
};

// "NOTATION" S "(" S? Name (S? "|" S? Name)* S? ")" (codes 10, 40, 41, 42).
class CParseNotationType : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseNotationType; }
    const CSmallVector<CParseName>& GetNames() const { return m_names; }

  private:
    CSmallVector<CParseName> m_names;
};

// NotationType | Enumeration.
class CParseEnumeratedType : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseEnumeratedType; }
    const CParseAlternative& GetType() const { return m_type; }

  private:
    CParseAlternative m_type;
};

// "CDATA".
class CParseStringType : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseStringType; }
    CVelStrW GetKeyword() const { return m_keyword; }

  private:
    CVelStrW m_keyword;
};

// The first keyword of the tokenized-type table that the text begins with: a prefix is
// enough, so "IDREF" reads as "ID" followed by "REF".
class CParseTokenizedType : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseTokenizedType; }
    CVelStrW GetKeyword() const { return m_keyword; }

  private:
    CVelStrW m_keyword;
};

// StringType | TokenizedType | EnumeratedType.
class CParseAttType : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseAttType; }
    const CParseAlternative& GetType() const { return m_type; }

  private:
    CParseAlternative m_type;
};

// "#REQUIRED" | "#IMPLIED" | ("#FIXED" S)? AttValue (codes 10, 45).
class CParseDefaultDecl : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseDefaultDecl; }
    // "#REQUIRED", "#IMPLIED", "#FIXED" or empty for a bare value.
    CVelStrW GetKeyword() const { return m_keyword; }
    const CParseAttValue& GetValue() const { return m_value; }

  private:
    CVelStrW m_keyword;
    CParseAttValue m_value;
};

// S Name S AttType S DefaultDecl (codes 10, 48, 49). Absent without its leading white space
// and name.
class CParseAttDef : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseAttDef; }
    CVelStrW GetName() const { return m_name; }
    const CParseAttType& GetType() const { return m_type; }
    const CParseDefaultDecl& GetDefault() const { return m_default; }

  private:
    CVelStrW m_name;
    CParseAttType m_type;
    CParseDefaultDecl m_default;
};

// "<!ATTLIST" S Name AttDef* S? ">" (codes 10, 37, 47).
class CParseAttlistDecl : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseAttlistDecl; }
    CVelStrW GetName() const { return m_name; }
    const CSmallVector<CParseAttDef>& GetAttDefs() const { return m_attDefs; }

  private:
    CVelStrW m_name;
    CSmallVector<CParseAttDef> m_attDefs;
};

// ---- entity and notation declarations ----

// A quoted value whose references are checked (codes 25, 30, 50); character references and
// the predefined entities are replaced, parameter-entity references kept as written.
class CParseEntityValue : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseEntityValue; }
    CVelStrW getValue() const { return m_value; }

  private:
    bool CheckReferences(CParse& parser, int first, int last, int& end);

    CVelStrW m_value;
};

// S? "NDATA" S? Name (code 52).
class CParseNDataDecl : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseNDataDecl; }
    CVelStrW GetNotationName() const { return m_notationName; }

  private:
    CVelStrW m_notationName;
};

// EntityValue | ExternalID NDataDecl?
class CParseEntityDef : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseEntityDef; }
    const CParseAlternative& GetDefinition() const { return m_definition; }
    const std::optional<CParseNDataDecl>& GetNDataDecl() const { return m_ndata; }

  private:
    CParseAlternative m_definition;
    std::optional<CParseNDataDecl> m_ndata;
};

// EntityValue | ExternalID.
class CParsePEDef : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParsePEDef; }
    const CParseAlternative& GetDefinition() const { return m_definition; }

  private:
    CParseAlternative m_definition;
};

// "<!ENTITY" S Name S EntityDef S? ">" (codes 10, 23, 53, 54). Stores the entity in the
// parser's DTD; an external one is loaded here, once.
class CParseGEDecl : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseGEDecl; }
    CVelStrW GetName() const { return m_name; }
    const CParseEntityDef& GetDefinition() const { return m_definition; }

  private:
    bool Store(CParse& parser) const;

    CVelStrW m_name;
    CParseEntityDef m_definition;
};

// "<!ENTITY" S "%" Name S PEDef S? ">" (codes 10, 23, 54, 56). Absent without the "%"; the
// name must follow it directly.
class CParsePEDecl : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParsePEDecl; }
    CVelStrW GetName() const { return m_name; }
    const CParsePEDef& GetDefinition() const { return m_definition; }

  private:
    CVelStrW m_name;
    CParsePEDef m_definition;
};

// PEDecl | GEDecl: index 1 for a parameter entity, 2 for a general one.
class CParseEntityDecl : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseEntityDecl; }
    const CParseAlternative& GetDecl() const { return m_decl; }

  private:
    CParseAlternative m_decl;
};

// "<!NOTATION" S Name S (ExternalID | PublicID) S? ">" (codes 10, 23, 54, 57).
class CParseNotationDecl : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseNotationDecl; }
    CVelStrW GetName() const { return m_name; }
    const CParseAlternative& GetIdentifier() const { return m_identifier; }

  private:
    CVelStrW m_name;
    CParseAlternative m_identifier;
};

// ---- markup declarations and the document type declaration ----

// elementdecl | AttlistDecl | EntityDecl | NotationDecl | PI | Comment; the index of the
// declaration kept is its kind (1 to 6, 0 for none).
class CParseMarkupDecl : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseMarkupDecl; }
    const CParseAlternative& GetDecl() const { return m_decl; }

  private:
    CParseAlternative m_decl;
};

// "<!DOCTYPE" S Name (S ExternalID)? S? ("[" (markupdecl | DeclSep)* "]" S?)? ">" (codes 10,
// 15, 19, 59). The external subset is loaded as soon as its identifier is read, before the
// internal subset.
class CParseDoctypedecl : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseDoctypedecl; }
    CVelStrW GetRootName() const { return m_rootName; }
    const std::optional<CParseExternalID>& GetExternalID() const { return m_externalID; }

  private:
    bool MatchExternalID(CParse& parser, int& pos, int& end);
    bool MatchInternalSubset(CParse& parser, int& pos, int& end);

    CVelStrW m_rootName;
    std::optional<CParseExternalID> m_externalID;
};

// ---- external subset and external parsed entities ----

// "<?xml" S? version="1.0" (S? encoding=...)? S? "?>" (codes 9, 10, 11, 12, 13).
class CParseTextDecl : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseTextDecl; }
    const CParseAttribute& GetVersion() const { return m_version; }
    const CParseAttribute& GetEncoding() const { return m_encoding; }

  private:
    bool MatchEncoding(CParse& parser, int& pos, int& end);

    CParseAttribute m_version;
    CParseAttribute m_encoding;
};

// (markupdecl | conditionalSect | DeclSep)*, stopping at the first text that is none of them.
// Never returns false.
class CParseExtSubsetDecl : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseExtSubsetDecl; }
    const CSmallVector<CParseMarkupDecl>& GetDecls() const { return m_decls; }

  private:
    CSmallVector<CParseMarkupDecl> m_decls;
};

// TextDecl? extSubsetDecl. A text declaration that fails is left to the declarations.
class CParseExtSubset : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseExtSubset; }
    const CParseTextDecl& GetTextDecl() const { return m_textDecl; }
    const CParseExtSubsetDecl& GetDecls() const { return m_decls; }

  private:
    CParseTextDecl m_textDecl;
    CParseExtSubsetDecl m_decls;
};

// Conditional sections are recognised by name only: these consume nothing, so INCLUDE and
// IGNORE sections end an external subset's declarations.
class CParseConditionalSect : public CParseNothing<eParseConditionalSect> {};
class CParseIncludeSect : public CParseNothing<eParseIncludeSect> {};
class CParseIgnoreSect : public CParseNothing<eParseIgnoreSect> {};
class CParseIgnoreSectContents : public CParseNothing<eParseIgnoreSectContents> {};
class CParseIgnore : public CParseNothing<eParseIgnore> {};

// TextDecl? content. Never returns false; a text declaration that fails is read as content.
class CParseExtParsedEnt : public CAbstractExpression {
  public:
    bool Interpreter(CParse& parser, int start, int& end) override;
    eParseClassType GetClassType() const override { return eParseExtParsedEnt; }
    // The content read, or null before a run.
    CParseContent* GetContent() { return m_content ? &*m_content : nullptr; }
    void ClearContent() { m_content.reset(); }

  private:
    std::optional<CParseContent> m_content;
};
}  // namespace vx
