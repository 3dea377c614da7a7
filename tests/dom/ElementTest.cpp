#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "DomTestSupport.h"
#include "vx/dom/NameCache.h"
#include "vx/dom/XmlCharData.h"
#include "vx/dom/XmlDocument.h"
#include "vx/dom/XmlElement.h"
#include "vx/platform/Package.h"

using namespace vx;
using vxtest::Source;
using vxtest::Utf8;

namespace {

CXmlAttribute Attribute(const char16_t* name, const char16_t* value) {
    CXmlAttribute attribute(nullptr);
    attribute.SetName(name);
    attribute.SetValue(value);
    return attribute;
}

CXmlElement* AddChild(CXmlElement& parent, const char16_t* name) {
    CXmlElement child(nullptr);
    child.SetName(name);
    return parent.GetChildren().PushBack(child);
}

void AddText(CXmlElement& parent, const char16_t* text) {
    parent.GetChildren().PushBack(CXmlCData(nullptr))->SetText(text);
}

}  // namespace

TEST(Element, SetAttKeepsOrderAndParents) {
    CXmlDocument document(nullptr);
    CXmlElement& element = document.GetRootElement();
    element.SetName(u"e");
    element.SetAtt(u"a", Attribute(u"b", u"1\n"));  // the name argument wins
    for (char16_t c = u'c'; c < u'm'; ++c)
        element.SetAtt(CVelStrW(c), Attribute(u"x", u"v"));
    element.SetAtt(u"a", Attribute(u"a", u"2\n"));  // replaced in place

    CSmallVector<CVelStrW> names;
    names.PushBack(u"old");
    element.GetAttNameList(names);
    ASSERT_EQ(names.GetSize(), 12);
    EXPECT_EQ(Utf8(names[0]), "old");
    EXPECT_EQ(Utf8(names[1]), "a");
    EXPECT_EQ(Utf8(names[11]), "l");
    ASSERT_EQ(element.GetAttCount(), 11);
    EXPECT_EQ(Utf8(element.GetAttAt(0).GetValue()), "2\n");
    EXPECT_EQ(element.GetAttAt(10).GetParent(), &element);
    EXPECT_THROW(element.GetAttAt(11), std::out_of_range);

    // The first attribute still reaches the document (its CR LF line end) after the list grew.
    const std::string expected = "<e a=\"2&#13;&#10;\" c=\"v\"";
    EXPECT_EQ(Source(element).substr(0, expected.size()), expected);
    CXmlDocument copy(document);
    EXPECT_EQ(Source(copy.GetRootElement()).substr(0, expected.size()), expected);

    const CXmlAttribute missing = element.GetAtt(u"zz");
    EXPECT_EQ(Utf8(missing.GetName()), "zz");
    EXPECT_TRUE(missing.GetValue().IsEmpty());
    EXPECT_EQ(missing.GetParent(), nullptr);
}

TEST(Element, NavigationAndText) {
    CXmlDocument document(nullptr);
    CXmlElement& root = document.GetRootElement();
    AddText(root, u"ab");
    CXmlElement* first = AddChild(root, u"x");
    AddText(*first, u"c");
    AddChild(root, u"y");
    AddText(root, u"d");
    CXmlElement* third = AddChild(root, u"x");
    root.GetChildren().PushBack(CXmlEntity(nullptr))->SetName(u"amp");

    EXPECT_EQ(Utf8(root.GetText()), "abcd&amp;");
    EXPECT_EQ(root.GetFirstChildElement(), first);
    EXPECT_EQ(root.GetFirstChildElement(u"y")->GetNextElement(u"x"), third);
    EXPECT_EQ(root.GetFirstChildElement(u"z"), nullptr);
    EXPECT_EQ(root.GetElementCount(u"x"), 2);
    EXPECT_EQ(third->GetNextElement(), nullptr);
    EXPECT_EQ(third->GetParentElement(), &root);
    EXPECT_EQ(root.GetParentElement(), nullptr);
    EXPECT_EQ(root.GetNextElement(), nullptr);
    EXPECT_EQ(first->GetDocument(), &document);

    root.SetText(u"");
    ASSERT_EQ(root.GetChildren().GetSize(), 1);
    EXPECT_EQ(root.GetChildren().GetAt(0)->GetClassType(), eXmlCDataType);
    EXPECT_EQ(Source(root), "<></>");  // unnamed, with one empty text child
}

TEST(Element, AssignmentIsDeepEvenFromItsOwnDescendant) {
    CXmlElement root(nullptr);
    root.SetName(u"r");
    CXmlElement* child = AddChild(root, u"c");
    child->SetAtt(u"k", Attribute(u"k", u"v"));
    AddText(*AddChild(*child, u"g"), u"t");

    CXmlElement copy(root);
    EXPECT_EQ(copy.GetParent(), nullptr);
    EXPECT_EQ(copy.GetFirstChildElement()->GetParentElement(), &copy);
    EXPECT_NE(copy.GetFirstChildElement(), child);

    root = *child;  // child dies while root takes its content
    EXPECT_EQ(Source(root), "<c k=\"v\"><g>t</g></c>");
    EXPECT_EQ(root.GetFirstChildElement()->GetParentElement(), &root);
    EXPECT_EQ(Source(copy), "<r><c k=\"v\"><g>t</g></c></r>");
}

// Elements share their names through the process-wide cache, which Finalize releases.
TEST(NameCache, ElementNamesAreSharedUntilFinalize) {
    CXmlElement e1(nullptr), e2(nullptr);
    e1.SetName(CVelStrW(u"shared-name"));
    e2.SetName(CVelStrW(u"shared-name"));
    EXPECT_EQ(e1.GetName().c_str(), e2.GetName().c_str());
    EXPECT_GT(ElementNameCache().GetSize(), 0);
    Finalize();  // the next use starts an empty cache
    EXPECT_EQ(ElementNameCache().GetSize(), 0);
}

