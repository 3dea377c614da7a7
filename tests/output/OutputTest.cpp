#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <stdexcept>
#include <string>

#include "dom/DomTestSupport.h"
#include "platform/CodeConvTestUtil.h"
#include "vx/dom/XmlCharData.h"
#include "vx/dom/XmlDocument.h"

using namespace vx;
using platform_test::Convert;
using vxtest::LogCapture;
using vxtest::ReadFile;
using vxtest::Source;
using vxtest::TempDir;
using vxtest::ThrownText;
using vxtest::Utf8;

namespace {

// The declaration values, a root with attributes, nested elements, escaped text, a CDATA
// section holding "]]>" and an entity reference.
void BuildSample(CXmlDocument& document) {
    document.SetVersion(u"1.0");
    document.SetStandard(u"yes");
    CXmlElement& root = document.GetRootElement();
    root.SetName(u"doc");
    CXmlAttribute attribute(nullptr);
    attribute.SetValue(u"a b");
    root.SetAtt(u"id", attribute);
    attribute.SetValue(u"x\"<&>\t");
    root.SetAtt(u"q", attribute);
    CXmlElement item(nullptr);
    item.SetName(u"item");
    item.SetText(u"日本語 & < >\nend");
    root.GetChildren().PushBack(item);
    root.GetChildren().PushBack(CXmlCDSect(nullptr))->SetText(u"a]]>b\n");
    root.GetChildren().PushBack(CXmlEntity(nullptr))->SetName(u"ent");
    root.GetChildren().PushBack(CXmlElement(nullptr))->SetName(u"empty");
}

std::string SampleText(const std::string& encoding) {
    return "<?xml version=\"1.0\" encoding=\"" + encoding +
           "\" standard=\"yes\"?>\r\n"
           "<doc id=\"a&#32;b\" q=\"x&#34;&#60;&#38;>&#9;\">"
           "<item>日本語 &#38; &#60; &#62;\r\nend</item><![CDATA[a&#x5D;]>b\r\n]]>&ent;<empty/>"
           "</doc>";
}

}  // namespace

TEST(Output, HandBuiltDocumentWritesAndSavesInJapaneseEncodings) {
    CXmlDocument document(nullptr);
    BuildSample(document);
    const struct {
        const char* name;
        vcc::eCodeType code;
    } encodings[] = {
        {"Shift_JIS", vcc::eShiftJIS}, {"EUC-JP", vcc::eEucJP}, {"ISO-2022-JP", vcc::eIso2022JP}};
    const TempDir dir;
    const std::string path = dir / "sample.xml";
    for (const auto& encoding : encodings) {
        document.SetEncoding(CVelStrW(CVelStr(encoding.name)));
        EXPECT_EQ(Source(document), SampleText(encoding.name));
        ASSERT_TRUE(document.SaveToFile(path.c_str())) << encoding.name;
        const auto wide = Convert(SampleText(encoding.name), vcc::eUtf8, vcc::eUtf16LE);
        EXPECT_EQ(ReadFile(path), Convert(*wide, vcc::eUtf16LE, encoding.code)) << encoding.name;
    }
    EXPECT_NE(ReadFile(path).find("\x1b$B"), std::string::npos);  // JIS X 0208 shift
}

// The encoding is chosen by the prefix of its name, and a UTF-16 file is cut at its first zero
// byte. A save that fails leaves the file as it was and no temporary beside it.
TEST(Output, SaveToFileChoosesTheEncodingByPrefixOrLeavesTheFileWhole) {
    const TempDir dir;
    const std::string path = dir / "save.xml";
    CXmlDocument document(nullptr);
    document.GetRootElement().SetName(u"r");
    for (const char16_t* refused : {u"", u"UTF-8", u"Shift"}) {
        document.SetEncoding(refused);
        EXPECT_FALSE(document.SaveToFile(path.c_str()));
        EXPECT_FALSE(std::filesystem::exists(path));
    }
    document.SetEncoding(u"iso-10646-ucs-2");
    ASSERT_TRUE(document.SaveToFile(path.c_str()));
    EXPECT_EQ(ReadFile(path), "<");  // "<" is followed by a zero byte in UTF-16LE
    document.SetEncoding(u"euc-jp-with-more");
    ASSERT_TRUE(document.SaveToFile(path.c_str()));
    const std::string saved = "<?xml encoding=\"euc-jp-with-more\"?>\r\n<r/>";
    EXPECT_EQ(ReadFile(path), saved);

    document.SetEncoding(u"ISO-2022-JP");
    document.GetRootElement().SetName(u"①");  // not in JIS X 0208
    EXPECT_FALSE(document.SaveToFile(path.c_str()));
    document.SetEncoding(u"UTF-8");
    EXPECT_FALSE(document.SaveToFile(path.c_str()));
    EXPECT_EQ(ReadFile(path), saved);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.Path()),
                            std::filesystem::directory_iterator()),
              1);
}

