// Parses the same inputs with vx and with libxml2, Expat, pugixml and TinyXML-2, and prints side
// by side the median throughput of several runs, vx's ratio to each peer and the peak memory of a
// process that parses the input once.
//
// usage: parsers_bench [--runs N] [--only CONTENDER]... INPUT.xml... [--growth INPUT.xml...]
//   --only    time only these contenders (e.g. "vx buf"), without tables: for profiling
//   --growth  inputs of one kind at several sizes: how vx's time grows with its diagnostics
// A child started as "parsers_bench --once CONTENDER INPUT.xml" parses once and prints its
// resident memory before the parse and its peak, in kB.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "Contenders.h"
#include "Timing.h"

namespace {

using bench::Contender;
using bench::Contenders;
using bench::Input;
using bench::Outcome;
using bench::ThreadSeconds;

// ---- one parse in a child process ----

long StatusKb(const char* field) {
    std::ifstream status("/proc/self/status");
    const std::string key = field;
    for (std::string line; std::getline(status, line);) {
        if (line.compare(0, key.size(), key) == 0) return std::stol(line.substr(key.size()));
    }
    throw std::runtime_error(key + " missing from /proc/self/status");
}

int RunOnce(const std::string& name, const std::string& path) {
    const Contender* contender = bench::FindContender(name);
    if (!contender) throw std::runtime_error("no contender " + name);
    const Input input = bench::LoadInput(path, contender->needs == Contender::eBytes,
                                         contender->needs == Contender::eText);
    // Sets the peak to what is resident now, so loading the input is not counted as parsing.
    std::ofstream("/proc/self/clear_refs") << "5";
    const long before = StatusKb("VmRSS:");
    if (StatusKb("VmHWM:") > before + 1024) throw std::runtime_error("cannot reset the peak");
    contender->run(input);
    std::printf("%ld %ld\n", before, StatusKb("VmHWM:"));
    return 0;
}

// ---- measuring in the parent ----

struct Memory {
    double added = 0;  // MB the parse added at its peak
    double peak = 0;   // MB of the whole process at its peak
};

struct Measure {
    double seconds = 0;  // median
    double mbPerSecond = 0;
    Outcome outcome;
    std::optional<Memory> memory;
};

Measure Time(const Contender& contender, const Input& input, int runs) {
    Measure measure;
    auto once = [&] {
        const double start = ThreadSeconds();
        measure.outcome = contender.run(input);
        return ThreadSeconds() - start;
    };
    // The first run warms the caches and the allocator and is not counted; a slow one stands
    // for fewer runs, to keep the whole benchmark within minutes.
    if (once() > 2.0) runs = std::min(runs, 3);
    std::vector<double> times;
    for (int i = 0; i < runs; ++i)
        times.push_back(once());
    std::sort(times.begin(), times.end());
    measure.seconds = times[times.size() / 2];
    measure.mbPerSecond = input.bytes.size() / 1e6 / measure.seconds;
    return measure;
}

std::string Quote(const std::string& text) {
    std::string quoted = "'";
    for (char ch : text) {
        if (ch == '\'') {
            quoted.append("'\\''");
        } else {
            quoted.push_back(ch);
        }
    }
    quoted.push_back('\'');
    return quoted;
}

std::string SelfPath() {
    char path[4096];
    const ssize_t n = readlink("/proc/self/exe", path, sizeof(path) - 1);
    if (n <= 0) throw std::runtime_error("cannot find /proc/self/exe");
    return std::string(path, static_cast<std::size_t>(n));
}

// Empty when the child failed; it says why on its standard error.
std::optional<Memory> MeasureMemory(const Contender& contender, const Input& input) {
    const std::string command =
        Quote(SelfPath()) + " --once " + Quote(contender.name) + " " + Quote(input.path);
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) return std::nullopt;
    long before = 0;
    long peak = 0;
    const int read = std::fscanf(pipe, "%ld %ld", &before, &peak);
    if (pclose(pipe) != 0 || read != 2) return std::nullopt;
    constexpr double kMbPerKb = 1024 / 1e6;
    return Memory{(peak - before) * kMbPerKb, peak * kMbPerKb};
}

// ---- tables ----

