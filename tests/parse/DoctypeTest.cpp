#include <memory>

#include "ParseTestUtil.h"
#include "vx/dom/XmlDtd.h"

namespace {

using namespace parsetest;
using D = std::vector<Diag>;

TEST(ExternalID, BothFormsGiveASystemIdentifier) {
    vx::CParseExternalID id;
    Result r = RunOn(id, u"SYSTEM 'a.dtd'>");
    EXPECT_TRUE(r.result);
    EXPECT_EQ(r.end, 14);
    EXPECT_EQ(Text(id.getSystemLiteral()), u"a.dtd");

    // The public literal's characters are not checked; the temporary identifier is SYSTEM.
    r = RunOn(id, u"PUBLIC \"{p}\"\n'b.dtd'");
    EXPECT_EQ(r.diags, D{});
    EXPECT_EQ(r.end, 20);
    EXPECT_EQ(Text(id.getPublicLiteral()), u"{p}");
    EXPECT_EQ(Text(id.getSystemLiteral()), u"b.dtd");
    EXPECT_EQ(id.ToDtdExternalID().getKind(), vx::CXmlDtdExternalID::eSystem);
    EXPECT_EQ(Text(id.ToDtdExternalID().getSystemLiteral()), u"b.dtd");

    EXPECT_EQ(RunOn<vx::CParseExternalID>(u"system 'a'").end, 0);
}

TEST(ExternalID, RequiredPartsArePresenceTests) {
    EXPECT_EQ(RunOn<vx::CParseExternalID>(u"SYSTEM>").diags, (D{{10, 1, 7}}));
    EXPECT_EQ(RunOn<vx::CParseExternalID>(u"SYSTEM >").diags, (D{{34, 1, 8}}));
    EXPECT_EQ(RunOn<vx::CParseExternalID>(u"SYSTEM 'abc").diags, (D{{32, 1, 9}, {34, 1, 9}}));
    EXPECT_EQ(RunOn<vx::CParseExternalID>(u"PUBLIC >").diags, (D{{35, 1, 8}}));
    const Result r = RunOn<vx::CParseExternalID>(u"PUBLIC 'p'>");
    EXPECT_FALSE(r.result);
    EXPECT_EQ(r.end, 10);
    EXPECT_EQ(r.diags, (D{{10, 1, 11}}));
}

TEST(Doctype, InternalSubset) {
    vx::CParseDoctypedecl doctype;
    Result r = RunOn(doctype, u"<!DOCTYPE>");
    EXPECT_TRUE(r.result);
    EXPECT_EQ(r.end, 10);
    EXPECT_EQ(Text(doctype.GetRootName()), u"");

    const std::u16string full =
        u"<!DOCTYPE r [ <!ENTITY e 'v'>%pe;<!--c--><?p?>\n<!NOTATION n SYSTEM 'x'> ]\n>";
    r = RunOn(doctype, full + u"<r/>");
    EXPECT_EQ(r.diags, D{});
    EXPECT_EQ(r.end, static_cast<int>(full.size()));
    EXPECT_EQ(Text(doctype.GetRootName()), u"r");
    EXPECT_FALSE(doctype.GetExternalID());

    EXPECT_EQ(RunOn<vx::CParseDoctypedecl>(u"<!DOCTYPE r [<!ENTITY e 'v'>").diags,
              (D{{19, 1, 29}}));
    EXPECT_EQ(RunOn<vx::CParseDoctypedecl>(u"<!DOCTYPE r [x]>").diags, (D{{15, 1, 14}}));
    EXPECT_EQ(RunOn<vx::CParseDoctypedecl>(u"<!DOCTYPE r x>").diags, (D{{59, 1, 13}}));
    // A malformed reference is reported and the text then starts nothing.
    EXPECT_EQ(RunOn<vx::CParseDoctypedecl>(u"<!DOCTYPE r [%pe]>").diags,
              (D{{22, 1, 17}, {15, 1, 14}}));
    // A declaration that fails ends the DOCTYPE with its own error only.
    r = RunOn<vx::CParseDoctypedecl>(u"<!DOCTYPE r [<!ENTITY e 'v' x>]>");
    EXPECT_FALSE(r.result);
    EXPECT_EQ(r.diags, (D{{54, 1, 29}}));
}

TEST(Doctype, DocumentsWithADoctypeParse) {
    const Document doc = ParseBuf(u"<?xml version='1.0'?><!DOCTYPE r [<!ENTITY e 'v'>] > <r/>");
    EXPECT_EQ(Diags(doc->GetErrList()), D{});
    EXPECT_EQ(Text(doc->GetRootElement().GetName()), u"r");
}

TEST(MarkupDecl, KindsAndDeepCopies) {
    const std::pair<std::u16string, int> kinds[] = {
        {u"<!ELEMENT e ANY>", 1},
        {u"<!ATTLIST e a CDATA #IMPLIED>", 2},
        {u"<!ENTITY e 'v'>", 3},
        {u"<!NOTATION n SYSTEM 'x'>", 4},
        {u"<?p?>", 5},
        {u"<!--c-->", 6},
        {u"x", 0},
    };
    for (const auto& [text, kind] : kinds) {
        vx::CParseMarkupDecl decl;
        RunOn(decl, text);
        EXPECT_EQ(decl.GetDecl().GetIndex(), kind) << vx::CVelStr(Wide(text)).c_str();
    }

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
