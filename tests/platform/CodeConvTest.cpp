#include "vx/platform/CodeConv.h"

#include <gtest/gtest.h>
#include <iconv.h>

#include <climits>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/CodeConvTestUtil.h"
#include "platform/PlatformTestUtil.h"

namespace {

using platform_test::Convert;
using platform_test::Hex;
using platform_test::Wide;
using namespace vcc;

// Kana, kanji, full-width forms, ASCII backslash and tilde, and the characters whose mapping
// differs between Windows-932 and JIS X 0208.
const std::u16string kJis0208Text = u"かなカナ漢字ＡＢ\\~<a/>～∥－￠￡￢";
// Adds a NEC special character and an IBM extension kanji.
const std::u16string kWindowsText = kJis0208Text + u"①纊";

TEST(CodeConv, RoundTripsJapaneseTextThroughEveryEncoding) {
    const struct {
        eCodeType code;
        std::u16string text;
    } cases[] = {{eShiftJIS, kWindowsText},
                 {eWindows932, kWindowsText},
                 {eEucJP, kWindowsText},
                 {eIso2022JP, kJis0208Text},
                 {eUtf16LE, kWindowsText},
                 {eUcs4LE, kWindowsText + u"\U00020B9F"},
                 {eUtf8, kWindowsText + u"\U00020B9F"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.code);
        const auto encoded = Convert(Wide(c.text), eUtf16LE, c.code);
        ASSERT_TRUE(encoded);
        EXPECT_EQ(Convert(*encoded, c.code, eUtf16LE), Wide(c.text));
    }
}

TEST(CodeConv, KnownBytesAndByteOrderMarks) {
    // The wave dash reads as U+FF5E, as in Shift_JIS and EUC-JP; 0x5C and 0x7E stay ASCII.
    EXPECT_EQ(Convert(Hex("1b 24 42 21 41 1b 28 4a 5c 7e"), eIso2022JP, eUtf16LE), Wide(u"～\\~"));
    EXPECT_EQ(Convert(Hex("1b 24 40 24 22 1b 28 42"), eIso2022JP, eUtf16LE), Wide(u"あ"));
    EXPECT_EQ(Convert(Hex("f0 a0 ae 9f"), eUtf8, eUtf16LE), Hex("42 d8 9f df"));
    EXPECT_EQ(Convert(Hex("9f 0b 02 00"), eUcs4LE, eUtf16LE), Hex("42 d8 9f df"));
    // A lone surrogate is whole UTF-16: the grammar, not the converter, refuses it.
    EXPECT_EQ(Convert(Hex("41 00 3d d8"), eUtf16LE, eUtf16LE), Hex("41 00 3d d8"));
    EXPECT_EQ(Convert(Wide(u"aあb"), eUtf16LE, eIso2022JP), Hex("61 1b 24 42 24 22 1b 28 42 62"));
    EXPECT_EQ(Convert(Wide(u"あ"), eUtf16LE, eIso2022JP), Hex("1b 24 42 24 22 1b 28 42"));
    // A byte order mark is dropped.
    EXPECT_EQ(Convert(Hex("ef bb bf 41"), eUtf8, eUtf16LE), Hex("41 00"));
    EXPECT_EQ(Convert(Hex("ff fe 41 00"), eUtf16LE, eUtf16LE), Hex("41 00"));
    EXPECT_EQ(Convert(Hex("ff fe 41 00"), eUtf16LE, eUtf8), "A");
    EXPECT_EQ(Convert(Hex("ff fe 00 00 41 00 00 00"), eUcs4LE, eUtf16LE), Hex("41 00"));
}

// Input cut inside a character included; Shift_JIS and EUC-JP are held to iconv below.
TEST(CodeConv, MalformedInputFails) {
    const std::pair<eCodeType, std::vector<const char*>> cases[] = {
        {eUtf8, {"c0 af", "ed a0 80", "f4 90 80 80", "e3 81", "f0 9f 98", "41 80"}},
        {eIso2022JP, {"1b 24 42 24", "1b 28 49 41", "1b 24 42 24 22", "1b", "1b 24", "a4 a2"}},
        {eUtf16LE, {"41 00 42"}},
        {eUcs4LE, {"00 00 11 00", "00 d8 00 00", "41 00 00"}}};
    for (const auto& [code, inputs] : cases) {
        for (const char* bytes : inputs)
            EXPECT_FALSE(Convert(Hex(bytes), code, eUtf16LE)) << bytes;
    }
}

TEST(CodeConv, CharactersTheTargetCannotHoldFail) {
    const struct {
        std::u16string text;
        eCodeType code;
    } cases[] = {
        // The sweeps below try single units only, never a pair.
        {u"\U0001F600", eShiftJIS},
        {u"\U0001F600", eEucJP},
        {u"\xD800", eUtf8},
        {u"a\xDC00", eUcs4LE},
    };
    for (const auto& c : cases) {
        EXPECT_FALSE(Convert(Wide(c.text), eUtf16LE, c.code)) << c.code;
    }
}

TEST(CodeConv, SizesAndLimits) {
    EXPECT_EQ(GetTermCharSize(eUtf16LE), 2);
    EXPECT_EQ(GetTermCharSize(eUcs4LE), 4);
    EXPECT_EQ(GetTermCharSize(eShiftJIS), 1);
    int size = 0;
    EXPECT_FALSE(GetBufSizeByByte(&size, INT_MAX, eUtf8, eUtf16LE));
    EXPECT_FALSE(GetBufSizeByByte(&size, INT_MAX / 2, eUtf16LE, eUcs4LE));
    EXPECT_TRUE(GetBufSizeByByte(&size, INT_MAX, eUtf16LE, eUtf16LE));
    EXPECT_FALSE(GetBufSizeByByte(&size, 4, eShiftJIS, eEucJP));
    EXPECT_FALSE(GetBufSizeByByte(&size, 4, static_cast<eCodeType>(7), eUtf16LE));

    // A buffer one byte short fails instead of overflowing; the size is set only on success.
    const std::string text = "abcdefghijklmnopq\xE3\x81\x82";
    std::string dst(2 * 18 - 1, '\0');
    size = static_cast<int>(dst.size());
    EXPECT_FALSE(ConvertTo(text.data(), 20, eUtf8, dst.data(), &size, eUtf16LE));
    EXPECT_EQ(size, 35);
}

// glibc iconv, which the Japanese tables were generated from: decoding as it does, and encoding
// only what reads back as the same text.
class Iconv {
  public:
    explicit Iconv(const char* charset)
        : m_decoder(iconv_open("UTF-16LE", charset)), m_encoder(iconv_open(charset, "UTF-16LE")) {}
    ~Iconv() {
        iconv_close(m_decoder);
        iconv_close(m_encoder);
    }

