// The vxml tool, run as a child process with files for its standard streams, so that the tests
// see exactly what a shell would.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "platform/PlatformTestUtil.h"

namespace {

namespace fs = std::filesystem;
using platform_test::ReadFile;
using platform_test::WriteFile;

struct Result {
    int status = -1;
    std::string out;
    std::string err;
};

const std::string kDecl = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
const std::string kMismatchMessage = "開始エレメント名と終了エレメント名が異なります。";
const std::string kStoppedMessage = "途中でパースが停止しました。";
const std::string kOpenFailedMessage = "ファイルのオープンに失敗しました。";

class VxmlTest : public ::testing::Test {
  protected:
    void SetUp() override {
        WriteFile(m_dir / "good.xml", kDecl + "<a x=\"1\">text</a>\n");
        WriteFile(m_dir / "bad.xml", kDecl + "<a>\n<b></c>\n</a>\n");
    }

    std::string Path(const std::string& name) const { return m_dir / name; }

    // Runs vxml with args; input becomes its standard input. The locale's messages are
    // English unless locale names other variables ("LANG=ja_JP.UTF-8", ...).
    Result Run(const std::vector<std::string>& args, const std::string& input = "",
               std::vector<std::string> locale = {"LANG=C"}) const {
        const std::string in = m_dir / "stdin";
        WriteFile(in, input);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 0, in.c_str(), O_RDONLY, 0);
        return Finish(Spawn(args, actions, std::move(locale)), actions);
    }

    // Standard output and error go to files, read once vxml has ended.
    Result Finish(pid_t pid, posix_spawn_file_actions_t& actions) const {
        Result result;
        if (pid > 0) {
            int wait = 0;
            waitpid(pid, &wait, 0);
            result.status = WIFEXITED(wait) ? WEXITSTATUS(wait) : -1;
        }
        posix_spawn_file_actions_destroy(&actions);
        result.out = ReadFile(m_dir / "stdout");
        result.err = ReadFile(m_dir / "stderr");
        return result;
    }

    // Starts vxml with args; the streams actions leave alone go to the files Finish reads.
    pid_t Spawn(const std::vector<std::string>& args, posix_spawn_file_actions_t& actions,
                std::vector<std::string> locale, bool errToFile = true) const {
        const std::string out = m_dir / "stdout", err = m_dir / "stderr";
        WriteFile(err, "");
        posix_spawn_file_actions_addopen(&actions, 1, out.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                         0600);
        if (errToFile) {
            posix_spawn_file_actions_addopen(&actions, 2, err.c_str(), O_WRONLY | O_TRUNC, 0);
        }
        std::vector<std::string> argv{VXML_PATH};
        argv.insert(argv.end(), args.begin(), args.end());
        std::vector<char*> pointers;
        for (std::string& arg : argv)
            pointers.push_back(arg.data());
        pointers.push_back(nullptr);
        std::vector<char*> env;
        for (char** var = environ; *var; ++var) {
            const std::string name(*var, std::strcspn(*var, "="));
            if (name != "LC_ALL" && name != "LC_MESSAGES" && name != "LANG") env.push_back(*var);
        }
        for (std::string& var : locale)
            env.push_back(var.data());
        env.push_back(nullptr);
        pid_t pid = 0;
        return posix_spawn(&pid, VXML_PATH, &actions, nullptr, pointers.data(), env.data()) == 0
                   ? pid
                   : -1;
    }

