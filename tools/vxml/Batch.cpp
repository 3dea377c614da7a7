// The check command over many files: several worker processes, reports in the order of the
// files, a progress line and a summary.
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <deque>
#include <functional>
#include <optional>
#include <stdexcept>

#include "Check.h"
#include "FileWalk.h"
#include "Messages.h"
#include "Output.h"

namespace vxml {
namespace {

struct FileReport {
    int status = 0;   // 0 no diagnostics, 1 diagnostics, 2 the library failed
    std::string out;  // for standard output
    std::string err;  // for standard error
};

FileReport CheckFile(const std::string& file, const Options& options) {
    FileReport report;
    try {
        report.out = FormatDiagnostics(LoadDocument(file), options);
        report.status = report.out.empty() ? 0 : 1;
    } catch (const std::exception& error) {
        report.err = "vxml: " + file + ": " + error.what() + "\n";
        report.status = 2;
    }
    if (options.quiet) report.out.clear(), report.err.clear();
    return report;
}

using ReportSink = std::function<void(std::size_t index, FileReport report)>;

// ---- worker processes ----

void WriteAll(int fd, const void* data, std::size_t size) {
    const char* bytes = static_cast<const char*>(data);
    while (size > 0) {
        const ssize_t put = ::write(fd, bytes, size);
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) throw std::runtime_error(Say(Text::kWorkerPipeBroke));
        bytes += put;
        size -= static_cast<std::size_t>(put);
    }
}

bool ReadAll(int fd, void* data, std::size_t size) {
    char* bytes = static_cast<char*>(data);
    while (size > 0) {
        const ssize_t got = ::read(fd, bytes, size);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return false;
        bytes += got;
        size -= static_cast<std::size_t>(got);
    }
    return true;
}

struct ReportHeader {
    std::uint32_t index;
    std::int32_t status;
    std::uint32_t outSize;
    std::uint32_t errSize;
};

// A task: count files, numbered from first on, whose paths follow the header, each ended by
// a zero byte, bytes in all.
struct TaskHeader {
    std::uint32_t first;
    std::uint32_t count;
    std::uint32_t bytes;
};

void AppendReport(std::string& message, std::uint32_t index, const FileReport& report) {
    const ReportHeader header{index, report.status, static_cast<std::uint32_t>(report.out.size()),
                              static_cast<std::uint32_t>(report.err.size())};
    message.append(reinterpret_cast<const char*>(&header), sizeof header);
    message += report.out + report.err;
}

// A worker reads tasks until its task pipe closes and answers each with one report per file,
// in a single write.
[[noreturn]] void ServeTasks(int tasks, int results, const Options& options) {
    TaskHeader task{};
    std::string paths;
    while (ReadAll(tasks, &task, sizeof task)) {
        paths.resize(task.bytes);
        if (!ReadAll(tasks, paths.data(), paths.size())) break;
        std::string message;
        const char* path = paths.c_str();
        for (std::uint32_t index = task.first; index < task.first + task.count; ++index) {
            AppendReport(message, index, CheckFile(path, options));
            path += std::strlen(path) + 1;
        }
        WriteAll(results, message.data(), message.size());
    }
    ::_exit(0);
}

// Up to `most` worker processes check the files of a walk while this one goes on walking. A
// worker is started for each of the first tasks, of one file each, so that a few files are
// spread over as many workers.
class WorkerPool {
  public:
    WorkerPool(const Options& options, int most) : m_options(options), m_most(most) {}
    ~WorkerPool() {
        for (Worker& worker : m_workers) {
            if (worker.tasks >= 0) ::close(worker.tasks);
            ::close(worker.results);
            ::waitpid(worker.pid, nullptr, 0);
        }
    }
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    void Run(FileWalk& walk, const ReportSink& sink) {
        for (;;) {
            Assign(walk);
            if (m_inFlight == 0) return;
            Collect(sink, walk.ReadAhead() ? 0 : -1);
        }
    }

  private:
    static constexpr std::size_t kTaskFiles = 16;
    static constexpr std::size_t kMostTaskFiles = 64;
    static constexpr std::size_t kTaskBytes = 16384;

    struct Worker {
        pid_t pid;
        int tasks;
        int results;
        int inFlight = 0;                  // files
        std::deque<std::size_t> taskEnds;  // past-last file of each task in flight
        std::string received;              // the start of a report not yet whole
    };

    // Two tasks in flight per worker keep it busy while its last reports are read.
    bool HasRoom() const {
        if (static_cast<int>(m_workers.size()) < m_most) return true;
        return std::any_of(m_workers.begin(), m_workers.end(),
                           [](const Worker& worker) { return worker.taskEnds.size() < 2; });
    }

