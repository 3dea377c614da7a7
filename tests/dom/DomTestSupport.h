#pragma once
// Helpers shared by the document-model tests.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>

#include <unistd.h>

#include "vx/dom/XmlBaseObject.h"
#include "vx/platform/Logger.h"

namespace vxtest {

inline std::string Utf8(const vx::CVelStrW& text) {
    return vx::CVelStr(text).c_str();
}

// The node's XML text, as UTF-8 for readable failures.
inline std::string Source(const vx::CXmlBaseObject& node) {
    vx::CVelStringBuffer<vx::CVelStrW> out;
    node.GetSource(out);
    return Utf8(out.ToString());
}

inline std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// Points the library's logger at a fresh file for the test's lifetime.
class LogCapture {
  public:
    LogCapture()
        : m_path(std::filesystem::temp_directory_path() /
                 ("vx_dom_log_" + std::to_string(::getpid()) + ".txt")) {
        std::filesystem::remove(m_path);
        EXPECT_TRUE(vel::FileLogger_Open(m_path.c_str()));
    }
    ~LogCapture() {
        vel::FileLogger_Close();
        std::filesystem::remove(m_path);
    }
    // True when a whole line of the log matches pattern.
    bool HasLine(const std::string& pattern) const {
        std::istringstream lines(ReadFile(m_path));
        const std::regex re(pattern);
        for (std::string line; std::getline(lines, line);) {
            if (std::regex_match(line, re)) return true;
        }
        return false;
    }

  private:
    std::filesystem::path m_path;
};

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

}  // namespace vxtest
