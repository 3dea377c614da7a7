// FindUnit, the search that character data and the line index spend their time in.
#include "vx/text/VelStr.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace velstr {

int FindUnit(const char16_t* text, int from, int length, char16_t a, char16_t b,
             char16_t c) noexcept {
    int i = from;
#if defined(__SSE2__)
    // Sixteen units at a time: one compare per wanted unit and half, the two halves' hits packed
    // into one byte mask.
    const __m128i wantA = _mm_set1_epi16(static_cast<short>(a));
    const __m128i wantB = _mm_set1_epi16(static_cast<short>(b));
    const __m128i wantC = _mm_set1_epi16(static_cast<short>(c));
    auto hits = [&](const char16_t* units) {
        const __m128i u = _mm_loadu_si128(reinterpret_cast<const __m128i*>(units));
        return _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi16(u, wantA), _mm_cmpeq_epi16(u, wantB)),
                            _mm_cmpeq_epi16(u, wantC));
    };
    for (; i + 16 <= length; i += 16) {
        const int mask = _mm_movemask_epi8(_mm_packs_epi16(hits(text + i), hits(text + i + 8)));
        if (mask != 0) return i + __builtin_ctz(static_cast<unsigned>(mask));
    }
#endif
    for (; i < length; ++i) {
        if (text[i] == a || text[i] == b || text[i] == c) return i;
    }
    return length;
}

}  // namespace velstr
