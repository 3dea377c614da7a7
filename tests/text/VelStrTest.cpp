#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>

#include "platform/PlatformTestUtil.h"
#include "vx/text/StringBuffer.h"
#include "vx/text/VelStr.h"

namespace {

using platform_test::LogCapture;
using velstr::CVelStr;
using velstr::CVelStrW;

std::string Bytes(const CVelStr& s) {
    return std::string(s.c_str(), s.GetLength());
}

TEST(VelStrTest, CopiesShareUntilWritten) {
    CVelStrW a(u"shared text");
    CVelStrW b = a;
    EXPECT_EQ(a.c_str(), b.c_str());
    b.SetAt(0, u'S');
    EXPECT_NE(a.c_str(), b.c_str());
    EXPECT_EQ(a, CVelStrW(u"shared text"));
    EXPECT_EQ(b, CVelStrW(u"Shared text"));

    CVelStrW self(u"abc");
    self += self;
    EXPECT_EQ(self, CVelStrW(u"abcabc"));
    self += self.c_str() + 4;  // a piece of its own buffer, forcing a reallocation
    EXPECT_EQ(self, CVelStrW(u"abcabcbc"));

    // A shared text asked for a shorter buffer keeps the other copy intact.
    CVelStrW long1(u"0123456789abcdef");
    CVelStrW long2 = long1;
    char16_t* buffer = long2.GetBuffer(3);
    buffer[0] = u'x';
    EXPECT_EQ(long2, CVelStrW(u"x12"));
    EXPECT_EQ(long1, CVelStrW(u"0123456789abcdef"));

    EXPECT_EQ(CVelStrW()[0], u'\0');
    EXPECT_STREQ(CVelStr().c_str(), "");

    // A text handed out by a buffer does not see what is appended later.
    velstr::CVelStringBuffer<CVelStrW> out;
    out.Append(CVelStrW(u"<a"));
    out.Append(u'>');
    const CVelStrW first = out.ToString();
    out.Append(CVelStrW(u"</a>"));
    EXPECT_EQ(first, CVelStrW(u"<a>"));
    EXPECT_EQ(out.ToString(), CVelStrW(u"<a></a>"));
}

// Any mix of line ends becomes the one asked for; anything but CR LF, LF or CR is refused with
// the text untouched.
TEST(VelStrTest, ConvRetCode) {
    const std::pair<const char16_t*, const char16_t*> cases[] = {
        {u"\r\n", u"a\r\nb\r\nc\r\nd\r\n"}, {u"\n", u"a\nb\nc\nd\n"}, {u"\r", u"a\rb\rc\rd\r"}};
    for (const auto& [lineEnd, expected] : cases) {
        CVelStrW text(u"a\rb\nc\r\nd\r");
        text.ConvRetCode(lineEnd);
        EXPECT_EQ(text, CVelStrW(expected));
    }
    const CVelStrW pairs(u"x\r\ny\r\n");
    CVelStrW copy = pairs;
    copy.ConvRetCode(u"\r\n");
    EXPECT_EQ(copy.c_str(), pairs.c_str());  // nothing to change: the buffer stays shared

    LogCapture log;
    for (const char16_t* bad : {u"\n\r", u"", u"\r\r", u"x"}) {
        CVelStrW text = copy;
        try {
            text.ConvRetCode(bad);
            ADD_FAILURE() << "no exception";
        } catch (const std::exception& e) {
            EXPECT_STREQ(e.what(), "CVelStrBase<T>::ConvRetCode");
        }
        EXPECT_EQ(text.c_str(), pairs.c_str());
    }
    EXPECT_NE(log.Text().find("ConvRetCode: 引数が異常です。retcode='\n\r'"), std::string::npos);
    EXPECT_NE(log.Text().find("引数が異常です。retcode='x'"), std::string::npos);
}

TEST(VelStrTest, NarrowRangeIsInclusiveAndFormat) {
    const CVelStr text("0123456789abcdefghij");
    EXPECT_EQ(Bytes(CVelStr(text, 10, 14)), "abcde");
    EXPECT_EQ(Bytes(CVelStr(text, -5, 2)), "012");
    EXPECT_EQ(Bytes(CVelStr(text, 17, -1)), "hij");
    EXPECT_EQ(Bytes(CVelStr(text, 18, 99)), "ij");
    EXPECT_EQ(Bytes(CVelStr(text, 25, 30)), "");
    EXPECT_EQ(Bytes(CVelStr(text, 5, 4)), "");

    CVelStrW wide;
    wide.Format(u"%s=%d [%08x] %5d%% %c", u"name", -42, 0xBEEFu, 7, u'\u3042');
    EXPECT_EQ(wide, CVelStrW(u"name=-42 [0000beef]     7% \u3042"));
    CVelStr narrow;
    narrow.Format("%s(%d): %08x", "unit", 12, 255u);
    EXPECT_EQ(Bytes(narrow), "unit(12): 000000ff");
}

TEST(VelStrTest, Utf8Conversion) {
    const CVelStrW wide(u"A\u00E9\u65E5\U0001F600");
    const CVelStr narrow(wide);
    EXPECT_EQ(Bytes(narrow), "A\xC3\xA9\xE6\x97\xA5\xF0\x9F\x98\x80");
    EXPECT_EQ(CVelStrW(narrow), wide);
    EXPECT_EQ(CVelStrW(narrow).GetLength(), 5);  // the pair stays two units

    LogCapture log;
    const char16_t lone[] = {u'a', 0xD800, u'b', 0xDC00, 0};
    EXPECT_EQ(Bytes(CVelStr(CVelStrW(lone))),
              "a\xEF\xBF\xBD"
              "b\xEF\xBF\xBD");
    EXPECT_EQ(CVelStrW(CVelStr("x\xFFy\xE6\x97")), CVelStrW(u"x\uFFFDy\uFFFD\uFFFD"));
    const std::string logged = log.Text();
    EXPECT_NE(logged.find("CVelStr::CVelStr(const CVelStrW&): cannot converted !!"),
              std::string::npos);
    EXPECT_NE(logged.find("CVelStrW::CVelStrW(const CVelStr&): cannot converted !!"),
              std::string::npos);
}

TEST(VelStrTest, SearchCompareOrderAndSlice) {
    const CVelStrW text(u"encoding=\"UTF-8\"");
    EXPECT_EQ(text.Pos(u"\""), 9);
    EXPECT_EQ(text.Pos(u"\"", 10), 15);
    EXPECT_EQ(text.Pos(u"utf"), CVelStrW::npos);
    EXPECT_EQ(text.Pos(u"8\"x"), CVelStrW::npos);  // would run past the end
    EXPECT_EQ(text.Pos(u'='), 8);

    EXPECT_EQ(text.Strncmp(u"encodingX", 8), 0);
    EXPECT_LT(text.Strncmp(u"f", 1), 0);
    EXPECT_GT(CVelStrW(u"abc").Strncmp(u"ab", 3), 0);  // the shorter ends first
    EXPECT_EQ(CVelStrW(u"uTf-8").Strnicmp(u"UTF-8", 5), 0);
    EXPECT_NE(CVelStrW(u"\u00E9").Strnicmp(u"\u00C9", 1), 0);  // ASCII letters only

    CVelStrW upper(u"shift_jis-\u00E9");
    EXPECT_EQ(upper.Upper(), CVelStrW(u"SHIFT_JIS-\u00E9"));

    EXPECT_EQ(text.SubStr(10, 5), CVelStrW(u"UTF-8"));
    EXPECT_EQ(text.SubStr(10), CVelStrW(u"UTF-8\""));
    EXPECT_EQ(text.SubStr(-3, 3), CVelStrW(u"enc"));
    EXPECT_EQ(text.SubStr(99), CVelStrW());
    EXPECT_EQ(text.SubStr(0).c_str(), text.c_str());

    EXPECT_TRUE(CVelStrW(u"ab") < CVelStrW(u"abc"));
    EXPECT_TRUE(CVelStrW(u"z") < CVelStrW(u"\xFF21"));
    EXPECT_TRUE(CVelStr("z") < CVelStr("\xC3\xA9"));  // bytes compare unsigned
    EXPECT_FALSE(CVelStrW(u"b") < CVelStrW(u"b"));
    EXPECT_TRUE(CVelStr("x") == CVelStr('x'));
}

// The search works on blocks of units: every position in and after a block must be found, and
// units that share a byte with the wanted one must not be.
TEST(VelStrTest, FindUnitAtEveryPositionAndNoLookAlikes) {
    std::u16string units(37, u'\x0D0D');
    units[20] = u'\xFF0D';
    for (int at = 0; at < static_cast<int>(units.size()); ++at) {
        std::u16string text = units;
        text[at] = u'<';
        EXPECT_EQ(velstr::FindUnit(text.data(), 0, 37, u'&', u'<', u']'), at);
        EXPECT_EQ(velstr::FindUnit(text.data(), at + 1, 37, u'&', u'<', u']'), 37);
        EXPECT_EQ(velstr::FindUnit(text.data(), 0, at, u'<', u'<', u'<'), at);  // not past length
        const CVelStrW wide(text.c_str(), 37);
        EXPECT_EQ(wide.Pos(u'<'), at);
        const bool pair = at < 36 && text[at + 1] == u'\x0D0D';
        EXPECT_EQ(wide.Pos(CVelStrW(u"<\x0D0D")), pair ? at : CVelStrW::npos);
    }
    EXPECT_EQ(velstr::FindUnit(units.data(), 0, 37, u'\r', u'\r', u'\r'), 37);
    EXPECT_EQ(CVelStr("a;b;c").Pos(';', 2), 3);
}

// Units are compared and hashed by words, the last one overlapping: every unit counts, in
// either byte, and nothing beside the text does.
TEST(VelStrTest, EveryUnitAndNothingElseCountsInComparesAndHashes) {
    for (int length = 0; length <= 40; ++length) {
        std::u16string a(length + 2, u'\x4E00'), b = a;
        b.front() = b.back() = u'x';  // differs only outside [1, length]
        const char16_t* x = a.data() + 1;
        const char16_t* y = b.data() + 1;
        ASSERT_TRUE(velstr::SameUnits(x, y, length)) << length;
        ASSERT_EQ(velstr::HashUnits(x, length), velstr::HashUnits(y, length)) << length;
        for (int at = 1; at <= length; ++at) {
            for (const char16_t changed : {u'\x4E01', u'\x4F00'}) {
                std::u16string c = a;
                c[at] = changed;
                EXPECT_FALSE(velstr::SameUnits(x, c.data() + 1, length)) << length << " " << at;
                EXPECT_NE(velstr::HashUnits(x, length), velstr::HashUnits(c.data() + 1, length))
                    << length << " " << at;
            }
        }
    }
    const std::string bytes(70, 'q');
    for (int length = 0; length < 70; ++length) {
        EXPECT_FALSE(
            velstr::SameUnits(bytes.data(), (bytes.substr(0, length) + 'r').data(), length + 1));
    }
}

}  // namespace

