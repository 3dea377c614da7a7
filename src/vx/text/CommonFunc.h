#pragma once
// Line ends, line/column positions and character references over the library's wide text.
#include <algorithm>
#include <cstdint>
#include <vector>

#include "vx/text/VelStr.h"

namespace vx {

// Turns every CR LF and every lone CR into a single LF, in place. A text without CR keeps its
// shared buffer. With the other line-end steps in LineEnds.cpp.
void NormalizeRetCode(CVelStrW& text);

// Line and column (both from 1) of position: the first unit of a line is column 1 and a line
// feed belongs to the line it ends. A negative position gives line 1, column 0; positions at or
// past the end keep counting columns on the last line.
void GetLineAndCol(const CVelStrW& text, int position, int& line, int& column);

// ---- character references ----
// The digits of a character reference become a code unit by one of two rules, both kept on
// purpose: the conversion functions here wrap and refuse (ConvertNumToChar), the grammar's
// reference saturates (ScanCharRefValue).

// The value of ch as a digit of base 10 or 16, or -1.
inline int DigitValue(char16_t ch, int base) {
    if (ch >= u'0' && ch <= u'9') return ch - u'0';
    if (base == 16 && ch >= u'a' && ch <= u'f') return ch - u'a' + 10;
    if (base == 16 && ch >= u'A' && ch <= u'F') return ch - u'A' + 10;
    return -1;
}

// The character of the reference digits text[first..last] ("x" then hexadecimal, or decimal):
// one unit, or an empty string when the digits are not valid. Leading zeros are skipped; more
// than 32 significant hexadecimal or 10 decimal digits are invalid. A hexadecimal value wraps
// at 16 bits; a decimal one beyond 32 bits is invalid, else its low 16 bits are kept.
CVelStrW ConvertNumToChar(const CVelStrW& text, int first, int last);

// The end of the digits of base at first in units[0, length), their value in value, read as a
// 32-bit strtol reads them: a larger value saturates at 0x7FFFFFFF. One pass, since references
// are read where they are scanned.
inline int ScanCharRefValue(const char16_t* units, int first, int length, int base,
                            std::int32_t& value) {
    constexpr std::int64_t kMax = 0x7FFFFFFF;
    std::int64_t sum = 0;
    int pos = first;
    for (int digit = 0; pos < length && (digit = DigitValue(units[pos], base)) >= 0; ++pos)
        sum = std::min(sum * base + digit, kMax);
    value = static_cast<std::int32_t>(sum);
    return pos;
}

// The text with every "&#...;" replaced by its character; an invalid one disappears.
CVelStrW ConvertNumToChar(const CVelStrW& text);

// The text with the five predefined entity references replaced, "&amp;" first.
CVelStrW ConvertEntityToChar(const CVelStrW& text);

// The line starts of one text, for many GetLineAndCol look-ups in O(log n) each, with the same
// results as the free function. The text itself is not kept.
class CLineIndex {
  public:
    explicit CLineIndex(const CVelStrW& text);

    void GetLineAndCol(int position, int& line, int& column) const;

  private:
    std::vector<int> m_lineStarts;  // index after each line feed, with 0 first
    int m_length;
};

}  // namespace vx
