#include "vx/parse/GrammarSteps.h"

#include <atomic>
#include <mutex>

#include "vx/platform/Guard.h"
#include "vx/platform/Package.h"

namespace vx::grammar {

namespace {

// Shared by every thread: their strings are only read and copied.
std::atomic<CKeywords*> g_keywords{nullptr};
std::mutex g_keywordsMutex;

void ReleaseKeywords() {
    delete g_keywords.exchange(nullptr, std::memory_order_acq_rel);
}

[[gnu::noinline]] const CKeywords& CreateKeywords() {
    std::lock_guard<std::mutex> lock(g_keywordsMutex);
    CKeywords* keywords = g_keywords.load(std::memory_order_acquire);
    if (!keywords) {
        vel::CHeapScope heap;  // made inside a parse, kept for the process
        keywords = new CKeywords;
        g_keywords.store(keywords, std::memory_order_release);
        RegisterFinalizer(ReleaseKeywords);
    }
    return *keywords;
}

}  // namespace

const CKeywords& Keywords() {
    const CKeywords* keywords = g_keywords.load(std::memory_order_acquire);
    return keywords ? *keywords : CreateKeywords();
}

namespace {

const CVelStrW* IfNamed(const CVelStrW& text, int first, int length, const CVelStrW& name,
                        const CVelStrW& replacement) {
    return length == name.GetLength() && text.MatchAt(first, name) ? &replacement : nullptr;
}

}  // namespace

const CVelStrW* FindPredefinedEntity(const CVelStrW& text, int first, int last) {
    // Looked up for every reference: the first unit leaves one name to compare, and names of
    // other lengths than "lt" to "quot" go at once.
    const int length = last - first;
    if (length < 2 || length > 4) return nullptr;
    const CKeywords& k = Keywords();
    switch (text[first]) {
        case u'a':
            return length == 3 ? IfNamed(text, first, length, k.amp, k.ampText)
                               : IfNamed(text, first, length, k.apos, k.aposText);
        case u'l':
            return IfNamed(text, first, length, k.lt, k.ltText);
        case u'g':
            return IfNamed(text, first, length, k.gt, k.gtText);
        case u'q':
            return IfNamed(text, first, length, k.quot, k.quotText);
        default:
            return nullptr;
    }
}

namespace {

CDelimitedRun RunUpTo(int first, int close) {
    CDelimitedRun run;
    run.state = close < 0 ? CDelimitedRun::eUnterminated : CDelimitedRun::eFound;
    run.first = first;
    run.close = close;
    return run;
}

}  // namespace

CDelimitedRun MatchDelimited(const CVelStrW& src, int start, const CVelStrW& open,
                             const CVelStrW& close) {
    if (!src.MatchAt(start, open)) return {};
    const int first = start + open.GetLength();
    return RunUpTo(first, src.Pos(close, first));
}

CDelimitedRun MatchQuotedLiteral(const CVelStrW& src, int start) {
    if (!IsCharAt(src, start, u'"') && !IsCharAt(src, start, u'\'')) return {};
    return RunUpTo(start + 1, src.Pos(src[start], start + 1));
}

bool TryMatch(CAbstractExpression& child, CParse& parser, int& pos) {
    int end = pos;
    if (!child.Interpreter(parser, pos, end) || end == pos) return false;
    pos = end;
    return true;
}

bool MatchNamedReference(CParse& parser, char16_t opener, int start, CVelStrW& name, int& end) {
    const CVelStrW& src = parser.Source();
    int pos = start;
    if (!AcceptChar(src, pos, opener)) return Absent(start, end);
    if (pos == src.GetLength()) return Fail(parser, CParseError::eErrUnexpectedEnd, pos, end);
    CParseName match;
    if (!TryMatch(match, parser, pos)) return Fail(parser, CParseError::eErrNoEntityName, pos, end);
    if (pos == src.GetLength()) return Fail(parser, CParseError::eErrUnexpectedEnd, pos, end);
    if (!AcceptChar(src, pos, u';')) return Fail(parser, CParseError::eErrEntityRefEnd, pos, end);
    name = match.GetName();
    return Matched(pos, end);
}

bool Fail(CParse& parser, CParseError::eError code, int pos, int& end) {
    parser.AddError(code, pos);
    end = pos;
    return false;
}

namespace {

bool RunRequired(CAbstractExpression& child, CParse& parser, int& pos, CParseError::eError code,
                 bool absentFails, int& end) {
    int childEnd = pos;
    const bool ok = child.Interpreter(parser, pos, childEnd);
    if (!ok || (absentFails && childEnd == pos)) return Fail(parser, code, childEnd, end);
    pos = childEnd;
    return true;
}

}  // namespace

bool AcceptFirstOf(const CVelStrW& src, int& pos, std::span<const CVelStrW> keywords,
                   CVelStrW& matched) {
    for (const CVelStrW& keyword : keywords) {
        if (AcceptKeyword(src, pos, keyword)) {
            matched = keyword;
            return true;
        }
    }
    return false;
}

bool ResultTest(CAbstractExpression& child, CParse& parser, int& pos, CParseError::eError code,
                int& end) {
    return RunRequired(child, parser, pos, code, false, end);
}

bool RequireMatch(CAbstractExpression& child, CParse& parser, int& pos, CParseError::eError code,
                  int& end) {
    return RunRequired(child, parser, pos, code, true, end);
}

bool MatchSpace(CParse& parser, int& pos, int& end) {
    CParseS space;
    return ResultTest(space, parser, pos, CParseError::eErrSpaceRequired, end);
}

bool MatchName(CParse& parser, int& pos, CParseError::eError code, CVelStrW& name, int& end) {
    CParseName match;
    if (!ResultTest(match, parser, pos, code, end)) return false;
    name = match.GetName();
    return true;
}

bool MatchSpaceAndName(CParse& parser, int& pos, CParseError::eError nameCode, CVelStrW& name,
                       int& end) {
    return MatchSpace(parser, pos, end) && MatchName(parser, pos, nameCode, name, end);
}

bool MatchDeclarationEnd(CParse& parser, int pos, CParseError::eError code, int& end) {
    pos = SkipWhiteSpace(parser.Source(), pos);
    if (!AcceptChar(parser.Source(), pos, u'>')) return Fail(parser, code, pos, end);
    end = pos;
    return true;
}

}  // namespace vx::grammar

namespace vx {

// ---- CParseAlternative ----

CParseAlternative::CParseAlternative(const CParseAlternative& other)
    : m_item(other.m_item ? other.m_copy(*other.m_item) : nullptr),
      m_copy(other.m_copy),
      m_index(other.m_index) {}

CParseAlternative& CParseAlternative::operator=(const CParseAlternative& other) {
    if (this != &other) *this = CParseAlternative(other);
    return *this;
}

void CParseAlternative::Reset() {
    m_item.reset();
    m_copy = nullptr;
    m_index = 0;
}

}  // namespace vx