    std::optional<std::string> Decode(const std::string& bytes) const {
        return Run(m_decoder, bytes);
    }
    std::optional<std::string> Encode(const std::string& wide) const {
        auto bytes = Run(m_encoder, wide);
        if (bytes && Run(m_decoder, *bytes) != wide) return std::nullopt;
        return bytes;
    }

  private:
    static std::optional<std::string> Run(iconv_t cd, std::string in) {
        std::string out(16, '\0');
        char* from = in.data();
        char* to = out.data();
        std::size_t inLeft = in.size(), outLeft = out.size();
        iconv(cd, nullptr, nullptr, nullptr, nullptr);
        if (iconv(cd, &from, &inLeft, &to, &outLeft) != 0 || inLeft != 0) return std::nullopt;
        out.resize(out.size() - outLeft);
        return out;
    }

    iconv_t m_decoder;
    iconv_t m_encoder;
};

// Counts the codes converted otherwise than expected and names the first few.
class Mismatches {
  public:
    ~Mismatches() { EXPECT_EQ(m_count, 0) << m_first; }
    void Check(const std::string& input, const std::optional<std::string>& actual,
               const std::optional<std::string>& expected) {
        if (actual == expected || ++m_count > 8) return;
        for (unsigned char byte : input)
            m_first += "0123456789abcdef"[byte >> 4], m_first += "0123456789abcdef"[byte & 15];
        m_first += actual ? " converted, " : " refused, ";
    }