    // check -j 1 on standard input, which stays empty for 0.7 s, then on two files, so that
    // the two seem to need more than a second; standard error is a pseudo terminal or a file.
    std::string CheckAfterSlowInput(bool terminal) const {
        int input[2];
        EXPECT_EQ(pipe2(input, O_CLOEXEC), 0);
        const int master = terminal ? posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC) : -1;
        const int slave = terminal && grantpt(master) == 0 && unlockpt(master) == 0
                              ? open(ptsname(master), O_RDWR | O_NOCTTY | O_CLOEXEC)
                              : -1;
        EXPECT_EQ(slave >= 0, terminal);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, input[0], 0);
        if (terminal) posix_spawn_file_actions_adddup2(&actions, slave, 2);
        const pid_t pid = Spawn({"check", "-j", "1", "-", Path("good.xml"), Path("good.xml")},
                                actions, {"LANG=C"}, !terminal);
        close(input[0]);
        if (terminal) close(slave);
        std::this_thread::sleep_for(std::chrono::milliseconds(700));
        const std::string document = ReadFile(m_dir / "good.xml");
        EXPECT_EQ(write(input[1], document.data(), document.size()),
                  static_cast<ssize_t>(document.size()));
        close(input[1]);
        std::string seen;  // read before vxml ends, and up to its end (EIO once it has closed)
        char block[4096];
        for (ssize_t got = 0; terminal && (got = read(master, block, sizeof block)) > 0;)
            seen.append(block, static_cast<std::size_t>(got));
        if (terminal) close(master);
        const Result result = Finish(pid, actions);
        EXPECT_EQ(result.status, 0);
        return terminal ? seen : result.err;
    }

    platform_test::TempDir m_dir;
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

// Checking goes on after a file with diagnostics and after one that cannot be opened; "-" is
// standard input. The text format is shown in English here, the others in Japanese.
TEST_F(VxmlTest, CheckTextFormat) {
    const auto clean = Run({"check", "-q", Path("good.xml"), Sample("japanese-sjis.xml"),
                            Sample("japanese-eucjp.xml"), Sample("japanese-utf16le.xml")});
    EXPECT_EQ(clean.status, 0);
    EXPECT_EQ(clean.out, "");

    const std::string missing = Path("missing.xml");
    const auto text =
        Run({"check", "--lang", "en", Path("good.xml"), "-", missing}, ReadFile(m_dir / "bad.xml"));
    EXPECT_EQ(text.status, 1);
    EXPECT_TRUE(Matches(text.out,
                        "<stdin>:<n>:<n>: error 29: The start-tag name and the end-tag name "
                        "differ.\n<lines><stdin>: fatal 7: Parsing stopped part-way.\n" +
                            missing + ": fatal 2: Opening the file failed. (" + missing +
                            ")\n  hint: No such file or directory\n"))
        << text.out;
    EXPECT_TRUE(Matches(text.err, "vxml: 3 files checked, 2 with diagnostics, <n>.<n> s\n"));
}

TEST_F(VxmlTest, CheckNativeAndJsonFormats) {
    // The library's own text does not change with the language.
    const auto native =
        Run({"check", "--lang=en", "--format", "native", Path("bad.xml"), Path("missing.xml")});
    EXPECT_EQ(native.status, 1);
    EXPECT_TRUE(Matches(native.out, "(<n>,<n>):" + kMismatchMessage + "\n<lines>" +
                                        kStoppedMessage + "\n" + kOpenFailedMessage + "(" +
                                        Path("missing.xml") + ")\n"))
        << native.out;

    WriteFile(m_dir / "bad\"name.xml", ReadFile(m_dir / "bad.xml"));
    const std::string quoted = m_dir / "bad\\\"name.xml";
    const auto json = Run({"check", "--format=json", Path("bad\"name.xml"), Path("missing.xml")},
                          "", {"LANG=ja_JP.UTF-8"});
    EXPECT_EQ(json.status, 1);
    const std::string failed = R"(,"level":"fatal","line":null,"column":null,"message":")";
    EXPECT_TRUE(Matches(
        json.out, R"({"file":")" + quoted +
                      R"(","code":29,"level":"error","line":<n>,"column":<n>,)" + R"("message":")" +
                      kMismatchMessage + "\"}\n<lines>" + R"({"file":")" + quoted +
                      R"(","code":7)" + failed + kStoppedMessage + "\"}\n" + R"({"file":")" +
                      Path("missing.xml") + R"(","code":2)" + failed + kOpenFailedMessage +
                      R"(","hint":"No such file or directory"})" + "\n"))
        << json.out;
}

