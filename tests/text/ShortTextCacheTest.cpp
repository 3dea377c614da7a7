#include <gtest/gtest.h>

#include <string>

#include "vx/text/ShortTextCache.h"

namespace {

using vx::CShortTextCache;
using vx::CVelStrW;

TEST(ShortTextCache, SharesEqualShortTextsOnly) {
    CShortTextCache cache;
    const std::u16string source = u"\n  <a>\n  <b>\n  ";
    const CVelStrW indent = cache.Get(source.data(), 3);
    EXPECT_EQ(indent, CVelStrW(u"\n  "));
    EXPECT_EQ(cache.Get(source.data() + 6, 3).c_str(), indent.c_str());  // the same run again
    EXPECT_EQ(cache.Get(source.data() + 12, 3).c_str(), indent.c_str());
    EXPECT_EQ(cache.Get(source.data(), 2), CVelStrW(u"\n "));  // a prefix is another text

    const CVelStrW given(u"\u00E9");
    EXPECT_EQ(cache.Get(given).c_str(), given.c_str());  // kept itself
    EXPECT_EQ(cache.Get(CVelStrW(u"\u00E9")).c_str(), given.c_str());

    const std::u16string longText(100, u'x');
    const CVelStrW first = cache.Get(longText.data(), 100);
    EXPECT_EQ(first, CVelStrW(longText.c_str()));
    EXPECT_NE(cache.Get(longText.data(), 100).c_str(), first.c_str());  // not worth sharing
}

// Far more texts than slots: texts that meet in one slot replace each other, never mix up.
TEST(ShortTextCache, ManyDistinctTextsStayApart) {
    CShortTextCache cache;
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 5000; ++i) {
            std::u16string text = u"t";
            for (const char digit : std::to_string(i))
                text += static_cast<char16_t>(digit);
            const CVelStrW got = cache.Get(text.data(), static_cast<int>(text.size()));
            ASSERT_EQ(std::u16string(got.c_str(), got.GetLength()), text) << i;
        }
    }
}

// Two texts of one length that meet in one slot with the same further hash bits: still two.
TEST(ShortTextCache, TellsApartTextsWhoseHashesAgree) {
    const std::u16string a = u"n1780482", b = u"n7131113";
    const std::size_t ha = velstr::HashUnits(a.data(), 8), hb = velstr::HashUnits(b.data(), 8);
    ASSERT_EQ(ha % 1024, hb % 1024);
    ASSERT_EQ(ha >> 32, hb >> 32);
    CShortTextCache cache;
    const CVelStrW first = cache.Get(a.data(), 8);
    EXPECT_EQ(std::u16string(cache.Get(b.data(), 8).c_str(), 8), b);
    EXPECT_NE(cache.Get(a.data(), 8).c_str(), first.c_str());  // b took the slot
}

}  // namespace
