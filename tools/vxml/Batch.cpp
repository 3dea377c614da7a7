// The check command over many files: folders walked, several worker processes, reports in the
// order of the arguments, a progress line and a summary.
#include <dirent.h>
#include <poll.h>
#include <sys/stat.h>
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
#include <string_view>

#include "Check.h"
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

enum class EntryKind { kFolder, kFile, kOther };

// A symbolic link counts as what it points to when that is a file; links to folders are not
// followed. The directory entry's type saves a stat where the file system gives it.
EntryKind KindOf(const std::string& path, unsigned char type) {
    if (type == DT_DIR) return EntryKind::kFolder;
    if (type == DT_REG) return EntryKind::kFile;
    struct stat info {};
    if (type == DT_UNKNOWN && ::lstat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode)) {
        return EntryKind::kFolder;
    }
    if (type != DT_UNKNOWN && type != DT_LNK) return EntryKind::kOther;
    return ::stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode) ? EntryKind::kFile
                                                                     : EntryKind::kOther;
}

bool IsChecked(std::string_view name, const Options& options) {
    return options.allFiles || (name.size() > 4 && name.substr(name.size() - 4) == ".xml");
}

// The files in folder and below, in no particular order; a folder the user may not read is
// passed over.
void WalkFolder(const std::string& folder, const Options& options,
                std::vector<std::string>& found) {
    DIR* dir = ::opendir(folder.c_str());
    if (!dir) {
        if (errno == EACCES) return;
        throw std::runtime_error(Say(Text::kCannotOpen, {folder}) + ": " + std::strerror(errno));
    }
    const std::string prefix = folder.back() == '/' ? folder : folder + "/";
    while (const dirent* entry = ::readdir(dir)) {
        const std::string_view name = entry->d_name;
        if (name == "." || name == "..") continue;
        std::string path = prefix + entry->d_name;
        const EntryKind kind = KindOf(path, entry->d_type);
        if (kind == EntryKind::kFolder) {
            WalkFolder(path, options, found);
        } else if (kind == EntryKind::kFile && IsChecked(name, options)) {
            found.push_back(std::move(path));
        }
    }
    ::closedir(dir);
}

void AddFolder(const std::string& folder, const Options& options, std::vector<std::string>& files) {
    std::vector<std::string> found;
    WalkFolder(folder, options, found);
    std::sort(found.begin(), found.end());
    files.insert(files.end(), std::make_move_iterator(found.begin()),
                 std::make_move_iterator(found.end()));
}

