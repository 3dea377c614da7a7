#include <stdexcept>

#include "ParseTestUtil.h"
#include "vx/dom/XmlDtd.h"
#include "vx/platform/Package.h"

namespace {

using namespace parsetest;
using D = std::vector<Diag>;

D DiagsOfDecl(const std::u16string& text) {
    return RunOn<vx::CParseMarkupDecl>(text).diags;
}

TEST(ElementDecl, ContentModels) {
    for (const char16_t* text :
         {u"<!ELEMENT e EMPTY>", u"<!ELEMENT e ANY >", u"<!ELEMENT e (#PCDATA)>",
          u"<!ELEMENT e ( #PCDATA | a | b )*>", u"<!ELEMENT e (#PCDATA)*>",
          u"<!ELEMENT e (a, (b|c)*, d?)+>", u"<!ELEMENT e ( a | b )>"}) {
        const Result r = RunOn<vx::CParseMarkupDecl>(text);
        EXPECT_EQ(r.diags, D{}) << vx::CVelStr(Wide(text)).c_str();
        EXPECT_EQ(r.end, static_cast<int>(std::u16string(text).size()));
    }
    vx::CParseMixed mixed;
    RunOn(mixed, u"(#PCDATA|a|b)*");
    EXPECT_EQ(mixed.GetNames().GetSize(), 2);
}

TEST(ElementDecl, ErrorsOfTheModelAlsoGetTheNameCode) {
    EXPECT_EQ(DiagsOfDecl(u"<!ELEMENT e (#PCDATA|a)>"), (D{{36, 1, 23}, {37, 1, 23}}));
    EXPECT_EQ(DiagsOfDecl(u"<!ELEMENT e (#PCDATA|)*>"), (D{{15, 1, 22}, {37, 1, 22}}));
    EXPECT_EQ(DiagsOfDecl(u"<!ELEMENT e (a,b>"), (D{{41, 1, 17}, {37, 1, 17}}));
    EXPECT_EQ(DiagsOfDecl(u"<!ELEMENT e (a|b,c)>"), (D{{41, 1, 17}, {37, 1, 17}}));
    // An absent content model raises nothing of its own.
    EXPECT_EQ(DiagsOfDecl(u"<!ELEMENT e foo>"), (D{{39, 1, 13}}));
}

// Each group is read once however deep the choices nest in first place, and each level counts
// against the nesting limit.
TEST(ElementDecl, NestedGroups) {
    std::u16string model = u"a";
    for (int i = 0; i < 40; ++i)
        model = u"(" + model + u"|b)";
    EXPECT_EQ(DiagsOfDecl(u"<!ELEMENT e " + model + u">"), D{});
    vx::SetNestingLimit(39);
    EXPECT_THROW(DiagsOfDecl(u"<!ELEMENT e " + model + u">"), std::runtime_error);
    vx::SetNestingLimit(vx::kDefaultNestingLimit);
}

TEST(AttlistDecl, TypesAndDefaults) {
    vx::CParseAttlistDecl attlist;
    const std::u16string text =
        u"<!ATTLIST e a CDATA #REQUIRED b (x|y) 'x' c NOTATION (n|m) #FIXED \"v\"\n"
        u" d MNTOKEN #IMPLIED e ENTITIES #IMPLIED >";
    const Result r = RunOn(attlist, text);
    EXPECT_EQ(r.diags, D{});
    EXPECT_EQ(r.end, static_cast<int>(text.size()));
    ASSERT_EQ(attlist.GetAttDefs().GetSize(), 5);
    const vx::CParseAttDef& d = attlist.GetAttDefs()[3];
    EXPECT_EQ(Text(d.GetType().GetType().Get<vx::CParseTokenizedType>()->GetKeyword()), u"MNTOKEN");
    EXPECT_EQ(Text(attlist.GetAttDefs()[2].GetDefault().GetValue().GetValue()), u"v");

    // "IDREF" reads as "ID" and "MNTOKENS" as "MNTOKEN"; the name-token keywords of XML 1.0
    // match no type.
    EXPECT_EQ(DiagsOfDecl(u"<!ATTLIST e a IDREF #IMPLIED>"), (D{{47, 1, 17}}));
    EXPECT_EQ(DiagsOfDecl(u"<!ATTLIST e a MNTOKENS #IMPLIED>"), (D{{47, 1, 22}}));
    EXPECT_EQ(DiagsOfDecl(u"<!ATTLIST e a NMTOKEN #IMPLIED>"), (D{{47, 1, 15}}));
    EXPECT_EQ(DiagsOfDecl(u"<!ATTLIST e a CDATA #FIXED>"), (D{{45, 1, 27}, {49, 1, 27}}));
    EXPECT_EQ(DiagsOfDecl(u"<!ATTLIST e a NOTATION x>"), (D{{40, 1, 24}, {48, 1, 24}}));
    EXPECT_EQ(DiagsOfDecl(u"<!ATTLIST e a (x|) #IMPLIED>"), D{});
    EXPECT_EQ(DiagsOfDecl(u"<!ATTLIST e a (x y) #IMPLIED>"), (D{{41, 1, 18}, {48, 1, 18}}));

    // Defaults are never added to elements.
    const Document doc =
        ParseBuf(u"<?xml version='1.0'?><!DOCTYPE r [<!ATTLIST r a CDATA 'd'>]><r/>");
    EXPECT_EQ(Diags(doc->GetErrList()), D{});
    vx::CSmallVector<vx::CVelStrW> names;
    doc->GetRootElement().GetAttNameList(names);
    EXPECT_EQ(names.GetSize(), 0);
}

// A DOCTYPE over text; the parser keeps its DTD for inspection.
std::unique_ptr<vx::CParse> Declare(const std::u16string& text, D& diags) {
    auto parser = std::make_unique<vx::CParse>();
    parser->SetSource(Wide(text));
    vx::CParseDoctypedecl doctype;
    int end = 0;
    doctype.Interpreter(*parser, 0, end);
    diags = Diags(parser->GetErrList());
    return parser;
}

TEST(EntityDecl, GeneralEntitiesAreStoredAndTheLastOneWins) {
    D diags;
    const auto parser = Declare(
        u"<!DOCTYPE r [<!ENTITY e 'one'><!ENTITY e \"two\"><!ENTITY c 'a&#66;&lt;%pe;&x;'>"
        u"<!ENTITY %p 'pv'><!ENTITY n SYSTEM 'http://x' NDATA gif>]>",
        diags);
    const vx::CXmlDtd& dtd = *parser->GetDtd();
    EXPECT_EQ(Text(dtd.getInternalGE(Wide(u"e"))), u"two");
    EXPECT_EQ(Text(dtd.getInternalGE(Wide(u"c"))), u"aB<%pe;&x;");
    EXPECT_FALSE(dtd.hasInternalGE(Wide(u"p")));
    // The NDATA entity is loaded like a parsed one, and the http:// literal fails it.
    EXPECT_FALSE(dtd.hasExternalGE(Wide(u"n")));
    EXPECT_EQ(diags, (D{{61, 0, 0}}));
}

TEST(EntityDecl, Errors) {
    EXPECT_EQ(DiagsOfDecl(u"<!ENTITY e 'abc>"), (D{{25, 1, 13}, {53, 1, 13}}));
    EXPECT_EQ(DiagsOfDecl(u"<!ENTITY e '%x'>"), (D{{22, 1, 15}, {50, 1, 15}, {53, 1, 15}}));
    EXPECT_EQ(DiagsOfDecl(u"<!ENTITY e 'a&;'>"),
              (D{{23, 1, 15}, {30, 1, 15}, {30, 1, 15}, {53, 1, 15}}));
    // A blank after "%" leaves the name empty: the definition is then missing at ">".
    EXPECT_EQ(DiagsOfDecl(u"<!ENTITY % pe 'v'>"), (D{{54, 1, 12}}));
    EXPECT_EQ(DiagsOfDecl(u"<!ENTITY e>"), D{});
    EXPECT_EQ(DiagsOfDecl(u"<!ENTITY e SYSTEM 'x' NDATA>"), (D{{52, 1, 28}, {53, 1, 28}}));
}

TEST(NotationDecl, Identifiers) {
    vx::CParseNotationDecl notation;
    EXPECT_EQ(RunOn(notation, u"<!NOTATION n SYSTEM 'x'>").diags, D{});
    EXPECT_NE(notation.GetIdentifier().Get<vx::CParseExternalID>(), nullptr);
    // One literal after PUBLIC fails as an external identifier first; that error stays.
    const Result r = RunOn(notation, u"<!NOTATION n PUBLIC 'p'>");
    EXPECT_TRUE(r.result);
    EXPECT_EQ(r.diags, (D{{10, 1, 24}}));
    EXPECT_EQ(Text(notation.GetIdentifier().Get<vx::CParsePublicID>()->GetPublicLiteral()), u"p");
    EXPECT_EQ(DiagsOfDecl(u"<!NOTATION n>"), (D{{57, 1, 13}}));
    EXPECT_EQ(DiagsOfDecl(u"<!NOTATION n SYSTEM 'x'"), (D{{54, 1, 24}}));
}

TEST(TextDecl, VersionIsRequired) {
    EXPECT_EQ(RunOn<vx::CParseTextDecl>(u"<?xml version='1.0' encoding='UTF-8'?>").diags, D{});
    EXPECT_EQ(RunOn<vx::CParseTextDecl>(u"<?xml encoding='UTF-8'?>").diags, (D{{9, 1, 23}}));
    EXPECT_EQ(RunOn<vx::CParseTextDecl>(u"<?xml version='1.1'?>").diags, (D{{11, 1, 20}}));
    EXPECT_EQ(RunOn<vx::CParseTextDecl>(u"<?xml version='1.0' standalone='no'?>").diags,
              (D{{12, 1, 36}}));
    EXPECT_EQ(RunOn<vx::CParseTextDecl>(u"<?xml version='1.0'>").diags, (D{{13, 1, 20}}));
}

TEST(ExtSubset, DeclarationsUpToAConditionalSection) {
    vx::CParseExtSubset subset;
    const std::u16string head = u"<?xml version='1.0'?>\n<!ENTITY a 'x'> %pe;\n";
    const Result r = RunOn(subset, head + u"<![INCLUDE[<!ENTITY b 'y'>]]>");
    EXPECT_EQ(r.diags, D{});
    EXPECT_EQ(r.end, static_cast<int>(head.size()));
    EXPECT_EQ(subset.GetDecls().GetDecls().GetSize(), 1);

    // A failed text declaration is read again from the start, as a processing instruction.
    vx::CParseExtSubset retried;
    const std::u16string text = u"<?xml encoding='UTF-8'?><!ENTITY a 'x'>";
    const Result again = RunOn(retried, text);
    EXPECT_EQ(again.diags, (D{{9, 1, 23}}));
    EXPECT_EQ(again.end, static_cast<int>(text.size()));
    EXPECT_EQ(retried.GetDecls().GetDecls().GetSize(), 2);
}

}  // namespace
