// Elements: the tags, the content and the element itself.
#include <algorithm>
#include <memory>
#include <unordered_set>
#include <utility>

#include "vx/dom/NameCache.h"
#include "vx/parse/GrammarSteps.h"
#include "vx/platform/Guard.h"
#include "vx/platform/Logger.h"

namespace vx {

using namespace grammar;

namespace {

// A tag that does not close where it should: code 15 inside the source, 19 at its end.
bool FailUnclosed(CParse& parser, int pos, int& end) {
    const bool atEnd = pos >= parser.Source().GetLength();
    return Fail(parser, atEnd ? CParseError::eErrUnexpectedEnd : CParseError::eErrUnexpectedChar,
                pos, end);
}

// "<" or "</" and a name: the element name interned, or false when there is none.
bool MatchTagName(CParse& parser, int& pos, const CVelStrW& open, CVelStrW& name) {
    CParseName match;
    if (!AcceptKeyword(parser.Source(), pos, open) || !TryMatch(match, parser, pos)) return false;
    name = match.TakeName();
    ElementNameCache().InternInPlace(name);
    return true;
}

// Whether an attribute so far has name. A scan is cheapest for the usual few attributes; past
// kScanLimit the names go into seen, so that a tag with very many stays linear.
bool IsDuplicateName(const CAttributeList& attributes, const CVelStrW& name,
                     std::unordered_set<CVelStrW>& seen) {
    constexpr int kScanLimit = 16;
    if (attributes.GetSize() < kScanLimit) {
        return std::any_of(
            attributes.begin(), attributes.end(),
            [&](const CParseAttribute& earlier) { return earlier.GetName() == name; });
    }
    if (seen.empty()) {
        for (const CParseAttribute& earlier : attributes)
            seen.insert(earlier.GetName());
    }
    return !seen.insert(name).second;
}

template <class T>
std::unique_ptr<T> DeepCopy(const std::unique_ptr<T>& source) {
    return source ? std::make_unique<T>(*source) : nullptr;
}

template <class Item>
std::unique_ptr<CAbstractExpression> CopyOf(const CAbstractExpression& item) {
    return std::make_unique<Item>(static_cast<const Item&>(item));
}

}  // namespace

// ---- tags ----

bool CParseTag::MatchTag(CParse& parser, int start, int& end, const CVelStrW& closer,
                         const CVelStrW& other) {
    const CVelStrW& src = parser.Source();
    m_name.Clear();
    m_attributes.Clear();
    m_otherCloserEnd = -1;
    int pos = start;
    if (!MatchTagName(parser, pos, Keywords().tagOpen, m_name)) {
        return Absent(start, end);
    }
    if (!MatchAttributes(parser, pos, end)) return false;
    pos = SkipWhiteSpace(src, pos);
    if (AcceptKeyword(src, pos, closer)) {
        end = pos;
        return true;
    }
    if (src.MatchAt(pos, other)) {
        m_otherCloserEnd = pos + other.GetLength();
        return Absent(start, end);
    }
    return FailUnclosed(parser, pos, end);
}

void CParseTag::TakeOver(CParseTag&& other) {
    m_name = std::move(other.m_name);
    m_attributes = std::move(other.m_attributes);
}

// (S Attribute)*, leaving pos before the white space that no attribute follows.
bool CParseTag::MatchAttributes(CParse& parser, int& pos, int& end) {
    const CVelStrW& src = parser.Source();
    std::unordered_set<CVelStrW> seen;
    while (pos < src.GetLength()) {
        int next = SkipWhiteSpace(src, pos);
        if (next == pos) break;
        CParseAttribute attribute;
        if (!TryMatch(attribute, parser, next)) break;
        if (IsDuplicateName(m_attributes, attribute.GetName(), seen)) {
            return Fail(parser, CParseError::eErrDuplicateAtt, next, end);
        }
        m_attributes.PushBack(std::move(attribute));
        pos = next;
    }
    return true;
}

bool CParseSTag::Interpreter(CParse& parser, int start, int& end) {
    return MatchTag(parser, start, end, Keywords().tagClose, Keywords().emptyTagClose);
}

int CParseSTag::TakeOver(CParseEmptyElemTag&& scan) {
    const int end = scan.GetOtherCloserEnd();
    CParseTag::TakeOver(std::move(scan));
    return end;
}

bool CParseEmptyElemTag::Interpreter(CParse& parser, int start, int& end) {
    return MatchTag(parser, start, end, Keywords().emptyTagClose, Keywords().tagClose);
}

bool CParseETag::Interpreter(CParse& parser, int start, int& end) {
    m_name.Clear();
    int pos = start;
    if (!MatchTagName(parser, pos, Keywords().endTagOpen, m_name)) return Absent(start, end);
    pos = SkipWhiteSpace(parser.Source(), pos);
    if (!AcceptChar(parser.Source(), pos, u'>')) return FailUnclosed(parser, pos, end);
    end = pos;
    return true;
}

// ---- content ----

CParseContent::CParseContent(const CParseContent& other) : CAbstractExpression(other) {
    try {
        CopyListToList(m_children, other.m_children);
    } catch (...) {
        Clear();
        throw;
    }
}

CParseContent& CParseContent::operator=(const CParseContent& other) {
    if (this != &other) {
        Clear();
        CopyListToList(m_children, other.m_children);
    }
    return *this;
}

CParseContent::~CParseContent() {
    Clear();
}

void CParseContent::Clear() {
    for (CAbstractExpression* child : m_children)
        delete child;
    m_children.Clear();
}

void CParseContent::ReleaseChild(int index) {
    delete std::exchange(m_children[index], nullptr);
}

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

template <class Item>
bool CParseContent::TryAppend(CParse& parser, int& pos) {
    Item item;
    if (!TryMatch(item, parser, pos)) return false;
    if (!parser.IsRecordSuppressed()) {
        auto owned = std::make_unique<Item>(std::move(item));
        m_children.PushBack(owned.get());
        owned.release();
    }
    return true;
}

// CharData? ((element | Reference | CDSect | PI | Comment) CharData?)*. A child that fails
// ends the content where it began; the enclosing element then fails at its end tag, so one
// nested error leaves one entry per enclosing element.
bool CParseContent::Interpreter(CParse& parser, int start, int& end) {
    Clear();
    end = start;
    const CVelStrW& src = parser.Source();
    TryAppend<CParseCharData>(parser, end);
    while (end < src.GetLength()) {
        // Every alternative opens with "<" except the reference, which opens with "&": the
        // others would be absent, so only the order among the "<" forms matters.
        bool matched = false;
        if (src[end] == u'<') {
            matched = TryAppend<CParseElement>(parser, end) ||
                      TryAppend<CParseCDSect>(parser, end) || TryAppend<CParsePI>(parser, end) ||
                      TryAppend<CParseComment>(parser, end);
        } else if (src[end] == u'&') {
            matched = TryAppend<CParseReference>(parser, end);
        }
        if (!matched) break;
        TryAppend<CParseCharData>(parser, end);
    }
    return true;
}

// ---- element ----

CParseElement::CParseElement(const CParseElement& other) : CAbstractExpression(other) {
    CopyMember(other);
}

CParseElement& CParseElement::operator=(const CParseElement& other) {
    if (this != &other) CopyMember(other);
    return *this;
}

void CParseElement::CopyMember(const CParseElement& other) {
    m_form = other.m_form;
    m_emptyElemTag = m_form == eEmptyElemTag ? DeepCopy(other.m_emptyElemTag) : nullptr;
    m_sTag = m_form == eSTagContent ? DeepCopy(other.m_sTag) : nullptr;
    m_eTag = m_form == eSTagContent ? DeepCopy(other.m_eTag) : nullptr;
    m_content = m_form == eSTagContent ? DeepCopy(other.m_content) : nullptr;
}

const CParseEmptyElemTag* CParseElement::GetEmptyElemTag() const {
    return m_form == eEmptyElemTag ? m_emptyElemTag.get() : nullptr;
}

const CParseSTag* CParseElement::GetSTag() const {
    return m_form == eSTagContent ? m_sTag.get() : nullptr;
}

CParseContent* CParseElement::GetContent() const {
    return m_form == eSTagContent ? m_content.get() : nullptr;
}

void CParseElement::ClearContent() {
    if (CParseContent* content = GetContent()) content->Clear();
}

bool CParseElement::Interpreter(CParse& parser, int start, int& end) {
    m_emptyElemTag.reset();
    m_sTag.reset();
    m_eTag.reset();
    m_content.reset();
    m_form = eNone;
    CParseEmptyElemTag emptyElemTag;
    int pos = start;
    if (TryMatch(emptyElemTag, parser, pos)) {
        CParse::CNestingScope level(parser);
        m_emptyElemTag = std::make_unique<CParseEmptyElemTag>(std::move(emptyElemTag));
        m_form = eEmptyElemTag;
        end = pos;
        return true;
    }
    return MatchSTagContentETag(parser, start, end, std::move(emptyElemTag));
}

bool CParseElement::MatchSTagContentETag(CParse& parser, int start, int& end,
                                         CParseEmptyElemTag&& scan) {
    CParseSTag sTag;
    int pos = start;
    // Every start tag is read by the empty-element form first, which stops at its ">"; reading
    // it again would give the same tag (no error can precede a ">" that closes it).
    if (scan.GetOtherCloserEnd() >= 0) {
        pos = sTag.TakeOver(std::move(scan));
    } else if (!TryMatch(sTag, parser, pos)) {
        return Absent(start, end);
    }
    CParse::CNestingScope level(parser);
    m_sTag = std::make_unique<CParseSTag>(std::move(sTag));
    m_form = eSTagContent;
    auto content = std::make_unique<CParseContent>();
    if (TryMatch(*content, parser, pos)) m_content = std::move(content);
    CParseETag eTag;
    int eTagEnd = pos;
    if (!eTag.Interpreter(parser, pos, eTagEnd)) {
        return Fail(parser, CParseError::eErrNoETag, eTagEnd, end);
    }
    // A missing end tag has an empty name and lands here too: code 29, not 20, on purpose.
    if (eTag.GetName() != m_sTag->GetName()) {
        return Fail(parser, CParseError::eErrTagMismatch, pos, end);
    }
    end = eTagEnd;
    return true;
}

}  // namespace vx
