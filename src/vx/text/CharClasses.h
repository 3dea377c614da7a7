#pragma once
// The XML 1.0 character classes over one 16-bit code unit. Surrogates are tested like any
// other value, so characters above U+FFFF never pass IsChar.
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

}  // namespace vx::chars
