#include "vx/dom/XmlBaseObject.h"

#include "vx/dom/XmlDocument.h"

namespace vx {

// A loop rather than the parent's GetDocument: a text node deep in a tree would otherwise take
// two stack frames per level on every write.
CXmlDocument* CXmlBaseObject::GetDocument() const {
    for (const CXmlBaseObject* node = this; node; node = node->GetParent()) {
        if (node->GetClassType() == eXmlDocumentType) {
            return static_cast<CXmlDocument*>(const_cast<CXmlBaseObject*>(node));
        }
    }
    return nullptr;
}

}  // namespace vx
