#include "ParseTestUtil.h"
#include "vx/platform/Guard.h"

namespace {

using namespace parsetest;

// A start tag with nothing before its end tag has no content; "=" followed by white space and
// ">" is an attribute with an empty value.
TEST(Element, NoContentAndAnEmptyValueBeforeTheTagEnd) {
    vx::CParseElement bare, lenient;
    EXPECT_EQ(RunOn(bare, u"<a ></a >"), (Result{true, 9, {}}));
    EXPECT_EQ(bare.GetContent(), nullptr);
    EXPECT_EQ(RunOn(lenient, u"<a x= ></a>").diags, D{});
    EXPECT_EQ(Text(lenient.GetSTag()->GetAttributes()[0].GetAttValue().GetValue()), u"");
}

TEST(Element, TagErrorsAreReportedByBothScans) {
    // Once by the empty-element scan, which then counts as absent, once by the start tag.
    EXPECT_EQ(RunOn<vx::CParseElement>(u"<a x=\"1\" x=\"2\"></a>"),
              (Result{true, 0, Twice({{eErrDuplicateAtt, 1, 15}})}));

    EXPECT_EQ(
        RunOn<vx::CParseElement>(u"<a x=\"<\"/>").diags,
        Twice({{eErrUnexpectedChar, 1, 7}, {eErrAttValue, 1, 7}, {eErrUnexpectedChar, 1, 4}}));
    EXPECT_EQ(RunOn<vx::CParseElement>(u"<a x>").diags,
              Twice({{eErrNoEq, 1, 5}, {eErrUnexpectedChar, 1, 4}}));
}

TEST(Element, EndTagErrors) {
    auto run = [](const std::u16string& text) { return RunOn<vx::CParseElement>(text); };
    EXPECT_EQ(run(u"<a>text"), (Result{false, 7, {{eErrTagMismatch, 1, 8}}}));
    EXPECT_EQ(run(u"<a></b>").diags, (D{{eErrTagMismatch, 1, 4}}));
    EXPECT_EQ(run(u"<a></a").diags, (D{{eErrUnexpectedEnd, 1, 7}, {eErrNoETag, 1, 7}}));
    EXPECT_EQ(run(u"<a></a x>").diags, (D{{eErrUnexpectedChar, 1, 8}, {eErrNoETag, 1, 8}}));
}

TEST(Element, OneNestedErrorCascadesThroughEveryEnclosingElement) {
    EXPECT_EQ(DiagsOf(u"<?xml version=\"1.0\"?>\n<r>\n <p>\n  <q x=\"1\" x=\"2\"/>\n </p>\n</r>"),
              (D{{eErrDuplicateAtt, 4, 17},
                 {eErrDuplicateAtt, 4, 17},
                 {eErrTagMismatch, 4, 3},
                 {eErrTagMismatch, 3, 2},
                 {eErrParseStopped, 0, 0}}));
}

std::vector<int> Kinds(const vx::CExpressionList& list) {
    std::vector<int> kinds;
    for (const vx::CAbstractExpression* item : list)
        kinds.push_back(item->GetClassType());
    return kinds;
}

TEST(Element, CopiesAreDeepAndIndependent) {
    auto original = std::make_unique<vx::CParseElement>();  // one child of each content kind
    RunOn(*original, u"<a>t<b/>&amp;<![CDATA[c]]><?p?><!--m--></a>");
    const vx::CParseContent copy(*original->GetContent());
    const std::vector<int> expected = {2, 7, 15, 19, 14, 5};
    EXPECT_EQ(Kinds(copy.GetList()), expected);
    EXPECT_NE(copy.GetList()[1], original->GetContent()->GetList()[1]);

    vx::CParseElement assigned;
    assigned = *original;
    const vx::CParseElement& self = assigned;
    assigned = self;
    original.reset();
    EXPECT_EQ(Kinds(assigned.GetContent()->GetList()), expected);
    EXPECT_EQ(Text(static_cast<const vx::CParseCDSect*>(copy.GetList()[3])->GetCData()), u"c");

    assigned.ClearContent();
    EXPECT_EQ(assigned.GetContent()->GetList().GetSize(), 0);
    EXPECT_EQ(Kinds(copy.GetList()), expected);
}

TEST(Element, CopyingAListWithAnUnknownClassThrows) {
    vx::CParseCharData text;
    vx::CParseName name;
    vx::CExpressionList source;
    source.PushBack(&text);
    source.PushBack(&name);
    vx::CExpressionList destination;
    EXPECT_THROW(vx::CParseContent::CopyListToList(destination, source), vel::CVelException);
    ASSERT_EQ(destination.GetSize(), 1);  // what was copied before stays
    delete destination[0];
}

TEST(Element, SuppressedContentIsMatchedButNotRecorded) {
    vx::CParse parser;
    parser.SetSource(Wide(u"<a>t<b/>u</a>"));
    parser.SetRecordSuppressed(true);
    vx::CParseElement element;
    int end = 0;
    EXPECT_TRUE(element.Interpreter(parser, 0, end));
    EXPECT_EQ(end, 13);
    EXPECT_EQ(element.GetContent()->GetList().GetSize(), 0);
}

}  // namespace
