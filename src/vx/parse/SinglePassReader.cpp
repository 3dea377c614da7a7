#include "vx/parse/SinglePassReader.h"

#include <memory>
#include <utility>
#include <vector>

#include "vx/dom/NameCache.h"
#include "vx/dom/XmlCharData.h"
#include "vx/dom/XmlDtd.h"
#include "vx/dom/XmlElement.h"
#include "vx/parse/Expressions.h"
#include "vx/parse/GrammarSteps.h"
#include "vx/parse/Parse.h"
#include "vx/platform/Package.h"
#include "vx/text/CharClasses.h"
#include "vx/text/CommonFunc.h"

namespace vx {

using namespace grammar;

CSinglePassReader::CSinglePassReader(CParse& parser) : m_parser(parser), m_src(parser.Source()) {}

CSinglePassReader::eResult CSinglePassReader::ReadElement(int start, int& end,
                                                          CXmlElement& element) {
    const std::int64_t expansion = m_parser.m_expansion;
    const int level = m_parser.m_depth;
    int stop = start;
    bool read = false;
    try {
        read = Read(start, end, element, stop);
        AdoptAllChildren();
    } catch (...) {
        DeleteChildren();
        throw;
    }
    if (read) return eRead;
    if (m_open.empty()) {
        Discard(element);
        m_parser.m_expansion = expansion;
        return eRefused;
    }
    if (HandOver(stop, end, level)) return eRead;
    Discard(element);
    m_parser.m_readTails.clear();
    return eFailed;
}

void CSinglePassReader::Discard(CXmlElement& element) {
    element = CXmlElement(nullptr);
}

// Content is CharData? ((element | Reference | CDSect | PI | Comment) CharData?)*, read with an
// explicit stack of open elements instead of recursion. False with stop where the item that
// the reader does not take begins; m_open then holds the elements around it.
bool CSinglePassReader::Read(int pos, int& end, CXmlElement& root, int& stop) {
    const int length = m_src.GetLength();
    if (!IsCharAt(m_src, pos, u'<')) return false;
    m_open.clear();
    CXmlElement* element = &root;
    while (true) {
        // pos is at the "<" of element's start tag. The nesting limit is the productions' to
        // raise, at the same depth.
        COpenElement tag{element, pos, pos + 1, pos + 1, m_children.size()};
        const std::int64_t expansion = m_parser.m_expansion;
        bool empty = false;
        if (!ReadStartTag(pos, *element, tag.nameEnd, empty) ||
            m_parser.m_depth + static_cast<int>(m_open.size()) >= GetNestingLimit()) {
            // The productions read the tag again, and charge its references again.
            m_parser.m_expansion = expansion;
            if (!m_open.empty()) {
                delete m_children.back();
                m_children.pop_back();
            }
            stop = tag.tagStart;
            return false;
        }
        if (!empty) m_open.push_back(tag);
        element = nullptr;
        while (!element) {
            if (m_open.empty()) {
                end = pos;
                return true;
            }
            const int textEnd = TextEnd(pos);
            if (textEnd > pos) {
                AppendTextChild<CXmlCData>(
                    m_parser.Texts().Get(m_src.c_str() + pos, textEnd - pos));
                pos = textEnd;
            }
            stop = pos;
            if (pos + 1 >= length) return false;
            if (m_src[pos] == u'&') {
                if (!ReadReference(pos)) return false;
            } else if (m_src[pos] != u'<') {
                return false;  // "]]>" ends the content where no end tag stands
            } else if (m_src[pos + 1] == u'/') {
                if (!ReadEndTag(pos, m_open.back().nameStart, m_open.back().nameEnd)) return false;
                AdoptChildren(m_open.back());
                m_open.pop_back();
            } else if (m_src[pos + 1] == u'!' || m_src[pos + 1] == u'?') {
                if (!ReadMarkup(pos)) return false;
            } else {
                element = AppendChild<CXmlElement>();
            }
        }
    }
}

// Between tags the text is mostly a line end and indentation, or nothing: white space is passed
// unit by unit, and the search for the end runs only when something else follows it.
int CSinglePassReader::TextEnd(int pos) const {
    const int end = SkipWhiteSpace(m_src, pos);
    if (IsCharAt(m_src, end, u'<') || IsCharAt(m_src, end, u'&')) return end;
    return CParseCharData::Scan(m_src, end);
}

template <class Node>
Node* CSinglePassReader::AppendChild() {
    // The slot first: a node is never out of m_children, which owns it until it is adopted.
    m_children.push_back(nullptr);
    auto* node = new Node(nullptr);
    m_children.back() = node;
    return node;
}

template <class Node>
void CSinglePassReader::AppendTextChild(CVelStrW text) {
    AppendChild<Node>()->SetText(std::move(text));
}

void CSinglePassReader::AdoptChildren(const COpenElement& open) {
    const std::size_t count = m_children.size() - open.firstChild;
    open.element->GetChildren().Adopt(m_children.data() + open.firstChild, static_cast<int>(count));
    m_children.resize(open.firstChild);
}

// The elements stay open: the productions read the rest of their content.
void CSinglePassReader::AdoptAllChildren() {
    for (auto open = m_open.rbegin(); open != m_open.rend(); ++open)
        AdoptChildren(*open);
}

void CSinglePassReader::DeleteChildren() noexcept {
    for (CXmlBaseObject* node : m_children)
        delete node;
    m_children.clear();
}

// The productions go on from pos, where the reader stopped, as they would have: the rest of
// each open element's content, innermost first, then its end tag. The content they match is
// kept for the tree builder, which appends it after what the reader built. An element that
// fails ends its parent's content where it began, so every enclosing one fails in turn.
bool CSinglePassReader::HandOver(int pos, int& end, int level) {
    bool failed = false;
    while (!m_open.empty()) {
        const COpenElement open = m_open.back();
        m_open.pop_back();
        const int depth = level + static_cast<int>(m_open.size()) + 1;
        const CParse::CDepthAt inside(m_parser, depth);
        int contentEnd = pos;
        if (!failed) {
            auto content = std::make_unique<CParseContent>();
            if (TryMatch(*content, m_parser, contentEnd)) {
                m_parser.m_readTails.push_back({open.element, depth, std::move(content)});
            }
        }
        CParseETag eTag;
        int eTagEnd = contentEnd;
        failed = true;
        if (!eTag.Interpreter(m_parser, contentEnd, eTagEnd)) {
            Fail(m_parser, CParseError::eErrNoETag, eTagEnd, eTagEnd);
        } else if (eTag.GetName() != open.element->GetName()) {
            // A missing end tag has an empty name and lands here too: code 29, as ever.
            Fail(m_parser, CParseError::eErrTagMismatch, contentEnd, eTagEnd);
        } else {
            failed = false;
        }
        pos = failed ? open.tagStart : eTagEnd;
    }
    end = pos;
    return !failed;
}

bool CSinglePassReader::ReadStartTag(int& pos, CXmlElement& element, int& nameEnd, bool& empty) {
    const int nameStart = pos + 1;
    nameEnd = CParseName::Scan(m_src, nameStart);
    if (nameEnd == nameStart) return false;
    element.m_name = ElementNameCache().Intern(m_src.c_str() + nameStart, nameEnd - nameStart);
    m_attributes.clear();
    int next = nameEnd;
    while (true) {
        const int attribute = SkipWhiteSpace(m_src, next);
        if (attribute == next) break;
        const int attributeEnd = CParseName::Scan(m_src, attribute);
        if (attributeEnd == attribute) break;
        if (!ReadAttribute(attribute, attributeEnd, next)) return false;
    }
    next = SkipWhiteSpace(m_src, next);
    empty = IsCharAt(m_src, next, u'/') && IsCharAt(m_src, next + 1, u'>');
    if (!empty && !IsCharAt(m_src, next, u'>')) return false;
    pos = next + (empty ? 2 : 1);
    element.ReserveAtt(static_cast<int>(m_attributes.size()));
    for (CPendingAttribute& attribute : m_attributes) {
        CXmlAttribute& node = element.AppendAtt();
        node.m_name = std::move(attribute.name);
        node.m_value = std::move(attribute.value);
    }
    return true;
}

// An attribute without "=" or without a quoted value is the productions' (a diagnostic, or the
// lenient empty value).
bool CSinglePassReader::ReadAttribute(int nameStart, int nameEnd, int& pos) {
    int next = SkipWhiteSpace(m_src, nameEnd);
    if (!AcceptChar(m_src, next, u'=')) return false;
    next = SkipWhiteSpace(m_src, next);
    if (!IsCharAt(m_src, next, u'"') && !IsCharAt(m_src, next, u'\'')) return false;
    CVelStrW name = AttributeNameCache().Intern(m_src.c_str() + nameStart, nameEnd - nameStart);
    const std::uint64_t key = NameKey(m_src.c_str() + nameStart, nameEnd - nameStart);
    if (IsDuplicate(name, key)) return false;
    CVelStrW value;
    if (!ReadAttValue(next, pos, value)) return false;
    m_attributes.push_back({std::move(name), std::move(value), key});
    return true;
}

// The length and the first and last units of a name (never empty): most names differ in one of
// them, so that a tag's attributes are told apart without reading their names.
std::uint64_t CSinglePassReader::NameKey(const char16_t* name, int length) {
    return static_cast<std::uint64_t>(length) << 32 | static_cast<std::uint64_t>(name[0]) << 16 |
           name[length - 1];
}

// A scan is cheapest for the usual few attributes; past kScanLimit the names go into a set, so
// that a tag with very many stays linear.
bool CSinglePassReader::IsDuplicate(const CVelStrW& name, std::uint64_t key) {
    constexpr std::size_t kScanLimit = 16;
    const std::size_t count = m_attributes.size();
    if (count < kScanLimit) {
        for (const CPendingAttribute& earlier : m_attributes) {
            if (earlier.key == key && earlier.name == name) return true;
        }
        return false;
    }
    if (count == kScanLimit) {
        m_seenNames.clear();
        for (const CPendingAttribute& earlier : m_attributes)
            m_seenNames.insert(earlier.name);
    }
    return !m_seenNames.insert(name).second;
}

// The quoted value whose opening quote is at open, expanded as the productions expand it while
// the references are matched; end is after the closing quote. One search finds the closing
// quote, "<" and "&". Each internal entity's text is charged against the parse's allowance as
// the productions charge it.
bool CSinglePassReader::ReadAttValue(int open, int& end, CVelStrW& value) {
    const char16_t* units = m_src.c_str();
    const int length = m_src.GetLength();
    const char16_t quote = units[open];
    const int first = open + 1;
    int run = first;  // start of the ordinary characters not yet appended
    m_value.clear();
    int pos = FindUnit(units, first, length, quote, u'<', u'&');
    for (; pos < length && units[pos] == u'&';
         pos = FindUnit(units, run, length, quote, u'<', u'&')) {
        CReference reference;
        if (!MatchReference(pos, reference)) return false;
        m_value.append(units + run, units + pos);
        if (!AppendReplacement(pos, reference)) return false;
        run = reference.end;
    }
    // Unterminated, or a "<" before the closing quote.
    if (pos == length || units[pos] != quote) return false;
    end = pos + 1;
    if (run == first) {
        value = AttributeValueCache().Intern(units + first, pos - first);
        return true;
    }
    m_value.append(units + run, units + pos);
    value = AttributeValueCache().Intern(m_value.data(), static_cast<int>(m_value.size()));
    return true;
}

// A character reference in a value goes through the conversion that wraps and refuses, not
// the grammar's saturating one, as in the productions.
bool CSinglePassReader::AppendReplacement(int pos, const CReference& reference) {
    const CVelStrW text = reference.kind == CReference::eCharacter
                              ? ConvertNumToChar(m_src, pos + 2, reference.end - 2)
                              : reference.text;
    if (!m_parser.ChargeExpansion(reference.kind == CReference::eInternal ? text.GetLength() : 0)) {
        return false;
    }
    m_value.append(text.c_str(), text.c_str() + text.GetLength());
    return true;
}

// The end tag names the open element exactly when it holds the same units and no name
// character follows them: compared in place, with no scan of the name.
bool CSinglePassReader::ReadEndTag(int& pos, int nameStart, int nameEnd) {
    const char16_t* units = m_src.c_str();
    const int length = m_src.GetLength();
    const int first = pos + 2;
    const int last = first + (nameEnd - nameStart);
    if (last > length || !velstr::SameUnits(units + nameStart, units + first, nameEnd - nameStart))
        return false;
    if (last < length && chars::IsNameFollow(units[last])) return false;
    int next = SkipWhiteSpace(m_src, last);
    if (!AcceptChar(m_src, next, u'>')) return false;
    pos = next;
    return true;
}

// CDATA sections become nodes; comments and PIs inside elements are dropped, as the tree
// builder drops them.
bool CSinglePassReader::ReadMarkup(int& pos) {
    const CKeywords& keywords = Keywords();
    if (m_src.MatchAt(pos, keywords.cdataOpen)) {
        const int first = pos + keywords.cdataOpen.GetLength();
        const int close = m_src.Pos(keywords.cdataClose, first);
        if (close < 0) return false;
        AppendTextChild<CXmlCDSect>(m_src.SubStr(first, close - first));
        pos = close + keywords.cdataClose.GetLength();
        return true;
    }
    const bool comment = m_src.MatchAt(pos, keywords.commentOpen);
    const CVelStrW& close = comment ? keywords.commentClose : keywords.piClose;
    const CDelimitedRun run =
        MatchDelimited(m_src, pos, comment ? keywords.commentOpen : keywords.piOpen, close);
    if (run.state != CDelimitedRun::eFound) return false;
    if (comment) {
        for (int i = run.first; i < run.close; ++i) {
            if (!CParseChars::IsChar(m_src[i])) return false;
        }
    }
    pos = run.close + close.GetLength();
    return true;
}

// One text node per reference, as the tree builder makes it.
bool CSinglePassReader::ReadReference(int& pos) {
    CReference reference;
    if (!MatchReference(pos, reference)) return false;
    AppendTextChild<CXmlCData>(reference.kind == CReference::eCharacter
                                   ? m_parser.Texts().Get(&reference.unit, reference.units)
                                   : reference.text);
    pos = reference.end;
    return true;
}

// A reference at pos ("&" there) that the productions match without a diagnostic and that
// needs nothing but text: a character, a predefined entity or a declared internal one.
bool CSinglePassReader::MatchReference(int pos, CReference& reference) {
    // The "&" is known: the units after it tell the kinds of reference apart.
    const int length = m_src.GetLength();
    if (pos + 1 >= length || m_src[pos + 1] != u'#') return MatchEntityRef(pos, reference);
    const bool hex = pos + 2 < length && m_src[pos + 2] == u'x';
    const int first = pos + (hex ? 3 : 2);
    const int last = CParseCharRef::ScanDigits(m_src, first, hex, reference.unit, reference.units);
    if (last == first || !IsCharAt(m_src, last, u';')) return false;
    reference.kind = CReference::eCharacter;
    reference.end = last + 1;
    return true;
}

bool CSinglePassReader::MatchEntityRef(int pos, CReference& reference) {
    const int first = pos + 1;
    const int last = CParseName::Scan(m_src, first);
    if (last == first || !IsCharAt(m_src, last, u';')) return false;
    reference.end = last + 1;
    if (const CVelStrW* predefined = FindPredefinedEntity(m_src, first, last)) {
        reference.kind = CReference::ePredefined;
        reference.text = *predefined;
        return true;
    }
    reference.kind = CReference::eInternal;
    return FindInternalEntity(first, last, reference.text);
}

// The DTD is complete before the root element begins, and a document uses few entities over
// and over: the first few found are kept, so that a reference is one comparison of names.
bool CSinglePassReader::FindInternalEntity(int first, int last, CVelStrW& text) {
    constexpr std::size_t kKept = 16;
    const char16_t* name = m_src.c_str() + first;
    const int length = last - first;
    for (const CKnownEntity& known : m_entities) {
        if (known.name.GetLength() == length &&
            std::equal(name, name + length, known.name.c_str())) {
            text = known.text;
            return true;
        }
    }
    const CVelStrW key(name, length);
    const CXmlDtd& dtd = *m_parser.GetDtd();
    if (!dtd.hasInternalGE(key)) return false;
    text = dtd.getInternalGE(key);
    if (m_entities.size() < kKept) m_entities.push_back({key, text});
    return true;
}

}  // namespace vx
