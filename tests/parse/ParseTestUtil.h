#pragma once
// Helpers shared by the parser tests.
#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "platform/PlatformTestUtil.h"
#include "vx/dom/XmlDocument.h"
#include "vx/parse/Expressions.h"
#include "vx/parse/Parse.h"

namespace parsetest {

inline std::u16string Text(const vx::CVelStrW& s) {
    return std::u16string(s.c_str(), s.GetLength());
}

inline vx::CVelStrW Wide(const std::u16string& s) {
    return vx::CVelStrW(s.data(), static_cast<int>(s.size()));
}

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

// A production run on its own over text from start.
struct Result {
    bool result;
    int end;
    D diags;
};

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

using platform_test::TempDir;

}  // namespace parsetest
