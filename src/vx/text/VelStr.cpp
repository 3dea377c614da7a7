#include "vx/text/VelStr.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include <cstdarg>
#include <cstdio>
#include <string>

#include "vx/platform/File.h"
#include "vx/platform/Guard.h"
#include "vx/platform/Logger.h"
#include "vx/platform/Utf8.h"

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

namespace {

constexpr char16_t kReplacement = 0xFFFD;

void LogUnconvertible(const char* operation) {
    vel::LogFailure("VelStr", __LINE__, operation, "cannot converted !!");
}

void AppendUtf8(char32_t value, std::string& out) {
    unsigned char bytes[4];
    out.append(reinterpret_cast<const char*>(bytes), vcc::detail::WriteUtf8Sequence(value, bytes));
}

void AppendUnits(std::u16string& out, const char16_t* text) {
    if (text) out += text;
}

}  // namespace

void ThrowStringError(const char* what) {
    throw vel::CVelException(what);
}

CVelStrW::CVelStrW(const CVelStr& narrow) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(narrow.c_str());
    const int n = narrow.GetLength();
    char16_t* out = GetBuffer(n);  // never more units than bytes
    int written = 0;
    bool replaced = false;
    for (int i = 0; i < n;) {
        char32_t value;
        const int length = vcc::detail::ReadUtf8Sequence(bytes + i, n - i, value);
        if (length == 0) {
            value = kReplacement;
            replaced = true;
            ++i;
        } else {
            i += length;
        }
        if (value >= 0x10000) {
            out[written++] = static_cast<char16_t>(0xD800 + ((value - 0x10000) >> 10));
            out[written++] = static_cast<char16_t>(0xDC00 + ((value - 0x10000) & 0x3FF));
        } else {
            out[written++] = static_cast<char16_t>(value);
        }
    }
    Truncate(written);
    if (replaced) LogUnconvertible("CVelStrW::CVelStrW(const CVelStr&)");
}

CVelStr::CVelStr(const CVelStrW& wide) {
    std::string out;
    out.reserve(wide.GetLength());
    bool replaced = false;
    const int n = wide.GetLength();
    for (int i = 0; i < n; ++i) {
        char32_t value = wide[i];
        if (value >= 0xD800 && value <= 0xDBFF && i + 1 < n && wide[i + 1] >= 0xDC00 &&
            wide[i + 1] <= 0xDFFF) {
            value = 0x10000 + ((value - 0xD800) << 10) + (wide[i + 1] - 0xDC00);
            ++i;
        } else if (value >= 0xD800 && value <= 0xDFFF) {
            value = kReplacement;
            replaced = true;
        }
        AppendUtf8(value, out);
    }
    Assign(out.data(), vel::CheckedCount(static_cast<std::int64_t>(out.size())));
    if (replaced) LogUnconvertible("CVelStr::CVelStr(const CVelStrW&)");
}

CVelStr::CVelStr(const CVelStr& other, int first, int last) {
    const int length = other.GetLength();
    if (first < 0) first = 0;
    if (last < 0 || last >= length) last = length - 1;
    if (first <= last) Assign(other.c_str() + first, last - first + 1);
}

CVelStr& CVelStr::Format(const char* format, ...) {
    va_list args;
    va_start(args, format);
    va_list copy;
    va_copy(copy, args);
    const int length = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    Clear();
    if (length > 0) {
        char* out = GetBuffer(length);
        std::vsnprintf(out, static_cast<std::size_t>(length) + 1, format, args);
    }
    va_end(args);
    return *this;
}