// A long pseudo-random run over a few more names than fit, checked against a plain list: the
// cache hands out the same buffer exactly as long as the list still holds the name. Names come
// as units, as fresh strings, and as strings the cache handed out before (maybe since dropped),
// interned or interned in place; a new string is kept itself, new units are copied.
TEST(NameCache, AgreesWithARecencyListOverManyInterns) {
    constexpr int kCapacity = 7;
    CNameCache cache(kCapacity);
    std::list<std::pair<std::u16string, CVelStrW>> recent;  // most recent first
    std::map<std::u16string, CVelStrW> handedOut;
    unsigned state = 1;
    for (int i = 0; i < 30000; ++i) {
        state = state * 1103515245u + 12345u;
        const std::u16string text(1 + (state >> 16) % 3,
                                  static_cast<char16_t>(u'a' + (state >> 20) % 13));
        const int length = static_cast<int>(text.size());
        const auto earlier = handedOut.find(text);
        CVelStrW given, got;
        if (i % 4 == 0) {
            got = cache.Intern(text.c_str(), length);
        } else {
            const bool fresh = i % 4 == 1 || i % 8 == 3 || earlier == handedOut.end();
            given = fresh ? CVelStrW(text.c_str()) : earlier->second;
            if (i % 4 == 3) {
                got = given;
                cache.InternInPlace(got);
            } else {
                got = cache.Intern(given);
            }
        }
        handedOut[text] = got;
        ASSERT_EQ(std::u16string(got.c_str(), length), text);
        const auto found = std::find_if(recent.begin(), recent.end(),
                                        [&](const auto& entry) { return entry.first == text; });
        if (found != recent.end()) {
            ASSERT_EQ(got.c_str(), found->second.c_str()) << "intern " << i;
            recent.splice(recent.begin(), recent, found);
        } else {
            if (i % 4 == 0) {
                ASSERT_NE(got.c_str(), text.c_str());
            } else {
                ASSERT_EQ(got.c_str(), given.c_str()) << "intern " << i;
            }
            recent.emplace_front(text, got);
            if (recent.size() > kCapacity) recent.pop_back();
        }
        ASSERT_EQ(cache.GetSize(), static_cast<int>(recent.size()));
    }
}

// The table keeps 32 bits of each hash and compares texts only where they agree: two names
// whose bits agree are still told apart, also once one of them is dropped and the other moved.
TEST(NameCache, TellsApartNamesWhoseHashesAgree) {
    const std::u16string a = u"n317115", b = u"n480072", c = u"other";
    ASSERT_EQ(static_cast<std::uint32_t>(velstr::HashUnits(a.data(), 7)),
              static_cast<std::uint32_t>(velstr::HashUnits(b.data(), 7)));
    CNameCache cache(2);
    const CVelStrW first = cache.Intern(a.data(), 7);
    const CVelStrW second = cache.Intern(b.data(), 7);
    EXPECT_EQ(std::u16string(second.c_str(), 7), b);
    EXPECT_EQ(cache.Intern(a.data(), 7).c_str(), first.c_str());
    EXPECT_EQ(cache.Intern(b.data(), 7).c_str(), second.c_str());
    cache.Intern(c.data(), 5);  // drops a, the least recently used
    EXPECT_EQ(cache.Intern(b.data(), 7).c_str(), second.c_str());
    EXPECT_NE(cache.Intern(a.data(), 7).c_str(), first.c_str());
}

namespace {

// Makes root a chain of depth elements named e, the last holding a text.
void Chain(CXmlElement& root, int depth) {
    root.SetName(u"e");
    CXmlElement* leaf = &root;
    for (int i = 1; i < depth; ++i)
        leaf = AddChild(*leaf, u"e");
    AddText(*leaf, u"t");
}

// Trees a host builds are not bounded by parsing: walks that recurse throw the designed
// exception past the nesting limit, and destroying one never recurses, at any depth.
TEST(ElementTest, HostBuiltTreesOfAnyDepth) {
    auto document = std::make_unique<CXmlDocument>(nullptr);
    CXmlElement& root = document->GetRootElement();
    Chain(root, 1'000'000);
    CXmlElement copy(nullptr);
    EXPECT_EQ(vxtest::ThrownText<std::runtime_error>([&] { CXmlElement(root).GetName(); }),
              "dummy");
    EXPECT_EQ(vxtest::ThrownText<std::runtime_error>([&] { copy = root; }), "dummy");
    EXPECT_EQ(copy.GetChildren().GetSize(), 0);
    EXPECT_EQ(vxtest::ThrownText<std::runtime_error>([&] { Source(*document); }), "dummy");
    EXPECT_EQ(vxtest::ThrownText<std::runtime_error>([&] { root.GetText(); }), "dummy");
    EXPECT_EQ(vxtest::ThrownText<std::runtime_error>([&] { document->ConvertReturnCode(u"\n"); }),
              "dummy");
    document.reset();
    CXmlElement erased(nullptr);
    Chain(erased, 200'000);
    erased.SetText(u"flat");  // erases the chain
    EXPECT_EQ(Source(erased), "<e>flat</e>");

    // At the limit everything works.
    CXmlElement limit(nullptr);
    Chain(limit, GetNestingLimit());
    const CXmlElement copied(limit);
    EXPECT_EQ(Utf8(copied.GetText()), "t");
    EXPECT_EQ(Source(copied).size(), 7 * static_cast<std::size_t>(GetNestingLimit()) + 1);
}

}  // namespace
