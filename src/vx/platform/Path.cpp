#include "vx/platform/Path.h"

namespace vel {

std::string ExtractFilePath(const std::string& path) {
    const std::string::size_type slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

std::string MakeFullPath(const std::string& path, const std::string& base) {
    if (!path.empty() && path.front() == '/') return path;
    if (base.empty() || base.back() == '/') return base + path;
    return base + '/' + path;
}

}  // namespace vel