class Table {
  public:
    explicit Table(std::vector<std::string> header) : m_rows{std::move(header)} {}
    void Add(std::vector<std::string> row) { m_rows.push_back(std::move(row)); }

    // A Markdown table with aligned columns; numbers and marks right-aligned.
    void Print() const {
        std::vector<std::size_t> widths(m_rows[0].size(), 3);
        for (const auto& row : m_rows) {
            for (std::size_t i = 0; i < row.size(); ++i)
                widths[i] = std::max(widths[i], Width(row[i]));
        }
        for (std::size_t r = 0; r < m_rows.size(); ++r) {
            std::string line = "|";
            for (std::size_t i = 0; i < widths.size(); ++i) {
                const std::string& cell = m_rows[r][i];
                const std::size_t pad = widths[i] - Width(cell);
                line.push_back(' ');
                if (i != 0) line.append(pad, ' ');
                line.append(cell);
                if (i == 0) line.append(pad, ' ');
                line.append(" |");
            }
            std::puts(line.c_str());
            if (r == 0) std::puts(Rule(widths).c_str());
        }
        std::puts("");
    }

  private:
    // The line under the header: the first column left-aligned, the others right-aligned.
    static std::string Rule(const std::vector<std::size_t>& widths) {
        std::string rule = "|";
        for (std::size_t i = 0; i < widths.size(); ++i) {
            rule.append(i == 0 ? " :" : " ");
            rule.append(widths[i] - 1, '-');
            rule.append(i == 0 ? " |" : ": |");
        }
        return rule;
    }

    // Display width of UTF-8 text: its characters.
    static std::size_t Width(const std::string& text) {
        return std::count_if(text.begin(), text.end(), [](char ch) { return (ch & 0xC0) != 0x80; });
    }

    std::vector<std::vector<std::string>> m_rows;
};

std::string Fixed(double value, int decimals) {
    char text[64];
    std::snprintf(text, sizeof(text), "%.*f", decimals, value);
    return text;
}

// Throughput with a mark for a run that did not parse the input cleanly.
std::string Rate(const Measure& measure) {
    const std::string rate = Fixed(measure.mbPerSecond, measure.mbPerSecond < 100 ? 1 : 0);
    if (measure.outcome.stopped) return rate + " †";
    return measure.outcome.errors ? rate + " *" : rate;
}

const char* kLegend =
    "`*` reported diagnostics and read to the end; `†` stopped at an error before the end, so "
    "the rate covers only what it read.\n";

struct Result {
    Input input;  // without its text and bytes
    double mb = 0;
    std::vector<Measure> measures;  // one per contender, in the order of Contenders()
};

std::size_t IndexOf(const std::string& name) {
    const std::vector<Contender>& all = Contenders();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const Contender& c) { return name == c.name; });
    if (found == all.end()) throw std::logic_error("no contender " + name);
    return static_cast<std::size_t>(found - all.begin());
}

const std::size_t kFloor = IndexOf("decode floor");
const std::size_t kVxBuf = IndexOf("vx buf");
const std::size_t kVxFile = IndexOf("vx file");
const std::size_t kVxProductions = IndexOf("vx productions");
const std::size_t kLibxml2 = IndexOf("libxml2");
const std::size_t kTinyxml2 = IndexOf("tinyxml2");
const std::size_t kFirstPeer = kLibxml2;

// Times the contenders at the given indexes on one input, and measures their memory if asked.
Result MeasureInput(const std::string& path, const std::vector<std::size_t>& contenders, int runs,
                    bool withMemory) {
    Result result{bench::LoadInput(path, true, true), 0, {}};
    result.mb = result.input.bytes.size() / 1e6;
    result.measures.resize(Contenders().size());
    for (std::size_t i : contenders) {
        const Contender& contender = Contenders()[i];
        std::fprintf(stderr, "%s: %s\n", result.input.name.c_str(), contender.name);
        result.measures[i] = Time(contender, result.input, runs);
        if (withMemory && i != kFloor) {
            result.measures[i].memory = MeasureMemory(contender, result.input);
        }
    }
    result.input.bytes.clear();
    result.input.text.Clear();
    return result;
}

// Only runs that both read the whole input compare.
bool Comparable(const Result& result, std::size_t peer) {
    return !result.measures[kVxBuf].outcome.stopped && !result.measures[peer].outcome.stopped;
}