  private:
    int m_count = 0;
    std::string m_first;
};

// An 'A' first, so that U+FEFF is not taken for a byte-order mark.
std::string AfterA(unsigned unit) {
    return std::string{'A', '\0', static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
}

TEST(CodeConv, JapaneseTablesAgreeWithIconvOnEveryCode) {
    const std::pair<eCodeType, const char*> charsets[] = {
        {eShiftJIS, "CP932"}, {eWindows932, "CP932"}, {eEucJP, "EUC-JP-MS"}};
    for (const auto& charset : charsets) {
        // Variables, not a structured binding: clang 14 cannot capture a binding in a lambda.
        const eCodeType code = charset.first;
        const char* name = charset.second;
        SCOPED_TRACE(name);
        const Iconv iconv(name);
        Mismatches mismatches;
        auto decodes = [&](const std::string& bytes) {
            mismatches.Check(bytes, Convert(bytes, code, eUtf16LE), iconv.Decode(bytes));
        };
        for (unsigned first = 0; first < 0x100; ++first) {
            decodes(std::string(1, static_cast<char>(first)));
            for (unsigned second = 0; second < 0x100; ++second) {
                const std::string pair{static_cast<char>(first), static_cast<char>(second)};
                decodes(pair);
                if (code != eEucJP || first != 0x8F) continue;
                for (unsigned third = 0; third < 0x100; ++third)
                    decodes(pair + static_cast<char>(third));
            }
        }
        for (unsigned unit = 0; unit < 0x10000; ++unit) {
            const std::string wide = AfterA(unit);
            mismatches.Check(wide, Convert(wide, eUtf16LE, code), iconv.Encode(wide));
        }
    }
}

// Shift_JIS codes by JIS X 0208 row and cell: each lead byte holds two rows, 94 cells each,
// in the order of its trail bytes 0x40-0x7E and 0x80-0xFC.
std::map<std::string, std::pair<int, int>> ShiftJisCells() {
    std::map<std::string, std::pair<int, int>> cells;
    int row = 1;
    for (unsigned lead = 0x81; lead <= 0xEF; lead = lead == 0x9F ? 0xE0 : lead + 1, row += 2) {
        int k = 0;
        for (unsigned trail = 0x40; trail <= 0xFC; ++trail, ++k) {
            if (trail == 0x7F) trail++;
            cells[{static_cast<char>(lead), static_cast<char>(trail)}] = {row + k / 94, k % 94 + 1};
        }
    }
    return cells;
}

TEST(CodeConv, Iso2022JpIsCodePage932ByJisCell) {
    const Iconv cp932("CP932");
    Mismatches mismatches;
    const auto cells = ShiftJisCells();
    auto jis = [](std::pair<int, int> cell) {
        return "\x1b$B" +
               std::string{static_cast<char>(cell.first + 0x20),
                           static_cast<char>(cell.second + 0x20)} +
               "\x1b(B";
    };
    for (const auto& [sjis, cell] : cells) {
        mismatches.Check(jis(cell), Convert(jis(cell), eIso2022JP, eUtf16LE), cp932.Decode(sjis));
    }
    for (unsigned unit = 0x80; unit < 0x10000; ++unit) {
        const std::string wide = AfterA(unit);
        const auto sjis = cp932.Encode(wide);
        const auto cell = sjis ? cells.find(sjis->substr(1)) : cells.end();
        const bool assigned =
            cell != cells.end() &&
            (cell->second.first <= 8 || (cell->second.first >= 16 && cell->second.first <= 84));
        mismatches.Check(
            wide, Convert(wide, eUtf16LE, eIso2022JP),
            assigned ? std::optional(std::string("A").append(jis(cell->second))) : std::nullopt);
    }
}

}  // namespace
