// Parsing on several threads at once gives every thread what it would get alone, and documents
// handed to another thread are read and deleted there.
#include <algorithm>
#include <condition_variable>
#include <deque>
#include <filesystem>
#include <functional>
#include <mutex>
#include <regex>
#include <thread>

#include "ParseTestUtil.h"
#include "vx/dom/NameCache.h"
#include "vx/dom/XmlCharData.h"

namespace {

using namespace parsetest;

std::string Utf8(const vx::CVelStrW& text) {
    return vx::CVelStr(text).c_str();
}

void DumpNodes(const vx::CXmlListContainer& nodes, std::string& out);

void DumpElement(const vx::CXmlElement& element, std::string& out) {
    out += "<" + Utf8(element.GetName());
    for (int i = 0; i < element.GetAttCount(); ++i) {
        const vx::CXmlAttribute& att = element.GetAttAt(i);
        out += " " + Utf8(att.GetName()) + "=[" + Utf8(att.GetValue()) + "]";
    }
    out += ">";
    DumpNodes(element.GetChildren(), out);
    out += "</>";
}

void DumpNodes(const vx::CXmlListContainer& nodes, std::string& out) {
    for (int i = 0; i < nodes.GetSize(); ++i) {
        const vx::CXmlBaseObject& node = *nodes.GetAt(i);
        out += std::to_string(node.GetClassType()) + ":";
        if (node.GetClassType() == vx::eXmlElementType) {
            DumpElement(static_cast<const vx::CXmlElement&>(node), out);
        } else if (node.GetClassType() == vx::eXmlListContainerType) {
            DumpNodes(static_cast<const vx::CXmlListContainer&>(node), out);
        } else {
            out += "[" + Utf8(static_cast<const vx::CXmlTextObject&>(node).GetText()) + "]";
        }
    }
}

// Everything a host sees of a parse: declaration fields, tree, XML text and diagnostics.
std::string Dump(const vx::CXmlDocument& doc) {
    std::string out = Utf8(doc.GetVersion()) + "|" + Utf8(doc.GetEncoding()) + "|" +
                      Utf8(doc.GetStandard()) + "\n";
    DumpElement(doc.GetRootElement(), out);
    vx::CVelStringBuffer<vx::CVelStrW> source;
    doc.GetSource(source);
    out += "\n" + Utf8(source.ToString()) + "\n";
    const vx::CParseErrorList errors = doc.GetErrList();
    for (int i = 0; i < errors.GetSize(); ++i) {
        const vx::CParseError& e = errors.GetAt(i);
        out += std::to_string(e.GetErrCode()) + "/" + std::to_string(e.GetErrLevel()) + "@" +
               std::to_string(e.GetLine()) + ":" + std::to_string(e.GetColumn()) + " " +
               Utf8(e.GetErrMsg()) + "\n";
    }
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
        const std::unique_ptr<vx::CXmlDocument> doc(input());
        return Dump(*doc);
    } catch (const std::exception& e) {
        return std::string("exception: ") + e.what();
    }
}

// Deletes what it is given on a thread of its own, after checking it.
class CDeleter {
  public:
    using Check = std::function<void(const vx::CXmlDocument&, std::size_t)>;
    explicit CDeleter(Check check) : m_check(std::move(check)), m_thread([this] { Run(); }) {}
    ~CDeleter() {
        Push(nullptr, 0);
        m_thread.join();
    }
    void Push(vx::CXmlDocument* doc, std::size_t input) {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_queue.emplace_back(doc, input);
        m_ready.notify_one();
    }

  private:
    void Run() {
        for (;;) {
            std::unique_lock<std::mutex> lock(m_mutex);
            m_ready.wait(lock, [this] { return !m_queue.empty(); });
            const auto [doc, input] = m_queue.front();
            m_queue.pop_front();
            lock.unlock();
            if (!doc) return;
            m_check(*doc, input);
            delete doc;
        }
    }

    Check m_check;
    std::mutex m_mutex;
    std::condition_variable m_ready;
    std::deque<std::pair<vx::CXmlDocument*, std::size_t>> m_queue;
    std::thread m_thread;  // last: starts once the rest is ready
};

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
    CDeleter deleter([&](const vx::CXmlDocument& doc, std::size_t i) { compare(Dump(doc), i); });
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (int round = 0; round < kRounds; ++round) {
                for (std::size_t k = 0; k < inputs.size(); ++k) {
                    const std::size_t i = (k + t) % inputs.size();
                    std::unique_ptr<vx::CXmlDocument> doc;
                    try {
                        doc.reset(inputs[i]());
                    } catch (const std::exception& e) {
                        compare(std::string("exception: ") + e.what(), i);
                        continue;
                    }
                    if ((i + t + round) % 2) {
                        deleter.Push(doc.release(), i);
                    } else {
                        compare(Dump(*doc), i);
                    }
                }
            }
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

// Each thread's name cache behaves as if the thread were alone: interning on one thread neither
// evicts nor shares the strings of another. Finalize releases the caches of a thread that is
// still running, and that thread's next intern starts a new cache.
TEST(Threads, NameCachesArePerThreadAndFinalizeReleasesThem) {
    const char16_t* first = vx::ElementNameCache().Intern(vx::CVelStrW(u"name")).c_str();
    std::mutex mutex;
    std::condition_variable cv;
    int step = 0;
    auto waitFor = [&](int wanted) {
        std::unique_lock<std::mutex> lock(mutex);
        cv.wait(lock, [&] { return step == wanted; });
    };
    auto advance = [&] {
        std::lock_guard<std::mutex> lock(mutex);
        ++step;
        cv.notify_all();
    };
    const char16_t* other = nullptr;
    std::string before, after;
    std::thread worker([&] {
        other = vx::ElementNameCache().Intern(vx::CVelStrW(u"name")).c_str();
        for (int i = 0; i < 500; ++i)  // more than the capacity: this thread's "name" goes
            vx::ElementNameCache().Intern(vx::CVelStrW(std::to_string(i).c_str()));
        before = Outcome([] { return vx::CParse::ParseForBuf(Wide(u"<a b='c'>d</a>")); });
        advance();
        waitFor(2);
        after = Outcome([] { return vx::CParse::ParseForBuf(Wide(u"<a b='c'>d</a>")); });
    });
    waitFor(1);
    EXPECT_NE(other, first);
    EXPECT_EQ(vx::ElementNameCache().Intern(vx::CVelStrW(u"name")).c_str(), first);
    vx::Finalize();  // the worker is alive, its caches are released
    advance();
    worker.join();
    EXPECT_EQ(after, before);
    EXPECT_EQ(vx::ElementNameCache().Intern(vx::CVelStrW(u"name")).GetLength(), 4);
}

}  // namespace
