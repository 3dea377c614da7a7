#include "vx/dom/XmlCharData.h"

namespace vx {

CVelStrW CXmlEntity::GetText() const {
    CVelStrW text(u'&');
    text += m_name;
    text += u';';
    return text;
}

}  // namespace vx
