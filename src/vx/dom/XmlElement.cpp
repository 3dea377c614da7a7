#include "vx/dom/XmlElement.h"

#include <algorithm>
#include <utility>

#include "vx/dom/NameCache.h"
#include "vx/dom/XmlCharData.h"

namespace vx {

CXmlElement::CXmlElement(CXmlBaseObject* parent) : CXmlTextObject(parent), m_children(this) {}

namespace {

CXmlListContainer CopyOneLevelDown(const CXmlListContainer& children) {
    const CTreeLevel level;
    return children;
}

}  // namespace

CXmlElement::CXmlElement(const CXmlElement& other)
    : CXmlTextObject(other),
      m_attributes(other.m_attributes),
      m_children(CopyOneLevelDown(other.m_children)),
      m_name(other.m_name) {
    AdoptAttributes();
    m_children.SetParent(this);
}

// The children go last: other may be one of them and dies with them.
CXmlElement& CXmlElement::operator=(const CXmlElement& other) {
    if (this == &other) return *this;
    const CTreeLevel level;
    m_name = other.m_name;
    m_attributes = other.m_attributes;
    AdoptAttributes();
    m_children = other.m_children;
    return *this;
}

void CXmlElement::AdoptAttributes() noexcept {
    for (CXmlAttribute& attribute : m_attributes)
        attribute.SetParent(this);
}

void CXmlElement::SetName(const CVelStrW& name) {
    m_name = ElementNameCache().Intern(name);
}

void CXmlElement::SetName(CVelStrW&& name) {
    m_name = std::move(name);
    ElementNameCache().InternInPlace(m_name);
}

// A stored attribute's parent is already this element, and assignment keeps it.
void CXmlElement::SetAtt(const CVelStrW& name, const CXmlAttribute& attribute) {
    CXmlAttribute copy(attribute);
    copy.SetName(name);
    const auto slot = std::find_if(m_attributes.begin(), m_attributes.end(), CAttByName(name));
    if (slot == m_attributes.end()) {
        AppendAtt() = copy;
    } else {
        *slot = copy;
    }
}

CXmlAttribute& CXmlElement::AppendAtt() {
    const CXmlAttribute* const before = m_attributes.begin();
    m_attributes.PushBack(CXmlAttribute(nullptr));
    // Only a new block moves the others; the vector doubles, so adopting them all is amortised.
    if (m_attributes.begin() != before) {
        AdoptAttributes();
    } else {
        m_attributes.Back().SetParent(this);
    }
    return m_attributes.Back();
}

CXmlAttribute CXmlElement::GetAtt(const CVelStrW& name) const {
    const auto found = std::find_if(m_attributes.begin(), m_attributes.end(), CAttByName(name));
    if (found != m_attributes.end()) return *found;
    CXmlAttribute missing(nullptr);
    missing.SetName(name);
    return missing;
}

void CXmlElement::GetAttNameList(CSmallVector<CVelStrW>& names) const {
    for (const CXmlAttribute& attribute : m_attributes)
        names.PushBack(attribute.GetName());
}

CVelStrW CXmlElement::GetText() const {
    const CTreeLevel level;
    CVelStrW text;
    for (int i = 0; i < m_children.GetSize(); ++i) {
        const CXmlBaseObject* child = m_children.GetAt(i);
        switch (child->GetClassType()) {
            case eXmlElementType:
            case eXmlCDataType:
            case eXmlEntityType:
            case eXmlCDSectType:
                text += static_cast<const CXmlTextObject*>(child)->GetText();
                break;
            default:
                break;
        }
    }
    return text;
}

void CXmlElement::SetText(const CVelStrW& text) {
    for (int i = m_children.GetSize() - 1; i >= 0; --i)
        m_children.Erase(i);
    m_children.PushBack(CXmlCData(nullptr))->SetText(text);
}

const CXmlElement* CXmlElement::GetFirstChildElement() const {
    if (m_children.GetSize() == 0) return nullptr;
    return static_cast<const CXmlElement*>(m_children.GetAt(eXmlElementType, 0));
}

const CXmlElement* CXmlElement::GetFirstChildElement(const CVelStrW& name) const {
    const CXmlElement* first = GetFirstChildElement();
    if (!first || first->m_name == name) return first;
    return first->GetNextElement(name);
}

const CXmlElement* CXmlElement::GetNextElement() const {
    const CXmlBaseObject* parent = GetParent();
    if (!parent || parent->GetClassType() != eXmlListContainerType) return nullptr;
    const auto* siblings = static_cast<const CXmlListContainer*>(parent);
    for (int i = siblings->GetIndex(this) + 1; i < siblings->GetSize(); ++i) {
        const CXmlBaseObject* sibling = siblings->GetAt(i);
        if (sibling->GetClassType() == eXmlElementType) {
            return static_cast<const CXmlElement*>(sibling);
        }
    }
    return nullptr;
}

const CXmlElement* CXmlElement::GetNextElement(const CVelStrW& name) const {
    const CXmlElement* next = GetNextElement();
    while (next && next->m_name != name)
        next = next->GetNextElement();
    return next;
}

const CXmlElement* CXmlElement::GetParentElement() const {
    const auto* container = dynamic_cast<const CXmlListContainer*>(GetParent());
    return container ? dynamic_cast<const CXmlElement*>(container->GetParent()) : nullptr;
}

int CXmlElement::GetElementCount(const CVelStrW& name) const {
    int count = 0;
    for (const CXmlElement* e = GetFirstChildElement(name); e; e = e->GetNextElement(name)) {
        ++count;
    }
    return count;
}

// The non-const forms do exactly what the const forms do.
CXmlElement* CXmlElement::GetFirstChildElement() {
    return const_cast<CXmlElement*>(std::as_const(*this).GetFirstChildElement());
}
CXmlElement* CXmlElement::GetFirstChildElement(const CVelStrW& name) {
    return const_cast<CXmlElement*>(std::as_const(*this).GetFirstChildElement(name));
}
CXmlElement* CXmlElement::GetNextElement() {
    return const_cast<CXmlElement*>(std::as_const(*this).GetNextElement());
}
CXmlElement* CXmlElement::GetNextElement(const CVelStrW& name) {
    return const_cast<CXmlElement*>(std::as_const(*this).GetNextElement(name));
}
CXmlElement* CXmlElement::GetParentElement() {
    return const_cast<CXmlElement*>(std::as_const(*this).GetParentElement());
}

}  // namespace vx
