#include "vx/platform/CodeConv.h"

#include <gtest/gtest.h>

#include <climits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/PlatformTestUtil.h"

namespace {

using platform_test::Hex;
using namespace vcc;

std::optional<std::string> Convert(const std::string& src, eCodeType from, eCodeType to) {
    int size = 0;
    if (!GetBufSizeByByte(&size, static_cast<int>(src.size()), from, to)) return std::nullopt;
    std::string dst(static_cast<std::size_t>(size), '\0');
    if (!ConvertTo(src.data(), static_cast<int>(src.size()), from, dst.data(), &size, to)) {
        return std::nullopt;
    }
    dst.resize(static_cast<std::size_t>(size));
    return dst;
}

std::string Wide(const std::u16string& text) {
    std::string bytes;
    for (char16_t unit : text) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

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
    // The wave dash reads as U+FF5E in every Japanese encoding; 0x5C and 0x7E stay ASCII.
    EXPECT_EQ(Convert(Hex("81 60 5c 7e"), eShiftJIS, eUtf16LE), Wide(u"～\\~"));
    EXPECT_EQ(Convert(Hex("a1 c1 5c 7e"), eEucJP, eUtf16LE), Wide(u"～\\~"));
    EXPECT_EQ(Convert(Hex("1b 24 42 21 41 1b 28 4a 5c 7e"), eIso2022JP, eUtf16LE), Wide(u"～\\~"));
    EXPECT_EQ(Convert(Hex("1b 24 40 24 22 1b 28 42"), eIso2022JP, eUtf16LE), Wide(u"あ"));
    EXPECT_EQ(Convert(Hex("f0 a0 ae 9f"), eUtf8, eUtf16LE), Hex("42 d8 9f df"));
    EXPECT_EQ(Convert(Hex("9f 0b 02 00"), eUcs4LE, eUtf16LE), Hex("42 d8 9f df"));
    EXPECT_EQ(Convert(Wide(u"aあb"), eUtf16LE, eIso2022JP), Hex("61 1b 24 42 24 22 1b 28 42 62"));
    EXPECT_EQ(Convert(Wide(u"あ"), eUtf16LE, eIso2022JP), Hex("1b 24 42 24 22 1b 28 42"));
    // A byte order mark is dropped.
    EXPECT_EQ(Convert(Hex("ef bb bf 41"), eUtf8, eUtf16LE), Hex("41 00"));
    EXPECT_EQ(Convert(Hex("ff fe 41 00"), eUtf16LE, eUtf16LE), Hex("41 00"));
    EXPECT_EQ(Convert(Hex("ff fe 41 00"), eUtf16LE, eUtf8), "A");
    EXPECT_EQ(Convert(Hex("ff fe 00 00 41 00 00 00"), eUcs4LE, eUtf16LE), Hex("41 00"));
}

TEST(CodeConv, MalformedInputFails) {
    const std::pair<eCodeType, std::vector<const char*>> cases[] = {
        {eUtf8, {"c0 af", "ed a0 80", "f4 90 80 80", "e3 81", "41 80"}},
        {eShiftJIS, {"81", "81 20"}},
        {eWindows932, {"a0"}},
        {eEucJP, {"a1", "a1 20"}},
        {eIso2022JP, {"1b 24 42 24", "1b 28 49 41", "1b 24 42 24 22", "1b", "a4 a2"}},
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
        {u"①", eIso2022JP},         {u"纊", eIso2022JP},     {u"ｱ", eIso2022JP},
        {u"¥", eShiftJIS},          {u"−", eShiftJIS},       {u"¥", eIso2022JP},
        {u"\U0001F600", eShiftJIS}, {u"\U0001F600", eEucJP}, {u"\xD800", eUtf8},
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

}  // namespace
