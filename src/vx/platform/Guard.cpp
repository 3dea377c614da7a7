#include "vx/platform/Guard.h"

namespace vel {

namespace {

void LogExceptionPlace(const char* unit, int line, const char* function) {
    FileLogger_Dump(unit, line, function);
    FileLogger_PutTimestamp();
    FileLogger_Put("%s(%d): %s: ", unit, line, function);
}

}  // namespace

void LogCaughtException(const char* unit, int line, const char* function, const char* what) {
    LogExceptionPlace(unit, line, function);
    FileLogger_PutLine("例外発生(%s)", what ? what : "");
}

void LogUnknownException(const char* unit, int line, const char* function) {
    LogExceptionPlace(unit, line, function);
    FileLogger_PutLine("例外発生");
    FileLogger_PutLine("予期せぬ例外が発生");
}

}  // namespace vel
