#include "vx/dom/XmlAttribute.h"

#include "vx/dom/NameCache.h"

namespace vx {

void CXmlAttribute::SetName(const CVelStrW& name) {
    m_name = AttributeNameCache().Intern(name);
}

void CXmlAttribute::SetValue(const CVelStrW& value) {
    m_value = AttributeValueCache().Intern(value);
}

}  // namespace vx