    Worker& WorkerWithRoom() {
        if (static_cast<int>(m_workers.size()) < m_most && Start()) return m_workers.back();
        for (Worker& worker : m_workers) {
            if (worker.taskEnds.size() < 2) return worker;
        }
        return m_workers.front();  // a start failed: this worker takes a third task
    }

    void Assign(FileWalk& walk) {
        while (m_tasksOpen && HasRoom()) {
            std::optional<std::string> file = walk.Next();
            if (!file) {
                CloseTasks();
                return;
            }
            Worker& worker = WorkerWithRoom();
            Send(worker, *file, walk);
        }
    }

    // Once the walk is over, tasks shrink towards the end of the run, so that the workers
    // finish together; while many files are left they are large, so that the pipes are seldom
    // waited on.
    std::size_t TaskSize(const FileWalk& walk) const {
        if (static_cast<int>(m_workers.size()) < m_most) return 1;
        if (!walk.Finished()) return kTaskFiles;
        const std::size_t share = (walk.Count() - m_next) / (4 * m_workers.size());
        return std::clamp<std::size_t>(share, 1, kMostTaskFiles);
    }

    // A task beginning with first. Its paths are kept well under a pipe's capacity, so that
    // writing a task never waits on a worker that waits to write its reports.
    void Send(Worker& worker, const std::string& first, FileWalk& walk) {
        const std::size_t size = TaskSize(walk);
        TaskHeader task{static_cast<std::uint32_t>(m_next), 1, 0};
        std::string message(sizeof task, '\0');
        message += first + '\0';
        for (; task.count < size && message.size() < kTaskBytes; ++task.count) {
            const std::optional<std::string> file = walk.Next();
            if (!file) break;
            message += *file + '\0';
        }
        task.bytes = static_cast<std::uint32_t>(message.size() - sizeof task);
        std::memcpy(message.data(), &task, sizeof task);
        WriteAll(worker.tasks, message.data(), message.size());
        m_next += task.count;
        m_inFlight += task.count;
        worker.inFlight += static_cast<int>(task.count);
        worker.taskEnds.push_back(m_next);
    }

    void CloseTasks() {
        for (Worker& worker : m_workers) {
            ::close(worker.tasks);
            worker.tasks = -1;
        }
        m_tasksOpen = false;
    }

    // False when no process could be made; the workers there are carry on.
    bool Start() {
        std::fflush(nullptr);  // nothing buffered may be written twice
        int tasks[2], results[2];
        if (::pipe(tasks) != 0) return GiveUpStarting();
        if (::pipe(results) != 0) {
            ::close(tasks[0]), ::close(tasks[1]);
            return GiveUpStarting();
        }
        const pid_t pid = ::fork();
        if (pid == 0) {
            ::close(tasks[1]), ::close(results[0]);
            for (const Worker& other : m_workers)
                ::close(other.tasks), ::close(other.results);
            ServeTasks(tasks[0], results[1], m_options);
        }
        ::close(tasks[0]), ::close(results[1]);
        if (pid < 0) {
            ::close(tasks[1]), ::close(results[0]);
            return GiveUpStarting();
        }
        m_workers.push_back({pid, tasks[1], results[0], 0, {}, {}});
        return true;
    }

    bool GiveUpStarting() {
        if (m_workers.empty()) throw std::runtime_error(Say(Text::kWorkerNotStarted));
        m_most = static_cast<int>(m_workers.size());
        return false;
    }

    // Waits up to timeout milliseconds (-1: until a report comes).
    void Collect(const ReportSink& sink, int timeout) {
        // A worker with nothing in flight has been told to stop; its pipe only closes.
        std::vector<pollfd> polled;
        for (const Worker& worker : m_workers) {
            polled.push_back({worker.inFlight > 0 ? worker.results : -1, POLLIN, 0});
        }
        if (::poll(polled.data(), polled.size(), timeout) < 0 && errno != EINTR) {
            throw std::runtime_error(std::string("poll: ") + std::strerror(errno));
        }
        for (std::size_t i = 0; i < polled.size(); ++i) {
            if (polled[i].revents != 0) Receive(m_workers[i], sink);
        }
    }

    // Reads what the worker has sent, a task's reports at a time as it writes them, and hands
    // on every whole report.
    void Receive(Worker& worker, const ReportSink& sink) {
        char block[65536];
        const ssize_t got = ::read(worker.results, block, sizeof block);
        if (got < 0 && errno == EINTR) return;
        if (got <= 0) throw std::runtime_error(Say(Text::kWorkerEnded));
        worker.received.append(block, static_cast<std::size_t>(got));
        std::size_t used = 0;
        ReportHeader header{};
        while (worker.received.size() - used >= sizeof header) {
            std::memcpy(&header, worker.received.data() + used, sizeof header);
            const std::size_t out = used + sizeof header, err = out + header.outSize;
            if (worker.received.size() < err + header.errSize) break;
            used = err + header.errSize;
            sink(header.index, {header.status, worker.received.substr(out, header.outSize),
                                worker.received.substr(err, header.errSize)});
            --worker.inFlight;
            --m_inFlight;
            if (header.index + 1 == worker.taskEnds.front()) worker.taskEnds.pop_front();
        }
        worker.received.erase(0, used);
    }

