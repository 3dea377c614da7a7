#include "vx/dom/XmlDocument.h"

#include "vx/platform/Logger.h"

namespace vx {

namespace {

void LogDtdNotCopied(int line, const char* function) {
    vel::LogFailure("XmlDocument", line, function, "CXmlDtdのコピーが発生しましたが未実装です");
}

}  // namespace

CXmlParsedEntity::CXmlParsedEntity(const CXmlParsedEntity& other)
    : CXmlBaseObject(other), m_content(other.m_content) {
    m_content.SetParent(this);
}

CXmlParsedEntity& CXmlParsedEntity::operator=(const CXmlParsedEntity& other) {
    if (this == &other) return *this;
    m_content = other.m_content;
    m_content.SetParent(this);
    return *this;
}

CXmlDocument::CXmlDocument(CXmlBaseObject* parent)
    : CXmlBaseObject(parent),
      m_prolog(this),
      m_root(this),
      m_epilog(this),
      m_retCode(u"\r\n"),
      m_dtd(std::make_unique<CXmlDtd>(this)) {}

CXmlDocument::CXmlDocument(const CXmlDocument& other)
    : CXmlBaseObject(other),
      m_version(other.m_version),
      m_encoding(other.m_encoding),
      m_standard(other.m_standard),
      m_prolog(other.m_prolog),
      m_root(other.m_root),
      m_epilog(other.m_epilog),
      m_errors(other.m_errors),
      m_retCode(other.m_retCode),
      m_dtd(std::make_unique<CXmlDtd>(this)) {
    AdoptMembers();
    copyParsedEntity(other);
    LogDtdNotCopied(__LINE__, "CXmlDocument::CXmlDocument");
}

CXmlDocument& CXmlDocument::operator=(const CXmlDocument& other) {
    if (this == &other) return *this;
    m_version = other.m_version;
    m_encoding = other.m_encoding;
    m_standard = other.m_standard;
    m_prolog = other.m_prolog;
    m_root = other.m_root;
    m_epilog = other.m_epilog;
    m_errors = other.m_errors;
    m_retCode = other.m_retCode;
    deleteParsedEntity();
    copyParsedEntity(other);
    LogDtdNotCopied(__LINE__, "CXmlDocument::operator =");
    return *this;
}

CXmlDocument::~CXmlDocument() {
    deleteParsedEntity();
    m_dtd.reset();
}

void CXmlDocument::AdoptMembers() noexcept {
    m_prolog.SetParent(this);
    m_root.SetParent(this);
    m_epilog.SetParent(this);
}

const CXmlParsedEntity* CXmlDocument::GetParsedEntity(const CVelStrW& name) const {
    const auto found = m_parsedEntities.find(name);
    return found == m_parsedEntities.end() ? nullptr : found->second;
}

void CXmlDocument::SetParsedEntity(const CVelStrW& name, const CXmlParsedEntity& entity) {
    auto copy = std::make_unique<CXmlParsedEntity>(entity);
    CXmlParsedEntity*& slot = m_parsedEntities[name];
    delete slot;
    slot = copy.release();
}

void CXmlDocument::copyParsedEntity(const CXmlDocument& other) {
    for (const auto& [name, entity] : other.m_parsedEntities) {
        if (m_parsedEntities.contains(name)) continue;
        auto copy = std::make_unique<CXmlParsedEntity>(*entity);
        m_parsedEntities.emplace(name, copy.get());
        copy.release();
    }
}

void CXmlDocument::deleteParsedEntity() {
    for (auto& [name, entity] : m_parsedEntities) {
        delete entity;
        entity = nullptr;
    }
    m_parsedEntities.clear();
}

}  // namespace vx
