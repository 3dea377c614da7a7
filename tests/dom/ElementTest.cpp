#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <map>
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

TEST(Element, DeepChainCopiesWritesAndDies) {
    const int depth = GetNestingLimit();
    CXmlElement root(nullptr);
    root.SetName(u"d");
    CXmlElement* leaf = &root;
    for (int i = 1; i < depth; ++i)
        leaf = AddChild(*leaf, u"d");
    AddText(*leaf, u"x");

    const CXmlElement copy(root);
    const std::string source = Source(copy);
    EXPECT_EQ(source.size(), static_cast<size_t>(depth) * 7 + 1);
    EXPECT_EQ(source.substr(depth * 3 - 3, 8), "<d>x</d>");
    EXPECT_EQ(Utf8(copy.GetText()), "x");
}

TEST(NameCache, SharesEqualStringsAndEvictsTheLeastRecentlyUsed) {
    CNameCache cache(3);
    const CVelStrW a(u"a"), b(u"b"), c(u"c"), d(u"d");
    for (const CVelStrW* s : {&a, &b, &c})
        EXPECT_EQ(cache.Intern(*s).c_str(), s->c_str());
    EXPECT_EQ(cache.Intern(CVelStrW(u"a")).c_str(), a.c_str());  // a moves to the front
    cache.Intern(d);                                             // b is dropped
    EXPECT_EQ(cache.GetSize(), 3);
    const CVelStrW b2(u"b");
    EXPECT_EQ(cache.Intern(b2).c_str(), b2.c_str());  // a new entry; c is dropped
    EXPECT_EQ(cache.Intern(CVelStrW(u"a")).c_str(), a.c_str());
    const CVelStrW c2(u"c");
    EXPECT_EQ(cache.Intern(c2).c_str(), c2.c_str());

    CXmlElement e1(nullptr), e2(nullptr);
    e1.SetName(CVelStrW(u"shared-name"));
    e2.SetName(CVelStrW(u"shared-name"));
    EXPECT_EQ(e1.GetName().c_str(), e2.GetName().c_str());
    EXPECT_EQ(ElementNameCache().GetCapacity(), 200);
    EXPECT_EQ(AttributeNameCache().GetCapacity(), 250);
    EXPECT_EQ(NameCache().GetCapacity(), 200);
    EXPECT_EQ(AttributeValueCache().GetCapacity(), 350);

    Finalize();  // releases the caches; the next use starts an empty one
    EXPECT_EQ(ElementNameCache().GetSize(), 0);
}

TEST(NameCache, InternsUnitsInPlaceAndCopiesThemOnlyWhenNew) {
    CNameCache cache(2);
    const CVelStrW alpha(u"alpha");
    cache.Intern(alpha);
    const char16_t units[] = u"<alpha>";
    EXPECT_EQ(cache.Intern(units + 1, 5).c_str(), alpha.c_str());
    const CVelStrW open = cache.Intern(units, 1);  // new: a copy of the unit
    EXPECT_NE(open.c_str(), units);
    EXPECT_EQ(open, CVelStrW(u"<"));
    // Both forms share one order: alpha is now the least recently used and a third name drops it.
    cache.Intern(CVelStrW(u"gamma"));
    EXPECT_EQ(cache.Intern(units, 1).c_str(), open.c_str());
    const CVelStrW alpha2(u"alpha");
    EXPECT_EQ(cache.Intern(alpha2).c_str(), alpha2.c_str());
}

// A long pseudo-random run over a few more names than fit, checked against a plain list: the
// cache hands out the same buffer exactly as long as the list still holds the name. Names come
// as units, as fresh strings, and as strings the cache handed out before (maybe since dropped).
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
        CVelStrW got;
        if (i % 3 == 0) {
            got = cache.Intern(text.c_str(), length);
        } else if (i % 3 == 1 || earlier == handedOut.end()) {
            got = cache.Intern(CVelStrW(text.c_str()));
        } else {
            got = cache.Intern(earlier->second);
        }
        handedOut[text] = got;
        ASSERT_EQ(std::u16string(got.c_str(), length), text);
        const auto found = std::find_if(recent.begin(), recent.end(),
                                        [&](const auto& entry) { return entry.first == text; });
        if (found != recent.end()) {
            ASSERT_EQ(got.c_str(), found->second.c_str()) << "intern " << i;
            recent.splice(recent.begin(), recent, found);
        } else {
            recent.emplace_front(text, got);
            if (recent.size() > kCapacity) recent.pop_back();
        }
        ASSERT_EQ(cache.GetSize(), static_cast<int>(recent.size()));
    }
}
