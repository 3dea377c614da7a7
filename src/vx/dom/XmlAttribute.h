#pragma once
// One name and value pair of an element. Names and values are interned, so equal ones share
// one buffer across all documents.
#include "vx/dom/XmlBaseObject.h"

namespace vx {

class CXmlAttribute : public CXmlBaseObject {
  public:
    explicit CXmlAttribute(CXmlBaseObject* parent) : CXmlBaseObject(parent) {}

    eXmlClassType GetClassType() const override { return eXmlAttributeType; }
    // These two: output/NodeSource.cpp.
    void GetSource(CVelStringBuffer<CVelStrW>& out) const override;
    void ConvertReturnCode(const CVelStrW& lineEnd) override;

    CVelStrW GetName() const { return m_name; }
    CVelStrW GetValue() const { return m_value; }
    // Neither checks its argument's syntax.
    void SetName(const CVelStrW& name);
    void SetValue(const CVelStrW& value);
    // The same, taking the string over: one from the cache is stored as it is.
    void SetName(CVelStrW&& name);
    void SetValue(CVelStrW&& value);

  private:
    // The single-pass reader stores the name and value it has interned itself, without the
    // setters interning them again.
    friend class CSinglePassReader;

    CVelStrW m_name;
    CVelStrW m_value;
};

}  // namespace vx