TEST_F(VxmlTest, PrintWritesUtf8WithDiagnosticsOnStderr) {
    const auto result = Run({"print", Sample("japanese-sjis.xml")});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out.rfind("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<蔵書", 0), 0);
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
    EXPECT_EQ(Run({"save", sjis, "--encoding", "EUC-JP", "-o", "-"}).out, expected);

    const auto utf8 = Run({"save", sjis, "--encoding", "UTF-8", "-o", Path("u.xml")});
    EXPECT_EQ(utf8.status, 1);
    EXPECT_NE(utf8.err.find("not saved: unsupported encoding 'UTF-8'"), std::string::npos);
    EXPECT_FALSE(fs::exists(m_dir / "u.xml"));

    const auto noDir = Run({"save", sjis, "--encoding", "EUC-JP", "-o", Path("no/out.xml")});
    EXPECT_EQ(noDir.status, 1);
    EXPECT_NE(noDir.err.find("cannot write: No such file or directory"), std::string::npos);
    const auto toDir = Run({"save", sjis, "--output", m_dir.Path(), "--encoding", "euc-jp"});
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

// An attribute that copies a 64K-unit entity 300 times passes the default allowance.
TEST_F(VxmlTest, HugeLiftsTheExpansionLimit) {
    std::string references;
    for (int i = 0; i < 300; ++i)
        references += "&e;";
    WriteFile(m_dir / "big.xml", kDecl + "<!DOCTYPE a [<!ENTITY e '" + std::string(65536, 'x') +
                                     "'>]><a b='" + references + "'/>");
    EXPECT_EQ(Run({"check", "--lang", "en", Path("big.xml")}).status, 1);
    const auto huge = Run({"check", "--huge", Path("big.xml")});
    EXPECT_EQ(huge.status, 0) << huge.out;
    EXPECT_EQ(Run({"tree", "--huge", Path("big.xml")}).status, 0);
}

TEST_F(VxmlTest, HelpVersionAndUsageErrors) {
    const auto help = Run({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.out.rfind("Usage: vxml COMMAND", 0), 0);
    EXPECT_EQ(help.out.find("UCS-2"), std::string::npos);
    EXPECT_EQ(help.out.find("Windows-932"), std::string::npos);
    EXPECT_EQ(Run({"check", "-h"}).out.rfind("Usage: vxml check", 0), 0);
    EXPECT_EQ(Run({"--version"}).out, "vxml " VX_VERSION "\n");

    // Each misuse as its words.
    for (const std::string misuse :
         {"", "validate a.xml", "check -j 0 a.xml", "check --format xml a.xml", "check --lang",
          "check --colour a.xml", "print --format json a.xml", "print --no-external a.xml",
          "tree a.xml b.xml", "save a.xml -o b.xml", "save a.xml --encoding EUC-JP",
          "print -q a.xml", "convert a.xml --encoding UTF-7 -o b.xml", "convert a.xml -o b.xml"}) {
        std::istringstream words(misuse);
        const std::vector<std::string> args{std::istream_iterator<std::string>(words), {}};
        const auto result = Run(args);
        EXPECT_EQ(result.status, 2) << result.err;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err.rfind("vxml: ", 0), 0) << result.err;
    }
}

// Nesting far beyond the library's limit makes the parser throw.
TEST_F(VxmlTest, LibraryExceptionExitsWithTwo) {
    std::string deep = kDecl;
    for (int i = 0; i < 5000; ++i)
        deep.insert(kDecl.size(), "<a>").append("</a>");
    WriteFile(m_dir / "deep.xml", deep);
    const auto result = Run({"check", Path("deep.xml")});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_TRUE(std::regex_match(result.err, std::regex("vxml: [^\n]+\n"))) << result.err;
}

// A UTF-8 document with what print and save leave out: CR LF line ends, a DOCTYPE with an
// internal subset, comments outside the root, an unexpanded reference.
const std::string kFullDocument =
    "<?xml version=\"1.0\" encoding=\"utf-8\" standalone='yes'?>\r\n<!-- 前 -->\r\n"
    "<!DOCTYPE r [<!ENTITY e \"値\">]>\r\n<r a=\"&e;\">～漢字&e;</r>\r\n<!-- 後 -->";

