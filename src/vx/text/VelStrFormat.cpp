// printf-style formatting of the narrow and the wide string.
#include <cstdarg>
#include <cstdio>
#include <string>

#include "vx/text/VelStr.h"

namespace velstr {

namespace {

void AppendUnits(std::u16string& out, const char16_t* text) {
    if (text) out += text;
}

}  // namespace

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

}  // namespace velstr
