#include "ParseTestUtil.h"
#include "vx/dom/NameCache.h"
#include "vx/dom/XmlCharData.h"

namespace {

using namespace parsetest;
using vx::CVelStrW;

const std::u16string kDecl = u"<?xml version=\"1.0\"?>";

// The children of an element: E(name), T(text) or S(CDATA text) each; with merge, adjacent
// text nodes count as one.
std::u16string Children(const vx::CXmlElement& element, bool merge = false) {
    std::u16string out;
    bool afterText = false;
    const vx::CXmlListContainer& children = element.GetChildren();
    for (int i = 0; i < children.GetSize(); ++i) {
        const auto* node = children.GetAt(i);
        const auto* child = dynamic_cast<const vx::CXmlElement*>(node);
        const bool text = node->GetClassType() == vx::eXmlCDataType;
        const std::u16string value = Text(
            child ? child->GetName() : dynamic_cast<const vx::CXmlTextObject*>(node)->GetText());
        if (merge && text && afterText) {
            out.insert(out.size() - 1, value);
        } else {
            out += (text ? u"T(" : child ? u"E(" : u"S(") + value + u")";
        }
        afterText = text;
    }
    return out;
}

TEST(Tree, OneNodePerItemWithReferencesExpanded) {
    const Document doc = ParseBuf(
        u"<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>"
        u"<r a='1' b=\"&lt;\">x&#66;y<!--c--><?p?><e/>"
        u"&amp;&lt;&gt;&quot;&apos;<![CDATA[<z>]]></r>");
    EXPECT_EQ(Diags(doc->GetErrList()), D{});
    EXPECT_EQ(Text(doc->GetEncoding()), u"UTF-8");
    EXPECT_EQ(Text(doc->GetStandard()), u"");  // the standalone value never arrives
    const vx::CXmlElement& root = doc->GetRootElement();
    EXPECT_EQ(Children(root), u"T(x)T(B)T(y)E(e)T(&)T(<)T(>)T(\")T(')S(<z>)");
    EXPECT_EQ(Text(root.GetAtt(CVelStrW(u"b")).GetValue()), u"<");
    EXPECT_EQ(Children(ParseBuf(kDecl + u"<r><!--only--><?p?></r>")->GetRootElement()), u"");
}

TEST(Tree, EntitiesComeFromTheParsersDtd) {
    vx::CParse parser;
    parser.GetDtd()->setInternalGE(CVelStrW(u"e"), CVelStrW(u"<b>&amp;</b>"));
    const Document doc(parser.ParseForBuf(Wide(kDecl + u"<r>&e;</r>"), vx::CVelStr()));
    EXPECT_EQ(Diags(doc->GetErrList()), D{});
    EXPECT_EQ(Text(doc->GetEncoding()), u"");  // no encoding declared
    EXPECT_EQ(Children(doc->GetRootElement()), u"T(<b>&amp;</b>)");

    // An undeclared entity cuts the tree where it stands.
    const Document cut = ParseBuf(kDecl + u"<r>x<s>y</s>&u;<t/></r>");
    EXPECT_EQ(Diags(cut->GetErrList()), (D{{eErrUndefinedEntity, 0, 0}, {eErrMakeTree, 0, 0}}));
    EXPECT_EQ(Children(cut->GetRootElement()), u"T(x)E(s)");
    // An element whose filling failed is not kept, nor are those around it.
    const Document unfinished = ParseBuf(kDecl + u"<a><b>x<c>&u;</c>y</b>z</a>");
    EXPECT_EQ(Diags(unfinished->GetErrList()), (D{{62, 0, 0}, {27, 0, 0}}));
    EXPECT_EQ(Text(unfinished->GetRootElement().GetName()), u"a");
    EXPECT_EQ(Children(unfinished->GetRootElement()), u"");
}

TEST(Tree, EqualNamesShareOneBuffer) {
    const Document doc = ParseBuf(kDecl + u"<a x='v'><a x='v'/></a>");
    const vx::CXmlElement& outer = doc->GetRootElement();
    const vx::CXmlElement& inner = *outer.GetFirstChildElement();
    EXPECT_EQ(outer.GetName().c_str(), inner.GetName().c_str());
    EXPECT_EQ(outer.GetAtt(CVelStrW(u"x")).GetValue().c_str(),
              inner.GetAtt(CVelStrW(u"x")).GetValue().c_str());
}

CVelStrW Source(const vx::CXmlDocument& document) {
    vx::CVelStringBuffer<CVelStrW> out;
    document.GetSource(out);
    return out.ToString();
}

// Adjacent text nodes write as one text, so equal sources mean equal trees once they are merged.
TEST(Tree, RoundTripThroughGetSource) {
    const Document first = ParseBuf(
        u"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!--head-->\n<doc a=\"&lt;&amp;&#34;'\" "
        u"b='x&#9;y'>\n  text &amp; &#x3042; &gt;\n  <item n=\"1\"/><item n=\"2\">two</item>"
        u"<![CDATA[<raw & stuff>]]>\n  <deep><er><est>&apos;&quot;</est></er></deep>\n</doc>\n");
    ASSERT_EQ(Diags(first->GetErrList()), D{});
    first->SetRetCode(CVelStrW(u"\n"));
    const CVelStrW text = Source(*first);
    const Document second(vx::CParse::ParseForBuf(text));
    ASSERT_EQ(Diags(second->GetErrList()), D{}) << vx::CVelStr(text).c_str();
    second->SetRetCode(CVelStrW(u"\n"));
    EXPECT_EQ(Text(Source(*second)), Text(text));
    EXPECT_EQ(Children(second->GetRootElement(), true), Children(first->GetRootElement(), true));
}

TEST(Tree, ParseFromMemory) {
    vx::CXmlElement element(nullptr);
    vx::CParseErrorList errors;
    EXPECT_TRUE(element.ParseFromMemory(CVelStrW(u"<a x=\"1\">t</a>"), &errors));
    EXPECT_EQ(errors.GetSize(), 0);
    EXPECT_EQ(Text(element.GetName()), u"a");
    EXPECT_EQ(Text(element.GetAtt(CVelStrW(u"x")).GetValue()), u"1");
    EXPECT_EQ(Text(element.GetText()), u"t");

    EXPECT_FALSE(element.ParseFromMemory(CVelStrW(u"<b>"), &errors));
    EXPECT_EQ(Diags(errors), (D{{eErrTagMismatch, 1, 53}, {eErrParseStopped, 0, 0}}));
    EXPECT_EQ(Text(element.GetName()), u"a");
    EXPECT_FALSE(element.ParseFromMemory(CVelStrW(u"<b>"), nullptr));
}

// The name and value caches outlive the parse: while it runs they share its strings, but once
// it ends what they keep must not sit on its pages (a kept one would hold a whole page).
TEST(Tree, CachesKeepNoParseStringOnceTheParseEnds) {
    const Document doc =
        ParseBuf(kDecl + u"<root-name attribute='value &amp; more'>text</root-name>");
    const vx::CXmlElement& root = doc->GetRootElement();
    const vx::CXmlAttribute& attribute = root.GetAtt(CVelStrW(u"attribute"));
    // What a cache hands back for a node's string is its own copy: a cache still holding the
    // parse's string would hand that back, and keep its page alive.
    const auto cachedOffPages = [](vx::CNameCache& cache, const CVelStrW& text) {
        const CVelStrW cached = cache.Intern(text);
        return cached == text && cached.OffPages().c_str() == cached.c_str();
    };
    EXPECT_TRUE(cachedOffPages(vx::ElementNameCache(), root.GetName()));
    EXPECT_TRUE(cachedOffPages(vx::AttributeNameCache(), attribute.GetName()));
    EXPECT_TRUE(cachedOffPages(vx::AttributeValueCache(), attribute.GetValue()));
    // The parse did use pages.
    const CVelStrW& text =
        dynamic_cast<const vx::CXmlTextObject*>(root.GetChildren().GetAt(0))->GetText();
    EXPECT_NE(text.OffPages().c_str(), text.c_str());
}

}  // namespace