// ASCII text as UTF-16LE with a byte-order mark.
std::string Utf16(const std::string& ascii) {
    std::string bytes = "\xFF\xFE";
    for (const char ch : ascii)
        bytes += std::string{ch, '\0'};
    return bytes;
}

TEST_F(VxmlTest, ConvertKeepsEverythingButTheLabel) {
    WriteFile(m_dir / "full.xml", kFullDocument);
    for (const std::string encoding :
         {"Shift_JIS", "ms932", "EUC-JP", "ISO-2022-JP", "UTF-16LE", "UCS-4LE", "UTF-8"}) {
        const auto there =
            Run({"convert", Path("full.xml"), "--encoding", encoding, "-o", Path("there.xml")});
        EXPECT_EQ(there.status, 0) << encoding << there.err;
        EXPECT_EQ(Run({"check", Path("there.xml")}).status, 0) << encoding;
        const auto back = Run({"convert", Path("there.xml"), "--encoding", "utf-8", "-o", "-"});
        std::string expected = kFullDocument;
        expected.replace(expected.find("utf-8"), 5, "UTF-8");
        EXPECT_EQ(back.out, expected) << encoding;
    }
    const auto u16 = Run({"convert", Path("full.xml"), "--encoding", "UTF-16LE", "-o", "-"}).out;
    EXPECT_EQ(u16.substr(0, 4), Utf16("<"));
    EXPECT_NE(u16.find(Utf16("UTF-16\"").substr(2)), std::string::npos);

    // A declaration without an encoding gets one; positions after it move with it.
    WriteFile(m_dir / "bare.xml", Utf16("<?xml version=\"1.0\"?><a></b>"));
    const auto added = Run({"convert", Path("bare.xml"), "--encoding", "EUC-JP", "-o", "-"});
    EXPECT_EQ(added.status, 0) << added.err;
    EXPECT_EQ(added.out, "<?xml version=\"1.0\" encoding=\"EUC-JP\"?><a></b>");
}

TEST_F(VxmlTest, ConvertWritesNothingItCannotKeep) {
    WriteFile(m_dir / "out.xml", "old");
    WriteFile(m_dir / "circled.xml", kDecl + "<a>\nx①</a>");
    const auto lost =
        Run({"convert", Path("circled.xml"), "--encoding", "ISO-2022-JP", "-o", Path("out.xml")});
    EXPECT_EQ(lost.status, 1);
    EXPECT_EQ(lost.err, "vxml: " + Path("out.xml") +
                            " not written: U+2460 at line 3, column 2 cannot be written in "
                            "ISO-2022-JP\n");
    EXPECT_EQ(ReadFile(m_dir / "out.xml"), "old");

    // vx reads UTF-8 only by the declaration, which this file does not have.
    WriteFile(m_dir / "nodecl.xml", Utf16("<a/>"));
    const auto noDecl =
        Run({"convert", Path("nodecl.xml"), "--encoding", "UTF-8", "-o", Path("out.xml")});
    EXPECT_EQ(noDecl.status, 1);
    EXPECT_NE(noDecl.err.find("not written: the document has no XML declaration"),
              std::string::npos);
    // UCS-4LE is read from a '<' in the first bytes, which a leading blank hides.
    WriteFile(m_dir / "blank.xml", Utf16(" <?xml version=\"1.0\"?><a/>"));
    EXPECT_NE(Run({"convert", Path("blank.xml"), "--encoding", "UCS-4LE", "-o", Path("out.xml")})
                  .err.find("not written: vx would not read the converted file"),
              std::string::npos);
    EXPECT_EQ(ReadFile(m_dir / "out.xml"), "old");
}

