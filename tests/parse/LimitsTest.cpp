#include <fstream>
#include <stdexcept>

#include "ParseTestUtil.h"
#include "vx/platform/Logger.h"
#include "vx/platform/Package.h"

namespace {

using namespace parsetest;

std::u16string Nested(int depth) {
    std::u16string text = u"<?xml version=\"1.0\"?>";
    for (int i = 0; i < depth - 1; ++i)
        text += u"<e>";
    text += u"<e/>";
    for (int i = 0; i < depth - 1; ++i)
        text += u"</e>";
    return text;
}

int Depth(const vx::CXmlElement& root) {
    int depth = 1;
    for (const vx::CXmlElement* e = root.GetFirstChildElement(); e; e = e->GetFirstChildElement()) {
        ++depth;
    }
    return depth;
}

// One level too deep throws "dummy", logged on its way out of each public operation.
TEST(Limits, NestingUpToTheLimitParsesAndOneMoreThrows) {
    TempDir dir;
    const std::string log = dir / "log.txt";
    ASSERT_TRUE(vel::FileLogger_Open(log.c_str()));
    vx::SetNestingLimit(30);
    EXPECT_EQ(Depth(ParseBuf(Nested(30))->GetRootElement()), 30);
    try {
        ParseBuf(Nested(31));
        ADD_FAILURE() << "no exception";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "dummy");
    }
    vx::SetNestingLimit(vx::kDefaultNestingLimit);
    vel::FileLogger_Close();
    std::ifstream in(log);
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_NE(text.find("CParse::ParseForBuf: 例外発生(dummy)"), std::string::npos) << text;
    EXPECT_NE(text.find("CParse::ParseForBuf: <"), std::string::npos);
    EXPECT_NE(text.find("> : >> START"), std::string::npos);

    const Document deep = ParseBuf(Nested(vx::kDefaultNestingLimit));
    EXPECT_EQ(Diags(deep->GetErrList()), D{});
    EXPECT_EQ(Depth(vx::CXmlDocument(*deep).GetRootElement()), vx::kDefaultNestingLimit);
}

TEST(Limits, PositionsOfAMillionErrorsMatchTheLineScan) {
    std::u16string text;
    for (int line = 0; line < 100000; ++line)
        text += u"<a>text</a>\n";
    vx::CParse parser;
    parser.SetSource(Wide(text));
    auto position = [&](int i) { return static_cast<int>(i * 7919LL % text.size()); };
    for (int i = 0; i < 1000000; ++i)
        parser.AddError(vx::CParseError::eErrUnexpectedChar, position(i));
    const D diags = Diags(parser.GetErrList());
    for (int i = 0; i < 1000000; i += 9973) {
        Diag expected{15, 0, 0};
        vx::GetLineAndCol(parser.Source(), position(i), expected.line, expected.column);
        EXPECT_EQ(diags[i], expected);
    }
    // Swapping the source rebuilds the index.
    parser.SetSource(Wide(u"\n\nx"));
    parser.AddError(vx::CParseError::eErrUnexpectedChar, 2);
    EXPECT_EQ(Diags(parser.GetErrList()).back(), (Diag{15, 3, 1}));
}

TEST(Limits, KeywordsSurviveFinalize) {
    vx::Finalize();
    EXPECT_EQ(DiagsOf(u"<?xml version=\"1.0\"?><a><![CDATA[x]]></a>"), D{});
    vx::Finalize();
}

}  // namespace
