#pragma once
// The XML 1.0 character classes over one 16-bit code unit. Surrogates are tested like any
// other value, so characters above U+FFFF never pass IsChar.
#include <array>
#include <cstdint>

namespace vx::chars {

// One class as a bitmap over [low, high]: the bit for ch is bit (ch - low) % 32 of word
// (ch - low) / 32.
struct Bitmap {
    char16_t low;
    char16_t high;
    int wordCount;
    const std::uint32_t* words;

    bool Contains(char16_t ch) const noexcept {
        if (ch < low || ch > high) return false;
        const unsigned offset = static_cast<unsigned>(ch - low);
        return (words[offset / 32] >> (offset % 32)) & 1u;
    }
};

// Generated from the recommendation's lists by gen_char_classes.py.
extern const Bitmap kBaseCharBitmap;
extern const Bitmap kDigitBitmap;
extern const Bitmap kCombiningCharBitmap;
extern const Bitmap kExtenderBitmap;

inline bool IsChar(char16_t ch) noexcept {
    return ch == 0x9 || ch == 0xA || ch == 0xD || (ch >= 0x20 && ch <= 0xD7FF) ||
           (ch >= 0xE000 && ch <= 0xFFFD);
}

inline bool IsBaseChar(char16_t ch) noexcept {
    return kBaseCharBitmap.Contains(ch);
}
inline bool IsDigit(char16_t ch) noexcept {
    return kDigitBitmap.Contains(ch);
}
inline bool IsCombiningChar(char16_t ch) noexcept {
    return kCombiningCharBitmap.Contains(ch);
}
inline bool IsExtender(char16_t ch) noexcept {
    return kExtenderBitmap.Contains(ch);
}

// BaseChar or Ideographic.
inline bool IsLetter(char16_t ch) noexcept {
    return IsBaseChar(ch) || (ch >= 0x4E00 && ch <= 0x9FA5) || ch == 0x3007 ||
           (ch >= 0x3021 && ch <= 0x3029);
}

inline bool IsNameChar(char16_t ch) noexcept {
    return IsLetter(ch) || IsDigit(ch) || ch == u'.' || ch == u'-' || ch == u'_' || ch == u':' ||
           IsCombiningChar(ch) || IsExtender(ch);
}

// ---- the same classes as the parser scans names with ----

// The name classes of the ASCII units in one table: markup names are mostly ASCII, and one load
// is cheaper than the bitmaps.
enum : std::uint8_t { kAsciiNameStart = 1, kAsciiNameChar = 2 };
inline constexpr std::array<std::uint8_t, 128> kAsciiNameClasses = [] {
    std::array<std::uint8_t, 128> classes{};
    for (int ch = 0; ch < 128; ++ch) {
        const bool letter = (ch >= 'A' && ch <= 'Z') || (ch >= 'a' && ch <= 'z');
        const bool start = letter || ch == '_' || ch == ':';
        if (start) classes[ch] = kAsciiNameStart | kAsciiNameChar;
        if ((ch >= '0' && ch <= '9') || ch == '.' || ch == '-') classes[ch] = kAsciiNameChar;
    }
    return classes;
}();

// Japanese names are mostly ideographs and kana, which the base-character bitmap would find
// only after its range tests and a load.
inline bool IsCommonJapaneseLetter(char16_t ch) noexcept {
    return (ch >= 0x4E00 && ch <= 0x9FA5) || (ch >= 0x3041 && ch <= 0x3094) ||
           (ch >= 0x30A1 && ch <= 0x30FA);
}

// Letter, "_" or ":".
inline bool IsNameStart(char16_t ch) noexcept {
    if (ch < 128) return kAsciiNameClasses[ch] & kAsciiNameStart;
    return IsCommonJapaneseLetter(ch) || IsLetter(ch);
}

// The same as IsNameChar.
inline bool IsNameFollow(char16_t ch) noexcept {
    if (ch < 128) return kAsciiNameClasses[ch] & kAsciiNameChar;
    return IsCommonJapaneseLetter(ch) || IsNameChar(ch);
}

// The end of the name at start in units[0, length), or start when none begins there.
inline int ScanName(const char16_t* units, int start, int length) noexcept {
    if (start >= length || !IsNameStart(units[start])) return start;
    int end = start + 1;
    while (end < length && IsNameFollow(units[end]))
        ++end;
    return end;
}

}  // namespace vx::chars
