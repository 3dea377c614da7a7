#include <gtest/gtest.h>

#include <stdexcept>

#include "DomTestSupport.h"
#include "vx/dom/XmlCharData.h"
#include "vx/dom/XmlDocument.h"
#include "vx/dom/XmlElement.h"

using namespace vx;
using vxtest::Source;
using vxtest::ThrownText;

namespace {

CXmlCData Text(const char16_t* text) {
    CXmlCData node(nullptr);
    node.SetText(text);
    return node;
}

CXmlElement Element(const char16_t* name) {
    CXmlElement node(nullptr);
    node.SetName(name);
    return node;
}

}  // namespace

TEST(ListContainer, IndexGuardsInsertEraseAndMove) {
    CXmlListContainer list(nullptr);
    EXPECT_EQ(ThrownText<std::out_of_range>([&] { list.GetAt(eXmlElementType, 0); }),
              "CXmlListContainer::GetIndexInAll()");
    EXPECT_EQ(ThrownText<std::out_of_range>([&] { list.GetAt(0); }), "CXmlListContainer::GetAt()");

    list.PushBack(Element(u"e"));
    list.PushBack(Text(u"a"));
    list.Insert(Text(u"b"), 2);  // at the count: appends
    EXPECT_EQ(ThrownText<std::out_of_range>([&] { list.Insert(Text(u"x"), 4); }),
              "CXmlListContainer::Insert()");
    ASSERT_EQ(list.GetSize(), 3);
    EXPECT_EQ(list.GetCount(eXmlCDataType), 2);
    EXPECT_EQ(list.GetAt(eXmlElementType, 2), nullptr);
    EXPECT_EQ(ThrownText<std::out_of_range>([&] { list.GetAt(eXmlElementType, 3); }),
              "CXmlListContainer::GetIndexInAll()");
    EXPECT_EQ(list.GetIndexInAll(eXmlCDataType, 1), 2);
    EXPECT_EQ(list.GetIndexInType(eXmlElementType, 2), 0);
    EXPECT_EQ(list.GetIndexInType(eXmlCDataType, 0), -1);
    EXPECT_EQ(ThrownText<std::out_of_range>([&] { list.GetIndexInType(eXmlCDataType, 3); }),
              "CXmlListContainer::GetIndexInType()");
    EXPECT_THROW(list.Erase(3), std::out_of_range);
    EXPECT_EQ(list.GetSize(), 3);
    list.Erase(0);
    list.PushBack(Text(u"c"));
    list.Move(0, 2);
    EXPECT_EQ(Source(list), "bca");
    list.Move(2, 0);
    EXPECT_EQ(Source(list), "abc");
    EXPECT_EQ(ThrownText<std::out_of_range>([&] { list.Move(0, 3); }), "CXmlListContainer::Move()");
}

// Copies are deep and parented to the container they are in, also when a list is appended to
// itself.
TEST(ListContainer, CopiesAreDeepAndParentedToTheirContainer) {
    CXmlDocument document(nullptr);
    CXmlListContainer& list = document.GetPrologContent();
    EXPECT_EQ(list.PushBack(Text(u"a"))->GetDocument(), &document);
    list.PushBack(Element(u"e"));

    CXmlListContainer copy(list);
    EXPECT_EQ(copy.GetParent(), nullptr);
    ASSERT_EQ(copy.GetSize(), 2);
    EXPECT_NE(copy.GetAt(0), list.GetAt(0));
    EXPECT_EQ(copy.GetAt(1)->GetParent(), &copy);

    CXmlBaseObject* first = list.GetAt(0);
    const CXmlListContainer& itself = list;
    list = itself;
    EXPECT_EQ(list.GetAt(0), first);
    list.PushBack(list);
    EXPECT_EQ(Source(list), "a<e/>a<e/>");
    EXPECT_EQ(list.GetAt(3)->GetParent(), &list);
    copy = list;
    EXPECT_EQ(Source(copy), "a<e/>a<e/>");
    EXPECT_EQ(copy.GetAt(2)->GetParent(), &copy);
}

// A builder's nodes are taken themselves, after the children already there, and parented.
TEST(ListContainer, AdoptTakesTheNodesThemselvesInOrder) {
    CXmlElement parent = Element(u"p");
    CXmlListContainer& list = parent.GetChildren();
    list.PushBack(Text(u"a"));
    CXmlBaseObject* nodes[] = {new CXmlElement(Element(u"e")), new CXmlCData(Text(u"b"))};
    list.Adopt(nodes, 2);
    ASSERT_EQ(list.GetSize(), 3);
    EXPECT_EQ(list.GetAt(1), nodes[0]);
    EXPECT_EQ(nodes[1]->GetParent(), &list);
    EXPECT_EQ(Source(list), "a<e/>b");
}

TEST(ListContainer, CopyListToListRefusesContainersAndDtds) {
    vxtest::LogCapture log;
    CXmlCData text = Text(u"t");
    CXmlListContainer nested(nullptr);
    CXmlDtd dtd(nullptr);
    CXmlElement parent(nullptr);
    for (CXmlBaseObject* refused :
         {static_cast<CXmlBaseObject*>(&nested), static_cast<CXmlBaseObject*>(&dtd)}) {
        CXmlListContainer::NodeList source;
        source.PushBack(&text);
        source.PushBack(refused);
        CXmlListContainer::NodeList destination;
        EXPECT_EQ(ThrownText<std::runtime_error>([&] {
                      CXmlListContainer::CopyListToList(destination, source, &parent, false);
                  }),
                  "CXmlListContainer::CopyListToList()");
        ASSERT_EQ(destination.GetSize(), 1);  // what was copied before stays
        EXPECT_EQ(destination[0]->GetParent(), &parent);
        delete destination[0];
    }
    EXPECT_TRUE(
        log.HasLine(R"(XmlBaseObject\(\d+\): CXmlListContainer::CopyListToList: 不明なクラス)"));
}
