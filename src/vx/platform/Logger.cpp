#include "vx/platform/Logger.h"

#include <unistd.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <string>

namespace vel {

// True until the environment has been read, so that the first scope reads it.
std::atomic<bool> g_mayLog{true};

namespace {

std::mutex g_mutex;
FILE* g_file = nullptr;  // guarded by g_mutex
std::atomic<bool> g_enabled{false};
std::once_flag g_environmentRead;

bool OpenLocked(const char* path) {
    FILE* file = std::fopen(path, "a");
    if (!file) return false;
    if (g_file) std::fclose(g_file);
    g_file = file;
    g_enabled.store(true, std::memory_order_release);
    g_mayLog.store(true, std::memory_order_relaxed);
    return true;
}

void ReadEnvironmentOnce() {
    std::call_once(g_environmentRead, [] {
        const char* path = std::getenv("VX_LOG_FILE");
        std::lock_guard<std::mutex> lock(g_mutex);
        if (path && *path) OpenLocked(path);
        g_mayLog.store(g_enabled.load(std::memory_order_relaxed), std::memory_order_relaxed);
    });
}

// The only check made while the logger is off, so disabled logging costs no formatting.
bool Enabled() {
    ReadEnvironmentOnce();
    return g_enabled.load(std::memory_order_acquire);
}

// What this thread has put on its current line so far. Lines are written whole, so that
// threads logging at once do not mix their prefixes and messages.
thread_local std::string t_line;

void WriteV(bool endLine, const char* format, va_list args) {
    va_list copy;
    va_copy(copy, args);
    const int length = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    if (length > 0) {
        const std::size_t start = t_line.size();
        t_line.resize(start + static_cast<std::size_t>(length) + 1);
        std::vsnprintf(&t_line[start], static_cast<std::size_t>(length) + 1, format, args);
        t_line.pop_back();  // the terminator
    }
    if (!endLine) return;
    t_line += '\n';
    {
        std::lock_guard<std::mutex> lock(g_mutex);
        if (g_file) {
            std::fwrite(t_line.data(), 1, t_line.size(), g_file);
            std::fflush(g_file);  // readers of the log see each line as soon as it is written
        }
    }
    t_line.clear();
}

}  // namespace

bool FileLogger_Open(const char* path) {
    ReadEnvironmentOnce();  // a later first use must not replace this file with the variable's
    if (!path) return false;
    std::lock_guard<std::mutex> lock(g_mutex);
    return OpenLocked(path);
}

void FileLogger_Close() {
    ReadEnvironmentOnce();
    std::lock_guard<std::mutex> lock(g_mutex);
    g_enabled.store(false, std::memory_order_release);
    g_mayLog.store(false, std::memory_order_relaxed);
    if (g_file) std::fclose(g_file);
    g_file = nullptr;
}

bool FileLogger_IsOpen() {
    return Enabled();
}

void FileLogger_Put(const char* format, ...) {
    if (!Enabled()) return;
    va_list args;
    va_start(args, format);
    WriteV(false, format, args);
    va_end(args);
}

void FileLogger_PutLine(const char* format, ...) {
    if (!Enabled()) return;
    va_list args;
    va_start(args, format);
    WriteV(true, format, args);
    va_end(args);
}

void FileLogger_PutTimestamp() {
    if (!Enabled()) return;
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    tm local;
    localtime_r(&now.tv_sec, &local);
    FileLogger_PutLine("%04d-%02d-%02d %02d:%02d:%02d.%03ld", local.tm_year + 1900,
                       local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec,
                       now.tv_nsec / 1000000);
}

void FileLogger_Dump(const char*, int, const char*) {}

void LogFailure(const char* unit, int line, const char* function, const char* format, ...) {
    if (!Enabled()) return;
    FileLogger_PutTimestamp();
    FileLogger_Put("%s(%d): %s: ", unit, line, function);
    va_list args;
    va_start(args, format);
    WriteV(true, format, args);
    va_end(args);
}

void AutoFuncNameLogger::PutScopeLine(const char* marker) const {
    if (!Enabled()) return;
    FileLogger_Put("%s(%d): %s: ", m_unit, m_line, m_function);
    FileLogger_PutLine("<%08x> : %s", static_cast<unsigned>(gettid()), marker);
}

}  // namespace vel