double Ratio(const Result& result, std::size_t peer) {
    return result.measures[kVxBuf].mbPerSecond / result.measures[peer].mbPerSecond;
}

void PrintThroughput(const std::vector<Result>& results) {
    std::vector<std::string> header = {"input", "MB"};
    for (const Contender& contender : Contenders())
        header.push_back(contender.name);
    header.push_back("vx diagnostics");
    Table table(header);
    for (const Result& result : results) {
        std::vector<std::string> row = {result.input.name, Fixed(result.mb, 1)};
        for (const Measure& measure : result.measures)
            row.push_back(Rate(measure));
        row.push_back(std::to_string(result.measures[kVxBuf].outcome.errors));
        table.Add(row);
    }
    std::puts("Throughput, MB/s of input over the processor time of a run, median of the runs:\n");
    table.Print();
    std::puts(kLegend);
}

void PrintRatios(const std::vector<Result>& results) {
    std::vector<std::string> header = {"input"};
    for (std::size_t i = kFirstPeer; i < Contenders().size(); ++i)
        header.push_back(std::string("÷ ") + Contenders()[i].name);
    header.push_back("vx file time ÷ floor time");
    Table table(header);
    for (const Result& result : results) {
        std::vector<std::string> row = {result.input.name};
        for (std::size_t i = kFirstPeer; i < result.measures.size(); ++i) {
            row.push_back(Comparable(result, i) ? Fixed(Ratio(result, i), 2) : "–");
        }
        row.push_back(Fixed(result.measures[kVxFile].seconds / result.measures[kFloor].seconds, 1));
        table.Add(row);
    }
    std::puts(
        "vx buf's throughput divided by each peer's (– where either stopped early), and vx file's "
        "time over the time of decoding alone:\n");
    table.Print();
}

void PrintMemory(const std::vector<Result>& results) {
    std::vector<std::string> header = {"input"};
    for (std::size_t i = kVxBuf; i < Contenders().size(); ++i)
        header.push_back(Contenders()[i].name);
    Table table(header);
    for (const Result& result : results) {
        std::vector<std::string> row = {result.input.name};
        for (std::size_t i = kVxBuf; i < result.measures.size(); ++i) {
            const std::optional<Memory>& memory = result.measures[i].memory;
            row.push_back(memory ? Fixed(memory->added, 0) + " (" + Fixed(memory->peak, 0) + ")"
                                 : "n/a");
        }
        table.Add(row);
    }
    std::puts(
        "Memory of one parse in a fresh process, MB: what the parse added to the resident set at "
        "its peak (VmHWM after the parse less VmRSS before it; the input as the entry point takes "
        "it is loaded first), and in parentheses the process's whole peak:\n");
    table.Print();
}

void PrintGrowth(const std::vector<Result>& results) {
    Table table({"input", "MB", "vx diagnostics", "vx buf ms", "vx buf ms per MB",
                 "libxml2 diagnostics", "libxml2 ms"});
    for (const Result& result : results) {
        const Measure& vx = result.measures[kVxBuf];
        const Measure& libxml2 = result.measures[kLibxml2];
        table.Add({result.input.name, Fixed(result.mb, 1), std::to_string(vx.outcome.errors),
                   Fixed(vx.seconds * 1e3, 1), Fixed(vx.seconds * 1e3 / result.mb, 2),
                   std::to_string(libxml2.outcome.errors), Fixed(libxml2.seconds * 1e3, 1)});
    }
    std::puts("The document with errors at several sizes:\n");
    table.Print();
}

