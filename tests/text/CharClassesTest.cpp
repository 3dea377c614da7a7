#include <gtest/gtest.h>

#include <string_view>

#include "vx/text/CharClasses.h"

namespace {

namespace chars = vx::chars;

bool Bit(const chars::Bitmap& map, unsigned offset) {
    return (map.words[offset / 32] >> (offset % 32)) & 1u;
}

int CountRuns(const chars::Bitmap& map) {
    int runs = 0;
    for (unsigned offset = 0; offset <= unsigned(map.high - map.low); ++offset) {
        if (Bit(map, offset) && (offset == 0 || !Bit(map, offset - 1))) ++runs;
    }
    return runs;
}

TEST(CharClassesTest, BitmapsMatchTheStandardsLists) {
    struct Expected {
        const chars::Bitmap& map;
        char16_t low, high;
        int words, runs;
    } table[] = {{chars::kBaseCharBitmap, 0x41, 0xD7A3, 1724, 201},
                 {chars::kDigitBitmap, 0x30, 0xF29, 120, 15},
                 {chars::kCombiningCharBitmap, 0x300, 0x309A, 365, 86},
                 {chars::kExtenderBitmap, 0xB7, 0x30FE, 387, 10}};
    for (const Expected& e : table) {
        EXPECT_EQ(e.map.low, e.low);
        EXPECT_EQ(e.map.high, e.high);
        EXPECT_EQ(e.map.wordCount, e.words);
        EXPECT_EQ(e.map.wordCount, (e.high - e.low) / 32 + 1);
        EXPECT_EQ(CountRuns(e.map), e.runs) << std::hex << int(e.low);
        EXPECT_TRUE(e.map.Contains(e.low));
        EXPECT_TRUE(e.map.Contains(e.high));
        EXPECT_FALSE(e.map.Contains(e.low - 1));
        EXPECT_FALSE(e.map.Contains(e.high + 1));
    }
}

// The classes that are not a single bitmap, and points inside the bitmaps' ranges.
TEST(CharClassesTest, CharLettersAndNameChars) {
    for (char16_t ch : {0x0, 0x8, 0xB, 0xC, 0x1F, 0xD800, 0xDFFF, 0xFFFE, 0xFFFF})
        EXPECT_FALSE(chars::IsChar(ch)) << std::hex << int(ch);
    for (char16_t ch : {0x9, 0xA, 0xD, 0x20, 0xD7FF, 0xE000, 0xFFFD})
        EXPECT_TRUE(chars::IsChar(ch)) << std::hex << int(ch);

    EXPECT_FALSE(chars::IsBaseChar(0x5B));  // between the two ASCII runs
    EXPECT_FALSE(chars::IsBaseChar(0xD7));  // the multiplication sign
    for (char16_t ch : {0x4E00, 0x9FA5, 0x3007, 0x3021, 0x3029, 0x3042})
        EXPECT_TRUE(chars::IsLetter(ch)) << std::hex << int(ch);
    EXPECT_FALSE(chars::IsLetter(0x3020));
    EXPECT_FALSE(chars::IsLetter(0x302A));  // a combining mark, not an ideograph
    EXPECT_TRUE(chars::IsCombiningChar(0x302A));

    for (char16_t ch : std::u16string_view(u".-_:0123456789\u0660\u00B7\u0300\u3005"))
        EXPECT_TRUE(chars::IsNameChar(ch)) << std::hex << int(ch);
    for (char16_t ch : {u' ', u'/', u'>', u'\0', char16_t(0xFF10), char16_t(0x3006)})
        EXPECT_FALSE(chars::IsNameChar(ch)) << std::hex << int(ch);  // 0xFF10: full-width zero
}

// The scanner's table and fast ranges must give exactly the class tests' answers.
TEST(CharClassesTest, NameScanClassesAgreeWithTheClassTests) {
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        const char16_t ch = static_cast<char16_t>(unit);
        ASSERT_EQ(chars::IsNameStart(ch), chars::IsLetter(ch) || ch == u'_' || ch == u':')
            << std::hex << unit;
        ASSERT_EQ(chars::IsNameFollow(ch), chars::IsNameChar(ch)) << std::hex << unit;
    }
    const std::u16string_view text = u"x \u4E00a-1\u30FC:\u3001";
    EXPECT_EQ(chars::ScanName(text.data(), 0, 1), 1);
    EXPECT_EQ(chars::ScanName(text.data(), 1, int(text.size())), 1);  // white space
    EXPECT_EQ(chars::ScanName(text.data(), 2, int(text.size())), 8);  // stops at the comma
    EXPECT_EQ(chars::ScanName(text.data(), 3, 5), 5);                 // at the given end
    EXPECT_EQ(chars::ScanName(text.data(), 4, int(text.size())), 4);  // "-" cannot start one
}

}  // namespace
