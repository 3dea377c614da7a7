#pragma once
// The element node: a name, attributes in the order first set, and a container of content.
#include "vx/diag/ParseError.h"
#include "vx/dom/XmlAttribute.h"
#include "vx/dom/XmlListContainer.h"
#include "vx/memory/SmallVector.h"

namespace vx {

class CParse;
class CSinglePassReader;

class CXmlElement : public CXmlTextObject {
  public:
    // Matches an attribute by exact name.
    class CAttByName {
      public:
        explicit CAttByName(const CVelStrW& name) : m_name(name) {}
        bool operator()(const CXmlAttribute& attribute) const {
            return attribute.GetName() == m_name;
        }

      private:
        CVelStrW m_name;
    };

    explicit CXmlElement(CXmlBaseObject* parent);
    // Deep copies; the target keeps its own parent.
    CXmlElement(const CXmlElement& other);
    CXmlElement& operator=(const CXmlElement& other);

    eXmlClassType GetClassType() const override { return eXmlElementType; }
    // These two: output/NodeSource.cpp.
    void GetSource(CVelStringBuffer<CVelStrW>& out) const override;
    void ConvertReturnCode(const CVelStrW& lineEnd) override;
    // All character content below this element, in document order.
    CVelStrW GetText() const override;
    // Replaces all children by one character-data node holding text (even when text is empty).
    void SetText(const CVelStrW& text);

    CVelStrW GetName() const { return m_name; }
    void SetName(const CVelStrW& name);
    // The same, taking name over: a string from the element-name cache is stored as it is.
    void SetName(CVelStrW&& name);

    // Stores a copy of attribute under name (name wins over the attribute's own); an existing
    // attribute of that name keeps its position and takes the new value.
    void SetAtt(const CVelStrW& name, const CXmlAttribute& attribute);
    // A copy of the attribute, or a parentless one with that name and an empty value.
    CXmlAttribute GetAtt(const CVelStrW& name) const;
    // Appends the attribute names to names, which is deliberately not emptied first.
    void GetAttNameList(CSmallVector<CVelStrW>& names) const;
    // The attributes by position, in the order of GetAttNameList: a walk over all of them
    // without a search by name per attribute. GetAttAt raises std::out_of_range past the end.
    int GetAttCount() const noexcept { return m_attributes.GetSize(); }
    const CXmlAttribute& GetAttAt(int index) const { return m_attributes[index]; }

    CXmlListContainer& GetChildren() noexcept { return m_children; }
    const CXmlListContainer& GetChildren() const noexcept { return m_children; }

    CXmlElement* GetFirstChildElement();
    const CXmlElement* GetFirstChildElement() const;
    CXmlElement* GetFirstChildElement(const CVelStrW& name);
    const CXmlElement* GetFirstChildElement(const CVelStrW& name) const;
    CXmlElement* GetNextElement();
    const CXmlElement* GetNextElement() const;
    CXmlElement* GetNextElement(const CVelStrW& name);
    const CXmlElement* GetNextElement(const CVelStrW& name) const;
    // The element whose container holds this one, or null.
    CXmlElement* GetParentElement();
    const CXmlElement* GetParentElement() const;
    int GetElementCount(const CVelStrW& name) const;

    // Parses text as a fragment into this element (defined in parse/ParseFromMemory.cpp). False,
    // with this element unchanged, when the fragment has any diagnostic; errors (may be null) gets
    // them.
    bool ParseFromMemory(const CVelStrW& text, CParseErrorList* errors);

  private:
    // The tree builder appends attributes whose names the parser has already found distinct,
    // without the search of SetAtt, so that a tag with very many attributes stays linear.
    friend class CParse;
    friend class CSinglePassReader;
    // Appends an empty attribute of this element, for the caller to fill (assignment keeps its
    // parent); amortised constant time.
    CXmlAttribute& AppendAtt();
    // Room for count attributes in all, so that the builder allocates them once.
    void ReserveAtt(int count) { m_attributes.Reserve(count); }
    // Attributes lose their parent whenever the vector copies them.
    void AdoptAttributes() noexcept;

    CSmallVector<CXmlAttribute> m_attributes;
    CXmlListContainer m_children;
    CVelStrW m_name;
};

}  // namespace vx
