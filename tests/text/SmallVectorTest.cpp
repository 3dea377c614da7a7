#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "vx/text/SmallVector.h"
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

CVelStrW Item(int i) {
    return CVelStrW().Format(u"item %d", i);
}

TEST(SmallVectorTest, InsertEraseAndCopyStrings) {
    CSmallVector<CVelStrW> v;
    for (int i = 0; i < 10; ++i)
        v.PushBack(Item(i));
    v.Insert(0, u"first");
    v.Insert(v.GetSize(), u"last");
    v.Insert(5, u"middle");
    v.PushBack(v[0]);  // an element of the vector itself, while it grows
    ASSERT_EQ(v.GetSize(), 14);
    EXPECT_EQ(v[0], CVelStrW(u"first"));
    EXPECT_EQ(v[4], Item(3));
    EXPECT_EQ(v[5], CVelStrW(u"middle"));
    EXPECT_EQ(v[6], Item(4));
    EXPECT_EQ(v[12], CVelStrW(u"last"));
    EXPECT_EQ(v[13], CVelStrW(u"first"));

    CSmallVector<CVelStrW> copy = v;
    v.Erase(0);
    v.Erase(v.GetSize() - 1);
    v.Erase(4);
    EXPECT_EQ(v.GetSize(), 11);
    EXPECT_EQ(v[0], Item(0));
    EXPECT_EQ(v[4], Item(4));
    EXPECT_EQ(v[10], CVelStrW(u"last"));
    EXPECT_EQ(copy.GetSize(), 14);
    EXPECT_EQ(copy[5], CVelStrW(u"middle"));

    copy = v;
    v.Clear();
    EXPECT_EQ(v.GetSize(), 0);
    EXPECT_EQ(copy.GetSize(), 11);
    CSmallVector<CVelStrW> moved = std::move(copy);
    EXPECT_EQ(moved[10], CVelStrW(u"last"));
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
