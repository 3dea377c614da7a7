// Shift_JIS and EUC-JP 64 bytes (or units) at a time. Japanese text alternates short runs of
// ASCII with short runs of kanji, so a loop that switches between an ASCII path and a table path
// mispredicts at every switch. These loops have no such branch: vector compares find a block's
// other characters, each is looked up, and the ASCII around them is copied without testing it.
// Processors with AVX2 (chosen at run time; the rest of the library needs no such flag) take
// loops that pack the block with shuffles; the others take SSE2 ones.
#if defined(__SSE2__)
#include <immintrin.h>
#endif

#include <algorithm>
#include <cstring>

#include "vx/platform/CodeConvDetail.h"

namespace vcc::detail {

#if defined(__SSE2__)

namespace {

// Bytes (or units) per block: the loop over a block's other characters ends with a branch the
// processor mispredicts, so a block is as long as the masks can be.
constexpr std::size_t kBlock = 64;
constexpr std::size_t kChunk = 16;
// A block reads at most this many bytes from its start and writes at most kWriteReach.
constexpr std::size_t kDecodeReadReach = kBlock + 2 + kChunk;
constexpr std::size_t kDecodeWriteReach = 2 * kBlock + 2 * kChunk;
constexpr std::size_t kEncodeReadReach = 2 * (kBlock + 1 + kChunk);
constexpr std::size_t kEncodeWriteReach = 2 * kBlock + 2 + kChunk;

using Mask = std::uint64_t;  // a bit for each byte or unit of a block
// Steps that copy the ASCII of each chunk however far the last other character lies.
constexpr Mask kChunkStarts = 0x0001000100010001;

__m128i Load(const unsigned char* p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

void Store(unsigned char* p, __m128i value) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), value);
}

void Widen(__m128i bytes, unsigned char* to) {
    const __m128i zero = _mm_setzero_si128();
    Store(to, _mm_unpacklo_epi8(bytes, zero));
    Store(to + 16, _mm_unpackhi_epi8(bytes, zero));
}

// Packs sixteen units to bytes (any unit above 0xFF is spoilt, and overwritten later).
__m128i Narrow(const unsigned char* src) {
    return _mm_packus_epi16(Load(src), Load(src + 16));
}

// The block's mask of chunk-wide tests: bit k from byte k of test(chunk) for each chunk.
template <class Test>
Mask MaskOf(Test test) {
    Mask mask = 0;
    for (std::size_t chunk = 0; chunk < kBlock / kChunk; ++chunk)
        mask |= Mask{static_cast<unsigned>(_mm_movemask_epi8(test(chunk)))} << (chunk * kChunk);
    return mask;
}

unsigned LowestBit(Mask mask) {
    return static_cast<unsigned>(__builtin_ctzll(mask));
}

unsigned HighestBit(Mask mask) {
    return static_cast<unsigned>(63 - __builtin_clzll(mask));
}

// The bits of `mask` above the lowest bit of `first`; none when first is empty.
Mask AfterFirst(Mask first, Mask mask) {
    const Mask lowest = first & (~first + 1);
    return mask & ~(lowest - 1) & ~lowest;
}

// Bit k set where byte k of the block leads a two-byte character, given that byte 0 starts a
// character and canLead marks the bytes that lead one when they start it. The byte after one
// that cannot lead always starts a character, so each run of possible leads begins with a lead
// and alternates with trails from there.
Mask LeadsOf(Mask canLead) {
    constexpr Mask kEven = 0x5555555555555555;
    const Mask runStarts = canLead & ~(canLead << 1);
    // Adding a run's first bit clears the run, so this keeps the runs that start at even bits.
    const Mask evenRuns = canLead & ~(canLead + (runStarts & kEven));
    return (evenRuns & kEven) | (canLead & ~evenRuns & ~kEven);
}

// Marks the bytes in either of two ranges.
class LeadTest {
  public:
    explicit LeadTest(const ByteRange (&ranges)[2]) {
        for (int k = 0; k < 2; ++k) {
            m_first[k] = _mm_set1_epi8(static_cast<char>(ranges[k].first));
            m_span[k] = _mm_set1_epi8(static_cast<char>(ranges[k].last - ranges[k].first));
        }
    }

    __m128i operator()(__m128i bytes) const { return _mm_or_si128(In(bytes, 0), In(bytes, 1)); }

  private:
    __m128i In(__m128i bytes, int k) const {
        const __m128i offset = _mm_sub_epi8(bytes, m_first[k]);
        return _mm_cmpeq_epi8(_mm_min_epu8(offset, m_span[k]), offset);
    }

    __m128i m_first[2];
    __m128i m_span[2];
};

