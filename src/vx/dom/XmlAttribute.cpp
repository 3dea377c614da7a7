#include "vx/dom/XmlAttribute.h"

#include <utility>

#include "vx/dom/NameCache.h"

namespace vx {

void CXmlAttribute::SetName(const CVelStrW& name) {
    m_name = AttributeNameCache().Intern(name);
}

void CXmlAttribute::SetValue(const CVelStrW& value) {
    m_value = AttributeValueCache().Intern(value);
}

void CXmlAttribute::SetName(CVelStrW&& name) {
    m_name = std::move(name);
    AttributeNameCache().InternInPlace(m_name);
}

void CXmlAttribute::SetValue(CVelStrW&& value) {
    m_value = std::move(value);
    AttributeValueCache().InternInPlace(m_value);
}

}  // namespace vx