// The targets, judged on the measurements above.
void PrintTargets(const std::vector<Result>& results) {
    std::puts("Targets, over the inputs that vx and the peer both read to the end:\n");
    auto say = [](const std::string& target, bool met, const std::string& detail) {
        std::printf("- %s: %s (%s)\n", target.c_str(), met ? "met" : "NOT met", detail.c_str());
    };
    // The lowest value of what(result) over the results that compare with peer.
    auto lowest = [&](std::size_t peer, auto what) {
        std::pair<double, std::string> low{1e300, "no input"};
        for (const Result& result : results) {
            if (Comparable(result, peer) && what(result) < low.first) {
                low = {what(result), result.input.name};
            }
        }
        return low;
    };
    const auto libxml2 = lowest(kLibxml2, [](const Result& r) { return Ratio(r, kLibxml2); });
    say("vx buf at least 2 times libxml2's throughput", libxml2.first >= 2,
        "lowest " + Fixed(libxml2.first, 2) + " on " + libxml2.second);
    // TinyXML-2 keeps the internal entities of input 5 unexpanded: only inputs 1-4 compare.
    const auto tiny = lowest(kTinyxml2, [](const Result& r) {
        const int number = std::atoi(r.input.name.c_str());
        return number >= 1 && number <= 4 ? Ratio(r, kTinyxml2) : 1e300;
    });
    say("vx buf ahead of TinyXML-2 on inputs 1-4", tiny.first > 1,
        "lowest " + Fixed(tiny.first, 2) + " on " + tiny.second);
    std::pair<double, std::string> errors{0, "no input"};  // the highest vx buf ÷ productions
    for (const Result& result : results) {
        if (result.measures[kVxBuf].outcome.errors == 0) continue;
        const double ratio =
            result.measures[kVxBuf].seconds / result.measures[kVxProductions].seconds;
        if (ratio > errors.first) errors = {ratio, result.input.name};
    }
    say("a document with an error at most 1.3 times the productions' time", errors.first <= 1.3,
        "at most " + Fixed(errors.first, 2) + " times, on " + errors.second);
    std::pair<double, std::string> memory{0, "no input"};  // the highest vx ÷ libxml2
    for (const Result& result : results) {
        const std::optional<Memory>& vx = result.measures[kVxBuf].memory;
        const std::optional<Memory>& peer = result.measures[kLibxml2].memory;
        if (!Comparable(result, kLibxml2) || !vx || !peer) continue;
        const double ratio = vx->added / std::max(peer->added, 0.1);
        if (ratio > memory.first) memory = {ratio, result.input.name};
    }
    say("memory added by a vx buf parse no more than libxml2's", memory.first <= 1,
        "vx's at most " + Fixed(memory.first, 2) + " times libxml2's, on " + memory.second);
    std::puts("");
}

int Main(int argc, char** argv) {
    const std::vector<std::string> args(argv + 1, argv + argc);
    if (args.size() == 3 && args[0] == "--once") return RunOnce(args[1], args[2]);
    bench::KeepFreedMemory();
    int runs = 5;
    std::vector<std::size_t> contenders;
    std::vector<std::string> inputs;
    std::vector<std::string> growth;
    std::vector<std::string>* list = &inputs;
    for (std::size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "--runs" && i + 1 < args.size()) {
            runs = std::max(1, std::stoi(args[++i]));
        } else if (args[i] == "--only" && i + 1 < args.size()) {
            contenders.push_back(IndexOf(args[++i]));
        } else if (args[i] == "--growth") {
            list = &growth;
        } else {
            list->push_back(args[i]);
        }
    }
    if (inputs.empty()) {
        std::fputs(
            "usage: parsers_bench [--runs N] [--only CONTENDER]... INPUT.xml... "
            "[--growth INPUT.xml...]\n",
            stderr);
        return 2;
    }
    if (!contenders.empty()) {
        // Timing a few contenders alone, e.g. under a profiler; no tables.
        for (const std::string& path : inputs) {
            const Result result = MeasureInput(path, contenders, runs, false);
            for (std::size_t i : contenders) {
                std::printf("%s %s: %s MB/s\n", result.input.name.c_str(), Contenders()[i].name,
                            Rate(result.measures[i]).c_str());
            }
        }
        return 0;
    }
    std::vector<std::size_t> all(Contenders().size());
    for (std::size_t i = 0; i < all.size(); ++i)
        all[i] = i;
    std::vector<Result> results;
    for (const std::string& path : inputs)
        results.push_back(MeasureInput(path, all, runs, true));
    std::vector<Result> sizes;
    for (const std::string& path : growth)
        sizes.push_back(MeasureInput(path, {kVxBuf, kLibxml2}, runs, false));

    std::printf("%d timed runs per input and parser, after one untimed run.\n\n", runs);
    PrintThroughput(results);
    PrintRatios(results);
    PrintMemory(results);
    if (!sizes.empty()) PrintGrowth(sizes);
    PrintTargets(results);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    return bench::RunMain("parsers_bench", Main, argc, argv);
}
