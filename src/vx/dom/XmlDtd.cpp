#include "vx/dom/XmlDtd.h"

#include <stdexcept>

#include "vx/dom/XmlDocument.h"

namespace vx {

namespace {

template <class Map>
const typename Map::mapped_type& Lookup(const Map& map, const CVelStrW& name, const char* failure) {
    const auto found = map.find(name);
    if (found == map.end()) throw std::out_of_range(failure);
    return found->second;
}

}  // namespace

void CXmlDtdExternalID::setSystemLiteral(const CVelStrW& system) {
    m_kind = eSystem;
    m_systemLiteral = system;
    if (!m_publicLiteral.IsEmpty()) m_publicLiteral = CVelStrW();
}

void CXmlDtdExternalID::setPublicLiteral(const CVelStrW& system, const CVelStrW& pubid) {
    m_kind = ePublic;
    m_systemLiteral = system;
    m_publicLiteral = pubid;
}

CXmlDtd::~CXmlDtd() {
    for (auto& [name, content] : m_externalGEContents)
        delete content;
}

CVelStrW CXmlDtd::getInternalGE(const CVelStrW& name) const {
    return Lookup(m_internalGEs, name,
                  "CXmlDtd::getInternalGE() 存在しないエンティティ名を指定した");
}

void CXmlDtd::setInternalGE(const CVelStrW& name, const CVelStrW& value) {
    m_internalGEs[name] = value;
}

CXmlDtdExternalID CXmlDtd::getExternalGE(const CVelStrW& name) const {
    return Lookup(m_externalGEs, name,
                  "CXmlDtd::getExternalGE() 存在しないエンティティ名を指定した");
}

CXmlParsedEntity* CXmlDtd::getExternalGEContent(const CVelStrW& name) const {
    return Lookup(m_externalGEContents, name,
                  "CXmlDtd::getExternalGEContent() 存在しないエンティティ名を指定した");
}

void CXmlDtd::setExternalGE(const CVelStrW& name, const CXmlDtdExternalID& id,
                            CXmlParsedEntity* content) {
    m_externalGEs[name] = id;
    CXmlParsedEntity*& slot = m_externalGEContents[name];
    if (slot != content) delete slot;
    slot = content;
}

}  // namespace vx
