// The strings: conversion between UTF-8 narrow text and wide text, narrow sub-strings, files.
#include "vx/text/VelStr.h"

#include <string>

#include "vx/platform/File.h"
#include "vx/platform/Guard.h"
#include "vx/platform/Logger.h"
#include "vx/platform/Utf8.h"

namespace velstr {

namespace {

constexpr char16_t kReplacement = 0xFFFD;

void LogUnconvertible(const char* operation) {
    vel::LogFailure("VelStr", __LINE__, operation, "cannot converted !!");
}

void AppendUtf8(char32_t value, std::string& out) {
    unsigned char bytes[4];
    out.append(reinterpret_cast<const char*>(bytes), vcc::detail::WriteUtf8Sequence(value, bytes));
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