// Bit k set where unit k of the block is not ASCII.
Mask NonAsciiUnits(const unsigned char* block) {
    const __m128i nonAscii = _mm_set1_epi16(static_cast<short>(0xFF80));
    const __m128i zero = _mm_setzero_si128();
    auto isAscii = [&](const unsigned char* p) {
        return _mm_cmpeq_epi16(_mm_and_si128(Load(p), nonAscii), zero);
    };
    return ~MaskOf([&](std::size_t chunk) {
        const unsigned char* p = block + 2 * kChunk * chunk;
        return _mm_packs_epi16(isAscii(p), isAscii(p + 16));
    });
}

// Where the encoder steps, two units a step as kanji come in runs: at every other unit of each
// run of others, from its first, and at the chunks after the first such step that no step takes
// or ends just before. The last step may take the first unit of the next block.
Mask EncodeSteps(Mask others) {
    const Mask pairs = LeadsOf(others);
    return pairs | (AfterFirst(pairs, kChunkStarts) & ~(pairs << 1) & ~(pairs >> 1));
}

// Where a block loop has got to in the input (i) and the output (to). Locals of the loop, so
// that stores through the output pointers need not reload them.
struct Cursor {
    const unsigned char* src;
    std::size_t length;
    const Output& out;
    std::size_t i;
    unsigned char* to;

    // Whether a whole block, reading and writing up to so many bytes, fits.
    bool Fits(std::size_t readReach, std::size_t writeReach) const {
        return length - i >= readReach &&
               static_cast<std::size_t>(out.data + out.capacity - to) >= writeReach;
    }
    const unsigned char* Block() const { return src + i; }
};

// Hands the place reached back to the caller.
void Stop(std::size_t at, const unsigned char* end, std::size_t& next, Output& out) {
    next = at;
    out.size = static_cast<std::size_t>(end - out.data);
}

// Each other character is stored where it belongs, followed by the next sixteen bytes widened
// (or narrowed) as if they were ASCII; the next character overwrites what is not.
void DecodeBlocksSse2(const BlockDecoder& decoder, const unsigned char* src, std::size_t length,
                      std::size_t& next, Output& out) {
    const LeadTest leadTest(decoder.pairLeads);
    const char16_t* const units = decoder.units;
    Cursor c{src, length, out, next, out.End()};
    while (c.Fits(kDecodeReadReach, kDecodeWriteReach)) {
        const unsigned char* const block = c.Block();
        const Mask high = MaskOf([&](std::size_t chunk) { return Load(block + chunk * kChunk); });
        const Mask leads = LeadsOf(
            MaskOf([&](std::size_t chunk) { return leadTest(Load(block + chunk * kChunk)); }));
        // Byte k goes to base + 2 * k, base moving back a unit past each trail byte.
        unsigned char* base = c.to;
        for (Mask starts = (high | kChunkStarts) & ~(leads << 1); starts != 0;
             starts &= starts - 1) {
            const unsigned k = LowestBit(starts);
            const unsigned char* p = block + k;
            const char16_t unit = units[LoadUnit(p)];
            unsigned char* at = base + 2 * k;
            if (unit == kNoUnit) return Stop(c.i + k, at, next, out);
            StoreUnit(at, unit);
            const unsigned pair = (leads >> k) & 1;
            base -= 2 * pair;
            Widen(Load(p + 1 + pair), at + 2);
        }
        const std::size_t read = kBlock + ((leads >> (kBlock - 1)) & 1);  // the last may lead
        c.i += read;
        c.to = base + 2 * read;
    }
    Stop(c.i, c.to, next, out);
}

void EncodeBlocksSse2(const std::uint16_t* codes, const unsigned char* src, std::size_t length,
                      std::size_t& next, Output& out) {
    Cursor c{src, length, out, next, out.End()};
    while (c.Fits(kEncodeReadReach, kEncodeWriteReach)) {
        const unsigned char* const block = c.Block();
        for (std::size_t chunk = 0; chunk < kBlock; chunk += kChunk)
            Store(c.to + chunk, Narrow(block + 2 * chunk));
        const Mask steps = EncodeSteps(NonAsciiUnits(block));
        // Unit k goes to base + k, base moving on a byte past each two-byte code.
        unsigned char* base = c.to;
        unsigned char* at;
        // Stores the code of the unit'th unit; false for one left to the caller.
        auto put = [&](std::size_t unit) {
            const std::uint16_t code = codes[LoadUnit(block + 2 * unit)];
            if (code == kNoBytes) return false;
            std::memcpy(at, &code, 2);
            const std::size_t pair = code > 0xFF;
            base += pair;
            at += 1 + pair;
            return true;
        };
        for (Mask left = steps; left != 0; left &= left - 1) {
            const std::size_t k = LowestBit(left);
            at = base + k;
            std::size_t unit = k;
            if (!put(unit) || !put(++unit)) return Stop(c.i + 2 * unit, at, next, out);
            Store(at, Narrow(block + 2 * (k + 2)));
        }
        const std::size_t read = std::max<std::size_t>(kBlock, HighestBit(steps | 1) + 2);
        c.i += 2 * read;
        c.to = base + read;
    }
    Stop(c.i, c.to, next, out);
}

