// The Japanese encodings, all read and written through the Windows code page 932 mapping so that
// one character gets one Unicode value whichever encoding carried it.
#include <iconv.h>

#include <cstring>
#include <string>

#include "vx/platform/CodeConvDetail.h"

namespace vcc::detail {

namespace {

constexpr char kWide[] = "UTF-16LE";
constexpr char kCp932[] = "CP932";
constexpr char kEucJp[] = "EUC-JP-MS";
constexpr unsigned char kEsc = 0x1B;

class Iconv {
  public:
    Iconv(const char* to, const char* from) : m_cd(iconv_open(to, from)) {}
    ~Iconv() {
        if (IsValid()) iconv_close(m_cd);
    }
    Iconv(const Iconv&) = delete;
    Iconv& operator=(const Iconv&) = delete;

    // Converts all of src; fails on malformed or truncated input, on a character the target
    // lacks and on an irreversible (substituted) conversion.
    bool Convert(const unsigned char* src, std::size_t length, Output& out) {
        if (!IsValid()) return false;
        iconv(m_cd, nullptr, nullptr, nullptr, nullptr);
        char* in = const_cast<char*>(reinterpret_cast<const char*>(src));
        std::size_t inLeft = length;
        char* to = reinterpret_cast<char*>(out.End());
        std::size_t toLeft = out.Room();
        const std::size_t result = iconv(m_cd, &in, &inLeft, &to, &toLeft);
        if (result != 0 || inLeft != 0) return false;
        if (iconv(m_cd, nullptr, nullptr, &to, &toLeft) != 0) return false;
        out.size = out.capacity - toLeft;
        return true;
    }

  private:
    bool IsValid() const { return m_cd != reinterpret_cast<iconv_t>(-1); }
    iconv_t m_cd;
};

// Both directions between the wide text and one iconv character set.
class Charset {
  public:
    explicit Charset(const char* name) : m_encoder(name, kWide), m_decoder(kWide, name) {}

    bool Decode(const unsigned char* src, std::size_t length, Output& out) {
        return m_decoder.Convert(src, length, out);
    }

    // iconv maps some characters to look-alikes without reporting it (U+00A5 to a backslash,
    // U+2212 to the full-width minus), so the result must read back as the very same text.
    bool Encode(const unsigned char* src, std::size_t length, Output& out) {
        const std::size_t start = out.size;
        if (!m_encoder.Convert(src, length, out)) return false;
        std::string back(length, '\0');
        Output check{reinterpret_cast<unsigned char*>(back.data()), back.size()};
        return m_decoder.Convert(out.data + start, out.size - start, check) &&
               check.size == length && std::memcmp(back.data(), src, length) == 0;
    }

  private:
    Iconv m_encoder;
    Iconv m_decoder;
};

// JIS X 0208 row/cell bytes (0x21-0x7E each) to the Shift_JIS code of the same cell.
void JisToShiftJis(unsigned char j1, unsigned char j2, unsigned char* sjis) {
    sjis[0] = static_cast<unsigned char>(((j1 + 1) >> 1) + (j1 <= 0x5E ? 0x70 : 0xB0));
    if (j1 & 1) {
        sjis[1] = static_cast<unsigned char>(j2 + (j2 >= 0x60 ? 0x20 : 0x1F));
    } else {
        sjis[1] = static_cast<unsigned char>(j2 + 0x7E);
    }
}

// The reverse; false when the Shift_JIS code lies outside the rows JIS X 0208 assigns (NEC
// special characters in row 13, the IBM extensions and the user-defined area).
bool ShiftJisToJis(unsigned char s1, unsigned char s2, unsigned char* jis) {
    const int lead = s1 - (s1 >= 0xE0 ? 0xB0 : 0x70);
    int j1 = 2 * lead - 1;
    int j2 = s2 - (s2 >= 0x80 ? 0x20 : 0x1F);
    if (s2 >= 0x9F) {
        ++j1;
        j2 = s2 - 0x7E;
    }
    const int row = j1 - 0x20;
    if (!((row >= 1 && row <= 8) || (row >= 16 && row <= 84))) return false;
    jis[0] = static_cast<unsigned char>(j1);
    jis[1] = static_cast<unsigned char>(j2);
    return true;
}

bool IsJisByte(unsigned char byte) {
    return byte >= 0x21 && byte <= 0x7E;
}

bool IsShiftJisLead(unsigned char byte) {
    return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
}

enum class Mode { kAscii, kJis0208 };

// Length of the escape sequence at p switching to `mode`; 0 for one this decoder does not know.
std::size_t ReadEscape(const unsigned char* p, std::size_t n, Mode& mode) {
    if (n < 3) return 0;
    if (p[1] == '(' && (p[2] == 'B' || p[2] == 'J')) {
        mode = Mode::kAscii;
    } else if (p[1] == '$' && (p[2] == 'B' || p[2] == '@')) {
        mode = Mode::kJis0208;
    } else {
        return 0;
    }
    return 3;
}

// Decodes the two-byte codes from src[i] up to the next escape through the code page 932 table.
bool DecodeJisRun(const unsigned char* src, std::size_t length, std::size_t& i, Charset& cp932,
                  Output& out) {
    std::string sjis;
    for (; i < length && src[i] != kEsc; i += 2) {
        if (length - i < 2 || !IsJisByte(src[i]) || !IsJisByte(src[i + 1])) return false;
        unsigned char pair[2];
        JisToShiftJis(src[i], src[i + 1], pair);
        sjis.append(reinterpret_cast<const char*>(pair), 2);
    }
    return cp932.Decode(reinterpret_cast<const unsigned char*>(sjis.data()), sjis.size(), out);
}

class Iso2022JpWriter {
  public:
    explicit Iso2022JpWriter(Output& out) : m_out(out) {}

