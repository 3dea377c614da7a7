// Shared matching steps of the productions and the deep copy of content lists.
#include <atomic>
#include <memory>
#include <mutex>
#include <utility>

#include "vx/parse/Expressions.h"
#include "vx/parse/Parse.h"
#include "vx/platform/Guard.h"
#include "vx/platform/Logger.h"
#include "vx/platform/Package.h"

namespace vx {

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

const CVelStrW* FindPredefinedEntity(const CVelStrW& text, int first, int last) {
    const CKeywords& keywords = Keywords();
    const std::pair<const CVelStrW*, const CVelStrW*> predefined[] = {
        {&keywords.amp, &keywords.ampText},   {&keywords.lt, &keywords.ltText},
        {&keywords.gt, &keywords.gtText},     {&keywords.quot, &keywords.quotText},
        {&keywords.apos, &keywords.aposText},
    };
    for (const auto& [name, replacement] : predefined) {
        if (last - first == name->GetLength() && text.MatchAt(first, *name)) return replacement;
    }
    return nullptr;
}

int SkipWhiteSpace(const CVelStrW& src, int pos) {
    const int length = src.GetLength();
    while (pos < length && IsWhiteSpace(src[pos]))
        ++pos;
    return pos;
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

bool Fail(CParse& parser, CParseError::eError code, int pos, int& end) {
    parser.AddError(code, pos);
    end = pos;
    return false;
}

namespace {

template <class Item>
std::unique_ptr<CAbstractExpression> CopyOf(const CAbstractExpression& item) {
    return std::make_unique<Item>(static_cast<const Item&>(item));
}

}  // namespace

void CParseContent::CopyListToList(CExpressionList& dst, const CExpressionList& src) {
    for (const CAbstractExpression* item : src) {
        if (!item) continue;  // already taken over by tree building
        std::unique_ptr<CAbstractExpression> copy;
        switch (item->GetClassType()) {
            case eParseCharData:
                copy = CopyOf<CParseCharData>(*item);
                break;
            case eParseComment:
                copy = CopyOf<CParseComment>(*item);
                break;
            case eParseElement:
                copy = CopyOf<CParseElement>(*item);
                break;
            case eParsePI:
                copy = CopyOf<CParsePI>(*item);
                break;
            case eParseReference:
                copy = CopyOf<CParseReference>(*item);
                break;
            case eParseCDSect:
                copy = CopyOf<CParseCDSect>(*item);
                break;
            default:
                vel::LogFailure("AbstractExpression", __LINE__, "CParseContent::CopyListToList",
                                "不明なクラス");
                throw vel::CVelException("CParseContent::CopyListToList()");
        }
        dst.PushBack(copy.get());
        copy.release();
    }
}

}  // namespace vx
