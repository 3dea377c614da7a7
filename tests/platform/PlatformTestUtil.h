#pragma once
// Helpers shared by the tests of every layer: files, hex dumps and the process-wide log.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "vx/platform/Logger.h"

namespace platform_test {

// Bytes from a hex dump such as "81 60 1b 24 42".
inline std::string Hex(const std::string& dump) {
    std::istringstream in(dump);
    std::string bytes;
    for (unsigned value; in >> std::hex >> value;)
        bytes += static_cast<char>(value);
    return bytes;
}

inline std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

inline void WriteFile(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

// Runs body and returns the what() of the exception of type E it throws ("" when none).
template <class E, class Body>
std::string ThrownText(Body body) {
    try {
        body();
    } catch (const E& e) {
        return e.what();
    }
    return "";
}

class TempDir {
  public:
    TempDir() {
        std::string pattern = (std::filesystem::temp_directory_path() / "vx_test_XXXXXX");
        m_path = mkdtemp(pattern.data());
    }
    ~TempDir() { std::filesystem::remove_all(m_path); }
    std::string operator/(const std::string& name) const { return m_path + "/" + name; }
    const std::string& Path() const { return m_path; }

  private:
    std::string m_path;
};

// Points the process-wide logger at a fresh file for the life of the object. The logger flushes
// each line, so the file can be read while it is still open.
class LogCapture {
  public:
    LogCapture() { EXPECT_TRUE(vel::FileLogger_Open(m_path.c_str())); }
    ~LogCapture() { vel::FileLogger_Close(); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::string Text() const { return ReadFile(m_path); }
    std::vector<std::string> Lines() const {
        std::istringstream in(Text());
        std::vector<std::string> lines;
        for (std::string line; std::getline(in, line);)
            lines.push_back(line);
        return lines;
    }
    // True when a whole line matches pattern.
    bool HasLine(const std::string& pattern) const {
        const std::regex re(pattern);
        for (const std::string& line : Lines()) {
            if (std::regex_match(line, re)) return true;
        }
        return false;
    }

  private:
    TempDir m_dir;
    std::string m_path = m_dir / "vx.log";
};

}  // namespace platform_test
