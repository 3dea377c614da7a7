#pragma once
// Byte-level character-code conversion between the encodings the library reads and writes.

namespace vcc {

enum eCodeType : int {
    eShiftJIS = 0,
    eEucJP = 1,
    eIso2022JP = 2,
    eUtf16LE = 3,  // the library's wide text
    eUcs4LE = 4,
    eUtf8 = 5,
    eWindows932 = 6,
};

// Upper bound, in bytes, of what converting srcLen bytes from `from` to `to` can produce.
// False for an unknown encoding or a size that does not fit in int.
bool GetBufSizeByByte(int* size, int srcLen, eCodeType from, eCodeType to);

// Converts into dst (capacity *dstSize bytes); on success *dstSize is the number of bytes
// written. No terminator is written. Malformed input or a character the target cannot hold
// makes it fail; nothing is ever substituted. A leading byte-order mark of UTF-16LE, UCS-4LE
// or UTF-8 input is dropped.
bool ConvertTo(const char* src, int srcLen, eCodeType from, void* dst, int* dstSize, eCodeType to);

// Size in bytes of the terminating character of an encoding (2 for UTF-16LE, 4 for UCS-4LE,
// 1 otherwise).
int GetTermCharSize(eCodeType code);

}  // namespace vcc
