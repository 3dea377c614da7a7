#pragma once
#include <string>

namespace vel {

// Directory part of a path including its trailing '/'; empty for a bare name.
std::string ExtractFilePath(const std::string& path);

// An absolute path comes back unchanged; a relative one is joined onto base (a directory,
// with or without its trailing '/').
std::string MakeFullPath(const std::string& path, const std::string& base);

}  // namespace vel
