#include "vx/dom/XmlListContainer.h"

#include <stdexcept>

#include "vx/dom/XmlAttribute.h"
#include "vx/dom/XmlCharData.h"
#include "vx/dom/XmlDocument.h"
#include "vx/dom/XmlElement.h"
#include "vx/memory/Counts.h"
#include "vx/platform/Logger.h"

namespace vx {

namespace {

// A copy of node made by its own class, or null for a kind that cannot be copied into a list.
CXmlBaseObject* CloneNode(const CXmlBaseObject& node) {
    switch (node.GetClassType()) {
        case eXmlDocumentType:
            return new CXmlDocument(static_cast<const CXmlDocument&>(node));
        case eXmlElementType:
            return new CXmlElement(static_cast<const CXmlElement&>(node));
        case eXmlAttributeType:
            return new CXmlAttribute(static_cast<const CXmlAttribute&>(node));
        case eXmlCDataType:
            return new CXmlCData(static_cast<const CXmlCData&>(node));
        case eXmlEntityType:
            return new CXmlEntity(static_cast<const CXmlEntity&>(node));
        case eXmlParsedEntityType:
            return new CXmlParsedEntity(static_cast<const CXmlParsedEntity&>(node));
        case eXmlCDSectType:
            return new CXmlCDSect(static_cast<const CXmlCDSect&>(node));
        default:
            return nullptr;
    }
}

void CheckPosition(int pos, int size, const char* function) {
    if (pos < 0 || pos >= size) throw std::out_of_range(function);
}

}  // namespace

CXmlListContainer::CXmlListContainer(const CXmlListContainer& other) : CXmlBaseObject(other) {
    try {
        CopyListToList(m_list, other.m_list, this, false);
    } catch (...) {
        DeleteNodes(m_list);  // no destructor runs for a half-made object
        throw;
    }
}

CXmlListContainer& CXmlListContainer::operator=(const CXmlListContainer& other) {
    if (this == &other) return *this;
    // other may live below one of the old children: destroy them only after copying. A copy
    // that fails leaves the old children in place.
    NodeList old;
    old.Swap(m_list);
    try {
        CopyListToList(m_list, other.m_list, this, true);
    } catch (...) {
        DeleteNodes(m_list);
        m_list.Swap(old);
        throw;
    }
    DeleteNodes(old);
    return *this;
}

CXmlListContainer::~CXmlListContainer() {
    DeleteNodes(m_list);
}

namespace {

// Trees are destroyed by recursion while it stays this shallow, which frees nodes in document
// order; deeper down, nodes are chained into a stack through their parent links, which nodes
// about to be destroyed no longer need, so that a tree of any depth takes neither more stack
// nor memory.
constexpr int kRecursiveDeleteDepth = 128;
thread_local int t_deleteDepth = 0;

void PushNodes(CXmlListContainer::NodeList& nodes, CXmlBaseObject*& stack) noexcept {
    for (CXmlBaseObject* node : nodes) {
        node->SetParent(stack);
        stack = node;
    }
    nodes.Clear();
}

}  // namespace

void CXmlListContainer::DeleteNodes(NodeList& nodes) noexcept {
    if (t_deleteDepth < kRecursiveDeleteDepth) {
        ++t_deleteDepth;
        for (CXmlBaseObject* node : nodes)
            delete node;
        --t_deleteDepth;
        nodes.Clear();
        return;
    }
    CXmlBaseObject* stack = nullptr;
    PushNodes(nodes, stack);
    DeleteStack(stack);
}

// Each node's children are moved onto the stack before the node goes, so its own destructor
// finds them empty.
void CXmlListContainer::DeleteStack(CXmlBaseObject* stack) noexcept {
    while (stack) {
        CXmlBaseObject* node = stack;
        stack = node->GetParent();
        switch (node->GetClassType()) {
            case eXmlElementType:
                PushNodes(static_cast<CXmlElement*>(node)->GetChildren().m_list, stack);
                break;
            case eXmlParsedEntityType:
                PushNodes(static_cast<CXmlParsedEntity*>(node)->GetContent().m_list, stack);
                break;
            case eXmlDocumentType: {
                auto* document = static_cast<CXmlDocument*>(node);
                PushNodes(document->GetPrologContent().m_list, stack);
                PushNodes(document->GetRootElement().GetChildren().m_list, stack);
                PushNodes(document->GetEpilogContent().m_list, stack);
                break;
            }
            default:
                break;
        }
        delete node;
    }
}

CXmlBaseObject* CXmlListContainer::GetAt(int pos) {
    CheckPosition(pos, GetSize(), "CXmlListContainer::GetAt()");
    return m_list[pos];
}

const CXmlBaseObject* CXmlListContainer::GetAt(int pos) const {
    return const_cast<CXmlListContainer*>(this)->GetAt(pos);
}

int CXmlListContainer::GetCount(eXmlClassType kind) const {
    int count = 0;
    for (const CXmlBaseObject* node : m_list)
        count += node->GetClassType() == kind;
    return count;
}

CXmlBaseObject* CXmlListContainer::GetAt(eXmlClassType kind, int n) {
    const int index = GetIndexInAll(kind, n);
    return index < 0 ? nullptr : m_list[index];
}

const CXmlBaseObject* CXmlListContainer::GetAt(eXmlClassType kind, int n) const {
    return const_cast<CXmlListContainer*>(this)->GetAt(kind, n);
}

// n is checked against all children, not those of the kind: callers rely on the exception.
int CXmlListContainer::GetIndexInAll(eXmlClassType kind, int n) const {
    CheckPosition(n, GetSize(), "CXmlListContainer::GetIndexInAll()");
    int seen = 0;
    for (int i = 0; i < GetSize(); ++i) {
        if (m_list[i]->GetClassType() == kind && seen++ == n) return i;
    }
    return -1;
}

int CXmlListContainer::GetIndexInType(eXmlClassType kind, int pos) const {
    CheckPosition(pos, GetSize(), "CXmlListContainer::GetIndexInType()");
    int count = 0;
    for (int i = 0; i <= pos; ++i)
        count += m_list[i]->GetClassType() == kind;
    return count - 1;
}

int CXmlListContainer::GetIndex(const CXmlBaseObject* node) const {
    for (int i = 0; i < GetSize(); ++i) {
        if (m_list[i] == node) return i;
    }
    return -1;
}

template <class Node>
Node* CXmlListContainer::InsertCopy(const Node& node, int pos) {
    CheckPosition(pos, GetSize() + 1, "CXmlListContainer::Insert()");
    Node* copy = new Node(node);
    copy->SetParent(this);
    try {
        m_list.Insert(pos, copy);
    } catch (...) {
        delete copy;
        throw;
    }
    return copy;
}

CXmlCData* CXmlListContainer::Insert(const CXmlCData& node, int pos) {
    return InsertCopy(node, pos);
}
CXmlCDSect* CXmlListContainer::Insert(const CXmlCDSect& node, int pos) {
    return InsertCopy(node, pos);
}
CXmlEntity* CXmlListContainer::Insert(const CXmlEntity& node, int pos) {
    return InsertCopy(node, pos);
}
CXmlElement* CXmlListContainer::Insert(const CXmlElement& node, int pos) {
    return InsertCopy(node, pos);
}
CXmlCData* CXmlListContainer::PushBack(const CXmlCData& node) {
    return InsertCopy(node, GetSize());
}
CXmlCDSect* CXmlListContainer::PushBack(const CXmlCDSect& node) {
    return InsertCopy(node, GetSize());
}
CXmlEntity* CXmlListContainer::PushBack(const CXmlEntity& node) {
    return InsertCopy(node, GetSize());
}
CXmlElement* CXmlListContainer::PushBack(const CXmlElement& node) {
    return InsertCopy(node, GetSize());
}

void CXmlListContainer::Adopt(CXmlBaseObject* const* nodes, int count) {
    m_list.Reserve(vel::CheckedCount(std::int64_t{GetSize()} + count));
    for (int i = 0; i < count; ++i) {
        m_list.PushBack(nodes[i]);
        nodes[i]->SetParent(this);
    }
}

void CXmlListContainer::PushBack(const CXmlListContainer& other) {
    CopyListToList(m_list, other.m_list, this, false);
}

void CXmlListContainer::Erase(int pos) {
    CXmlBaseObject* erased = m_list[pos];  // the checked access throws before anything changes
    m_list.Erase(pos);
    erased->SetParent(nullptr);
    DeleteStack(erased);
}

void CXmlListContainer::Move(int from, int to) {
    CheckPosition(from, GetSize(), "CXmlListContainer::Move()");
    CheckPosition(to, GetSize(), "CXmlListContainer::Move()");
    CXmlBaseObject* lifted = m_list[from];
    const int step = from < to ? 1 : -1;
    for (int i = from; i != to; i += step)
        m_list[i] = m_list[i + step];
    m_list[to] = lifted;
}

void CXmlListContainer::CopyListToList(NodeList& destination, const NodeList& source,
                                       CXmlBaseObject* parent, bool clear) {
    if (clear) NodeList().Swap(destination);
    // By index over the size at the start: source may be destination itself.
    const int count = source.GetSize();
    for (int i = 0; i < count; ++i) {
        CXmlBaseObject* copy = CloneNode(*source[i]);
        if (!copy) {
            vel::LogFailure("XmlBaseObject", __LINE__, "CXmlListContainer::CopyListToList",
                            "不明なクラス");
            throw std::runtime_error("CXmlListContainer::CopyListToList()");
        }
        copy->SetParent(parent);
        destination.PushBack(copy);
    }
}

}  // namespace vx