// External text is placed in its own file; a missing one is named with the system's reason.
TEST_F(VxmlTest, CheckNamesExternalFilesAndHints) {
    WriteFile(m_dir / "doc.xml", kDecl + "<!DOCTYPE a SYSTEM \"bad.dtd\">\n<a/>\n");
    WriteFile(m_dir / "bad.dtd", kDecl + "<!ELEMENT a (#PCDATA>\n");
    WriteFile(m_dir / "gone.xml", kDecl + "<!DOCTYPE a SYSTEM \"none.dtd\">\n<a/>\n");
    WriteFile(m_dir / "blanks.xml", "<?xml version=\"1.0\" encoding = \"UTF-8\"?><a/>");
    const auto result =
        Run({"check", "--lang", "en", Path("doc.xml"), Path("gone.xml"), Path("blanks.xml")});
    EXPECT_TRUE(Matches(
        result.out, Path("bad.dtd") +
                        ":2:<n>: error 15: An unexpected character appeared. (external text "
                        "read for " +
                        Path("doc.xml") + ")\n<lines>" + Path("gone.xml") +
                        ": fatal 2: Opening the file failed. (external file " + Path("none.dtd") +
                        ")\n  hint: " + Path("none.dtd") + ": No such file or directory\n<lines>" +
                        Path("blanks.xml") +
                        ": fatal 3: Detecting the character encoding failed.\n  hint: "
                        "the declaration has blanks around '=' after encoding; <lines>"))
        << result.out;
}

// A folder's files come in the byte order of their paths: "sub-x.xml" before "sub/a.xml", as
// '-' comes before '/'.
TEST_F(VxmlTest, CheckWalksFoldersInOrderWithWorkers) {
    fs::create_directories(m_dir / "tree/sub");
    const std::vector<std::string> inOrder{"tree/b.xml", "tree/sub-x.xml", "tree/sub/a.xml",
                                           "tree/z.xml"};
    for (const std::string& name : inOrder)
        WriteFile(m_dir / name, ReadFile(m_dir / "bad.xml"));
    WriteFile(m_dir / "tree/notes.txt", "<a/>");
    WriteFile(m_dir / "tree/ok.xml", ReadFile(m_dir / "good.xml"));
    const auto one = Run({"check", "-r", "-j", "1", Path("tree"), "-"}, "<a/>");
    const auto two = Run({"check", "--recursive", "--jobs=2", Path("tree"), "-"}, "<a/>");
    EXPECT_EQ(one.status, 1);
    EXPECT_EQ(two.out, one.out);
    EXPECT_TRUE(Matches(one.err, "vxml: 6 files checked, 5 with diagnostics, <n>.<n> s\n"));
    for (std::size_t i = 0; i + 1 < inOrder.size(); ++i)
        EXPECT_LT(one.out.find(Path(inOrder[i])), one.out.find(Path(inOrder[i + 1]))) << i;
    EXPECT_LT(one.out.find(Path("tree/z.xml")), one.out.find("<stdin>"));
    EXPECT_EQ(one.out.find("notes.txt"), std::string::npos);
    EXPECT_NE(Run({"check", "-r", "--all", Path("tree")}).out.find("notes.txt"), std::string::npos);
    // The fuzz seeds and samples, many with diagnostics and odd first bytes.
    const std::vector<std::string> seeds{"check", "-r", "--all", std::string(VXML_SAMPLES),
                                         std::string(VXML_SAMPLES) + "/../fuzz/corpus"};
    auto withJobs = [&](const std::string& jobs) {
        std::vector<std::string> args = seeds;
        args.insert(args.begin() + 1, {"-j", jobs});
        return Run(args);
    };
    const auto serial = withJobs("1");
    EXPECT_NE(serial.out, "");
    EXPECT_EQ(withJobs("3").out, serial.out);

    const auto quiet = Run({"check", "-q", "-r", Path("tree")});
    EXPECT_EQ(quiet.status, 1);
    EXPECT_EQ(quiet.out + quiet.err, "");
    // Without FILE, standard input.
    EXPECT_TRUE(Matches(Run({"check"}, ReadFile(m_dir / "bad.xml")).out,
                        "<lines><stdin>: fatal 7: Parsing stopped part-way.\n"));
}