// Named files are checked whatever their names; folders only with -r.
std::vector<std::string> ListFiles(const Options& options) {
    std::vector<std::string> files;
    for (const std::string& file : options.files) {
        struct stat info {};
        if (options.recursive && file != "-" && ::stat(file.c_str(), &info) == 0 &&
            S_ISDIR(info.st_mode)) {
            AddFolder(file, options, files);
        } else {
            files.push_back(file);
        }
    }
    return files;
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

// A task: count files from first on.
struct Task {
    std::uint32_t first;
    std::uint32_t count;
};

void AppendReport(std::string& message, std::uint32_t index, const FileReport& report) {
    const ReportHeader header{index, report.status, static_cast<std::uint32_t>(report.out.size()),
                              static_cast<std::uint32_t>(report.err.size())};
    message.append(reinterpret_cast<const char*>(&header), sizeof header);
    message += report.out + report.err;
}

// A worker reads tasks until its task pipe closes and answers each with one report per file,
// in a single write.
[[noreturn]] void ServeTasks(int tasks, int results, const std::vector<std::string>& files,
                             const Options& options) {
    Task task{};
    while (ReadAll(tasks, &task, sizeof task)) {
        std::string message;
        for (std::uint32_t index = task.first; index < task.first + task.count; ++index) {
            AppendReport(message, index, CheckFile(files[index], options));
        }
        WriteAll(results, message.data(), message.size());
    }
    ::_exit(0);
}

class WorkerPool {
  public:
    WorkerPool(const std::vector<std::string>& files, const Options& options, int count) {
        std::fflush(nullptr);  // nothing buffered may be written twice
        for (int i = 0; i < count; ++i)
            Start(files, options);
        if (m_workers.empty()) throw std::runtime_error(Say(Text::kWorkerNotStarted));
    }
    ~WorkerPool() {
        for (Worker& worker : m_workers) {
            if (worker.tasks >= 0) ::close(worker.tasks);
            ::close(worker.results);
            ::waitpid(worker.pid, nullptr, 0);
        }
    }
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    // Two tasks in flight per worker keep it busy while its last reports are read.
    void Run(std::size_t count, const ReportSink& sink) {
        m_count = count;
        for (Worker& worker : m_workers) {
            for (int i = 0; i < 2; ++i)
                Assign(worker);
        }
        for (std::size_t done = 0; done < count;)
            done += Collect(sink);
    }

  private:
    struct Worker {
        pid_t pid;
        int tasks;
        int results;
        int inFlight = 0;                  // files
        std::deque<std::size_t> taskEnds;  // past-last file of each task in flight
        std::string received;              // the start of a report not yet whole
    };

    void Start(const std::vector<std::string>& files, const Options& options) {
        int tasks[2], results[2];
        if (::pipe(tasks) != 0) return;
        if (::pipe(results) != 0) {
            ::close(tasks[0]), ::close(tasks[1]);
            return;
        }
        const pid_t pid = ::fork();
        if (pid == 0) {
            ::close(tasks[1]), ::close(results[0]);
            for (const Worker& other : m_workers)
                ::close(other.tasks), ::close(other.results);
            ServeTasks(tasks[0], results[1], files, options);
        }
        ::close(tasks[0]), ::close(results[1]);
        if (pid < 0) {
            ::close(tasks[1]), ::close(results[0]);
            return;
        }
        m_workers.push_back({pid, tasks[1], results[0], 0, {}, {}});
    }

    // Tasks shrink towards the end of the run, so that the workers finish together; while
    // many files are left they are large, so that the pipes are seldom waited on.
    void Assign(Worker& worker) {
        if (m_next == m_count) {
            if (worker.tasks >= 0) ::close(worker.tasks);
            worker.tasks = -1;
            return;
        }
        const std::size_t share = (m_count - m_next) / (4 * m_workers.size());
        const Task task{static_cast<std::uint32_t>(m_next),
                        static_cast<std::uint32_t>(std::clamp<std::size_t>(share, 1, 64))};
        WriteAll(worker.tasks, &task, sizeof task);
        m_next += task.count;
        worker.inFlight += static_cast<int>(task.count);
        worker.taskEnds.push_back(m_next);
    }

    std::size_t Collect(const ReportSink& sink) {
        // A worker with nothing in flight has been told to stop; its pipe only closes.
        std::vector<pollfd> polled;
        for (const Worker& worker : m_workers) {
            polled.push_back({worker.inFlight > 0 ? worker.results : -1, POLLIN, 0});
        }
        if (::poll(polled.data(), polled.size(), -1) < 0 && errno != EINTR) {
            throw std::runtime_error(std::string("poll: ") + std::strerror(errno));
        }
        std::size_t collected = 0;
        for (std::size_t i = 0; i < polled.size(); ++i) {
            if (polled[i].revents != 0) collected += Receive(m_workers[i], sink);
        }
        return collected;
    }

    // Reads what the worker has sent, a task's reports at a time as it writes them, and hands
    // on every whole report.
    std::size_t Receive(Worker& worker, const ReportSink& sink) {
        char block[65536];
        const ssize_t got = ::read(worker.results, block, sizeof block);
        if (got < 0 && errno == EINTR) return 0;
        if (got <= 0) throw std::runtime_error(Say(Text::kWorkerEnded));
        worker.received.append(block, static_cast<std::size_t>(got));
        std::size_t used = 0, collected = 0;
        ReportHeader header{};
        while (worker.received.size() - used >= sizeof header) {
            std::memcpy(&header, worker.received.data() + used, sizeof header);
            const std::size_t out = used + sizeof header, err = out + header.outSize;
            if (worker.received.size() < err + header.errSize) break;
            used = err + header.errSize;
            sink(header.index, {header.status, worker.received.substr(out, header.outSize),
                                worker.received.substr(err, header.errSize)});
            --worker.inFlight;
            ++collected;
            if (header.index + 1 == worker.taskEnds.front()) {
                worker.taskEnds.pop_front();
                Assign(worker);
            }
        }
        worker.received.erase(0, used);
        return collected;
    }

    std::vector<Worker> m_workers;
    std::size_t m_count = 0;
    std::size_t m_next = 0;
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
    Reporter(std::size_t total, bool quiet)
        : m_reports(total), m_showProgress(!quiet && ::isatty(STDERR_FILENO)) {}

    void Add(std::size_t index, FileReport report) {
        m_reports[index] = std::move(report);
        ++m_received;
        if (index == m_printed) ClearProgress();
        for (; m_printed < m_reports.size() && m_reports[m_printed]; ++m_printed) {
            Print(*m_reports[m_printed]);
            m_reports[m_printed].reset();
        }
        ShowProgress();
    }

    int Finish(bool quiet) {
        ClearProgress();
        std::fflush(stdout);
        if (!quiet && m_reports.size() > 1) {
            const std::string failed =
                m_failed ? Say(Text::kSummaryFailed, {std::to_string(m_failed)}) : "";
            Write(stderr, "vxml: " +
                              Say(Text::kSummary, {std::to_string(m_reports.size()),
                                                   std::to_string(m_withDiagnostics), failed,
                                                   FormatSeconds(SecondsSince(m_start))}) +
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

    void ShowProgress() {
        if (!m_showProgress || m_received == m_reports.size()) return;
        const double elapsed = SecondsSince(m_start);
        const double left = elapsed / m_received * (m_reports.size() - m_received);
        if (left <= 1.0 || elapsed - m_lastDrawn < 0.1) return;
        std::fflush(stdout);
        Write(stderr,
              "\r\x1b[K" + Say(Text::kProgress,
                               {std::to_string(m_received), std::to_string(m_reports.size()),
                                std::to_string(m_withDiagnostics),
                                std::to_string(static_cast<int>(left + 0.5))}));
        m_lastDrawn = elapsed;
        m_drawn = true;
    }

    void ClearProgress() {
        if (m_drawn) Write(stderr, "\r\x1b[K");
        m_drawn = false;
    }

    std::vector<std::optional<FileReport>> m_reports;
    std::size_t m_received = 0;
    std::size_t m_printed = 0;
    int m_withDiagnostics = 0;
    int m_failed = 0;
    bool m_showProgress;
    bool m_drawn = false;
    double m_lastDrawn = -1;
    Clock::time_point m_start = Clock::now();
};

int JobCount(const Options& options, std::size_t files) {
    const long processors = ::sysconf(_SC_NPROCESSORS_ONLN);
    const long jobs = options.jobs > 0 ? options.jobs : std::max(1L, processors);
    return static_cast<int>(std::min<long>(jobs, static_cast<long>(files)));
}

}  // namespace

int RunCheck(const Options& options) {
    if (options.noExternal) vx::SetExternalLoading(false);
    const std::vector<std::string> files = ListFiles(options);
    Reporter reporter(files.size(), options.quiet);
    const ReportSink sink = [&](std::size_t index, FileReport report) {
        reporter.Add(index, std::move(report));
    };
    const int jobs = JobCount(options, files.size());
    if (jobs <= 1) {
        for (std::size_t i = 0; i < files.size(); ++i)
            sink(i, CheckFile(files[i], options));
    } else {
        WorkerPool(files, options, jobs).Run(files.size(), sink);
    }
    return reporter.Finish(options.quiet);
}

}  // namespace vxml
