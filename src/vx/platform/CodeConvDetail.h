#pragma once
// Building blocks shared by the converters behind vcc::ConvertTo. Every converter either decodes
// its encoding into UTF-16LE or encodes UTF-16LE into it, appending to an Output.
#include <cstddef>
#include <cstdint>

namespace vcc::detail {

// The caller's buffer; converters append and fail instead of writing past capacity.
struct Output {
    unsigned char* data;
    std::size_t capacity;
    std::size_t size = 0;

    std::size_t Room() const { return capacity - size; }
    unsigned char* End() { return data + size; }
    inline bool PutByte(unsigned char byte);
    bool PutBytes(const void* bytes, std::size_t count);
    inline bool PutUnit(char16_t unit);  // one UTF-16LE code unit
    bool PutCodePoint(char32_t value);   // one or two UTF-16LE code units
};

inline char16_t LoadUnit(const unsigned char* p) {
    return static_cast<char16_t>(p[0] | (p[1] << 8));
}

inline void StoreUnit(unsigned char* p, char16_t unit) {
    p[0] = static_cast<unsigned char>(unit);
    p[1] = static_cast<unsigned char>(unit >> 8);
}

// Inline: the decoders call these once per character.
inline bool Output::PutByte(unsigned char byte) {
    if (Room() < 1) return false;
    data[size++] = byte;
    return true;
}

inline bool Output::PutUnit(char16_t unit) {
    if (Room() < 2) return false;
    StoreUnit(End(), unit);
    size += 2;
    return true;
}

using Converter = bool (*)(const unsigned char* src, std::size_t length, Output& out);

// Ascii.cpp: from src[i] on, the bytes (WidenAscii) or UTF-16LE units (NarrowAscii) below 0x80
// are copied to out and i is moved past them; false when out has no room left for one.
bool WidenAscii(const unsigned char* src, std::size_t length, std::size_t& i, Output& out);
bool NarrowAscii(const unsigned char* src, std::size_t length, std::size_t& i, Output& out);

// Utf.cpp
bool DecodeUtf8(const unsigned char* src, std::size_t length, Output& out);
bool EncodeUtf8(const unsigned char* src, std::size_t length, Output& out);
bool DecodeUcs4(const unsigned char* src, std::size_t length, Output& out);
bool EncodeUcs4(const unsigned char* src, std::size_t length, Output& out);
bool CopyUtf16(const unsigned char* src, std::size_t length, Output& out);

// JapaneseBlocks.cpp: the fast loops of the Japanese converters. Each goes on from src[i] while
// a whole block of input and of room is left, and stops before the first character its table
// leaves to the per-character converter (kNoUnit, kNoBytes), which goes on from there.
constexpr char16_t kNoUnit = 0xFFFF;  // a noncharacter: no code decodes to it
constexpr std::uint16_t kNoBytes = 0xFFFF;

struct ByteRange {
    unsigned char first, last;
};
struct BlockDecoder {
    const char16_t* units;   // [next byte << 8 | lead]: the character the two bytes start
    ByteRange pairLeads[2];  // the bytes that start characters of more than one byte
};
// The block loops of each instruction set; kNone leaves everything to the per-character ones.
enum class BlockLevel { kNone, kSse2, kAvx2 };
BlockLevel BestBlockLevel();  // the widest this processor runs
void DecodeBlocks(BlockLevel level, const BlockDecoder& decoder, const unsigned char* src,
                  std::size_t length, std::size_t& i, Output& out);

// bytes[unit]: the code's bytes, the first in the low half; a trail byte is never 0.
void EncodeBlocks(BlockLevel level, const std::uint16_t* bytes, const unsigned char* src,
                  std::size_t length, std::size_t& i, Output& out);

// Japanese.cpp
// Tests and fuzz targets select each level up to BestBlockLevel() (a higher one is taken as
// it), to hold the block loops to the per-character converters.
void UseBlockConverters(BlockLevel level);

bool DecodeCp932(const unsigned char* src, std::size_t length, Output& out);
bool EncodeCp932(const unsigned char* src, std::size_t length, Output& out);
bool DecodeEucJp(const unsigned char* src, std::size_t length, Output& out);
bool EncodeEucJp(const unsigned char* src, std::size_t length, Output& out);
bool DecodeIso2022Jp(const unsigned char* src, std::size_t length, Output& out);
bool EncodeIso2022Jp(const unsigned char* src, std::size_t length, Output& out);

}  // namespace vcc::detail
