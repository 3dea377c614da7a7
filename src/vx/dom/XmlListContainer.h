#pragma once
// An ordered list of child nodes of mixed kinds. The container owns its children: it stores
// copies of what it is given, parents them to itself and destroys them.
#include <memory>
#include <type_traits>

#include "vx/dom/XmlBaseObject.h"
#include "vx/memory/SmallVector.h"

namespace vx {

class CXmlCData;
class CXmlCDSect;
class CXmlEntity;
class CXmlElement;

class CXmlListContainer : public CXmlBaseObject {
  public:
    using NodeList = CSmallVector<CXmlBaseObject*>;

    explicit CXmlListContainer(CXmlBaseObject* parent) : CXmlBaseObject(parent) {}
    CXmlListContainer(const CXmlListContainer& other);
    CXmlListContainer& operator=(const CXmlListContainer& other);
    ~CXmlListContainer() override;

    eXmlClassType GetClassType() const override { return eXmlListContainerType; }
    // These two: output/NodeSource.cpp.
    void GetSource(CVelStringBuffer<CVelStrW>& out) const override;
    void ConvertReturnCode(const CVelStrW& lineEnd) override;

    // Children of any kind.
    int GetSize() const noexcept { return m_list.GetSize(); }
    // The child at pos, whatever its kind; std::out_of_range("CXmlListContainer::GetAt()")
    // for a bad pos.
    CXmlBaseObject* GetAt(int pos);
    const CXmlBaseObject* GetAt(int pos) const;

    int GetCount(eXmlClassType kind) const;
    // The n-th child of that kind, or null; n is checked against the count of all children.
    CXmlBaseObject* GetAt(eXmlClassType kind, int n);
    const CXmlBaseObject* GetAt(eXmlClassType kind, int n) const;
    int GetIndexInAll(eXmlClassType kind, int n) const;
    int GetIndexInType(eXmlClassType kind, int pos) const;
    // Position of that very node, or -1.
    int GetIndex(const CXmlBaseObject* node) const;

    // Each stores a copy of node at pos (0..size) and returns it.
    CXmlCData* Insert(const CXmlCData& node, int pos);
    CXmlCDSect* Insert(const CXmlCDSect& node, int pos);
    CXmlEntity* Insert(const CXmlEntity& node, int pos);
    CXmlElement* Insert(const CXmlElement& node, int pos);
    CXmlCData* PushBack(const CXmlCData& node);
    CXmlCDSect* PushBack(const CXmlCDSect& node);
    CXmlEntity* PushBack(const CXmlEntity& node);
    CXmlElement* PushBack(const CXmlElement& node);
    // Appends copies of all of other's children, in order.
    void PushBack(const CXmlListContainer& other);
    // Appends node itself, not a copy, and parents it: what a builder that has just made the
    // node uses, so that the node is made once.
    template <class Node, std::enable_if_t<std::is_base_of_v<CXmlTextObject, Node> &&
                                               std::is_convertible_v<Node*, CXmlTextObject*>,
                                           int> = 0>
    Node* PushBack(std::unique_ptr<Node> node) {
        m_list.PushBack(node.get());
        node->SetParent(this);
        return node.release();
    }
    // Appends nodes[0, count) themselves and parents them, as the form above does: all of
    // them, or none when the list cannot grow (an exception; the caller keeps them).
    void Adopt(CXmlBaseObject* const* nodes, int count);
    // Room for count children in all: a builder that knows how many come allocates once.
    void Reserve(int count) { m_list.Reserve(count); }

    void Erase(int pos);
    void Move(int from, int to);

    // Appends a copy of every source node, parented to parent. Containers, DTDs and unknown
    // kinds are refused (logged, std::runtime_error); nodes copied before stay.
    static void CopyListToList(NodeList& destination, const NodeList& source,
                               CXmlBaseObject* parent, bool clear);

  private:
    template <class Node>
    Node* InsertCopy(const Node& node, int pos);
    static void DeleteNodes(NodeList& nodes) noexcept;
    // Destroys the nodes chained through their parent links, and all below them.
    static void DeleteStack(CXmlBaseObject* stack) noexcept;

    NodeList m_list;
};

}  // namespace vx
