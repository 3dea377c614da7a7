#pragma once
// The root of a parsed document, and the node holding an external parsed entity's content.
#include <map>
#include <memory>

#include "vx/diag/ParseError.h"
#include "vx/dom/XmlDtd.h"
#include "vx/dom/XmlElement.h"
#include "vx/dom/XmlListContainer.h"

namespace vx {

class CXmlParsedEntity : public CXmlBaseObject {
  public:
    // The content container deliberately starts without a parent.
    explicit CXmlParsedEntity(CXmlBaseObject* parent)
        : CXmlBaseObject(parent), m_content(nullptr) {}
    CXmlParsedEntity(const CXmlParsedEntity& other);
    CXmlParsedEntity& operator=(const CXmlParsedEntity& other);

    eXmlClassType GetClassType() const override { return eXmlParsedEntityType; }
    // Not implemented: always throws std::runtime_error("未作成"). This and ConvertReturnCode:
    // output/DocumentSource.cpp.
    void GetSource(CVelStringBuffer<CVelStrW>& out) const override;
    void ConvertReturnCode(const CVelStrW& lineEnd) override;

    CXmlListContainer& GetContent() noexcept { return m_content; }
    const CXmlListContainer& GetContent() const noexcept { return m_content; }

  private:
    CXmlListContainer m_content;
};

class CXmlDocument : public CXmlBaseObject {
  public:
    explicit CXmlDocument(CXmlBaseObject* parent);
    // Copies everything but the DTD, which starts empty (logged).
    CXmlDocument(const CXmlDocument& other);
    // Assigns everything but the DTD, which stays as it was (logged).
    CXmlDocument& operator=(const CXmlDocument& other);
    ~CXmlDocument() override;

    eXmlClassType GetClassType() const override { return eXmlDocumentType; }
    // This and ConvertReturnCode: output/DocumentSource.cpp.
    void GetSource(CVelStringBuffer<CVelStrW>& out) const override;
    // Prolog content, root element and epilog content; not the DTD.
    void ConvertReturnCode(const CVelStrW& lineEnd) override;
    // Writes the text in the declared encoding, which must begin with Shift_JIS, EUC-JP,
    // ISO-2022-JP, ISO-10646-UCS-2 or ISO-10646-UCS-4 (any case). False on any failure.
    // Defined in output/SaveToFile.cpp.
    bool SaveToFile(const CVelStr& fileName) const;

    CVelStrW GetVersion() const { return m_version; }
    CVelStrW GetEncoding() const { return m_encoding; }
    CVelStrW GetStandard() const { return m_standard; }
    void SetVersion(const CVelStrW& version) { m_version = version; }
    void SetEncoding(const CVelStrW& encoding) { m_encoding = encoding; }
    void SetStandard(const CVelStrW& standard) { m_standard = standard; }
    // The line end that text nodes write; CR LF in a new document.
    CVelStrW GetRetCode() const { return m_retCode; }
    void SetRetCode(const CVelStrW& retCode) { m_retCode = retCode; }

    CXmlElement& GetRootElement() noexcept { return m_root; }
    const CXmlElement& GetRootElement() const noexcept { return m_root; }
    CXmlListContainer& GetPrologContent() noexcept { return m_prolog; }
    const CXmlListContainer& GetPrologContent() const noexcept { return m_prolog; }
    CXmlListContainer& GetEpilogContent() noexcept { return m_epilog; }
    const CXmlListContainer& GetEpilogContent() const noexcept { return m_epilog; }
    CXmlDtd& GetDtd() noexcept { return *m_dtd; }
    const CXmlDtd& GetDtd() const noexcept { return *m_dtd; }

    // A copy: changing it leaves the document's list alone.
    CParseErrorList GetErrList() const { return m_errors; }
    void SetErrList(const CParseErrorList& errors) { m_errors = errors; }
    void AddError(CParseError::eError code) { m_errors.PushBack(CParseError(code)); }
    void AddError(const CParseError& error) { m_errors.PushBack(error); }

    // The entity stored under name, or null.
    const CXmlParsedEntity* GetParsedEntity(const CVelStrW& name) const;
    // Stores a copy of entity under name, replacing one stored before.
    void SetParsedEntity(const CVelStrW& name, const CXmlParsedEntity& entity);
    // Adds a copy of each of other's parsed entities; a name already present keeps its own.
    void copyParsedEntity(const CXmlDocument& other);
    void deleteParsedEntity();

  private:
    void AdoptMembers() noexcept;

    CVelStrW m_version;
    CVelStrW m_encoding;
    CVelStrW m_standard;
    CXmlListContainer m_prolog;
    CXmlElement m_root;
    CXmlListContainer m_epilog;
    CParseErrorList m_errors;
    CVelStrW m_retCode;
    std::unique_ptr<CXmlDtd> m_dtd;
    std::map<CVelStrW, CXmlParsedEntity*> m_parsedEntities;  // owned
};

}  // namespace vx
