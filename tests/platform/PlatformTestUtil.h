#pragma once
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace platform_test {

// Bytes from a hex dump such as "81 60 1b 24 42".
inline std::string Hex(const std::string& dump) {
    std::istringstream in(dump);
    std::string bytes;
    for (unsigned value; in >> std::hex >> value;)
        bytes += static_cast<char>(value);
    return bytes;
}

class TempDir {
  public:
    TempDir() {
        std::string pattern = (std::filesystem::temp_directory_path() / "vx_platform_XXXXXX");
        m_path = mkdtemp(pattern.data());
    }
    ~TempDir() { std::filesystem::remove_all(m_path); }
    std::string operator/(const std::string& name) const { return m_path + "/" + name; }
    const std::string& Path() const { return m_path; }

  private:
    std::string m_path;
};

inline std::vector<std::string> ReadLines(const std::string& path) {
    std::ifstream in(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

}  // namespace platform_test