// The tool's own words follow the language as the library's messages do: LC_ALL, else
// LC_MESSAGES, else LANG; --lang anywhere on the line decides, even for a usage error found
// before it.
TEST_F(VxmlTest, ToolMessagesFollowTheLanguage) {
    WriteFile(m_dir / "plain.xml", "<a/>");
    const std::string plain = Path("plain.xml"), out = Path("out.xml");
    struct Expected {
        std::string check, summary, usage, save, help;
    };
    const Expected english{
        plain +
            ": fatal 3: Detecting the character encoding failed.\n  hint: the file has no "
            "XML declaration; vx reads UTF-16LE and UCS-4LE from the first bytes, <lines>",
        "vxml: 2 files checked, 1 with diagnostics, <n>.<n> s\n",
        "vxml: unknown option '--colour'\nTry 'vxml --help'.\n",
        "vxml: " + out +
            " not saved: vx saves ISO-10646-UCS-2 only up to the first zero byte, which would "
            "lose the document; use 'vxml convert --encoding UTF-16LE' instead\n",
        "Usage: vxml save "};
    const Expected japanese{
        plain +
            ": fatal 3: 文字コードの判別に失敗しました。\n  ヒント: ファイルに XML 宣言が"
            "ありません。vx は UTF-16LE と UCS-4LE を先頭のバイトで、<lines>",
        "vxml: 2 ファイルを検査、診断ありは 1 ファイル、<n>.<n> 秒\n",
        "vxml: '--colour' というオプションはありません\n使い方は 'vxml --help' で表示できます。\n",
        "vxml: " + out +
            " は保存しませんでした: vx は ISO-10646-UCS-2 を最初のゼロバイトまでしか保存しない"
            "ため、文書が失われます。代わりに 'vxml convert --encoding UTF-16LE' "
            "を使ってください\n",
        "使い方: vxml save "};
    const std::pair<std::vector<std::string>, const Expected&> locales[] = {
        {{}, english},
        {{"LANG=ja_JP.UTF-8"}, japanese},
        {{"LANG=ja_JP.UTF-8", "LC_MESSAGES=C"}, english},
        {{"LANG=C", "LC_MESSAGES=ja_JP.eucJP"}, japanese},
        {{"LC_ALL=en_GB.UTF-8", "LC_MESSAGES=ja_JP.UTF-8"}, english}};
    for (const auto& [locale, expected] : locales) {
        SCOPED_TRACE(locale.empty() ? "no locale" : locale.back());
        const auto check = Run({"check", plain, Path("good.xml")}, "", locale);
        EXPECT_TRUE(Matches(check.out, expected.check)) << check.out;
        EXPECT_TRUE(Matches(check.err, expected.summary)) << check.err;
        EXPECT_EQ(Run({"check", "--colour", plain}, "", locale).err, expected.usage);
        EXPECT_EQ(
            Run({"save", Sample("japanese-sjis.xml"), "--encoding", "ISO-10646-UCS-2", "-o", out},
                "", locale)
                .err,
            expected.save);
        EXPECT_FALSE(fs::exists(out));
        EXPECT_EQ(Run({"save", "--help"}, "", locale).out.rfind(expected.help, 0), 0u);
    }
    EXPECT_EQ(Run({"check", "--colour", "--lang", "ja"}).err, japanese.usage);
    EXPECT_EQ(Run({"check", "--lang=en", "--colour"}, "", {"LANG=ja_JP.UTF-8"}).err, english.usage);
}

// The progress line stands on a terminal while more than a second of work seems left, and is
// cleared before the summary; elsewhere only the summary is written.
TEST_F(VxmlTest, ProgressLineOnlyOnATerminal) {
    const std::string onTerminal = CheckAfterSlowInput(true);
    EXPECT_TRUE(Matches(onTerminal,
                        "\r\x1b[K1/3 files, 0 with diagnostics, about <n> s left\r\x1b[K"
                        "vxml: 3 files checked, 0 with diagnostics, <n>.<n> s\r\n"))
        << onTerminal;
    EXPECT_TRUE(Matches(CheckAfterSlowInput(false),
                        "vxml: 3 files checked, 0 with diagnostics, <n>.<n> s\n"));
}

}  // namespace
