#pragma once
// Bytes of an encoding turned into the library's wide text.
#include "vx/platform/CodeConv.h"
#include "vx/text/VelStr.h"

namespace vx {

enum class eDecodeResult {
    eDecoded,
    eTooLarge,        // the wide text would not fit in an int, or code is unknown
    eNotConvertible,  // the bytes are not valid in code
};

// Replaces text with the length bytes at bytes, decoded from code. text is unspecified unless
// the result is eDecoded.
eDecodeResult DecodeToWide(const char* bytes, int length, vcc::eCodeType code, CVelStrW& text);

}  // namespace vx
