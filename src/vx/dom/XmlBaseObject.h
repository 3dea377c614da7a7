#pragma once
// The base of every node of the document model, and of the nodes that carry a text value.
// Nodes are not safe for concurrent mutation: a document is used by one thread at a time. One
// made on one thread may be read or deleted on another once the host has handed it over with
// its own synchronisation.
#include <cstdint>

#include "vx/memory/Pages.h"
#include "vx/text/StringBuffer.h"
#include "vx/text/VelStr.h"

namespace vx {

class CXmlDocument;

// Node kinds. 7 and 8 are unassigned on purpose.
enum eXmlClassType : std::uint8_t {
    eXmlDocumentType = 0,
    eXmlElementType = 1,
    eXmlAttributeType = 2,
    eXmlCDataType = 3,
    eXmlEntityType = 4,
    eXmlParsedEntityType = 5,
    eXmlCDSectType = 6,
    eXmlListContainerType = 9,
    eXmlDtdType = 10,
};

class CXmlBaseObject : public vel::CPageAllocated {
  public:
    explicit CXmlBaseObject(CXmlBaseObject* parent) : m_parent(parent) {}
    // A copy never inherits the source's place in a tree.
    CXmlBaseObject(const CXmlBaseObject&) : m_parent(nullptr) {}
    // Copies nothing: the target keeps its own parent.
    CXmlBaseObject& operator=(const CXmlBaseObject&) { return *this; }
    virtual ~CXmlBaseObject() = default;

    virtual eXmlClassType GetClassType() const = 0;
    // Appends the node's XML text. Every node's GetSource and ConvertReturnCode are defined in
    // output/ (NodeSource.cpp, DocumentSource.cpp).
    virtual void GetSource(CVelStringBuffer<CVelStrW>& out) const = 0;
    virtual CXmlBaseObject* GetParent() const { return m_parent; }
    // This node when it is a document, else the first document up the parent chain, or null.
    virtual CXmlDocument* GetDocument() const;
    // Rewrites the line ends of the node's text as lineEnd.
    virtual void ConvertReturnCode(const CVelStrW& lineEnd) = 0;

    void SetParent(CXmlBaseObject* parent) { m_parent = parent; }

    // Converts text's line ends in place; logs and returns false when lineEnd is not one of
    // CR, LF, CR LF. Defined in output/LineEnd.cpp.
    static bool RetCodeConv(CVelStrW& text, CVelStrW lineEnd);

  private:
    CXmlBaseObject* m_parent;
};

// One level of a walk down a tree (copying, GetSource, GetText, ConvertReturnCode): these
// recurse, so past GetNestingLimit() levels on the calling thread they throw
// std::runtime_error("dummy"), as parsing does, instead of exhausting the stack. Destroying a
// tree recurses only a few levels and works at any depth.
class CTreeLevel {
  public:
    CTreeLevel();
    ~CTreeLevel();
    CTreeLevel(const CTreeLevel&) = delete;
    CTreeLevel& operator=(const CTreeLevel&) = delete;
};

class CXmlTextObject : public CXmlBaseObject {
  public:
    explicit CXmlTextObject(CXmlBaseObject* parent) : CXmlBaseObject(parent) {}
    CXmlTextObject(const CXmlTextObject& other) = default;
    CXmlTextObject& operator=(const CXmlTextObject& other) = default;

    virtual CVelStrW GetText() const = 0;
};

}  // namespace vx
