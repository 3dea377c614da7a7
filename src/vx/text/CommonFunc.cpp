#include "vx/text/CommonFunc.h"

#include <algorithm>
#include <climits>
#include <cstdint>

#include "vx/text/StringBuffer.h"

namespace vx {

namespace {

constexpr char16_t kLf = u'\n';

// Column of position on the line starting at lineStart. A far position saturates instead of
// wrapping.
int ColumnOf(int position, int lineStart) {
    const std::int64_t column = std::int64_t{position} - lineStart + 1;
    return static_cast<int>(std::min<std::int64_t>(column, INT_MAX));
}

// Units before position that can be line feeds: those of the text.
int ScanEnd(int position, int length) {
    return std::min(position, length);
}

int SkipZeros(const CVelStrW& text, int index, int last) {
    while (index <= last && text[index] == u'0')
        ++index;
    return index;
}

// text with every occurrence of pattern replaced; the search goes on after the replacement, so
// a replacement is never matched again by the same pattern.
CVelStrW ReplaceAll(const CVelStrW& text, const CVelStrW& pattern, const CVelStrW& replacement) {
    int found = text.Pos(pattern);
    if (found == CVelStrW::npos) return text;
    CVelStringBuffer<CVelStrW> out;
    int from = 0;
    while (found != CVelStrW::npos) {
        out.Append(text.c_str() + from, found - from);
        out.Append(replacement);
        from = found + pattern.GetLength();
        found = text.Pos(pattern, from);
    }
    out.Append(text.c_str() + from, text.GetLength() - from);
    return out.ToString();
}

}  // namespace

void GetLineAndCol(const CVelStrW& text, int position, int& line, int& column) {
    line = 1;
    column = 0;
    if (position < 0) return;
    const char16_t* units = text.c_str();
    const int end = ScanEnd(position, text.GetLength());
    int lineStart = 0;
    for (int i = 0; i < end; ++i) {
        if (units[i] == kLf) {
            ++line;
            lineStart = i + 1;
        }
    }
    column = ColumnOf(position, lineStart);
}

CLineIndex::CLineIndex(const CVelStrW& text) : m_lineStarts{0}, m_length(text.GetLength()) {
    const char16_t* units = text.c_str();
    for (int i = FindUnit(units, 0, m_length, kLf, kLf, kLf); i < m_length;
         i = FindUnit(units, i + 1, m_length, kLf, kLf, kLf)) {
        m_lineStarts.push_back(i + 1);
    }
}

void CLineIndex::GetLineAndCol(int position, int& line, int& column) const {
    line = 1;
    column = 0;
    if (position < 0) return;
    // The last line start at or before the scanned end; a line feed at end - 1 counts.
    const int end = ScanEnd(position, m_length);
    const auto next = std::upper_bound(m_lineStarts.begin(), m_lineStarts.end(), end);
    line = static_cast<int>(next - m_lineStarts.begin());
    column = ColumnOf(position, *(next - 1));
}

CVelStrW ConvertNumToChar(const CVelStrW& text, int first, int last) {
    // Out-of-text bounds only come from a reference cut off by the end of the text.
    if (first < 0 || first > text.GetLength()) return CVelStrW();
    last = std::min(last, text.GetLength() - 1);
    const int base = text[first] == u'x' ? 16 : 10;
    const int index = SkipZeros(text, base == 16 ? first + 1 : first, last);
    // At most 32 significant hexadecimal digits or 10 decimal ones.
    if (last - index > (base == 16 ? 31 : 9)) return CVelStrW();
    // Unsigned arithmetic wraps, which keeps the low 16 bits of a long hexadecimal number.
    std::uint64_t value = 0;
    for (int i = index; i <= last; ++i) {
        const int digit = DigitValue(text[i], base);
        if (digit < 0) return CVelStrW();
        value = value * static_cast<std::uint64_t>(base) + static_cast<std::uint64_t>(digit);
    }
    if (base == 10 && value > 0xFFFFFFFFu) return CVelStrW();
    return CVelStrW(static_cast<char16_t>(value & 0xFFFF));
}

CVelStrW ConvertNumToChar(const CVelStrW& text) {
    // Made on first use, often inside a parse: kept off its pages, since it outlives it.
    static const CVelStrW open = [] {
        vel::CHeapScope heap;
        return CVelStrW(u"&#");
    }();
    int found = text.Pos(open);
    if (found == CVelStrW::npos) return text;
    CVelStringBuffer<CVelStrW> out;
    int from = 0;  // first unit of text not yet copied or converted
    while (found != CVelStrW::npos) {
        const int start = found + 2;
        int end = text.Pos(u';', start);
        if (end == CVelStrW::npos) end = text.GetLength();  // a missing ";" ends the text
        const CVelStrW converted = ConvertNumToChar(text, start, end - 1);
        out.Append(text.c_str() + from, found - from);
        out.Append(converted);
        from = std::min(end + 1, text.GetLength());
        // The rebuilt text is searched again from one unit after the reference, so when the
        // reference vanished the unit that now stands in its place is skipped.
        found = text.Pos(open, from + 1 - converted.GetLength());
    }
    out.Append(text.c_str() + from, text.GetLength() - from);
    return out.ToString();
}

CVelStrW ConvertEntityToChar(const CVelStrW& text) {
    struct Reference {
        CVelStrW pattern;
        CVelStrW replacement;
    };
    // "&amp;" goes first, so an escaped "&lt;" ends as "<": the double expansion is intended.
    static const Reference references[] = {
        {u"&amp;", u"&"}, {u"&quot;", u"\""}, {u"&apos;", u"'"}, {u"&gt;", u">"}, {u"&lt;", u"<"},
    };
    CVelStrW result = text;
    for (const Reference& reference : references) {
        result = ReplaceAll(result, reference.pattern, reference.replacement);
    }
    return result;
}

}  // namespace vx
