#include "vx/text/Decode.h"

namespace vx {

eDecodeResult DecodeToWide(const char* bytes, int length, vcc::eCodeType code, CVelStrW& text) {
    int size = 0;
    if (!vcc::GetBufSizeByByte(&size, length, code, vcc::eUtf16LE)) {
        return eDecodeResult::eTooLarge;
    }
    char16_t* buffer = text.GetBuffer(size / 2);
    if (!vcc::ConvertTo(bytes, length, code, buffer, &size, vcc::eUtf16LE)) {
        return eDecodeResult::eNotConvertible;
    }
    text.Truncate(size / 2);
    return eDecodeResult::eDecoded;
}

}  // namespace vx
