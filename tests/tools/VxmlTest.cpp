#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <regex>
#include <string>

#include "VxmlProcess.h"

namespace fs = std::filesystem;
using vxml_test::ReadFile;
using vxml_test::RunVxml;
using vxml_test::WriteFile;

namespace {

const std::string kDecl = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
const std::string kMismatchMessage = "開始エレメント名と終了エレメント名が異なります。";
const std::string kStoppedMessage = "途中でパースが停止しました。";
const std::string kOpenFailedMessage = "ファイルのオープンに失敗しました。";

class VxmlTest : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "vxml-test-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        m_dir = pattern;
        WriteFile(m_dir / "good.xml", kDecl + "<a x=\"1\">text</a>\n");
        WriteFile(m_dir / "bad.xml", kDecl + "<a>\n<b></c>\n</a>\n");
    }
    void TearDown() override { fs::remove_all(m_dir); }

    std::string Path(const std::string& name) const { return (m_dir / name).string(); }
    vxml_test::Result Run(std::initializer_list<std::string> args, const std::string& in = "") {
        return RunVxml(m_dir, args, in);
    }

    fs::path m_dir;
};

// Matches text against layout, which is literal apart from "<n>" for a number and "<lines>"
// for any number of whole lines: the library may report more than the tests pin down.
bool Matches(const std::string& text, const std::string& layout) {
    static const std::regex special(R"([.^$|()\[\]{}*+?\\])");
    std::string re = std::regex_replace(layout, special, R"(\$&)");
    re = std::regex_replace(re, std::regex("<n>"), R"(\d+)");
    re = std::regex_replace(re, std::regex("<lines>"), "(.*\n)*");
    return std::regex_match(text, std::regex(re));
}

std::string Sample(const std::string& name) {
    return std::string(VXML_SAMPLES) + "/" + name;
}

TEST_F(VxmlTest, CheckTextFormat) {
    const std::string bad = Path("bad.xml"), missing = Path("missing.xml");
    const auto clean = Run({"check", Path("good.xml"), Sample("japanese-sjis.xml"),
                            Sample("japanese-eucjp.xml"), Sample("japanese-utf16le.xml")});
    EXPECT_EQ(clean.status, 0);
    EXPECT_EQ(clean.out, "");

    const auto result = Run({"check", Path("good.xml"), bad, missing});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(Matches(result.out, bad + ":<n>:<n>: error 29: " + kMismatchMessage + "\n<lines>" +
                                        bad + ": fatal 7: " + kStoppedMessage + "\n" + missing +
                                        ": fatal 2: " + kOpenFailedMessage + " (" + missing +
                                        ")\n"))
        << result.out;

    // No declaration, so no encoding can be detected: a diagnostic without position or source.
    WriteFile(m_dir / "plain.xml", "<a/>");
    EXPECT_EQ(Run({"check", Path("plain.xml")}).out,
              Path("plain.xml") + ": fatal 3: 文字コードの判別に失敗しました。\n");
}

TEST_F(VxmlTest, CheckNativeAndJsonFormats) {
    const auto native = Run({"check", "--format", "native", Path("bad.xml"), Path("missing.xml")});
    EXPECT_EQ(native.status, 1);
    EXPECT_TRUE(Matches(native.out, "(<n>,<n>):" + kMismatchMessage + "\n<lines>" +
                                        kStoppedMessage + "\n" + kOpenFailedMessage + "(" +
                                        Path("missing.xml") + ")\n"))
        << native.out;

    WriteFile(m_dir / "bad\"name.xml", ReadFile(m_dir / "bad.xml"));
    const std::string quoted = (m_dir / "bad\\\"name.xml").string();
    const auto json = Run({"check", "--format=json", Path("bad\"name.xml"), Path("missing.xml")});
    EXPECT_EQ(json.status, 1);
    const std::string failed = R"(,"level":"fatal","line":null,"column":null,"message":")";
    EXPECT_TRUE(Matches(
        json.out,
        R"({"file":")" + quoted + R"(","code":29,"level":"error","line":<n>,"column":<n>,)" +
            R"("message":")" + kMismatchMessage + "\"}\n<lines>" + R"({"file":")" + quoted +
            R"(","code":7)" + failed + kStoppedMessage + "\"}\n" + R"({"file":")" +
            Path("missing.xml") + R"(","code":2)" + failed + kOpenFailedMessage + "\"}\n"))
        << json.out;
}

