// Parsing on several threads at once gives every thread what it would get alone, and documents
// handed to another thread are read and deleted there.
#include <filesystem>
#include <functional>
#include <latch>
#include <mutex>
#include <regex>
#include <thread>
#include <utility>

#include "CanonicalDump.h"
#include "ParseTestUtil.h"
#include "vx/dom/NameCache.h"

namespace {

using namespace parsetest;

// Everything a host sees of a parse: declaration fields, tree, XML text and diagnostics.
std::string Dump(const vx::CXmlDocument& doc) {
    std::string out;
    for (const vx::CVelStrW& field : {doc.GetVersion(), doc.GetEncoding(), doc.GetStandard()})
        dump::Text(out, field);
    dump::Element(out, doc.GetRootElement(), 0);
    vx::CVelStringBuffer<vx::CVelStrW> source;
    doc.GetSource(source);
    dump::Text(out, source.ToString());
    dump::Errors(out, doc.GetErrList());
    return out;
}

// One input: how to parse it, through a static factory or a parser of its own.
using Input = std::function<vx::CXmlDocument*()>;

std::vector<Input> Inputs(const TempDir& dir) {
    std::vector<Input> inputs;
    auto file = [&](const std::string& path) {
        inputs.push_back([path] { return vx::CParse::ParseForFile(vx::CVelStr(path.c_str())); });
    };
    auto buffer = [&](const std::u16string& text) {
        inputs.push_back([text] { return vx::CParse::ParseForBuf(Wide(text)); });
    };
    for (const auto& entry : std::filesystem::directory_iterator(VX_SAMPLES_DIR)) {
        if (entry.path().extension() == ".xml") file(entry.path());
    }
    const std::string decl = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
    WriteFile(dir / "ext.dtd", decl + "<!ENTITY who \"world\"><!ENTITY bad SYSTEM \"none.ent\">");
    WriteFile(dir / "part.ent", decl + "<b x=\"&who;\">&who;</b>tail");
    WriteFile(dir / "doc.xml", decl +
                                   "<!DOCTYPE r SYSTEM \"ext.dtd\" [<!ENTITY p SYSTEM "
                                   "\"part.ent\">]>\n<r a=\"&who;\">&p;&who;&p;</r>");
    WriteFile(dir / "missing.xml", decl + "<!DOCTYPE r SYSTEM \"gone.dtd\"><r>&who;</r>");
    file(dir / "doc.xml");
    file(dir / "missing.xml");
    file(dir / "absent.xml");
    buffer(u"<a x='1' x='2'><b></c></a>");
    buffer(u"<a>&undefined; &#0; <![CDATA[x]]></a>");
    buffer(u"<?xml version='1.0'?><a>\n<b y='&lt;'>text</b>\n<!-- c --></a><!-- trailing -->");
    std::u16string deep;  // beyond the nesting limit of the second run
    for (int i = 0; i < 60; ++i)
        deep = u"<d>" + deep + u"</d>";
    buffer(deep);
    inputs.push_back([] {
        vx::CParse parser;
        return parser.ParseForBuf(Wide(u"<p q='r'>own parser</p>"), vx::CVelStr());
    });
    return inputs;
}

// The dump of a parse, or the text of the exception it threw.
std::string Outcome(const Input& input) {
    try {
        return Dump(*Document(input()));
    } catch (const std::exception& e) {
        return std::string("exception: ") + e.what();
    }
}

constexpr int kThreads = 8;
constexpr int kRounds = 12;

// Parses every input on kThreads threads kRounds times; half of the documents are checked and
// deleted by another thread. Returns the mismatches with the single-thread results.
std::vector<std::string> ParseOnThreads(const std::vector<Input>& inputs) {
    std::vector<std::string> expected;
    for (const Input& input : inputs)
        expected.push_back(Outcome(input));
    std::mutex mutex;
    std::vector<std::string> mismatches;
    auto compare = [&](const std::string& got, std::size_t input) {
        if (got == expected[input]) return;
        std::lock_guard<std::mutex> lock(mutex);
        mismatches.push_back("input " + std::to_string(input) + ":\n" + got);
    };
    // Each thread hands a round's odd documents to a thread of their own, which checks and
    // deletes them while the next round is parsed.
    auto checkAndDelete = [&](std::vector<std::pair<Document, std::size_t>> docs) {
        for (auto& [doc, input] : docs) {
            compare(Dump(*doc), input);
            doc.reset();
        }
    };
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            std::thread deleter;
            for (int round = 0; round < kRounds; ++round) {
                std::vector<std::pair<Document, std::size_t>> handed;
                for (std::size_t k = 0; k < inputs.size(); ++k) {
                    const std::size_t i = (k + t) % inputs.size();
                    Document doc;
                    try {
                        doc.reset(inputs[i]());
                    } catch (const std::exception& e) {
                        compare(std::string("exception: ") + e.what(), i);
                        continue;
                    }
                    if ((i + t + round) % 2) {
                        handed.emplace_back(std::move(doc), i);
                    } else {
                        compare(Dump(*doc), i);
                    }
                }
                if (deleter.joinable()) deleter.join();
                deleter = std::thread(checkAndDelete, std::move(handed));
            }
            deleter.join();
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    return mismatches;
}

TEST(Threads, EveryThreadGetsTheSingleThreadResult) {
    TempDir dir;
    const std::vector<Input> inputs = Inputs(dir);
    ASSERT_GE(inputs.size(), 13u);  // the samples were found
    LogCapture log;
    EXPECT_EQ(ParseOnThreads(inputs), std::vector<std::string>{});
    // Settings made before the threads start hold on all of them.
    vx::SetExternalLoading(false);
    {
        NestingLimit limit(40);
        EXPECT_EQ(ParseOnThreads(inputs), std::vector<std::string>{});
    }
    vx::SetExternalLoading(true);
    // Threads log whole lines, never one thread's prefix with another's message.
    const std::regex line(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3}|Parse\(\d+\): [A-Za-z:]+: )"
                          R"((<[0-9a-f]{8}> : (>> START|<< END)|例外発生\(dummy\)))");
    int scopes = 0;
    for (const std::string& text : log.Lines()) {
        EXPECT_TRUE(std::regex_match(text, line)) << text;
        scopes += text.find("START") != std::string::npos;
    }
    EXPECT_GE(scopes, 2 * kThreads * kRounds * static_cast<int>(inputs.size()));
}

// A thread's name caches are its own: interning on one thread neither shares nor evicts the
// strings of another. Finalize releases the caches of a thread that is still running, whose
// next parse starts new ones.
TEST(Threads, NameCachesArePerThreadAndFinalizeReleasesThem) {
    auto intern = [] { return vx::ElementNameCache().Intern(vx::CVelStrW(u"name")).c_str(); };
    auto parse = [] {
        return Outcome([] { return vx::CParse::ParseForBuf(Wide(u"<a b='c'>d</a>")); });
    };
    const char16_t* mine = intern();
    const char16_t* theirs = nullptr;
    std::string before, after;
    std::latch filled(1), finalized(1);
    std::thread worker([&] {
        theirs = intern();
        for (int i = 0; i < 500; ++i)  // past the capacity: this thread's "name" goes
            vx::ElementNameCache().Intern(vx::CVelStrW(std::to_string(i).c_str()));
        before = parse();
        filled.count_down();
        finalized.wait();
        after = parse();
    });
    filled.wait();
    EXPECT_NE(theirs, mine);
    EXPECT_EQ(intern(), mine);
    vx::Finalize();
    finalized.count_down();
    worker.join();
    EXPECT_EQ(after, before);
}

}  // namespace
