#pragma once
// The guard every public parser operation runs in: exceptions are logged and passed on to the
// host unchanged, never turned into diagnostics.
#include <exception>
#include <stdexcept>
#include <utility>

#include "vx/platform/Logger.h"

namespace vel {

// The library's internal exception, for failures that are programming errors of a caller.
class CVelException : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

void LogCaughtException(const char* unit, int line, const char* function, const char* what);
void LogUnknownException(const char* unit, int line, const char* function);

// Runs body(); an exception is logged with where it passed and rethrown.
template <class Body>
decltype(auto) Guarded(const char* unit, int line, const char* function, Body&& body) {
    try {
        return std::forward<Body>(body)();
    } catch (const std::exception& e) {
        LogCaughtException(unit, line, function, e.what());
        throw;
    } catch (...) {
        LogUnknownException(unit, line, function);
        throw;
    }
}

}  // namespace vel
