#include <regex>

#include "ParseTestUtil.h"
#include "dom/DomTestSupport.h"
#include "platform/CodeConvTestUtil.h"

namespace {

using namespace parsetest;
using vxtest::Source;

TEST(Driver, ADeclarationIsRequiredButTheParseGoesOn) {
    const Document bare = ParseBuf(u"<a/>");
    EXPECT_EQ(Diags(bare->GetErrList()), (D{{eErrNoXmlDecl, 1, 1}}));
    EXPECT_EQ(Text(bare->GetRootElement().GetName()), u"a");
    EXPECT_EQ(DiagsOf(u""),
              (D{{eErrNoXmlDecl, 1, 1}, {eErrUnknownElemType, 0, 0}, {eErrMakeTree, 0, 0}}));

    // A refused declaration is read again as a processing instruction.
    const Document v11 = ParseBuf(u"<?xml version=\"1.1\"?><a/>");
    EXPECT_EQ(Diags(v11->GetErrList()), (D{{eErrVersionNum, 1, 20}}));
    EXPECT_EQ(Text(v11->GetRootElement().GetName()), u"a");
}

TEST(Driver, UnmatchedTextStopsTheParseWithoutATree) {
    const Document junk = ParseBuf(u"<?xml version=\"1.0\"?><a/><!--c--> <?p?>junk");
    EXPECT_EQ(Diags(junk->GetErrList()), (D{{eErrParseStopped, 0, 0}}));
    EXPECT_EQ(Text(junk->GetRootElement().GetName()), u"");
    EXPECT_EQ(DiagsOf(u"<?xml version=\"1.0\"?>\r\n<a>\r\n</b>"),
              (D{{eErrTagMismatch, 3, 1}, {eErrParseStopped, 0, 0}}));
    EXPECT_EQ(DiagsOf(u"<?xml version=\"1.0\"?>\r\r<a/>\r\n<!--"),
              (D{{eErrCommentEnd, 4, 5}, {eErrParseStopped, 0, 0}}));
}

// Positions come from an index of line starts, which must follow a change of source.
TEST(Driver, PositionsFollowASwappedSource) {
    vx::CParse parser;
    parser.SetSource(Wide(u"<a>text</a>\n<a>"));
    parser.AddError(vx::CParseError::eErrUnexpectedChar, 13);
    parser.SetSource(Wide(u"\n\nx"));
    parser.AddError(vx::CParseError::eErrUnexpectedChar, 2);
    EXPECT_EQ(Diags(parser.GetErrList()),
              (D{{eErrUnexpectedChar, 2, 2}, {eErrUnexpectedChar, 3, 1}}));
}

// Every operation of the parser logs its scope, the ones the productions and the tree
// builder call back included.
TEST(Driver, EveryOperationLogsItsScope) {
    LogCapture log;
    vx::CParse parser;
    parser.SetSource(Wide(u"<a>x</a>"));
    parser.AddError(vx::CParseError::eErrUnexpectedChar);
    parser.AddError(vx::CParseError::eErrUnexpectedChar, 1);
    EXPECT_EQ(Text(parser.GetSource()), u"<a>x</a>");
    EXPECT_EQ(parser.GetErrList().GetSize(), 2);
    vx::CXmlElement element(nullptr);
    vx::CParseElement source;
    EXPECT_FALSE(parser.SetElementInfo(element, source));  // matched in neither form: code 28
    EXPECT_TRUE(parser.SetElementContentInfo(&element.GetChildren(), nullptr));
    std::string starts;
    const std::regex start(R"(Parse\(\d+\): CParse::(\w+): <[0-9a-f]{8}> : >> START)");
    for (const std::string& line : log.Lines()) {
        std::smatch match;
        if (std::regex_match(line, match, start)) starts += match[1].str() + " ";
    }
    // The positioned AddError ends in the one with line and column; code 28 is added too.
    EXPECT_EQ(starts,
              "AddError AddError AddError GetSource GetErrList SetElementInfo AddError "
              "SetElementContentInfo ");
}

// The keyword tables are released by Finalize and must come back on the next parse.
TEST(Driver, KeywordsSurviveFinalize) {
    vx::Finalize();
    EXPECT_EQ(DiagsOf(u"<?xml version=\"1.0\"?><a><![CDATA[x]]></a>"), D{});
    vx::Finalize();
}

// A Japanese document; the declaration names the encoding it is saved in.
std::u16string Japanese(const std::u16string& encoding) {
    return u"<?xml version=\"1.0\" encoding=\"" + encoding +
           u"\"?>\r\n<文書 種類=\"報告～\">\n  <題名>日本語のテキスト</題名>\n"
           u"  <本文 番号='１'>漢字とカナ、ひらがな。&amp;</本文>\n</文書>\n";
}

std::string Encode(const std::u16string& text, vcc::eCodeType code) {
    return platform_test::Convert(platform_test::Wide(text), vcc::eUtf16LE, code).value();
}

TEST(Driver, ReadsTheSameTreeFromEveryEncoding) {
    const Document expected = ParseBuf(Japanese(u"UTF-16"));
    ASSERT_EQ(Diags(expected->GetErrList()), D{});
    const struct {
        std::u16string name;
        vcc::eCodeType code;
        std::string prefix;
    } files[] = {{u"Shift_JIS", vcc::eShiftJIS, ""},
                 {u"EUC-JP", vcc::eEucJP, ""},
                 {u"ISO-2022-JP", vcc::eIso2022JP, ""},
                 {u"MS932", vcc::eWindows932, ""},
                 {u"utf-8", vcc::eUtf8, ""},
                 {u"UTF-16", vcc::eUtf16LE, "\xFF\xFE"},
                 {u"UCS-4", vcc::eUcs4LE, ""}};
    TempDir dir;
    for (const auto& file : files) {
        const std::string path = dir / "doc.xml";
        WriteFile(path, file.prefix + Encode(Japanese(file.name), file.code));
        const Document parsed = ParseFile(path);
        EXPECT_EQ(Diags(parsed->GetErrList()), D{}) << path << " " << file.code;
        EXPECT_EQ(Source(parsed->GetRootElement()), Source(expected->GetRootElement()))
            << file.code;
    }
}

// Detection failures are held to CheckCodeType below.
TEST(Driver, RefusedFiles) {
    TempDir dir;
    const std::string path = dir / "doc.xml";
    const Document none = ParseFile(path);
    ASSERT_EQ(Diags(none->GetErrList()), (D{{eErrFileOpen, -1, -1}}));
    EXPECT_EQ(vx::CVelStr(none->GetErrList().GetAt(0).GetSource()).c_str(), path);
    WriteFile(path, "<?xml version='1.0' encoding='Shift_JIS'?><a>\x81<</a>");
    EXPECT_EQ(Diags(ParseFile(path)->GetErrList()), (D{{eErrCodeConvert, 0, 0}}));
}

// The detected code, -1 when refused, -2 when detection failed. Without a log, LoadWideText
// detects from one read of the whole file; with one, it runs CheckCodeType on the file. Both
// must give the same result, and refuse exactly the files CheckCodeType refuses.
TEST(Driver, CheckCodeType) {
    TempDir dir;
    const std::string path = dir / "doc.xml";
    auto load = [](const std::string& file) {
        vx::CVelStrW text;
        const vx::CParseError::eError failure =
            vx::CParse::LoadWideText(vx::CVelStr(file.c_str()), text);
        return std::make_pair(failure, text);
    };
    auto loadBothWays = [&](const std::string& file) {
        const auto once = load(file);
        const LogCapture log;
        EXPECT_EQ(load(file), once) << file;
        return once.first;
    };
    auto check = [&](const std::string& bytes) {
        WriteFile(path, bytes);
        bool supported = false;
        vcc::eCodeType code = vcc::eShiftJIS;
        const bool decided = vx::CParse::CheckCodeType(vx::CVelStr(path.c_str()), supported, code);
        EXPECT_EQ(loadBothWays(path) == eErrCodeTypeDetect, !decided || !supported) << bytes;
        if (!decided) return -2;
        return supported ? static_cast<int>(code) : -1;
    };
    EXPECT_EQ(check(""), -2);
    EXPECT_EQ(check("<?"), -2);
    EXPECT_EQ(check("<?xml version='1.0'"), -2);
    EXPECT_EQ(check("<?xml version='1.0'?>"), -2);
    EXPECT_EQ(check("<?xml encoding = 'UTF-8'?>"), -2);
    EXPECT_EQ(check("<?xml version='1.0' encoding='utf-8'?>"), 5);
    EXPECT_EQ(check("<?xml encoding=\"euc-jp\"?>"), 1);
    EXPECT_EQ(check("<?xml encoding='latin1'?><a>b</a>"), -1);
    EXPECT_EQ(check("\xFF\xFE"), 3);
    EXPECT_EQ(check("\xFF\xFEx"), 3);
    EXPECT_EQ(check("\xFE\xFF"), -1);
    EXPECT_EQ(check(std::string("<\0?", 3)), -2);
    EXPECT_EQ(check(std::string("<\0?\0", 4)), 3);
    EXPECT_EQ(check(std::string("<\0\0\0", 4)), 4);
    EXPECT_EQ(check(std::string("\0\0\0<", 4)), -1);
    EXPECT_EQ(check("\xEF\xBB\xBF<?xml encoding='UTF-8'?>"), -1);

    EXPECT_EQ(loadBothWays(dir / "missing.xml"), eErrFileOpen);
    EXPECT_EQ(loadBothWays(dir.Path()), eErrFileOpen);
    WriteFile(path, "<?xml version='1.0' encoding='Shift_JIS'?><a>\x82\xA0</a>");
    EXPECT_EQ(loadBothWays(path), eErrNone);
}

}  // namespace