namespace {

// Lengths are int: a text that would pass the largest int is refused before any memory is
// touched, and growth stops at that size instead of wrapping.
TEST(VelStrTest, SizesThatDoNotFitThrowInsteadOfWrapping) {
    constexpr int kMax = std::numeric_limits<int>::max();
    EXPECT_EQ(vel::CheckedCount(kMax), kMax);
    EXPECT_THROW(vel::CheckedCount(std::int64_t{kMax} + 1), std::length_error);
    EXPECT_THROW(vel::CheckedCount(-1), std::length_error);
    EXPECT_EQ(vel::CappedCount(std::int64_t{1'500'000'000} * 3 / 2), kMax);

    CVelStrW text(u"0123456789");
    EXPECT_THROW(text.Append(text.c_str(), kMax - 5), std::length_error);
    const CVelStrW shared = text;
    EXPECT_THROW(text.Append(text.c_str(), kMax - 5), std::length_error);
    EXPECT_EQ(text, CVelStrW(u"0123456789"));
    vx::CVelStringBuffer<CVelStrW> buffer;
    buffer.Append(u"abc", 3);
    EXPECT_THROW(buffer.Append(u"abc", kMax - 1), std::length_error);
    EXPECT_EQ(buffer.GetLength(), 3);
}

}  // namespace