TEST_F(VxmlTest, EnglishMessagesAndStandardInput) {
    const auto text =
        Run({"check", "--lang", "en", "-", Path("missing.xml")}, ReadFile(m_dir / "bad.xml"));
    EXPECT_EQ(text.status, 1);
    const std::string missing = Path("missing.xml");
    EXPECT_TRUE(Matches(text.out,
                        "<stdin>:<n>:<n>: error 29: The start-tag name and the end-tag name "
                        "differ.\n<lines><stdin>: fatal 7: Parsing stopped part-way.\n" +
                            missing + ": fatal 2: Opening the file failed. (" + missing + ")\n"))
        << text.out;

    const auto json = Run({"check", "--lang=en", "--format", "json", Path("missing.xml")});
    EXPECT_NE(json.out.find(R"("message":"Opening the file failed."})"), std::string::npos);
    // The library's own text does not change with the language.
    const auto native = Run({"check", "--lang", "en", "--format", "native", Path("missing.xml")});
    EXPECT_EQ(native.out, kOpenFailedMessage + "(" + Path("missing.xml") + ")\n");

    EXPECT_EQ(Run({"check", "-"}, ReadFile(m_dir / "good.xml")).status, 0);
}

TEST_F(VxmlTest, PrintWritesUtf8WithDiagnosticsOnStderr) {
    const auto result = Run({"print", Sample("japanese-sjis.xml")});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out.rfind("<?xml version=\"1.0\" encoding=\"Shift_JIS\"?>\n<蔵書", 0), 0);
    EXPECT_NE(result.out.find("<題名>吾輩は猫である</題名>\n"), std::string::npos);
    EXPECT_EQ(result.out.find('\r'), std::string::npos);

    const auto piped = Run({"print", "-"}, ReadFile(m_dir / "good.xml"));
    EXPECT_EQ(piped.out, kDecl + "<a x=\"1\">text</a>\n");

    const auto bad = Run({"print", Path("bad.xml")});
    EXPECT_EQ(bad.status, 1);
    EXPECT_EQ(bad.out, "");
    EXPECT_NE(bad.err.find(Path("bad.xml") + ": fatal 7: "), std::string::npos);
}

TEST_F(VxmlTest, TreeOutlinesNodes) {
    const std::string longText(60, 'z');
    WriteFile(m_dir / "tree.xml", kDecl + "<r a=\"1\" b='x \"y\"' e=\"\">\n  <c>one\ttwo</c>\n" +
                                      "  <![CDATA[<cd>]]>\n  <d>" + longText + "</d>\n</r>\n");
    const auto result = Run({"tree", Path("tree.xml")});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out,
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "r a=\"1\" b=\"x \\\"y\\\"\" e=\"\"\n"
              "  c\n"
              "    \"one\\ttwo\"\n"
              "  CDATA \"<cd>\"\n"
              "  d\n"
              "    \"" +
                  std::string(39, 'z') + "…\"\n");

    const auto missing = Run({"tree", Path("missing.xml")});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.out, "");
    EXPECT_NE(missing.err.find(": fatal 2: "), std::string::npos);
}

