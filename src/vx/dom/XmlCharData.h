#pragma once
// The character content of an element: ordinary character data, CDATA sections and entity
// references kept by name.
#include <utility>

#include "vx/dom/XmlBaseObject.h"

namespace vx {

// What character data and CDATA sections share: a text of their own. They differ in how
// they are written.
class CXmlStoredText : public CXmlTextObject {
  public:
    CVelStrW GetText() const override { return m_text; }
    void SetText(const CVelStrW& text) { m_text = text; }
    void SetText(CVelStrW&& text) { m_text = std::move(text); }

  protected:
    explicit CXmlStoredText(CXmlBaseObject* parent) : CXmlTextObject(parent) {}

    CVelStrW m_text;
};

class CXmlCData : public CXmlStoredText {
  public:
    explicit CXmlCData(CXmlBaseObject* parent) : CXmlStoredText(parent) {}

    eXmlClassType GetClassType() const override { return eXmlCDataType; }
    // These two: output/NodeSource.cpp.
    void GetSource(CVelStringBuffer<CVelStrW>& out) const override;
    void ConvertReturnCode(const CVelStrW& lineEnd) override;
};

class CXmlCDSect : public CXmlStoredText {
  public:
    explicit CXmlCDSect(CXmlBaseObject* parent) : CXmlStoredText(parent) {}

    eXmlClassType GetClassType() const override { return eXmlCDSectType; }
    // These two: output/NodeSource.cpp.
    void GetSource(CVelStringBuffer<CVelStrW>& out) const override;
    void ConvertReturnCode(const CVelStrW& lineEnd) override;
};

class CXmlEntity : public CXmlTextObject {
  public:
    explicit CXmlEntity(CXmlBaseObject* parent) : CXmlTextObject(parent) {}

    eXmlClassType GetClassType() const override { return eXmlEntityType; }
    // Defined in output/NodeSource.cpp.
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
