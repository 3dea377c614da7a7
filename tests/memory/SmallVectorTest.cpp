#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "vx/memory/SmallVector.h"
#include "vx/text/VelStr.h"

namespace {

using vel::CSmallVector;
using velstr::CVelStrW;

template <class Body>
std::string OutOfRangeText(Body body) {
    try {
        body();
    } catch (const std::out_of_range& e) {
        return e.what();
    }
    return "no exception";
}

// The items joined with ",".
std::u16string Join(const CSmallVector<CVelStrW>& v) {
    std::u16string out;
    for (int i = 0; i < v.GetSize(); ++i) {
        if (i) out += u',';
        out += v[i].c_str();
    }
    return out;
}

TEST(SmallVectorTest, InsertEraseAndCopyStrings) {
    CSmallVector<CVelStrW> v;
    for (char16_t digit = u'0'; digit <= u'9'; ++digit)
        v.PushBack(CVelStrW(digit));
    v.Insert(0, u"first");
    v.Insert(v.GetSize(), u"last");
    v.Insert(5, u"mid");
    v.PushBack(v[0]);  // an element of the vector itself, while it grows
    EXPECT_EQ(Join(v), u"first,0,1,2,3,mid,4,5,6,7,8,9,last,first");

    CSmallVector<CVelStrW> copy = v;
    v.Erase(0);
    v.Erase(v.GetSize() - 1);
    v.Erase(4);
    EXPECT_EQ(Join(v), u"0,1,2,3,4,5,6,7,8,9,last");
    EXPECT_EQ(Join(copy), u"first,0,1,2,3,mid,4,5,6,7,8,9,last,first");

    copy = v;
    v.Clear();
    EXPECT_EQ(v.GetSize(), 0);
    CSmallVector<CVelStrW> moved = std::move(copy);
    EXPECT_EQ(Join(moved), u"0,1,2,3,4,5,6,7,8,9,last");
    EXPECT_EQ(copy.GetSize(), 0);  // NOLINT: a moved-from vector is empty
}

TEST(SmallVectorTest, BoundsFailuresNameTheOperation) {
    CSmallVector<CVelStrW> empty;
    EXPECT_EQ(OutOfRangeText([&] { (void)empty[0]; }), "CSmallVector out_of_range");
    CSmallVector<int> v;
    v.PushBack(1);
    EXPECT_EQ(OutOfRangeText([&] { (void)v[1]; }), "CSmallVector out_of_range");
    EXPECT_EQ(OutOfRangeText([&] { (void)v[-1]; }), "CSmallVector out_of_range");
    EXPECT_EQ(OutOfRangeText([&] { v.Insert(2, 0); }), "CSmallVector out of range");
    EXPECT_EQ(OutOfRangeText([&] { v.Insert(-1, 0); }), "CSmallVector out of range");
    EXPECT_EQ(OutOfRangeText([&] { v.Erase(1); }), "CSmallVector out of range");
    EXPECT_EQ(OutOfRangeText([&] { empty.Erase(0); }), "CSmallVector out of range");
    EXPECT_EQ(v.GetSize(), 1);
}

}  // namespace