// The AVX2 loops take a block in three steps: every byte (or unit) of it is written to a
// scratch array as if it were ASCII, each other character's table entry overwrites the entry of
// its first byte (or its unit), and the entries that start characters are packed to the output
// eight at a time by byte shuffles. A character costs a lookup and a store, and no widening.
#define VX_AVX2 __attribute__((target("avx2,bmi,bmi2,popcnt")))

// For each mask of eight entries of two bytes: the shuffle that packs the bytes a mask keeps to
// the front, and how many it keeps.
struct Packings {
    alignas(16) unsigned char shuffle[256][16] = {};
    unsigned char kept[256] = {};
};

// Decoding keeps the entries (units) marked in the mask.
constexpr Packings PackUnits() {
    Packings packings;
    for (unsigned mask = 0; mask < 256; ++mask) {
        unsigned char* to = packings.shuffle[mask];
        for (unsigned entry = 0; entry < 8; ++entry) {
            if (((mask >> entry) & 1) == 0) continue;
            *to++ = static_cast<unsigned char>(2 * entry);
            *to++ = static_cast<unsigned char>(2 * entry + 1);
        }
        packings.kept[mask] = static_cast<unsigned char>(to - packings.shuffle[mask]);
    }
    return packings;
}

// Encoding keeps each entry's first byte, and its second where the mask marks a two-byte code.
constexpr Packings PackCodes() {
    Packings packings;
    for (unsigned mask = 0; mask < 256; ++mask) {
        unsigned char* to = packings.shuffle[mask];
        for (unsigned entry = 0; entry < 8; ++entry) {
            *to++ = static_cast<unsigned char>(2 * entry);
            if ((mask >> entry) & 1) *to++ = static_cast<unsigned char>(2 * entry + 1);
        }
        packings.kept[mask] = static_cast<unsigned char>(to - packings.shuffle[mask]);
    }
    return packings;
}

constexpr Packings kPackUnits = PackUnits();
constexpr Packings kPackCodes = PackCodes();

// The block's 64 entries of two bytes, 32-byte aligned for the stores that fill it.
struct alignas(32) Entries {
    unsigned char bytes[2 * kBlock];

    void Put(unsigned entry, std::uint16_t value) { std::memcpy(bytes + 2 * entry, &value, 2); }
};

// Packs the entries by the masks of `select` to `to`, writing up to 2 * kBlock bytes; the end of
// what was kept.
VX_AVX2 unsigned char* Pack(const Packings& packings, const Entries& entries, Mask select,
                            unsigned char* to) {
    for (std::size_t piece = 0; piece < kBlock / 8; ++piece) {
        const unsigned mask = (select >> (8 * piece)) & 0xFF;
        const __m128i shuffle =
            _mm_load_si128(reinterpret_cast<const __m128i*>(packings.shuffle[mask]));
        Store(to, _mm_shuffle_epi8(Load(entries.bytes + 16 * piece), shuffle));
        to += packings.kept[mask];
    }
    return to;
}

VX_AVX2 __m256i Load32(const unsigned char* p) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}

VX_AVX2 Mask MaskOf32(__m256i low, __m256i high) {
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(low)) |
           Mask{static_cast<std::uint32_t>(_mm256_movemask_epi8(high))} << 32;
}

// Marks the bytes in the range.
VX_AVX2 __m256i InRange(__m256i bytes, const ByteRange& range) {
    const __m256i offset = _mm256_sub_epi8(bytes, _mm256_set1_epi8(static_cast<char>(range.first)));
    const __m256i span = _mm256_set1_epi8(static_cast<char>(range.last - range.first));
    return _mm256_cmpeq_epi8(_mm256_min_epu8(offset, span), offset);
}

VX_AVX2 __m256i CanLead(__m256i bytes, const ByteRange (&ranges)[2]) {
    return _mm256_or_si256(InRange(bytes, ranges[0]), InRange(bytes, ranges[1]));
}

// Bit k set where unit k of the 64 at p has any of `bits` set.
VX_AVX2 Mask UnitsWithAny(const unsigned char* p, std::uint16_t bits) {
    const __m256i selected = _mm256_set1_epi16(static_cast<short>(bits));
    const __m256i zero = _mm256_setzero_si256();
    Mask units = 0;
    for (std::size_t half = 0; half < 2; ++half) {
        const unsigned char* const q = p + 64 * half;
        const __m256i low = _mm256_cmpeq_epi16(_mm256_and_si256(Load32(q), selected), zero);
        const __m256i high = _mm256_cmpeq_epi16(_mm256_and_si256(Load32(q + 32), selected), zero);
        // A unit's two bytes give two equal bits: keep one.
        units |= _pext_u64(~MaskOf32(low, high), 0x5555555555555555) << (32 * half);
    }
    return units;
}

