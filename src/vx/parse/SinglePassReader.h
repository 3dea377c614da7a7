#pragma once
// The root element read in one pass, straight into document nodes, with no production objects.
// It takes only text that the productions and the tree builder would take without a diagnostic,
// and builds what they would build; on anything else (a construct that could be reported,
// external entities, nesting at the limit) it gives up and the productions read the text.
#include <cstdint>
#include <unordered_set>
#include <vector>

#include "vx/text/VelStr.h"

namespace vx {

class CParse;
class CXmlElement;
class CXmlListContainer;

class CSinglePassReader {
  public:
    explicit CSinglePassReader(CParse& parser);

    // Reads the element at start into element (a fresh one); true with end after it. False with
    // element emptied again and the parser as it was, for the productions to read it instead.
    bool ReadElement(int start, int& end, CXmlElement& element);
    // Gives element back the state of a fresh one.
    static void Discard(CXmlElement& element);

  private:
    // What a reference the productions take stands for.
    struct CReference {
        enum eKind { eCharacter, ePredefined, eInternal };
        eKind kind = eCharacter;
        int end = 0;                           // after the ";"
        char16_t unit = 0;                     // eCharacter: the character, when units is 1
        int units = 0;                         // eCharacter: 0 for the character 0, else 1
        const CVelStrW* predefined = nullptr;  // ePredefined
        CVelStrW name;                         // eInternal
    };

    // An attribute read, before its element takes the tag's attributes at once.
    struct CPendingAttribute {
        CVelStrW name;
        CVelStrW value;
    };

    bool Read(int pos, int& end, CXmlElement& root);
    // "<" Name (S Attribute)* S? and ">" or "/>", from pos at the "<" to after the tag;
    // nameEnd is where the name ends.
    bool ReadStartTag(int& pos, CXmlElement& element, int& nameEnd, bool& empty);
    bool ReadAttribute(int nameStart, int nameEnd, int& pos);
    bool ReadAttValue(int first, int close, CVelStrW& value);
    bool IsDuplicate(const CVelStrW& name);
    // "</" Name S? ">" closing the element whose name stands at source[nameStart, nameEnd).
    bool ReadEndTag(int& pos, int nameStart, int nameEnd);
    // Anything at pos ("<" there) other than a tag: CDATA section, comment or PI.
    bool ReadMarkup(int& pos, CXmlListContainer& children);
    bool ReadReference(int& pos, CXmlListContainer& children);
    bool MatchReference(int pos, CReference& reference);
    bool MatchEntityRef(int pos, CReference& reference);

    CParse& m_parser;
    const CVelStrW& m_src;
    std::vector<CPendingAttribute> m_attributes;  // of the tag being read
    std::unordered_set<CVelStrW> m_seenNames;     // of a tag with many attributes
};

}  // namespace vx
