#pragma once
// The host's file logger. Off until a log file is named (FileLogger_Open, or the VX_LOG_FILE
// environment variable read on first use). Text is UTF-8.
#include <atomic>

namespace vel {

bool FileLogger_Open(const char* path);  // appends; false when the file cannot be opened
void FileLogger_Close();
bool FileLogger_IsOpen();

// Writes without a line end, so a prefix and its message can share one line. Each thread's
// line reaches the file whole when it is ended, never mixed with another thread's.
void FileLogger_Put(const char* format, ...) __attribute__((format(printf, 1, 2)));
// Writes and ends the line.
void FileLogger_PutLine(const char* format, ...) __attribute__((format(printf, 1, 2)));
// A line of its own: "YYYY-MM-DD HH:MM:SS.mmm" in local time.
void FileLogger_PutTimestamp();
// Kept for callers that dump process state on failure; writes nothing on this platform.
void FileLogger_Dump(const char* file, int line, const char* function);

// The common shape of a handled failure: a time stamp line, then "unit(line): function: "
// and the message on one line.
void LogFailure(const char* unit, int line, const char* function, const char* format, ...)
    __attribute__((format(printf, 4, 5)));

// False only when no log file is open: every public operation has a scope logger, so while
// logging is off a scope costs this one test, inline.
extern std::atomic<bool> g_mayLog;
inline bool MayLog() noexcept {
    return g_mayLog.load(std::memory_order_relaxed);
}

// Logs "unit(line): function: <tid> : >> START" on entry and "... << END" on exit.
class AutoFuncNameLogger {
  public:
    AutoFuncNameLogger(const char* unit, int line, const char* function)
        : m_unit(unit), m_line(line), m_function(function) {
        if (MayLog()) PutScopeLine(">> START");
    }
    ~AutoFuncNameLogger() {
        if (MayLog()) PutScopeLine("<< END");
    }
    AutoFuncNameLogger(const AutoFuncNameLogger&) = delete;
    AutoFuncNameLogger& operator=(const AutoFuncNameLogger&) = delete;

  private:
    void PutScopeLine(const char* marker) const;

    const char* m_unit;
    int m_line;
    const char* m_function;
};

}  // namespace vel
