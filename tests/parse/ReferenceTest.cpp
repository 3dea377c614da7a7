#include "ParseTestUtil.h"
#include "vx/dom/XmlDtd.h"
#include "vx/parse/ReferenceExpansion.h"

namespace {

using namespace parsetest;
using vx::CVelStrW;

TEST(CharData, StopsAtMarkupAndSectionEnd) {
    vx::CParseCharData text;
    EXPECT_EQ(RunOn(text, u"a]]>b").end, 1);
    EXPECT_EQ(Text(text.GetCharData()), u"a");
    EXPECT_EQ(RunOn<vx::CParseCharData>(u"a]b&c").end, 3);
    EXPECT_EQ(DiagsOf(u"<?xml version=\"1.0\"?><r>a]]>b</r>"),
              (D{{eErrTagMismatch, 1, 26}, {eErrParseStopped, 0, 0}}));

    // A CDATA section's text is verbatim; an open section is reported twice.
    vx::CParseCDSect empty, markup;
    EXPECT_EQ(RunOn(empty, u"<![CDATA[]]>").end, 12);
    EXPECT_EQ(Text(empty.GetCData()), u"");
    RunOn(markup, u"<![CDATA[<&amp;]]>");
    EXPECT_EQ(Text(markup.GetCData()), u"<&amp;");
    EXPECT_EQ(RunOn<vx::CParseCDSect>(u"<![CDATA[abc"),
              (Result{false, 9, {{eErrCDEnd, 1, 10}, {eErrCDEnd, 1, 10}}}));
}

std::u16string CharOf(const std::u16string& reference) {
    vx::CParseCharRef ref;
    EXPECT_EQ(RunOn(ref, reference).end, Size(reference)) << Narrow(reference);
    return Text(ref.ToStr());
}

TEST(CharRef, ToStr) {
    EXPECT_EQ(CharOf(u"&#x41;"), u"A");
    EXPECT_EQ(CharOf(u"&#65;"), u"A");
    EXPECT_EQ(CharOf(u"&#x10041;"), u"A");  // cut to 16 bits
    EXPECT_EQ(CharOf(u"&#0;"), u"");
    EXPECT_EQ(CharOf(u"&#xFFFE;"), u"\uFFFE");        // no Char test
    EXPECT_EQ(CharOf(u"&#99999999999;"), u"\uFFFF");  // a 32-bit long saturates at 0x7FFFFFFF
}

TEST(Reference, MalformedReferencesGetTheirCodeAndThen30) {
    auto diags = [](const std::u16string& text) { return RunOn<vx::CParseReference>(text).diags; };
    EXPECT_EQ(diags(u"&#x;"), (D{{eErrCharRef, 1, 4}, {eErrReference, 1, 4}}));
    EXPECT_EQ(diags(u"&#;"), (D{{eErrCharRef, 1, 3}, {eErrReference, 1, 3}}));
    EXPECT_EQ(diags(u"&#x4G;"), (D{{eErrCharRef, 1, 5}, {eErrReference, 1, 5}}));
    EXPECT_EQ(diags(u"& x"), (D{{eErrNoEntityName, 1, 2}, {eErrReference, 1, 2}}));
    EXPECT_EQ(diags(u"&"), (D{{eErrUnexpectedEnd, 1, 2}, {eErrReference, 1, 2}}));
    EXPECT_EQ(diags(u"&abc"), (D{{eErrUnexpectedEnd, 1, 5}, {eErrReference, 1, 5}}));
    EXPECT_EQ(diags(u"&abc x"), (D{{eErrEntityRefEnd, 1, 5}, {eErrReference, 1, 5}}));
    EXPECT_EQ(RunOn<vx::CParseCharRef>(u"&#x41"), (Result{true, 0, {}}));  // absent, no error

    vx::CParseReference entity;
    EXPECT_EQ(RunOn(entity, u"&ent;").end, 5);
    EXPECT_EQ(entity.GetKind(), vx::CParseReference::eEntityRef);
    EXPECT_EQ(Text(entity.GetEntityRef().GetName()), u"ent");
}

// References are expanded and white space is kept as it is.
TEST(AttValue, ReferencesAreExpandedAndAnOpenValueIsReported) {
    vx::CParseAttValue value;
    EXPECT_EQ(RunOn(value, u"'&lt;&#65;&amp;b\t\"'"), (Result{true, 19, {}}));
    EXPECT_EQ(Text(value.GetValue()), u"<A&b\t\"");
    EXPECT_EQ(RunOn<vx::CParseAttValue>(u"\"abc").diags, (D{{eErrAttValueEnd, 1, 2}}));
}

TEST(AttValue, BadReferencesInATagAreReportedTwicePerScan) {
    EXPECT_EQ(RunOn<vx::CParseElement>(u"<a x=\"&#xG;\"/>").diags,
              Twice({{eErrCharRef, 1, 10},
                     {eErrReference, 1, 10},
                     {eErrReference, 1, 10},
                     {eErrAttValue, 1, 10},
                     {eErrUnexpectedChar, 1, 4}}));
    // An undeclared entity is reported at the opening quote.
    EXPECT_EQ(
        RunOn<vx::CParseElement>(u"<a x=\"&u;\"/>").diags,
        Twice({{eErrUndefinedEntity, 1, 6}, {eErrAttValue, 1, 6}, {eErrUnexpectedChar, 1, 4}}));
}

TEST(ReferenceExpansion, FailsWithoutTouchingTheResult) {
    vx::CXmlDtd dtd(nullptr);
    CVelStrW result(u"unchanged");
    EXPECT_FALSE(vx::ConvertReferenceForString(result, CVelStrW(u"a&e;"), nullptr));
    EXPECT_FALSE(vx::ConvertReferenceForString(result, CVelStrW(u"a&e;"), &dtd));
    EXPECT_FALSE(vx::ConvertReferenceForString(result, CVelStrW(u"a&amp"), &dtd));
    EXPECT_EQ(Text(result), u"unchanged");
    EXPECT_TRUE(vx::ConvertReferenceForString(result, CVelStrW(u""), nullptr));
    EXPECT_EQ(Text(result), u"");
}

}  // namespace