VX_AVX2 void DecodeBlocksAvx2(const BlockDecoder& decoder, const unsigned char* src,
                              std::size_t length, std::size_t& next, Output& out) {
    const char16_t* const units = decoder.units;
    Entries entries;
    Cursor c{src, length, out, next, out.End()};
    while (c.Fits(kBlock + 1, 2 * kBlock)) {  // the last byte's trail may be read
        const unsigned char* const block = c.Block();
        const __m256i low = Load32(block), high = Load32(block + 32);
        const Mask leads =
            LeadsOf(MaskOf32(CanLead(low, decoder.pairLeads), CanLead(high, decoder.pairLeads)));
        const Mask starts = ~(leads << 1);
        for (std::size_t piece = 0; piece < kBlock / 16; ++piece) {
            _mm256_store_si256(reinterpret_cast<__m256i*>(entries.bytes + 32 * piece),
                               _mm256_cvtepu8_epi16(Load(block + 16 * piece)));
        }
        for (Mask others = MaskOf32(low, high) & starts; others != 0; others &= others - 1) {
            const unsigned k = LowestBit(others);
            const char16_t unit = units[LoadUnit(block + k)];
            if (unit == kNoUnit) {
                Pack(kPackUnits, entries, starts, c.to);
                const Mask before = starts & ((Mask{1} << k) - 1);
                return Stop(c.i + k, c.to + 2 * __builtin_popcountll(before), next, out);
            }
            entries.Put(k, unit);
        }
        c.to = Pack(kPackUnits, entries, starts, c.to);
        c.i += kBlock + (leads >> (kBlock - 1));  // the last may lead
    }
    Stop(c.i, c.to, next, out);
}

VX_AVX2 void EncodeBlocksAvx2(const std::uint16_t* codes, const unsigned char* src,
                              std::size_t length, std::size_t& next, Output& out) {
    Entries entries;
    Cursor c{src, length, out, next, out.End()};
    while (c.Fits(2 * kBlock, 2 * kBlock)) {
        const unsigned char* const block = c.Block();
        for (std::size_t piece = 0; piece < kBlock / 16; ++piece) {
            _mm256_store_si256(reinterpret_cast<__m256i*>(entries.bytes + 32 * piece),
                               Load32(block + 32 * piece));
        }
        const Mask others = UnitsWithAny(block, 0xFF80);
        for (Mask left = others; left != 0; left &= left - 1) {
            const unsigned k = LowestBit(left);
            const std::uint16_t code = codes[LoadUnit(block + 2 * k)];
            if (code == kNoBytes) {
                const Mask pairs = UnitsWithAny(entries.bytes, 0xFF00);
                Pack(kPackCodes, entries, pairs, c.to);
                const Mask before = pairs & ((Mask{1} << k) - 1);
                return Stop(c.i + 2 * k, c.to + k + __builtin_popcountll(before), next, out);
            }
            entries.Put(k, code);
        }
        c.to = Pack(kPackCodes, entries, UnitsWithAny(entries.bytes, 0xFF00), c.to);
        c.i += 2 * kBlock;
    }
    Stop(c.i, c.to, next, out);
}

}  // namespace

BlockLevel BestBlockLevel() {
    static const BlockLevel best = [] {
        __builtin_cpu_init();
        const bool avx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") &&
                          __builtin_cpu_supports("bmi2") && __builtin_cpu_supports("popcnt");
        return avx2 ? BlockLevel::kAvx2 : BlockLevel::kSse2;
    }();
    return best;
}

void DecodeBlocks(BlockLevel level, const BlockDecoder& decoder, const unsigned char* src,
                  std::size_t length, std::size_t& next, Output& out) {
    if (level == BlockLevel::kAvx2) return DecodeBlocksAvx2(decoder, src, length, next, out);
    DecodeBlocksSse2(decoder, src, length, next, out);
}

void EncodeBlocks(BlockLevel level, const std::uint16_t* codes, const unsigned char* src,
                  std::size_t length, std::size_t& next, Output& out) {
    if (level == BlockLevel::kAvx2) return EncodeBlocksAvx2(codes, src, length, next, out);
    EncodeBlocksSse2(codes, src, length, next, out);
}

#else

// Without SSE2 the per-character converters do all the work.
BlockLevel BestBlockLevel() {
    return BlockLevel::kNone;
}
void DecodeBlocks(BlockLevel, const BlockDecoder&, const unsigned char*, std::size_t, std::size_t&,
                  Output&) {}
void EncodeBlocks(BlockLevel, const std::uint16_t*, const unsigned char*, std::size_t, std::size_t&,
                  Output&) {}

#endif

}  // namespace vcc::detail