    const Options& m_options;
    int m_most;
    std::vector<Worker> m_workers;
    std::size_t m_next = 0;
    std::size_t m_inFlight = 0;
    bool m_tasksOpen = true;
};

// ---- what the user sees ----

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// Prints reports in file order as they become available; on a terminal, a progress line
// stands under them while more than a second of work seems left.
class Reporter {
  public:
    Reporter(const FileWalk& walk, bool quiet)
        : m_walk(walk), m_showProgress(!quiet && ::isatty(STDERR_FILENO)) {}

    void Add(std::size_t index, FileReport report) {
        const std::size_t slot = index - m_printed;
        if (slot >= m_waiting.size()) m_waiting.resize(slot + 1);
        m_waiting[slot] = std::move(report);
        ++m_received;
        if (index == m_printed) ClearProgress();
        for (; !m_waiting.empty() && m_waiting.front(); ++m_printed) {
            Print(*m_waiting.front());
            m_waiting.pop_front();
        }
        ShowProgress();
    }

    int Finish(bool quiet) {
        ClearProgress();
        std::fflush(stdout);
        if (!quiet && m_received > 1) {
            const std::string failed =
                m_failed ? Say(Text::kSummaryFailed, {std::to_string(m_failed)}) : "";
            Write(stderr, "vxml: " +
                              Say(Text::kSummary,
                                  {std::to_string(m_received), std::to_string(m_withDiagnostics),
                                   failed, FormatSeconds(SecondsSince(m_start))}) +
                              "\n");
        }
        return m_failed ? 2 : m_withDiagnostics ? 1 : 0;
    }

  private:
    static std::string FormatSeconds(double seconds) {
        char text[32];
        std::snprintf(text, sizeof text, "%.2f", seconds);
        return text;
    }

    void Print(const FileReport& report) {
        Write(stdout, report.out);
        if (!report.err.empty()) std::fflush(stdout), Write(stderr, report.err);
        m_withDiagnostics += report.status == 1;
        m_failed += report.status == 2;
    }

    // Only once the walk is over is it known how much is left.
    void ShowProgress() {
        if (!m_showProgress || !m_walk.Finished() || m_received == m_walk.Count()) return;
        const std::size_t total = m_walk.Count();
        const double elapsed = SecondsSince(m_start);
        const double left = elapsed / m_received * (total - m_received);
        if (left <= 1.0 || elapsed - m_lastDrawn < 0.1) return;
        std::fflush(stdout);
        Write(stderr,
              "\r\x1b[K" + Say(Text::kProgress, {std::to_string(m_received), std::to_string(total),
                                                 std::to_string(m_withDiagnostics),
                                                 std::to_string(static_cast<int>(left + 0.5))}));
        m_lastDrawn = elapsed;
        m_drawn = true;
    }

    void ClearProgress() {
        if (m_drawn) Write(stderr, "\r\x1b[K");
        m_drawn = false;
    }

    const FileWalk& m_walk;
    std::deque<std::optional<FileReport>> m_waiting;  // from the first file not yet printed
    std::size_t m_received = 0;
    std::size_t m_printed = 0;
    int m_withDiagnostics = 0;
    int m_failed = 0;
    bool m_showProgress;
    bool m_drawn = false;
    double m_lastDrawn = -1;
    Clock::time_point m_start = Clock::now();
};

int JobCount(const Options& options) {
    if (!options.recursive && options.files.size() == 1) return 1;
    const long processors = ::sysconf(_SC_NPROCESSORS_ONLN);
    return static_cast<int>(options.jobs > 0 ? options.jobs : std::max(1L, processors));
}

}  // namespace

int RunCheck(const Options& options) {
    if (options.noExternal) vx::SetExternalLoading(false);
    FileWalk walk(options);
    Reporter reporter(walk, options.quiet);
    const ReportSink sink = [&](std::size_t index, FileReport report) {
        reporter.Add(index, std::move(report));
    };
    const int jobs = JobCount(options);
    if (jobs > 1) {
        WorkerPool(options, jobs).Run(walk, sink);
    } else {
        while (walk.ReadAhead()) {
        }
        for (std::size_t index = 0; std::optional<std::string> file = walk.Next(); ++index)
            sink(index, CheckFile(*file, options));
    }
    return reporter.Finish(options.quiet);
}

}  // namespace vxml
