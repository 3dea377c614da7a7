// The text inside elements: character data, CDATA sections, entity and character references.
#include <cstdint>

#include "vx/parse/GrammarSteps.h"
#include "vx/text/CommonFunc.h"

namespace vx {

using namespace grammar;

// ---- character data ----

int CParseCharData::Scan(const CVelStrW& src, int start) {
    const int length = src.GetLength();
    int end = FindUnit(src.c_str(), start, length, u'<', u'&', u']');
    // A "]" ends the run only where "]]>" begins.
    while (end < length && src[end] == u']' && !src.MatchAt(end, Keywords().cdataClose))
        end = FindUnit(src.c_str(), end + 1, length, u'<', u'&', u']');
    return end;
}

bool CParseCharData::Interpreter(CParse& parser, int start, int& end) {
    const CVelStrW& src = parser.Source();
    end = Scan(src, start);
    if (end > start) m_text = parser.Texts().Get(src.c_str() + start, end - start);
    return true;
}

// ---- CDATA sections ----

bool CParseCDStart::Interpreter(CParse& parser, int start, int& end) {
    end = start;
    AcceptKeyword(parser.Source(), end, Keywords().cdataOpen);
    return true;
}

bool CParseCData::Interpreter(CParse& parser, int start, int& end) {
    const CVelStrW& src = parser.Source();
    const int close = src.Pos(Keywords().cdataClose, start);
    if (close < 0) return Fail(parser, CParseError::eErrCDEnd, start, end);
    m_text = src.SubStr(start, close - start);
    end = close;
    return true;
}

bool CParseCDEnd::Interpreter(CParse& parser, int start, int& end) {
    end = start;
    AcceptKeyword(parser.Source(), end, Keywords().cdataClose);
    return true;
}

bool CParseCDSect::Interpreter(CParse& parser, int start, int& end) {
    CParseCDStart open;
    int pos = start;
    if (!TryMatch(open, parser, pos)) return Absent(start, end);
    // An unterminated section is reported by the text and again by the section, on purpose.
    CParseCData text;
    int textEnd = pos;
    if (text.Interpreter(parser, pos, textEnd)) pos = textEnd;
    CParseCDEnd close;
    if (!TryMatch(close, parser, pos)) return Fail(parser, CParseError::eErrCDEnd, pos, end);
    m_text = text.GetCData();
    end = pos;
    return true;
}

// ---- references ----

// The character reference is tried first, on purpose (the reverse of the members' order).
bool CParseReference::Interpreter(CParse& parser, int start, int& end) {
    if (!m_charRef.Interpreter(parser, start, end)) {
        return Fail(parser, CParseError::eErrReference, end, end);
    }
    if (end > start) {
        m_kind = eCharRef;
        return true;
    }
    if (!m_entityRef.Interpreter(parser, start, end)) {
        return Fail(parser, CParseError::eErrReference, end, end);
    }
    if (end > start) m_kind = eEntityRef;
    return true;
}

bool CParseEntityRef::Interpreter(CParse& parser, int start, int& end) {
    return MatchNamedReference(parser, u'&', start, m_name, end);
}

bool CParseCharRef::Interpreter(CParse& parser, int start, int& end) {
    const CVelStrW& src = parser.Source();
    const bool hex = src.MatchAt(start, Keywords().hexCharRefOpen);
    if (!hex && !src.MatchAt(start, Keywords().charRefOpen)) return Absent(start, end);
    const int first = start + (hex ? 3 : 2);
    char16_t unit = 0;
    int units = 0;
    const int pos = ScanDigits(src, first, hex, unit, units);
    // A reference cut off by the end of the source is absent, not an error (deliberate).
    if (pos == src.GetLength()) return Absent(start, end);
    if (src[pos] != u';' || pos == first) return Fail(parser, CParseError::eErrCharRef, pos, end);
    // The digits, with the "x" of a hexadecimal reference; equal ones share a string.
    m_digits = parser.Texts().Get(src.c_str() + start + 2, pos - start - 2);
    end = pos + 1;
    return true;
}

int CParseCharRef::ScanDigits(const CVelStrW& src, int first, bool hex, char16_t& unit,
                              int& units) {
    std::int32_t value = 0;
    const int end = ScanCharRefValue(src.c_str(), first, src.GetLength(), hex ? 16 : 10, value);
    units = ValueToUnits(value, unit);
    return end;
}

CVelStrW CParseCharRef::ToStr() const {
    char16_t unit = 0;
    return ToUnits(unit) ? CVelStrW(unit) : CVelStrW();
}

int CParseCharRef::ToUnits(char16_t& unit) const {
    return DigitsToUnits(m_digits, 0, m_digits.GetLength(), unit);
}

int CParseCharRef::DigitsToUnits(const CVelStrW& text, int first, int end, char16_t& unit) {
    if (first == end) return 0;
    const bool hex = text[first] == u'x';
    std::int32_t value = 0;
    ScanCharRefValue(text.c_str(), hex ? first + 1 : first, end, hex ? 16 : 10, value);
    return ValueToUnits(value, unit);
}

int CParseCharRef::ValueToUnits(std::int32_t value, char16_t& unit) {
    if (value == 0) return 0;
    unit = static_cast<char16_t>(value & 0xFFFF);
    return 1;
}

}  // namespace vx