TEST(Output, DoctypeIsWrittenOnlyWithAName) {
    CXmlDocument document(nullptr);
    document.GetRootElement().SetName(u"r");
    EXPECT_EQ(Source(document), "<r/>");  // no declaration, no DOCTYPE, no line end
    CXmlDtd& dtd = document.GetDtd();
    dtd.setName(u"doc");
    EXPECT_EQ(Source(document), "<!DOCTYPE doc []>\r\n<r/>");

    CXmlDtdExternalID id;
    id.setPublicLiteral(u"d.dtd", u"p");
    dtd.setExternalID(id);
    EXPECT_EQ(Source(dtd), "<!DOCTYPE doc PUBLIC \"p\" \"d.dtd\"[]>");
    id.setSystemLiteral(u"d.dtd");  // drops the public literal
    dtd.setExternalID(id);
    document.SetRetCode(u"\n");
    EXPECT_EQ(Source(document), "<!DOCTYPE doc SYSTEM \"d.dtd\" []>\n<r/>");
}

TEST(Output, LineEndsFollowTheDocumentAndBadOnesThrow) {
    CXmlCData loose(nullptr);
    loose.SetText(u"a\nb&");
    EXPECT_EQ(Source(loose), "a\nb&#38;");  // not in a document: no conversion

    CXmlDocument document(nullptr);
    BuildSample(document);
    document.ConvertReturnCode(u"\n");
    document.SetRetCode(u"\n");
    const CXmlElement& item = *document.GetRootElement().GetFirstChildElement();
    EXPECT_EQ(Utf8(item.GetText()), "日本語 & < >\nend");

    LogCapture log;
    document.SetRetCode(u"\n\r");
    CXmlElement& root = document.GetRootElement();
    EXPECT_EQ(ThrownText<std::runtime_error>([&] { Source(document); }),
              "CXmlAttribute::GetSource : 改行コード変換エラー");
    EXPECT_EQ(ThrownText<std::runtime_error>([&] { Source(*root.GetFirstChildElement()); }),
              "CXmlCData::GetSource : 改行コード変換エラー");
    EXPECT_EQ(ThrownText<std::runtime_error>([&] { Source(*root.GetChildren().GetAt(1)); }),
              "CXmlCDSect::GetSource : 改行コード変換エラー");
    EXPECT_EQ(ThrownText<std::runtime_error>([&] { root.ConvertReturnCode(u"x"); }),
              "CXmlAttribute::ConvertReturnCode : 改行コード変換エラー");
    EXPECT_EQ(ThrownText<std::runtime_error>([&] { loose.ConvertReturnCode(u""); }),
              "CXmlCData::ConvertReturnCode : 改行コード変換エラー");
    EXPECT_TRUE(log.HasLine(R"(XmlBaseObject\(\d+\): CXmlBaseObject::RetCodeConv: )"
                            R"(引数が異常です。exception=.+ , retcode='x')"));
    EXPECT_TRUE(log.HasLine(R"(XmlElement\(\d+\): CXmlCDSect::GetSource: 改行コード変換に失敗)"));
    EXPECT_TRUE(log.HasLine(
        R"(XmlAttribute\(\d+\): CXmlAttribute::ConvertReturnCode: 改行コード変換に失敗)"));
}
