#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "tests/text/text_printing.h"
#include "text/string.h"

namespace {

using stdx::mbstring;
using stdx::u16string;

TEST(ReplaceAll, ReplacesEveryOccurrenceLeftToRightWithoutRescanning) {
    u16string path(u"C:\\Templates\\ord8\\");
    EXPECT_EQ(stdx::replace_all(path, u"\\", u"/"), u"C:/Templates/ord8/");
    u16string grows(u"a.a.a");
    EXPECT_EQ(stdx::replace_all(grows, u"a", u"aa"), u"aa.aa.aa");
    u16string overlapping(u"aaaaa");
    EXPECT_EQ(stdx::replace_all(overlapping, u"aa", u"b"), u"bba");
    u16string to_nothing(u"x--y--");
    EXPECT_EQ(stdx::replace_all(to_nothing, u"--", u""), u"xy");
    mbstring bytes("one two two");
    EXPECT_EQ(stdx::replace_all(bytes, mbstring("two"), mbstring("three")), "one three three");
}

TEST(ReplaceAll, NoMatchOrEmptyPatternLeavesTheStringAndItsBlockAlone) {
    const u16string original(u"a path without any backslash");
    u16string copy = original;
    stdx::replace_all(copy, u"\\", u"/");
    EXPECT_EQ(copy.data(), original.data());
    stdx::replace_all(copy, u"", u"x");
    EXPECT_EQ(copy.data(), original.data());
    EXPECT_EQ(original.use_count(), 2u);
}

TEST(IntegerToText, RadixTenIsSignedOtherRadixesShowTheBitPattern) {
    using stdx::integer_to_text;
    EXPECT_EQ(integer_to_text<u16string>(-1, 16), u"ffffffff");
    EXPECT_EQ(integer_to_text<mbstring>(-1, 16), "ffffffff");
    EXPECT_EQ(integer_to_text<u16string>(1223), u"1223");
    EXPECT_EQ(integer_to_text<u16string>(0, 10), u"0");
    EXPECT_EQ(integer_to_text<u16string>(-87, 10), u"-87");
    EXPECT_EQ(integer_to_text<mbstring>(std::numeric_limits<std::int32_t>::min(), 10),
              "-2147483648");
    EXPECT_EQ(integer_to_text<mbstring>(std::numeric_limits<std::int32_t>::max(), 10),
              "2147483647");
    EXPECT_EQ(integer_to_text<mbstring>(std::numeric_limits<std::int32_t>::min(), 2),
              "10000000000000000000000000000000");
    EXPECT_EQ(integer_to_text<mbstring>(-8, 8), "37777777770");
    EXPECT_EQ(integer_to_text<mbstring>(255, 16), "ff");
    EXPECT_EQ(integer_to_text<mbstring>(71, 36), "1z");
    EXPECT_TRUE(integer_to_text<mbstring>(5, 1).empty());
    EXPECT_TRUE(integer_to_text<mbstring>(5, 37).empty());
}

}  // namespace
