#pragma once
// What the library keeps of a document type declaration: the root name, the document's
// external identifier and the general entities (internal ones as replacement text, external
// ones as identifier plus parsed content).
#include <cstdint>
#include <map>

#include "vx/dom/XmlBaseObject.h"

namespace vx {

class CXmlParsedEntity;

// A SYSTEM (kind 0) or PUBLIC (kind 1) identifier.
class CXmlDtdExternalID {
  public:
    enum eKind : std::int32_t { eSystem = 0, ePublic = 1 };

    CXmlDtdExternalID() = default;
    CXmlDtdExternalID(const CXmlDtdExternalID&) = default;
    CXmlDtdExternalID& operator=(const CXmlDtdExternalID&) = default;
    virtual ~CXmlDtdExternalID() = default;

    // Kind SYSTEM; a public literal is dropped.
    void setSystemLiteral(const CVelStrW& system);
    // Kind PUBLIC. The system literal comes first, unlike in the declaration.
    void setPublicLiteral(const CVelStrW& system, const CVelStrW& pubid);
    CVelStrW getSystemLiteral() const { return m_systemLiteral; }
    CVelStrW getPublicLiteral() const { return m_publicLiteral; }
    std::int32_t getKind() const noexcept { return m_kind; }

    // The identifier's text; nothing when the system literal is empty (output/DocumentSource.cpp).
    void GetSource(CVelStringBuffer<CVelStrW>& out) const;

  private:
    std::int32_t m_kind = eSystem;
    CVelStrW m_systemLiteral;
    CVelStrW m_publicLiteral;
};

class CXmlDtd : public CXmlBaseObject {
  public:
    explicit CXmlDtd(CXmlBaseObject* parent) : CXmlBaseObject(parent) {}
    CXmlDtd(const CXmlDtd&) = delete;
    CXmlDtd& operator=(const CXmlDtd&) = delete;
    ~CXmlDtd() override;

    eXmlClassType GetClassType() const override { return eXmlDtdType; }
    // "<!DOCTYPE name ...[]>" without a line end, or nothing when the name is empty
    // (output/DocumentSource.cpp).
    void GetSource(CVelStringBuffer<CVelStrW>& out) const override;
    // A DTD has no text whose line ends are rewritten.
    void ConvertReturnCode(const CVelStrW&) override {}

    CVelStrW getName() const { return m_name; }
    void setName(const CVelStrW& name) { m_name = name; }
    CXmlDtdExternalID getExternalID() const { return m_externalID; }
    void setExternalID(const CXmlDtdExternalID& id) { m_externalID = id; }

    // The getters throw std::out_of_range for an undeclared name.
    CVelStrW getInternalGE(const CVelStrW& name) const;
    // A later definition replaces an earlier one.
    void setInternalGE(const CVelStrW& name, const CVelStrW& value);
    CXmlDtdExternalID getExternalGE(const CVelStrW& name) const;
    // The stored entity itself (may be null); the DTD keeps ownership.
    CXmlParsedEntity* getExternalGEContent(const CVelStrW& name) const;
    // Takes ownership of content in every case; an entity stored before under name is deleted.
    void setExternalGE(const CVelStrW& name, const CXmlDtdExternalID& id,
                       CXmlParsedEntity* content);
    bool hasInternalGE(const CVelStrW& name) const { return m_internalGEs.count(name) != 0; }
    bool hasExternalGE(const CVelStrW& name) const { return m_externalGEs.count(name) != 0; }
    // Every external entity's content by name (entries may be null); the DTD keeps ownership.
    const std::map<CVelStrW, CXmlParsedEntity*>& getExternalGEContents() const {
        return m_externalGEContents;
    }

  private:
    CVelStrW m_name;
    CXmlDtdExternalID m_externalID;
    std::map<CVelStrW, CVelStrW> m_internalGEs;
    std::map<CVelStrW, CXmlDtdExternalID> m_externalGEs;
    std::map<CVelStrW, CXmlParsedEntity*> m_externalGEContents;  // owned
};

}  // namespace vx
