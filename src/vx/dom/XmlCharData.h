#pragma once
// The character content of an element: ordinary character data, CDATA sections and entity
// references kept by name.
#include "vx/dom/XmlBaseObject.h"

namespace vx {

class CXmlCData : public CXmlTextObject {
  public:
    explicit CXmlCData(CXmlBaseObject* parent) : CXmlTextObject(parent) {}

    eXmlClassType GetClassType() const override { return eXmlCDataType; }
    void GetSource(CVelStringBuffer<CVelStrW>& out) const override;
    void ConvertReturnCode(const CVelStrW& lineEnd) override;
    CVelStrW GetText() const override { return m_text; }
    void SetText(const CVelStrW& text) { m_text = text; }

  private:
    CVelStrW m_text;
};

class CXmlCDSect : public CXmlTextObject {
  public:
    explicit CXmlCDSect(CXmlBaseObject* parent) : CXmlTextObject(parent) {}

    eXmlClassType GetClassType() const override { return eXmlCDSectType; }
    void GetSource(CVelStringBuffer<CVelStrW>& out) const override;
    void ConvertReturnCode(const CVelStrW& lineEnd) override;
    CVelStrW GetText() const override { return m_text; }
    void SetText(const CVelStrW& text) { m_text = text; }

  private:
    CVelStrW m_text;
};

class CXmlEntity : public CXmlTextObject {
  public:
    explicit CXmlEntity(CXmlBaseObject* parent) : CXmlTextObject(parent) {}

    eXmlClassType GetClassType() const override { return eXmlEntityType; }
    void GetSource(CVelStringBuffer<CVelStrW>& out) const override;
    // A reference has no line ends of its own.
    void ConvertReturnCode(const CVelStrW&) override {}
    // The reference as written ("&name;"); the entity is deliberately not looked up.
    CVelStrW GetText() const override;
    CVelStrW GetName() const { return m_name; }
    void SetName(const CVelStrW& name) { m_name = name; }

  private:
    CVelStrW m_name;
};

}  // namespace vx
