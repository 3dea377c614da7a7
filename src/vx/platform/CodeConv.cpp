#include "vx/platform/CodeConv.h"

#include <climits>
#include <cstdint>
#include <cstring>

#include "vx/platform/CodeConvDetail.h"

namespace vcc {

namespace detail {

bool Output::PutBytes(const void* bytes, std::size_t count) {
    if (Room() < count) return false;
    if (count > 0) std::memcpy(End(), bytes, count);
    size += count;
    return true;
}

bool Output::PutCodePoint(char32_t value) {
    if (value < 0x10000) return PutUnit(static_cast<char16_t>(value));
    if (Room() < 4) return false;
    value -= 0x10000;
    return PutUnit(static_cast<char16_t>(0xD800 | (value >> 10))) &&
           PutUnit(static_cast<char16_t>(0xDC00 | (value & 0x3FF)));
}

}  // namespace detail

namespace {

using detail::Converter;

bool IsKnown(eCodeType code) {
    return code >= eShiftJIS && code <= eWindows932;
}

// Only conversions to and from the library's wide text are offered.
bool IsSupportedPair(eCodeType from, eCodeType to) {
    return IsKnown(from) && IsKnown(to) && (from == eUtf16LE || to == eUtf16LE);
}

Converter DecoderOf(eCodeType from) {
    switch (from) {
        case eShiftJIS:
        case eWindows932:
            return detail::DecodeCp932;
        case eEucJP:
            return detail::DecodeEucJp;
        case eIso2022JP:
            return detail::DecodeIso2022Jp;
        case eUtf16LE:
            return detail::CopyUtf16;
        case eUcs4LE:
            return detail::DecodeUcs4;
        case eUtf8:
            return detail::DecodeUtf8;
    }
    return nullptr;
}

Converter EncoderOf(eCodeType to) {
    switch (to) {
        case eShiftJIS:
        case eWindows932:
            return detail::EncodeCp932;
        case eEucJP:
            return detail::EncodeEucJp;
        case eIso2022JP:
            return detail::EncodeIso2022Jp;
        case eUtf16LE:
            return detail::CopyUtf16;
        case eUcs4LE:
            return detail::EncodeUcs4;
        case eUtf8:
            return detail::EncodeUtf8;
    }
    return nullptr;
}

// Worst case in bytes; every Japanese encoding decodes to BMP characters only.
std::int64_t DecodedBound(std::int64_t srcLen, eCodeType from) {
    return (from == eUtf16LE || from == eUcs4LE) ? srcLen : 2 * srcLen;
}

std::int64_t EncodedBound(std::int64_t srcLen, eCodeType to) {
    const std::int64_t units = (srcLen + 1) / 2;
    switch (to) {
        case eEucJP:  // JIS X 0212 characters take three bytes
        case eUtf8:
            return 3 * units;
        case eIso2022JP:
            return 5 * units + 3;  // each character may switch mode; end in ASCII
        case eUcs4LE:
            return 4 * units;
        case eUtf16LE:
            return srcLen;
        default:
            return 2 * units;
    }
}

std::size_t ByteOrderMarkLength(const unsigned char* src, int srcLen, eCodeType from) {
    static const unsigned char utf16[] = {0xFF, 0xFE};
    static const unsigned char ucs4[] = {0xFF, 0xFE, 0x00, 0x00};
    static const unsigned char utf8[] = {0xEF, 0xBB, 0xBF};
    auto starts = [&](const unsigned char* mark, int length) {
        return srcLen >= length && std::memcmp(src, mark, length) == 0;
    };
    if (from == eUtf16LE && starts(utf16, 2)) return 2;
    if (from == eUcs4LE && starts(ucs4, 4)) return 4;
    if (from == eUtf8 && starts(utf8, 3)) return 3;
    return 0;
}

}  // namespace

bool GetBufSizeByByte(int* size, int srcLen, eCodeType from, eCodeType to) {
    if (!size || srcLen < 0 || !IsSupportedPair(from, to)) return false;
    const std::int64_t bound =
        from == eUtf16LE ? EncodedBound(srcLen, to) : DecodedBound(srcLen, from);
    if (bound > INT_MAX) return false;
    *size = static_cast<int>(bound);
    return true;
}

bool ConvertTo(const char* src, int srcLen, eCodeType from, void* dst, int* dstSize, eCodeType to) {
    if (!dstSize || *dstSize < 0 || srcLen < 0 || !IsSupportedPair(from, to)) return false;
    if ((!src && srcLen > 0) || (!dst && *dstSize > 0)) return false;
    const auto* bytes = reinterpret_cast<const unsigned char*>(src);
    const std::size_t skip = ByteOrderMarkLength(bytes, srcLen, from);
    const std::size_t length = static_cast<std::size_t>(srcLen) - skip;
    if (from == eUtf16LE && length % 2 != 0) return false;
    detail::Output out{static_cast<unsigned char*>(dst), static_cast<std::size_t>(*dstSize)};
    const Converter convert = from == eUtf16LE ? EncoderOf(to) : DecoderOf(from);
    if (!convert(bytes + skip, length, out)) return false;
    *dstSize = static_cast<int>(out.size);
    return true;
}

int GetTermCharSize(eCodeType code) {
    switch (code) {
        case eUtf16LE:
            return 2;
        case eUcs4LE:
            return 4;
        default:
            return 1;
    }
}

}  // namespace vcc
