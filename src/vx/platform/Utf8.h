#pragma once
// One UTF-8 sequence at a time, for the converters and for the narrow strings, which decode
// strictly and leniently around the same rules.
#include <cstddef>

namespace vcc::detail {

// Length of the well-formed UTF-8 sequence at p (n bytes available, n >= 1) and its value; 0
// if the bytes are not one (overlong forms, surrogates and values above U+10FFFF included).
inline int ReadUtf8Sequence(const unsigned char* p, std::size_t n, char32_t& value) {
    const unsigned char lead = p[0];
    int length;
    char32_t minimum;
    if (lead < 0x80) {
        value = lead;
        return 1;
    } else if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2, value = lead & 0x1F, minimum = 0x80;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3, value = lead & 0x0F, minimum = 0x800;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4, value = lead & 0x07, minimum = 0x10000;
    } else {
        return 0;
    }
    if (n < static_cast<std::size_t>(length)) return 0;
    for (int k = 1; k < length; ++k) {
        if ((p[k] & 0xC0) != 0x80) return 0;
        value = (value << 6) | (p[k] & 0x3F);
    }
    const bool surrogate = value >= 0xD800 && value <= 0xDFFF;
    if (value < minimum || value > 0x10FFFF || surrogate) return 0;
    return length;
}

// Writes the UTF-8 form of the scalar value to bytes; returns how many bytes it took.
inline int WriteUtf8Sequence(char32_t value, unsigned char (&bytes)[4]) {
    if (value < 0x80) {
        bytes[0] = static_cast<unsigned char>(value);
        return 1;
    }
    const int count = value < 0x800 ? 2 : (value < 0x10000 ? 3 : 4);
    constexpr unsigned char kLeads[] = {0, 0, 0xC0, 0xE0, 0xF0};
    bytes[0] = static_cast<unsigned char>(kLeads[count] | (value >> (6 * (count - 1))));
    for (int k = 1; k < count; ++k) {
        const int shift = 6 * (count - 1 - k);
        bytes[k] = static_cast<unsigned char>(0x80 | ((value >> shift) & 0x3F));
    }
    return count;
}

}  // namespace vcc::detail
