#include "vx/diag/ParseError.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "platform/PlatformTestUtil.h"

namespace {

using vx::CParseError;
using vx::CParseErrorList;
using vx::CVelStrW;

std::u16string Text(const CVelStrW& s) {
    return std::u16string(s.c_str(), s.GetLength());
}

CParseError::eError Code(int value) {
    return static_cast<CParseError::eError>(value);
}

std::u16string Message(int code) {
    return Text(CParseError(Code(code)).GetErrMsg());
}

TEST(ParseError, MessagesMatchTheTableExactly) {
    EXPECT_EQ(Message(0), u"");
    EXPECT_EQ(Message(1), u"ファイルが存在しません。");
    EXPECT_EQ(Message(18), u"要素の終了文字( '/>' )が存在しません。");
    EXPECT_EQ(Message(36), u"#PCDATAの終了のカッコは')*'でなければいけません");
    EXPECT_EQ(Message(45), u" #FIXEDがある場合はデフォルト値が必要です。");
    EXPECT_EQ(Message(55), u"'%'記号が存在しません。");
    EXPECT_EQ(Message(62), u"一般エンティティを定義せずにエンティティ参照を使用しました。");
    EXPECT_EQ(Message(63), u"予期せぬエラー。エラー番号が見つかりません。(63)");
    EXPECT_EQ(Message(-1), u"予期せぬエラー。エラー番号が見つかりません。(-1)");
    for (int code = 1; code <= 62; ++code)
        EXPECT_FALSE(Message(code).empty()) << code;
}

// The English column is for hosts; GetErrMsg stays Japanese.
TEST(ParseError, EnglishMessages) {
    auto english = [](int code) {
        const vx::CVelStr text = CParseError(Code(code)).GetEnglishErrMsg();
        return std::string(text.c_str(), text.GetLength());
    };
    EXPECT_EQ(english(CParseError::eErrNone), "");
    EXPECT_EQ(english(CParseError::eErrDuplicateAtt), "An attribute is duplicated.");
    EXPECT_EQ(english(CParseError::eErrUndefinedEntity),
              "An entity reference was used without the general entity being defined.");
    EXPECT_EQ(english(63), "Unexpected error. The error number was not found. (63)");
    for (int code = 1; code <= 62; ++code)
        EXPECT_FALSE(english(code).empty()) << code;
}

TEST(ParseError, LevelOfEveryCode) {
    std::u16string expected(63, u'E');
    for (int code : {1, 2, 3, 4, 6, 7, 8, 9, 26, 27, 28, 30, 61})
        expected[code] = u'F';
    expected[11] = u'W';
    expected[5] = expected[12] = u'N';
    expected[0] = expected[18] = u'-';  // 18 is deliberately "no error"
    const std::u16string letters = u"FEWN-";
    for (int code = 0; code <= 62; ++code)
        EXPECT_EQ(letters[CParseError(Code(code)).GetErrLevel()], expected[code]) << code;
    for (int code : {-128, -1, 63, 127})
        EXPECT_EQ(CParseError(Code(code)).GetErrLevel(), CParseError::eErrLevelNone) << code;
}

// The position is written when there is one, the source only for a file that failed; equal
// fields made with and without a position are different errors.
TEST(ParseError, MakeErrMsgAndEquality) {
    const CParseError none;
    EXPECT_FALSE(none.HasPosition());
    EXPECT_EQ(Text(none.MakeErrMsg()), u"");
    const std::u16string open = Message(CParseError::eErrFileOpen);
    EXPECT_EQ(Text(CParseError(CParseError::eErrFileOpen).MakeErrMsg()), open);
    EXPECT_EQ(Text(CParseError(CParseError::eErrFileOpen, -1, -1, u"a.xml").MakeErrMsg()),
              open + u"(a.xml)");
    EXPECT_EQ(Text(CParseError(CParseError::eErrFileOpen, -1, 5, u"a.xml").MakeErrMsg()),
              u"(-1,5):" + open);
    const CParseError tag(CParseError::eErrNoETag, 3, 15, u"<a>");
    EXPECT_EQ(Text(tag.MakeErrMsg()), u"(3,15):閉じタグが存在しません。");

    EXPECT_TRUE(tag == CParseError(CParseError::eErrNoETag, 3, 15, u"<a>"));
    EXPECT_FALSE(tag == CParseError(CParseError::eErrNoETag, 3, 15, u"<b>"));
    EXPECT_FALSE(tag == CParseError(CParseError::eErrNoETag, 3, 16, u"<a>"));
    EXPECT_FALSE(tag == CParseError(CParseError::eErrCharRef, 3, 15, u"<a>"));
    EXPECT_FALSE(none == CParseError(CParseError::eErrNone, 0, 0, {}));
}

template <typename Body>
std::string OutOfRange(Body body) {
    return platform_test::ThrownText<std::out_of_range>(body);
}

// Insert only appends; Erase and Find refuse every index, even a valid one, since errors are
// only ever added.
TEST(ParseErrorList, InsertAppendsEraseAndFindRefuse) {
    const CParseError a(CParseError::eErrNoETag, 1, 2, u"x");
    const CParseError b(CParseError::eErrCharRef);
    CParseErrorList list;
    list.PushBack(a);
    list.Insert(b, 1);
    for (int index : {-1, 0, 1, 3})
        EXPECT_EQ(OutOfRange([&] { list.Insert(a, index); }), "CParseErrorList::Insert()");
    for (int index : {-1, 0, 1, 2, 5}) {
        EXPECT_EQ(OutOfRange([&] { list.Erase(index); }), "CParseErrorList::Erase()");
        EXPECT_EQ(list.Find(a, index), -1) << index;
    }
    EXPECT_EQ(OutOfRange([&] { list.GetAt(2); }), "CParseErrorList::GetAt()");
    EXPECT_EQ(OutOfRange([&] { list.GetAt(-1); }), "CParseErrorList::GetAt()");
    ASSERT_EQ(list.GetSize(), 2);
    EXPECT_TRUE(list.GetAt(0) == a);
    EXPECT_TRUE(list.GetAt(1) == b);
}

TEST(ParseErrorList, CopyAppendAndCountByLevel) {
    CParseErrorList list;
    list.PushBack(CParseError(CParseError::eErrEmptyElemTagEnd));
    list.PushBack(CParseError(CParseError::eErrNoETag, 1, 1, u"s"));
    list.PushBack(CParseError(CParseError::eErrFileOpen, -1, -1, u"f"));
    list.PushBack(CParseError(Code(99)));
    CParseErrorList copy(list);
    copy.Append(list);
    ASSERT_EQ(copy.GetSize(), 8);
    EXPECT_TRUE(copy.GetAt(5) == list.GetAt(1));
    EXPECT_EQ(copy.GetCount(CParseError::eErrLevelNone), 4);  // code 18 and the unknown code
    EXPECT_EQ(copy.GetCount(CParseError::eErrLevelError), 2);
    EXPECT_EQ(copy.GetCount(CParseError::eErrLevelFatal), 2);
    EXPECT_EQ(copy.GetCount(CParseError::eErrLevelWarning), 0);
}

}  // namespace
