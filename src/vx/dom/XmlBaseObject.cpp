#include "vx/dom/XmlBaseObject.h"

#include <stdexcept>

#include "vx/dom/XmlDocument.h"
#include "vx/platform/Package.h"

namespace vx {

namespace {

thread_local int t_treeLevel = 0;

}  // namespace

CTreeLevel::CTreeLevel() {
    if (t_treeLevel >= GetNestingLimit()) throw std::runtime_error("dummy");
    ++t_treeLevel;
}

CTreeLevel::~CTreeLevel() {
    --t_treeLevel;
}

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
