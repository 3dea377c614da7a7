#pragma once
// Helpers shared by the parser tests.
#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/PlatformTestUtil.h"
#include "vx/dom/XmlDocument.h"
#include "vx/parse/Expressions.h"
#include "vx/parse/Parse.h"
#include "vx/parse/Settings.h"
#include "vx/platform/Package.h"

namespace parsetest {

inline std::u16string Text(const vx::CVelStrW& s) {
    return std::u16string(s.c_str(), s.GetLength());
}

inline vx::CVelStrW Wide(const std::u16string& s) {
    return vx::CVelStrW(s.data(), static_cast<int>(s.size()));
}

inline int Size(const std::u16string& s) {
    return static_cast<int>(s.size());
}

// Text as UTF-8, for failure messages.
inline std::string Narrow(const std::u16string& s) {
    return vx::CVelStr(Wide(s)).c_str();
}

// Tests name diagnostic codes by their enumerators.
using enum vx::CParseError::eError;

// One diagnostic as code, line and column.
struct Diag {
    int code, line, column;
    bool operator==(const Diag&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Diag& d) {
    return out << "{" << d.code << "," << d.line << "," << d.column << "}";
}

using D = std::vector<Diag>;

// The same diagnostics again, as from the second scan of a start tag.
inline D Twice(D diags) {
    const D once = diags;
    diags.insert(diags.end(), once.begin(), once.end());
    return diags;
}

inline D Diags(const vx::CParseErrorList& errors) {
    D result;
    for (int i = 0; i < errors.GetSize(); ++i) {
        const vx::CParseError& e = errors.GetAt(i);
        result.push_back({e.GetErrCode(), e.GetLine(), e.GetColumn()});
    }
    return result;
}

using Document = std::unique_ptr<vx::CXmlDocument>;

inline Document ParseBuf(const std::u16string& text) {
    return Document(vx::CParse::ParseForBuf(Wide(text)));
}

inline D DiagsOf(const std::u16string& text) {
    return Diags(ParseBuf(text)->GetErrList());
}

inline Document ParseFile(const std::string& path) {
    return Document(vx::CParse::ParseForFile(vx::CVelStr(path.c_str())));
}

// The what() of the std::runtime_error that body throws, or "" when it throws none.
template <class Body>
std::string Thrown(Body body) {
    return platform_test::ThrownText<std::runtime_error>(body);
}

// Sets the nesting limit for one scope.
class NestingLimit {
  public:
    explicit NestingLimit(int depth) { vx::SetNestingLimit(depth); }
    ~NestingLimit() { vx::SetNestingLimit(vx::kDefaultNestingLimit); }
    NestingLimit(const NestingLimit&) = delete;
    NestingLimit& operator=(const NestingLimit&) = delete;
};

// A production run on its own over text from start.
struct Result {
    bool result;
    int end;
    D diags;
    bool operator==(const Result&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Result& r) {
    out << (r.result ? "matched" : "failed") << " to " << r.end << " with {";
    for (const Diag& d : r.diags)
        out << d;
    return out << "}";
}

template <class Production>
Result RunOn(Production& production, const std::u16string& text, int start = 0) {
    vx::CParse parser;
    parser.SetSource(Wide(text));
    int end = -1;
    const bool result = production.Interpreter(parser, start, end);
    return {result, end, Diags(parser.GetErrList())};
}

template <class Production>
Result RunOn(const std::u16string& text, int start = 0) {
    Production production;
    return RunOn(production, text, start);
}

using platform_test::LogCapture;
using platform_test::TempDir;
using platform_test::WriteFile;

}  // namespace parsetest
