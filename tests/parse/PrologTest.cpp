#include "ParseTestUtil.h"

namespace {

using namespace parsetest;
using vx::CVelStrW;

TEST(Prolog, XmlDeclarationAcceptsEitherOrderAndNoBlankAfterXml) {
    for (const std::u16string text :
         {u"<?xml version=\"1.0\" encoding=\"EUC-JP\" standalone='yes' ?>",
          u"<?xml version='1.0' standalone=\"yes\" encoding=\"EUC-JP\"?>"}) {
        vx::CParseXMLDecl decl;
        EXPECT_EQ(RunOn(decl, text).end, Size(text));
        CVelStrW value;
        EXPECT_TRUE(decl.GetEncording(value));
        EXPECT_EQ(Text(value), u"EUC-JP");
        // GetStandard looks for "standard", so it never finds the standalone value.
        EXPECT_FALSE(decl.GetStandard(value));
        EXPECT_TRUE(decl.GetAttValueByName(CVelStrW(u"standalone"), value));
        EXPECT_EQ(Text(value), u"yes");
    }
    EXPECT_EQ(RunOn<vx::CParseXMLDecl>(u"<?xmlversion=\"1.0\"?>").diags, D{});
}

TEST(Prolog, XmlDeclarationErrorsAreAfterTheAttribute) {
    auto diags = [](const std::u16string& text) { return RunOn<vx::CParseXMLDecl>(text).diags; };
    EXPECT_EQ(diags(u"<?xml version=\"1.1\"?>"), (D{{eErrVersionNum, 1, 20}}));
    EXPECT_EQ(diags(u"<?xml encoding=\"x\"?>"), (D{{eErrNoVersionInfo, 1, 19}}));
    EXPECT_EQ(diags(u"<?xml version?>"), (D{{eErrNoEq, 1, 14}, {eErrNoVersionInfo, 1, 7}}));
    EXPECT_EQ(diags(u"<?xml version=\"1.0\" foo=\"1\"?>"), (D{{eErrUnexpectedAttValue, 1, 28}}));
    EXPECT_EQ(diags(u"<?xml version=\"1.0\" >"), (D{{eErrXmlDeclEnd, 1, 21}}));
    EXPECT_EQ(RunOn<vx::CParseXMLDecl>(u"<a/>"), (Result{false, 0, {{eErrNoXmlDecl, 1, 1}}}));
}

TEST(Prolog, CommentsAndProcessingInstructions) {
    vx::CParseComment comment;
    EXPECT_EQ(RunOn(comment, u"<!-- a -- b -->x").end, 15);
    EXPECT_EQ(Text(comment.GetText()), u" a -- b ");
    EXPECT_EQ(RunOn<vx::CParseComment>(u"<!--a\x01-->").diags, (D{{eErrCommentEnd, 1, 6}}));
    EXPECT_EQ(RunOn<vx::CParseComment>(u"<!-- abc"), (Result{false, 4, {{eErrCommentEnd, 1, 5}}}));

    vx::CParsePI pi;
    EXPECT_EQ(RunOn(pi, u"<?target?>").end, 10);
    EXPECT_EQ(Text(pi.GetText()), u"target");
    EXPECT_EQ(RunOn<vx::CParsePI>(u"<?t data").diags, (D{{eErrPIEnd, 1, 3}}));
}

// Where each production ends when run at the end of the source; -1 for a result or diagnostic.
template <class... P>
std::vector<int> EndsAtTheEnd() {
    auto end = [](const Result& r) { return r.result && r.diags.empty() ? r.end : -1; };
    return {end(RunOn<P>(u"abc", 3))...};
}

TEST(Prolog, EveryOptionalProductionIsAbsentAtTheEnd) {
    const std::vector<int> ends =
        EndsAtTheEnd<vx::CParseComment, vx::CParsePI, vx::CParseS, vx::CParseMisc,
                     vx::CParseMiscList, vx::CParseName, vx::CParseChars, vx::CParseAttribute,
                     vx::CParseAttValue, vx::CParseSTag, vx::CParseEmptyElemTag, vx::CParseETag,
                     vx::CParseElement, vx::CParseContent, vx::CParseCharData, vx::CParseCDSect,
                     vx::CParseReference, vx::CParseEntityRef, vx::CParseCharRef>();
    EXPECT_EQ(ends, std::vector<int>(ends.size(), 3));
}

TEST(Prolog, NamesFollowTheCharacterClasses) {
    vx::CParseName name;
    EXPECT_EQ(RunOn(name, u":a.b-c_1\u30FC>").end, 9);
    EXPECT_EQ(RunOn<vx::CParseName>(u"1a").end, 0);
    EXPECT_EQ(RunOn<vx::CParseName>(u".a").end, 0);
    EXPECT_EQ(RunOn<vx::CParseChars>(u"ab\uFFFEc").end, 2);
}

}  // namespace