    bool PutAscii(unsigned char byte) { return Switch(Mode::kAscii) && m_out.PutByte(byte); }
    bool PutJis(const unsigned char* jis) {
        return Switch(Mode::kJis0208) && m_out.PutBytes(jis, 2);
    }
    bool Finish() { return Switch(Mode::kAscii); }

  private:
    bool Switch(Mode mode) {
        if (mode == m_mode) return true;
        m_mode = mode;
        const char escape[3] = {kEsc, mode == Mode::kAscii ? '(' : '$', 'B'};
        return m_out.PutBytes(escape, 3);
    }

    Output& m_out;
    Mode m_mode = Mode::kAscii;
};

// Encodes the non-ASCII UTF-16LE units src[i..] through code page 932 and then to JIS codes.
bool EncodeJisRun(const unsigned char* src, std::size_t length, std::size_t& i, Charset& cp932,
                  Iso2022JpWriter& writer) {
    const std::size_t start = i;
    while (i < length && LoadUnit(src + i) >= 0x80)
        i += 2;
    std::string sjis(i - start, '\0');  // never more bytes than the UTF-16 input
    Output run{reinterpret_cast<unsigned char*>(sjis.data()), sjis.size()};
    if (!cp932.Encode(src + start, i - start, run)) return false;
    for (std::size_t k = 0; k < run.size; k += 2) {
        // A single byte here is a half-width katakana, which has no JIS X 0208 code.
        unsigned char jis[2];
        if (!IsShiftJisLead(run.data[k]) || run.size - k < 2 ||
            !ShiftJisToJis(run.data[k], run.data[k + 1], jis) || !writer.PutJis(jis)) {
            return false;
        }
    }
    return true;
}

}  // namespace

bool DecodeCp932(const unsigned char* src, std::size_t length, Output& out) {
    return Charset(kCp932).Decode(src, length, out);
}

bool EncodeCp932(const unsigned char* src, std::size_t length, Output& out) {
    return Charset(kCp932).Encode(src, length, out);
}

bool DecodeEucJp(const unsigned char* src, std::size_t length, Output& out) {
    return Charset(kEucJp).Decode(src, length, out);
}

bool EncodeEucJp(const unsigned char* src, std::size_t length, Output& out) {
    return Charset(kEucJp).Encode(src, length, out);
}

bool DecodeIso2022Jp(const unsigned char* src, std::size_t length, Output& out) {
    Charset cp932(kCp932);
    Mode mode = Mode::kAscii;
    for (std::size_t i = 0; i < length;) {
        if (src[i] == kEsc) {
            const std::size_t escape = ReadEscape(src + i, length - i, mode);
            if (escape == 0) return false;
            i += escape;
        } else if (mode == Mode::kJis0208) {
            if (!DecodeJisRun(src, length, i, cp932, out)) return false;
        } else if (src[i] >= 0x80 || !out.PutUnit(src[i++])) {
            return false;
        }
    }
    return mode == Mode::kAscii;  // a text left in two-byte mode is cut short
}

bool EncodeIso2022Jp(const unsigned char* src, std::size_t length, Output& out) {
    Charset cp932(kCp932);
    Iso2022JpWriter writer(out);
    for (std::size_t i = 0; i < length;) {
        const char16_t unit = LoadUnit(src + i);
        if (unit < 0x80) {
            if (!writer.PutAscii(static_cast<unsigned char>(unit))) return false;
            i += 2;
        } else if (!EncodeJisRun(src, length, i, cp932, writer)) {
            return false;
        }
    }
    return writer.Finish();
}

}  // namespace vcc::detail
