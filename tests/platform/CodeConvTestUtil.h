#pragma once
// Conversions as the library's callers make them, for the code conversion tests.
#include <optional>
#include <string>

#include "vx/platform/CodeConv.h"

namespace platform_test {

// src converted into a buffer of the size GetBufSizeByByte gives, or of `capacity` bytes;
// nullopt when either call fails.
inline std::optional<std::string> Convert(const std::string& src, vcc::eCodeType from,
                                          vcc::eCodeType to,
                                          std::optional<int> capacity = std::nullopt) {
    int size = 0;
    if (!vcc::GetBufSizeByByte(&size, static_cast<int>(src.size()), from, to)) return std::nullopt;
    size = capacity.value_or(size);
    std::string dst(static_cast<std::size_t>(size), '\0');
    if (!vcc::ConvertTo(src.data(), static_cast<int>(src.size()), from, dst.data(), &size, to)) {
        return std::nullopt;
    }
    dst.resize(static_cast<std::size_t>(size));
    return dst;
}

// The UTF-16LE bytes of text.
inline std::string Wide(const std::u16string& text) {
    std::string bytes;
    for (char16_t unit : text) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

}  // namespace platform_test
