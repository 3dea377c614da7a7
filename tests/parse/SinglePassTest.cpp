// The single-pass reader against the productions alone, over every document the repository
// holds: the markup literals of the test sources, the fuzz seed corpora, the samples and the
// benchmark's inputs (generated small). Tree, fields, errors, exception and log must agree.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <regex>
#include <string>
#include <vector>

#include "CanonicalDump.h"
#include "ParseTestUtil.h"

namespace {

namespace fs = std::filesystem;
using parsetest::LogCapture;
using platform_test::ReadFile;

struct CDocument {
    std::string origin;
    vx::CVelStrW text;
    vx::CVelStr fileName;
};

fs::path RepositoryRoot() {
    return fs::path(VX_SAMPLES_DIR).parent_path();
}

// The body of the literal that opens at pos (after its quote), with the common escapes undone.
std::string LiteralBody(const std::string& code, std::size_t& pos) {
    std::string body;
    while (pos < code.size() && code[pos] != '"') {
        char ch = code[pos++];
        if (ch == '\\' && pos < code.size()) {
            const char escaped = code[pos++];
            static const std::string from = "ntr0", to = "\n\t\r";
            const std::size_t known = from.find(escaped);
            ch = known == std::string::npos ? escaped : known < 3 ? to[known] : '\0';
        }
        body += ch;
    }
    ++pos;
    return body;
}

// The string literals of a source that hold markup, adjacent ones joined; raw literals whole.
std::vector<std::string> MarkupLiterals(const std::string& code) {
    static const std::regex open(R"re((u8|u)?(R"([^(]*)\(|"))re");
    std::vector<std::string> found;
    std::string joined;
    std::size_t joinedEnd = 0;
    for (auto it = std::sregex_iterator(code.begin(), code.end(), open);
         it != std::sregex_iterator(); ++it) {
        const std::size_t start = static_cast<std::size_t>(it->position());
        if (start < joinedEnd) continue;  // inside the previous literal
        std::size_t pos = start + static_cast<std::size_t>(it->length());
        std::string body;
        if ((*it)[3].matched) {
            const std::string close = ")" + (*it)[3].str() + "\"";
            const std::size_t end = code.find(close, pos);
            if (end == std::string::npos) break;
            body = code.substr(pos, end - pos);
            pos = end + close.size();
        } else {
            body = LiteralBody(code, pos);
        }
        const bool adjacent = code.find_first_not_of(" \n", joinedEnd) == start;
        if (!adjacent) {
            if (joined.find('<') != std::string::npos) found.push_back(joined);
            joined.clear();
        }
        joined += body;
        joinedEnd = pos;
    }
    if (joined.find('<') != std::string::npos) found.push_back(joined);
    return found;
}

vx::CVelStrW FromUtf8(const std::string& bytes) {
    return vx::CVelStrW(vx::CVelStr(bytes.c_str()));
}

void AddTestSources(const fs::path& root, std::vector<CDocument>& documents) {
    for (const auto& entry : fs::recursive_directory_iterator(root / "tests")) {
        if (entry.path().extension() != ".cpp") continue;
        for (const std::string& literal : MarkupLiterals(ReadFile(entry.path())))
            documents.push_back({entry.path().string(), FromUtf8(literal), {}});
    }
}

// Files as ParseForFile reads them, or as UTF-8 when their encoding is not detected.
void AddFiles(const fs::path& folder, std::vector<CDocument>& documents) {
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (!entry.is_regular_file()) continue;
        const vx::CVelStr name(entry.path().string().c_str());
        vx::CVelStrW text;
        if (vx::CParse::LoadWideText(name, text) != vx::CParseError::eErrNone) {
            text = FromUtf8(ReadFile(entry.path()));
        }
        documents.push_back({entry.path().string(), text, name});
    }
}

// Log lines without their time stamps.
std::string LogOf(const vx::CVelStrW& text, bool singlePass, const vx::CVelStr& fileName,
                  std::string& dump) {
    static const std::regex stamp(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3}\n)");
    const LogCapture log;
    dump = dump::ParseAndDump(text, singlePass, fileName);
    return std::regex_replace(log.Text(), stamp, "");
}

}  // namespace

TEST(SinglePassReader, AgreesWithTheProductionsOnEveryDocumentOfTheRepository) {
    const fs::path root = RepositoryRoot();
    std::vector<CDocument> documents;
    AddTestSources(root, documents);
    AddFiles(root / "fuzz" / "corpus", documents);
    AddFiles(root / "samples", documents);
    const platform_test::TempDir inputs;
    const std::string generate = "python3 '" + (root / "bench" / "gen_inputs.py").string() + "' '" +
                                 inputs.Path() + "' --mb 0.3 >/dev/null";
    ASSERT_EQ(std::system(generate.c_str()), 0);
    AddFiles(inputs.Path(), documents);
    EXPECT_GT(documents.size(), 300u);
    for (const CDocument& document : documents) {
        std::string designed, singlePass;
        const std::string designedLog = LogOf(document.text, false, document.fileName, designed);
        const std::string singlePassLog = LogOf(document.text, true, document.fileName, singlePass);
        ASSERT_EQ(designed, singlePass) << document.origin << "\n"
                                        << vx::CVelStr(document.text).c_str();
        ASSERT_EQ(designedLog, singlePassLog) << document.origin;
    }
}
