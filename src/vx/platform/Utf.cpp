// UTF-8, UTF-16LE and UCS-4LE, converted by hand: these carry most documents, so they must be
// fast and must reject every malformed sequence.

#include "vx/platform/CodeConvDetail.h"
#include "vx/platform/Utf8.h"

namespace vcc::detail {

namespace {

bool IsSurrogate(char32_t value) {
    return value >= 0xD800 && value <= 0xDFFF;
}

// Next scalar value of UTF-16LE text at src[i], joining a surrogate pair; false for an unpaired
// surrogate, which no other Unicode form can carry.
bool ReadUtf16CodePoint(const unsigned char* src, std::size_t length, std::size_t& i,
                        char32_t& value) {
    const char16_t unit = LoadUnit(src + i);
    i += 2;
    if (!IsSurrogate(unit)) {
        value = unit;
        return true;
    }
    if (unit >= 0xDC00 || length - i < 2) return false;
    const char16_t low = LoadUnit(src + i);
    if (low < 0xDC00 || low > 0xDFFF) return false;
    i += 2;
    value = 0x10000 + ((static_cast<char32_t>(unit) - 0xD800) << 10) + (low - 0xDC00);
    return true;
}

bool PutUtf8(char32_t value, Output& out) {
    unsigned char bytes[4];
    return out.PutBytes(bytes, static_cast<std::size_t>(WriteUtf8Sequence(value, bytes)));
}

bool PutUcs4(char32_t value, Output& out) {
    const unsigned char bytes[4] = {
        static_cast<unsigned char>(value), static_cast<unsigned char>(value >> 8),
        static_cast<unsigned char>(value >> 16), static_cast<unsigned char>(value >> 24)};
    return out.PutBytes(bytes, 4);
}

// Drives an encoder that works on whole scalar values of UTF-16LE input.
template <class Put>
bool EncodeCodePoints(const unsigned char* src, std::size_t length, Output& out, Put put) {
    for (std::size_t i = 0; i < length;) {
        char32_t value;
        if (!ReadUtf16CodePoint(src, length, i, value) || !put(value, out)) return false;
    }
    return true;
}

}  // namespace

bool DecodeUtf8(const unsigned char* src, std::size_t length, Output& out) {
    std::size_t i = 0;
    while (i < length) {
        if (!WidenAscii(src, length, i, out)) return false;
        if (i == length) break;
        char32_t value;
        const int sequence = ReadUtf8Sequence(src + i, length - i, value);
        if (sequence == 0 || !out.PutCodePoint(value)) return false;
        i += static_cast<std::size_t>(sequence);
    }
    return true;
}

bool EncodeUtf8(const unsigned char* src, std::size_t length, Output& out) {
    return EncodeCodePoints(src, length, out, PutUtf8);
}

bool DecodeUcs4(const unsigned char* src, std::size_t length, Output& out) {
    if (length % 4 != 0) return false;
    for (std::size_t i = 0; i < length; i += 4) {
        const char32_t value = src[i] | (src[i + 1] << 8) | (src[i + 2] << 16) |
                               (static_cast<char32_t>(src[i + 3]) << 24);
        if (value > 0x10FFFF || IsSurrogate(value) || !out.PutCodePoint(value)) return false;
    }
    return true;
}

bool EncodeUcs4(const unsigned char* src, std::size_t length, Output& out) {
    return EncodeCodePoints(src, length, out, PutUcs4);
}

bool CopyUtf16(const unsigned char* src, std::size_t length, Output& out) {
    return out.PutBytes(src, length);
}

}  // namespace vcc::detail
