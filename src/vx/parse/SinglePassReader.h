#pragma once
// The root element read in one pass, straight into document nodes, with no production objects.
// It takes only text that the productions and the tree builder would take without a diagnostic,
// and builds what they would build. At anything else (a construct that could be reported,
// external entities, nesting at the limit) it stops and the productions read the rest of the
// element as they would have, from there; at the root's own start tag, all of it.
#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_set>
#include <vector>

#include "vx/text/VelStr.h"

namespace vx {

class CParse;
class CXmlBaseObject;
class CXmlElement;
class CXmlListContainer;

class CSinglePassReader {
  public:
    explicit CSinglePassReader(CParse& parser);

    enum eResult {
        eRead,     // element holds it, end is after it; the parser keeps what the productions
                   // matched of it for the tree builder
        eFailed,   // the productions found it malformed and reported it; element is empty
        eRefused,  // element is empty and the parser as it was: the productions read it all
    };
    // Reads the element at start into element (a fresh one).
    eResult ReadElement(int start, int& end, CXmlElement& element);
    // Gives element back the state of a fresh one.
    static void Discard(CXmlElement& element);

  private:
    // What a reference the productions take stands for.
    struct CReference {
        enum eKind { eCharacter, ePredefined, eInternal };
        eKind kind = eCharacter;
        int end = 0;        // after the ";"
        char16_t unit = 0;  // eCharacter: the character, when units is 1
        int units = 0;      // eCharacter: 0 for the character 0, else 1
        CVelStrW text;      // ePredefined, eInternal: the replacement
    };

    // An internal entity the document has used.
    struct CKnownEntity {
        CVelStrW name;
        CVelStrW text;
    };

    // An attribute read, before its element takes the tag's attributes at once.
    struct CPendingAttribute {
        CVelStrW name;
        CVelStrW value;
        std::uint64_t key;  // NameKey of name
    };

    // An element whose content is being read, with where its start tag and name stand and
    // where its children begin in m_children.
    struct COpenElement {
        CXmlElement* element;
        int tagStart;
        int nameStart;
        int nameEnd;
        std::size_t firstChild;
    };

    bool Read(int pos, int& end, CXmlElement& root, int& stop);
    // The end of the character data at pos (pos when there is none).
    int TextEnd(int pos) const;
    // A new child of the innermost open element, kept in m_children until the element closes.
    template <class Node>
    Node* AppendChild();
    // A text node that takes text over.
    template <class Node>
    void AppendTextChild(CVelStrW text);
    // Gives open its children from m_children, in one block of the right size.
    void AdoptChildren(const COpenElement& open);
    // Gives every open element the children read so far.
    void AdoptAllChildren();
    void DeleteChildren() noexcept;
    bool HandOver(int pos, int& end, int level);
    // "<" Name (S Attribute)* S? and ">" or "/>", from pos at the "<" to after the tag;
    // nameEnd is where the name ends.
    bool ReadStartTag(int& pos, CXmlElement& element, int& nameEnd, bool& empty);
    bool ReadAttribute(int nameStart, int nameEnd, int& pos);
    bool ReadAttValue(int open, int& end, CVelStrW& value);
    bool AppendReplacement(int pos, const CReference& reference);
    static std::uint64_t NameKey(const char16_t* name, int length);
    bool IsDuplicate(const CVelStrW& name, std::uint64_t key);
    // "</" Name S? ">" closing the element whose name stands at source[nameStart, nameEnd).
    bool ReadEndTag(int& pos, int nameStart, int nameEnd);
    // Anything at pos ("<" there) other than a tag: CDATA section, comment or PI.
    bool ReadMarkup(int& pos);
    bool ReadReference(int& pos);
    bool MatchReference(int pos, CReference& reference);
    bool MatchEntityRef(int pos, CReference& reference);
    bool FindInternalEntity(int first, int last, CVelStrW& text);

    CParse& m_parser;
    const CVelStrW& m_src;
    std::vector<COpenElement> m_open;
    // The children of the open elements, outermost first. A list that grew child by child
    // would leave every block it outgrew on the pages until the document goes.
    std::vector<CXmlBaseObject*> m_children;
    std::vector<CPendingAttribute> m_attributes;  // of the tag being read
    std::unordered_set<CVelStrW> m_seenNames;     // of a tag with many attributes
    std::vector<CKnownEntity> m_entities;         // the first few, as the DTD gave them
    std::u16string m_value;                       // an attribute value being expanded
};

}  // namespace vx
