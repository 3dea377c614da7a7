// The DOCTYPE and the markup declarations of its subsets.
#include <memory>

#include "ParseTestUtil.h"
#include "vx/dom/XmlDtd.h"

namespace {

using namespace parsetest;

D DiagsOfDecl(const std::u16string& text) {
    return RunOn<vx::CParseMarkupDecl>(text).diags;
}

TEST(ElementDecl, ContentModelsAndTheirErrors) {
    for (const std::u16string text :
         {u"<!ELEMENT e EMPTY>", u"<!ELEMENT e ANY >", u"<!ELEMENT e (#PCDATA)>",
          u"<!ELEMENT e ( #PCDATA | a | b )*>", u"<!ELEMENT e (#PCDATA)*>",
          u"<!ELEMENT e (a, (b|c)*, d?)+>", u"<!ELEMENT e ( a | b )>"}) {
        EXPECT_EQ(RunOn<vx::CParseMarkupDecl>(text), (Result{true, Size(text), {}}))
            << Narrow(text);
    }
    vx::CParseMixed mixed;
    RunOn(mixed, u"(#PCDATA|a|b)*");
    EXPECT_EQ(mixed.GetNames().GetSize(), 2);

    // An error of the model also gets the code of the declaration; an absent model raises
    // nothing of its own.
    EXPECT_EQ(DiagsOfDecl(u"<!ELEMENT e (#PCDATA|a)>"),
              (D{{eErrMixedEnd, 1, 23}, {eErrNoElementName, 1, 23}}));
    EXPECT_EQ(DiagsOfDecl(u"<!ELEMENT e (#PCDATA|)*>"),
              (D{{eErrUnexpectedChar, 1, 22}, {eErrNoElementName, 1, 22}}));
    EXPECT_EQ(DiagsOfDecl(u"<!ELEMENT e (a,b>"),
              (D{{eErrNoCloseParen, 1, 17}, {eErrNoElementName, 1, 17}}));
    EXPECT_EQ(DiagsOfDecl(u"<!ELEMENT e (a|b,c)>"),
              (D{{eErrNoCloseParen, 1, 17}, {eErrNoElementName, 1, 17}}));
    EXPECT_EQ(DiagsOfDecl(u"<!ELEMENT e foo>"), (D{{eErrElementDeclEnd, 1, 13}}));
}

// Each group is read once however deep the choices nest in first place, and each level counts
// against the nesting limit.
TEST(ElementDecl, NestedGroups) {
    std::u16string model = u"a";
    for (int i = 0; i < 40; ++i)
        model = u"(" + model + u"|b)";
    EXPECT_EQ(DiagsOfDecl(u"<!ELEMENT e " + model + u">"), D{});
    const NestingLimit limit(39);
    EXPECT_EQ(Thrown([&] { DiagsOfDecl(u"<!ELEMENT e " + model + u">"); }), "dummy");
}

TEST(AttlistDecl, TypesAndDefaults) {
    vx::CParseAttlistDecl attlist;
    const std::u16string text =
        u"<!ATTLIST e a CDATA #REQUIRED b (x|y) 'x' c NOTATION (n|m) #FIXED \"v\"\n"
        u" d MNTOKEN #IMPLIED e ENTITIES #IMPLIED >";
    EXPECT_EQ(RunOn(attlist, text), (Result{true, Size(text), {}}));
    ASSERT_EQ(attlist.GetAttDefs().GetSize(), 5);
    const vx::CParseAttDef& d = attlist.GetAttDefs()[3];
    EXPECT_EQ(Text(d.GetType().GetType().Get<vx::CParseTokenizedType>()->GetKeyword()), u"MNTOKEN");
    EXPECT_EQ(Text(attlist.GetAttDefs()[2].GetDefault().GetValue().GetValue()), u"v");

    // "IDREF" reads as "ID" and "MNTOKENS" as "MNTOKEN"; the name-token keywords of XML 1.0
    // match no type.
    EXPECT_EQ(DiagsOfDecl(u"<!ATTLIST e a IDREF #IMPLIED>"), (D{{eErrAttlistDeclEnd, 1, 17}}));
    EXPECT_EQ(DiagsOfDecl(u"<!ATTLIST e a MNTOKENS #IMPLIED>"), (D{{eErrAttlistDeclEnd, 1, 22}}));
    EXPECT_EQ(DiagsOfDecl(u"<!ATTLIST e a NMTOKEN #IMPLIED>"), (D{{eErrAttlistDeclEnd, 1, 15}}));
    EXPECT_EQ(DiagsOfDecl(u"<!ATTLIST e a CDATA #FIXED>"),
              (D{{eErrFixedNeedsDefault, 1, 27}, {eErrNoDefaultDecl, 1, 27}}));
    EXPECT_EQ(DiagsOfDecl(u"<!ATTLIST e a NOTATION x>"),
              (D{{eErrNoOpenParen, 1, 24}, {eErrNoAttType, 1, 24}}));
    EXPECT_EQ(DiagsOfDecl(u"<!ATTLIST e a (x|) #IMPLIED>"), D{});
    EXPECT_EQ(DiagsOfDecl(u"<!ATTLIST e a (x y) #IMPLIED>"),
              (D{{eErrNoCloseParen, 1, 18}, {eErrNoAttType, 1, 18}}));

    // Defaults are never added to elements.
    const Document doc =
        ParseBuf(u"<?xml version='1.0'?><!DOCTYPE r [<!ATTLIST r a CDATA 'd'>]><r/>");
    EXPECT_EQ(Diags(doc->GetErrList()), D{});
    vx::CSmallVector<vx::CVelStrW> names;
    doc->GetRootElement().GetAttNameList(names);
    EXPECT_EQ(names.GetSize(), 0);
}

TEST(EntityDecl, GeneralEntitiesAreStoredAndTheLastOneWins) {
    vx::CParse parser;
    parser.SetSource(
        Wide(u"<!DOCTYPE r [<!ENTITY e 'one'><!ENTITY e \"two\"><!ENTITY c 'a&#66;&lt;%pe;&x;'>"
             u"<!ENTITY %p 'pv'><!ENTITY n SYSTEM 'http://x' NDATA gif>]>"));
    vx::CParseDoctypedecl doctype;
    int end = 0;
    doctype.Interpreter(parser, 0, end);
    const vx::CXmlDtd& dtd = *parser.GetDtd();
    EXPECT_EQ(Text(dtd.getInternalGE(Wide(u"e"))), u"two");
    EXPECT_EQ(Text(dtd.getInternalGE(Wide(u"c"))), u"aB<%pe;&x;");
    EXPECT_FALSE(dtd.hasInternalGE(Wide(u"p")));
    // The NDATA entity is loaded like a parsed one, and the http:// literal fails it.
    EXPECT_FALSE(dtd.hasExternalGE(Wide(u"n")));
    EXPECT_EQ(Diags(parser.GetErrList()), (D{{eErrHttpNotImplemented, 0, 0}}));
}

TEST(EntityDecl, Errors) {
    EXPECT_EQ(DiagsOfDecl(u"<!ENTITY e 'abc>"),
              (D{{eErrAttValueEnd, 1, 13}, {eErrNoEntityDecl, 1, 13}}));
    EXPECT_EQ(DiagsOfDecl(u"<!ENTITY e '%x'>"),
              (D{{eErrEntityRefEnd, 1, 15}, {eErrPEReference, 1, 15}, {eErrNoEntityDecl, 1, 15}}));
    EXPECT_EQ(DiagsOfDecl(u"<!ENTITY e 'a&;'>"), (D{{eErrNoEntityName, 1, 15},
                                                    {eErrReference, 1, 15},
                                                    {eErrReference, 1, 15},
                                                    {eErrNoEntityDecl, 1, 15}}));
    // A blank after "%" leaves the name empty: the definition is then missing at ">".
    EXPECT_EQ(DiagsOfDecl(u"<!ENTITY % pe 'v'>"), (D{{eErrEntityDeclEnd, 1, 12}}));
    EXPECT_EQ(DiagsOfDecl(u"<!ENTITY e>"), D{});
    EXPECT_EQ(DiagsOfDecl(u"<!ENTITY e SYSTEM 'x' NDATA>"),
              (D{{eErrNoNotationName, 1, 28}, {eErrNoEntityDecl, 1, 28}}));
}

TEST(NotationDecl, Identifiers) {
    vx::CParseNotationDecl notation;
    EXPECT_EQ(RunOn(notation, u"<!NOTATION n SYSTEM 'x'>").diags, D{});
    EXPECT_NE(notation.GetIdentifier().Get<vx::CParseExternalID>(), nullptr);
    // One literal after PUBLIC fails as an external identifier first; that error stays.
    EXPECT_EQ(RunOn(notation, u"<!NOTATION n PUBLIC 'p'>"),
              (Result{true, 24, {{eErrSpaceRequired, 1, 24}}}));
    EXPECT_EQ(Text(notation.GetIdentifier().Get<vx::CParsePublicID>()->GetPublicLiteral()), u"p");
    EXPECT_EQ(DiagsOfDecl(u"<!NOTATION n>"), (D{{eErrNoExternalOrNotationID, 1, 13}}));
    EXPECT_EQ(DiagsOfDecl(u"<!NOTATION n SYSTEM 'x'"), (D{{eErrEntityDeclEnd, 1, 24}}));
}

TEST(TextDecl, VersionIsRequired) {
    EXPECT_EQ(RunOn<vx::CParseTextDecl>(u"<?xml version='1.0' encoding='UTF-8'?>").diags, D{});
    EXPECT_EQ(RunOn<vx::CParseTextDecl>(u"<?xml encoding='UTF-8'?>").diags,
              (D{{eErrNoVersionInfo, 1, 23}}));
    EXPECT_EQ(RunOn<vx::CParseTextDecl>(u"<?xml version='1.1'?>").diags,
              (D{{eErrVersionNum, 1, 20}}));
    EXPECT_EQ(RunOn<vx::CParseTextDecl>(u"<?xml version='1.0' standalone='no'?>").diags,
              (D{{eErrUnexpectedAttValue, 1, 36}}));
    EXPECT_EQ(RunOn<vx::CParseTextDecl>(u"<?xml version='1.0'>").diags,
              (D{{eErrXmlDeclEnd, 1, 20}}));
}

TEST(ExtSubset, DeclarationsUpToAConditionalSection) {
    vx::CParseExtSubset subset;
    const std::u16string head = u"<?xml version='1.0'?>\n<!ENTITY a 'x'> %pe;\n";
    EXPECT_EQ(RunOn(subset, head + u"<![INCLUDE[<!ENTITY b 'y'>]]>"),
              (Result{true, Size(head), {}}));
    EXPECT_EQ(subset.GetDecls().GetDecls().GetSize(), 1);

    // A failed text declaration is read again from the start, as a processing instruction.
    vx::CParseExtSubset retried;
    const std::u16string text = u"<?xml encoding='UTF-8'?><!ENTITY a 'x'>";
    EXPECT_EQ(RunOn(retried, text), (Result{true, Size(text), {{eErrNoVersionInfo, 1, 23}}}));
    EXPECT_EQ(retried.GetDecls().GetDecls().GetSize(), 2);
}

TEST(ExternalID, BothFormsGiveASystemIdentifierAndNeedTheirParts) {
    vx::CParseExternalID id;
    EXPECT_EQ(RunOn(id, u"SYSTEM 'a.dtd'>"), (Result{true, 14, {}}));
    EXPECT_EQ(Text(id.getSystemLiteral()), u"a.dtd");

    // The public literal's characters are not checked; the temporary identifier is SYSTEM.
    EXPECT_EQ(RunOn(id, u"PUBLIC \"{p}\"\n'b.dtd'"), (Result{true, 20, {}}));
    EXPECT_EQ(Text(id.getPublicLiteral()), u"{p}");
    EXPECT_EQ(Text(id.getSystemLiteral()), u"b.dtd");
    EXPECT_EQ(id.ToDtdExternalID().getKind(), vx::CXmlDtdExternalID::eSystem);
    EXPECT_EQ(Text(id.ToDtdExternalID().getSystemLiteral()), u"b.dtd");

    EXPECT_EQ(RunOn<vx::CParseExternalID>(u"system 'a'").end, 0);

    // Once the keyword is read the required parts are presence tests.
    EXPECT_EQ(RunOn<vx::CParseExternalID>(u"SYSTEM>").diags, (D{{eErrSpaceRequired, 1, 7}}));
    EXPECT_EQ(RunOn<vx::CParseExternalID>(u"SYSTEM >").diags, (D{{eErrNoSystemLiteral, 1, 8}}));
    EXPECT_EQ(RunOn<vx::CParseExternalID>(u"SYSTEM 'abc").diags,
              (D{{eErrSystemLiteralEnd, 1, 9}, {eErrNoSystemLiteral, 1, 9}}));
    EXPECT_EQ(RunOn<vx::CParseExternalID>(u"PUBLIC >").diags, (D{{eErrNoPubidLiteral, 1, 8}}));
    EXPECT_EQ(RunOn<vx::CParseExternalID>(u"PUBLIC 'p'>"),
              (Result{false, 10, {{eErrSpaceRequired, 1, 11}}}));
}

TEST(Doctype, InternalSubset) {
    vx::CParseDoctypedecl doctype;
    EXPECT_EQ(RunOn(doctype, u"<!DOCTYPE>"), (Result{true, 10, {}}));
    EXPECT_EQ(Text(doctype.GetRootName()), u"");

    const std::u16string full =
        u"<!DOCTYPE r [ <!ENTITY e 'v'>%pe;<!--c--><?p?>\n<!NOTATION n SYSTEM 'x'> ]\n>";
    EXPECT_EQ(RunOn(doctype, full + u"<r/>"), (Result{true, Size(full), {}}));
    EXPECT_EQ(Text(doctype.GetRootName()), u"r");
    EXPECT_FALSE(doctype.GetExternalID());

    EXPECT_EQ(RunOn<vx::CParseDoctypedecl>(u"<!DOCTYPE r [<!ENTITY e 'v'>").diags,
              (D{{eErrUnexpectedEnd, 1, 29}}));
    EXPECT_EQ(RunOn<vx::CParseDoctypedecl>(u"<!DOCTYPE r [x]>").diags,
              (D{{eErrUnexpectedChar, 1, 14}}));
    EXPECT_EQ(RunOn<vx::CParseDoctypedecl>(u"<!DOCTYPE r x>").diags,
              (D{{eErrDoctypeDeclEnd, 1, 13}}));
    // A malformed reference is reported and the text then starts nothing.
    EXPECT_EQ(RunOn<vx::CParseDoctypedecl>(u"<!DOCTYPE r [%pe]>").diags,
              (D{{eErrEntityRefEnd, 1, 17}, {eErrUnexpectedChar, 1, 14}}));
    // A declaration that fails ends the DOCTYPE with its own error only.
    EXPECT_EQ(RunOn<vx::CParseDoctypedecl>(u"<!DOCTYPE r [<!ENTITY e 'v' x>]>"),
              (Result{false, 28, {{eErrEntityDeclEnd, 1, 29}}}));
}

// A copy owns its whole model: it outlives the declaration it was made from.
TEST(MarkupDecl, CopiesAreDeep) {
    auto decl = std::make_unique<vx::CParseMarkupDecl>();
    EXPECT_EQ(RunOn(*decl, u"<!ELEMENT e (a,(b|c)*)>").diags, D{});
    const vx::CParseMarkupDecl copy = *decl;
    decl.reset();
    const auto* element = copy.GetDecl().Get<vx::CParseElementDecl>();
    ASSERT_NE(element, nullptr);
    EXPECT_EQ(Text(element->GetName()), u"e");
    const auto* seq = element->GetContentSpec()
                          .GetModel()
                          .Get<vx::CParseChildren>()
                          ->GetParticle()
                          .Get<vx::CParseSeq>();
    ASSERT_NE(seq, nullptr);
    ASSERT_EQ(seq->GetParticles().GetSize(), 2);
    EXPECT_EQ(seq->GetParticles()[1].GetOccurrence(), u'*');
    EXPECT_NE(seq->GetParticles()[1].GetParticle().Get<vx::CParseChoice>(), nullptr);
}

}  // namespace
