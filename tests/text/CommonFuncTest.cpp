#include <gtest/gtest.h>

#include <string>

#include "vx/text/CommonFunc.h"

namespace {

using namespace std::string_literals;
using vx::CVelStr;
using vx::CVelStrW;

std::string Narrow(const std::u16string& text) {
    return CVelStr(CVelStrW(text.c_str())).c_str();
}

CVelStrW Ref(const std::u16string& digits) {
    CVelStrW text(u"&#");
    text += digits.c_str();
    text += u';';
    return vx::ConvertNumToChar(text, 2, text.GetLength() - 2);
}

TEST(CommonFuncTest, NormalizeRetCode) {
    struct Case {
        const char16_t* input;
        const char16_t* expected;
    } cases[] = {{u"a\r\nb\rc\n", u"a\nb\nc\n"},
                 {u"x\r", u"x\n"},
                 {u"\r\r\n", u"\n\n"},
                 {u"\r\n\r\n", u"\n\n"},
                 {u"\u2028\u0085", u"\u2028\u0085"},
                 {u"", u""}};
    for (const Case& c : cases) {
        CVelStrW text(c.input);
        const CVelStrW original = text;
        vx::NormalizeRetCode(text);
        EXPECT_EQ(text, CVelStrW(c.expected));
        EXPECT_EQ(original, CVelStrW(c.input));  // a shared copy is not touched
    }
    CVelStrW plain(u"no\nCR here");
    const CVelStrW shared = plain;
    vx::NormalizeRetCode(plain);
    EXPECT_EQ(plain.c_str(), shared.c_str());
}

TEST(CommonFuncTest, GetLineAndCol) {
    const CVelStrW text(u"ab\ncd");
    struct Case {
        int position, line, column;
    } cases[] = {{0, 1, 1}, {2, 1, 3}, {3, 2, 1}, {4, 2, 2}, {-1, 1, 0}, {5, 2, 3}, {9, 2, 7}};
    for (const Case& c : cases) {
        int line = -9, column = -9;
        vx::GetLineAndCol(text, c.position, line, column);
        EXPECT_EQ(line, c.line) << c.position;
        EXPECT_EQ(column, c.column) << c.position;
    }
    int line, column;
    vx::GetLineAndCol(CVelStrW(u"abc"), 0x7FFFFFFF, line, column);
    EXPECT_EQ(column, 0x7FFFFFFF);  // saturates rather than wrapping
}

TEST(CommonFuncTest, LineIndexAgreesWithScan) {
    for (const char16_t* source : {u"", u"\n", u"\n\n", u"abc", u"ab\ncd\n\nefg\n", u"x\ny"}) {
        const CVelStrW text(source);
        const vx::CLineIndex index(text);
        for (int position = -2; position <= text.GetLength() + 3; ++position) {
            int line, column, indexedLine, indexedColumn;
            vx::GetLineAndCol(text, position, line, column);
            index.GetLineAndCol(position, indexedLine, indexedColumn);
            EXPECT_EQ(indexedLine, line) << "position " << position;
            EXPECT_EQ(indexedColumn, column) << "position " << position;
        }
    }
}

// Values are cut to 16 bits but must fit in 32 bits; "X" takes the decimal path.
TEST(CommonFuncTest, ConvertNumToCharDigits) {
    const std::u16string hex32(32, u'f');
    for (const std::u16string digits :
         {u"65", u"x41", u"x0041", u"x10041", u"0000000000000065", u"4294901825"}) {
        EXPECT_EQ(Ref(digits), CVelStrW(u"A")) << Narrow(digits);
    }
    for (const std::u16string& digits : {u"4294967295"s, u"xfFfF"s, u"x" + hex32})
        EXPECT_EQ(Ref(digits), CVelStrW(u"\uFFFF"));
    for (const std::u16string digits : {u"0", u"x", u"x000"})
        EXPECT_EQ(Ref(digits), CVelStrW(u'\0'));
    for (const std::u16string& digits :
         {u"X41"s, u"4294967296"s, u"10000000000"s, u"6a"s, u"x4g"s, u"x1" + hex32}) {
        EXPECT_EQ(Ref(digits), CVelStrW()) << Narrow(digits);
    }
    EXPECT_EQ(Ref(u"xD800"), CVelStrW(u"\xD800"));  // no Char check here
}

TEST(CommonFuncTest, ConvertNumToCharText) {
    const CVelStrW plain(u"no references");
    EXPECT_EQ(vx::ConvertNumToChar(plain).c_str(), plain.c_str());
    EXPECT_EQ(vx::ConvertNumToChar(CVelStrW(u"&#65;&#x42;c&#68;")), CVelStrW(u"ABcD"));
    EXPECT_EQ(vx::ConvertNumToChar(CVelStrW(u"a&#X41;b")), CVelStrW(u"ab"));
    // A character that forms a new "&#" with what follows is not converted again.
    EXPECT_EQ(vx::ConvertNumToChar(CVelStrW(u"&#38;#65;")), CVelStrW(u"&#65;"));
    // After a vanished reference the search resumes one unit further on.
    EXPECT_EQ(vx::ConvertNumToChar(CVelStrW(u"&#X;&#65;&#66;")), CVelStrW(u"&#65;B"));
    EXPECT_EQ(vx::ConvertNumToChar(CVelStrW(u"x&#65")), CVelStrW(u"xA"));  // no ";"
    EXPECT_EQ(vx::ConvertNumToChar(CVelStrW(u"x&#")), CVelStrW(u"x\0", 2));
}

TEST(CommonFuncTest, ConvertEntityToChar) {
    EXPECT_EQ(vx::ConvertEntityToChar(CVelStrW(u"&lt;a b=&quot;&apos;&gt;&amp;")),
              CVelStrW(u"<a b=\"'>&"));
    EXPECT_EQ(vx::ConvertEntityToChar(CVelStrW(u"&amp;amp;")), CVelStrW(u"&amp;"));
    EXPECT_EQ(vx::ConvertEntityToChar(CVelStrW(u"&amp;lt;")), CVelStrW(u"<"));
    EXPECT_EQ(vx::ConvertEntityToChar(CVelStrW(u"&AMP; &#38; &unknown;")),
              CVelStrW(u"&AMP; &#38; &unknown;"));
}

}  // namespace