TEST_F(VxmlTest, SaveConvertsOrSaysWhyNot) {
    const std::string sjis = Sample("japanese-sjis.xml"), out = Path("out.xml");
    const auto saved = Run({"save", sjis, "--encoding", "EUC-JP", "-o", out});
    EXPECT_EQ(saved.status, 0);
    EXPECT_EQ(saved.out + saved.err, "");
    std::string expected = ReadFile(Sample("japanese-eucjp.xml"));
    expected.pop_back();  // the root element ends the saved text
    EXPECT_EQ(ReadFile(out), expected);
    EXPECT_EQ(Run({"check", out}).status, 0);

    const auto utf8 = Run({"save", sjis, "--encoding", "UTF-8", "-o", Path("u.xml")});
    EXPECT_EQ(utf8.status, 1);
    EXPECT_NE(utf8.err.find("not saved: unsupported encoding 'UTF-8'"), std::string::npos);
    EXPECT_FALSE(fs::exists(m_dir / "u.xml"));

    const auto noDir = Run({"save", sjis, "--encoding", "EUC-JP", "-o", Path("no/out.xml")});
    EXPECT_EQ(noDir.status, 1);
    EXPECT_NE(noDir.err.find("cannot write: No such file or directory"), std::string::npos);
    const auto toDir = Run({"save", sjis, "--output", m_dir.string(), "--encoding", "euc-jp"});
    EXPECT_NE(toDir.err.find("cannot write: it is a directory"), std::string::npos);

    const auto bad = Run({"save", Path("bad.xml"), "--encoding", "EUC-JP", "-o", Path("b.xml")});
    EXPECT_EQ(bad.status, 1);
    EXPECT_NE(bad.err.find("not saved: the document has diagnostics"), std::string::npos);
    EXPECT_FALSE(fs::exists(m_dir / "b.xml"));
}

// The sample's external subset is refused before any file is opened; the next file is read as
// usual, the switch still off.
TEST_F(VxmlTest, CheckNoExternalRefusesEverySystemLiteral) {
    const std::string sample = Sample("entities.xml");
    EXPECT_EQ(Run({"check", sample}).status, 0);
    WriteFile(m_dir / "http.xml",
              kDecl + "<!DOCTYPE a [<!ENTITY e SYSTEM \"http://example.com/e\">]><a/>");
    const auto result =
        Run({"check", "--no-external", "--lang", "en", sample, Path("http.xml"), Path("good.xml")});
    EXPECT_EQ(result.status, 1);
    const std::string refused = ": notice 5: An unsupported feature was used.\n";
    const std::string stopped = ": fatal 7: Parsing stopped part-way.\n";
    EXPECT_EQ(result.out, sample + refused + sample + stopped + Path("http.xml") + refused +
                              Path("http.xml") + stopped);
}

TEST_F(VxmlTest, HelpVersionAndUsageErrors) {
    const auto help = Run({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.out.rfind("Usage: vxml COMMAND", 0), 0);
    EXPECT_EQ(Run({"save", "--help"}).out.rfind("Usage: vxml save", 0), 0);
    EXPECT_EQ(Run({"check", "-h"}).out.rfind("Usage: vxml check", 0), 0);
    EXPECT_EQ(Run({"--version"}).out, "vxml " VX_VERSION "\n");

    const std::initializer_list<std::string> misuses[] = {
        {},
        {"validate", "a.xml"},
        {"check"},
        {"check", "--format", "xml", "a.xml"},
        {"check", "--lang"},
        {"check", "--colour", "a.xml"},
        {"print", "--format", "json", "a.xml"},
        {"print", "--no-external", "a.xml"},
        {"tree", "a.xml", "b.xml"},
        {"save", "a.xml", "-o", "b.xml"},
        {"save", "a.xml", "--encoding", "EUC-JP"},
    };
    for (const auto& args : misuses) {
        const auto result = Run(args);
        EXPECT_EQ(result.status, 2) << result.err;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err.rfind("vxml: ", 0), 0) << result.err;
    }
}

TEST_F(VxmlTest, LibraryExceptionExitsWithTwo) {
    // Nesting far beyond the library's limit makes the parser throw.
    std::string deep = kDecl;
    for (int i = 0; i < 5000; ++i)
        deep += "<a>";
    for (int i = 0; i < 5000; ++i)
        deep += "</a>";
    WriteFile(m_dir / "deep.xml", deep);
    const auto result = Run({"check", Path("deep.xml")});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_TRUE(std::regex_match(result.err, std::regex("vxml: [^\n]+\n"))) << result.err;
}

}  // namespace
