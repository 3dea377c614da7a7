// Runs of ASCII, which every encoding the library reads shares with UTF-16: most of a document's
// bytes are markup, so they are widened and narrowed many at a time.
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "vx/platform/CodeConvDetail.h"

namespace vcc::detail {

bool WidenAscii(const unsigned char* src, std::size_t length, std::size_t& i, Output& out) {
#if defined(__SSE2__)
    // Sixteen bytes at a time; a block that holds a non-ASCII byte is widened whole but only
    // its ASCII head is kept.
    const __m128i zero = _mm_setzero_si128();
    while (length - i >= 16 && out.Room() >= 32) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + i));
        auto* to = reinterpret_cast<__m128i*>(out.End());
        _mm_storeu_si128(to, _mm_unpacklo_epi8(bytes, zero));
        _mm_storeu_si128(to + 1, _mm_unpackhi_epi8(bytes, zero));
        const unsigned high = static_cast<unsigned>(_mm_movemask_epi8(bytes));
        const std::size_t ascii = high == 0 ? 16 : static_cast<std::size_t>(__builtin_ctz(high));
        i += ascii;
        out.size += 2 * ascii;
        if (high != 0) return true;
    }
#endif
    for (; i < length && src[i] < 0x80; ++i) {
        if (!out.PutUnit(src[i])) return false;
    }
    return true;
}

bool NarrowAscii(const unsigned char* src, std::size_t length, std::size_t& i, Output& out) {
#if defined(__SSE2__)
    // Sixteen units at a time, packed to bytes; a block that holds a non-ASCII unit is packed
    // whole but only its ASCII head is kept.
    const __m128i nonAscii = _mm_set1_epi16(static_cast<short>(0xFF80));
    const __m128i zero = _mm_setzero_si128();
    auto isAscii = [&](__m128i units) {
        return _mm_cmpeq_epi16(_mm_and_si128(units, nonAscii), zero);
    };
    while (length - i >= 32 && out.Room() >= 16) {
        const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + i));
        const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + i + 16));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out.End()), _mm_packus_epi16(low, high));
        const unsigned other =
            ~static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(isAscii(low), isAscii(high))));
        const std::size_t ascii = static_cast<std::size_t>(__builtin_ctz(other | 0x10000));
        i += 2 * ascii;
        out.size += ascii;
        if (ascii < 16) return true;
    }
#endif
    for (; length - i >= 2 && LoadUnit(src + i) < 0x80; i += 2) {
        if (!out.PutByte(static_cast<unsigned char>(src[i]))) return false;
    }
    return true;
}

}  // namespace vcc::detail