CVelStrW& CVelStrW::Format(const char16_t* format, ...) {
    va_list args;
    va_start(args, format);
    std::u16string out;
    for (const char16_t* p = format; *p; ++p) {
        if (*p != u'%') {
            out += *p;
            continue;
        }
        // Flags and width, then an optional 'l', then the conversion.
        std::string conversion = "%";
        while (*++p && (*p == u'0' || *p == u'-' || (*p >= u'1' && *p <= u'9'))) {
            conversion += static_cast<char>(*p);
        }
        const bool isLong = *p == u'l';
        if (isLong) ++p;
        char number[64];
        switch (*p) {
            case u's':
                AppendUnits(out, va_arg(args, const char16_t*));
                continue;
            case u'c':
                out += static_cast<char16_t>(va_arg(args, int));
                continue;
            case u'%':
                out += u'%';
                continue;
            case u'd':
            case u'u':
            case u'x':
            case u'X':
                conversion += isLong ? "l" : "";
                conversion += static_cast<char>(*p);
                if (isLong) {
                    std::snprintf(number, sizeof number, conversion.c_str(), va_arg(args, long));
                } else {
                    std::snprintf(number, sizeof number, conversion.c_str(), va_arg(args, int));
                }
                for (const char* q = number; *q; ++q)
                    out += static_cast<char16_t>(*q);
                continue;
            default:  // an unknown conversion is written as it stands
                for (char c : conversion)
                    out += static_cast<char16_t>(c);
                if (!*p) {
                    --p;
                } else {
                    out += *p;
                }
                continue;
        }
    }
    va_end(args);
    *this = CVelStrW(out.data(), vel::CheckedCount(static_cast<std::int64_t>(out.size())));
    return *this;
}

void CVelStrW::ConvRetCode(const CVelStrW& lineEnd) {
    const bool valid =
        lineEnd == CVelStrW(u"\r") || lineEnd == CVelStrW(u"\n") || lineEnd == CVelStrW(u"\r\n");
    if (!valid) {
        vel::LogFailure("VelStr", __LINE__, "CVelStrBase<T>::ConvRetCode",
                        "引数が異常です。retcode='%s'", CVelStr(lineEnd).c_str());
        ThrowStringError("CVelStrBase<T>::ConvRetCode");
    }
    const char16_t* text = c_str();
    const int n = GetLength();
    int loneCr = 0, loneLf = 0, pairs = 0;
    for (int i = 0; i < n; ++i) {
        if (text[i] == u'\r') {
            if (i + 1 < n && text[i + 1] == u'\n') {
                ++pairs;
                ++i;
            } else {
                ++loneCr;
            }
        } else if (text[i] == u'\n') {
            ++loneLf;
        }
    }
    const int target = lineEnd.GetLength() == 2 ? 2 : (lineEnd[0] == u'\r' ? 1 : 0);
    const int already = target == 2 ? pairs : (target == 1 ? loneCr : loneLf);
    if (already == loneCr + loneLf + pairs) return;  // nothing to rewrite: keep the buffer shared

    const int ends = loneCr + loneLf + pairs;
    const int newLength = vel::CheckedCount(std::int64_t{n} - 2 * pairs - loneCr - loneLf +
                                            std::int64_t{ends} * lineEnd.GetLength());
    CVelStrW converted;
    char16_t* out = converted.GetBuffer(newLength);
    int w = 0;
    for (int i = 0; i < n; ++i) {
        if (text[i] == u'\r' || text[i] == u'\n') {
            if (text[i] == u'\r' && i + 1 < n && text[i + 1] == u'\n') ++i;
            for (int k = 0; k < lineEnd.GetLength(); ++k)
                out[w++] = lineEnd[k];
        } else {
            out[w++] = text[i];
        }
    }
    *this = std::move(converted);
}

bool CVelStr::LoadFromFile(const char* fileName) {
    vel::CVelFile file;
    if (!file.CreateFileA(fileName, vel::CVelFile::eOpenRead)) return false;
    const std::int64_t size = file.GetSize();
    if (size < 0 || size > 0x7FFFFFFF) return false;
    CVelStr content;
    char* out = content.GetBuffer(static_cast<int>(size));
    if (size > 0 && !file.Read(out, static_cast<int>(size))) return false;
    *this = std::move(content);
    return true;
}

}  // namespace velstr
