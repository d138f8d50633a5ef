#include "text/string.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using stdx::integer_to_text;
using stdx::mbstring;
using stdx::u16string;

// n units "abc...zabc..." made in one step, so a block has exactly the needed room.
template <class S>
S pattern(std::size_t n) {
    std::vector<typename S::value_type> units(n);
    for (std::size_t i = 0; i < n; ++i)
        units[i] = static_cast<typename S::value_type>('a' + i % 26);
    return S(units.data(), n);
}

// The message of the E that f throws, or "" when it throws none.
template <class E, class F>
std::string message_of(F f) {
    try {
        f();
    } catch (const E& e) {
        return e.what();
    }
    return "";
}

template <class S>
class StringFormTest : public ::testing::Test {
  protected:
    // Stated here rather than taken from the type, so a wrong limit is caught.
    static constexpr std::size_t kLongestInPlace = std::is_same<S, u16string>::value ? 11 : 23;
};
using StringTypes = ::testing::Types<u16string, mbstring>;
TYPED_TEST_SUITE(StringFormTest, StringTypes);

TYPED_TEST(StringFormTest, ShortTextStaysInPlaceAndLongerTextMovesToABlockAndBack) {
    TypeParam s;
    for (std::size_t n = 1; n <= 60; ++n) {
        s.push_back(static_cast<typename TypeParam::value_type>('a' + (n - 1) % 26));
        ASSERT_EQ(s, pattern<TypeParam>(n));
        ASSERT_EQ(s.use_count(), n <= this->kLongestInPlace ? 0u : 1u) << n;
        ASSERT_EQ(s.data()[n], 0) << n;
    }
    while (!s.empty()) {
        s.erase(s.size() - 1);
        ASSERT_EQ(s, pattern<TypeParam>(s.size()));
        ASSERT_EQ(s.use_count(), s.size() <= this->kLongestInPlace ? 0u : 1u) << s.size();
    }
    const TypeParam full = pattern<TypeParam>(30);
    TypeParam cut = full;
    cut.erase(3, 20);  // from a shared block straight into the room
    EXPECT_EQ(cut, full.substr(0, 3) + full.substr(23));
    EXPECT_EQ(cut.use_count(), 0u);
}

TYPED_TEST(StringFormTest, EveryChangeToASharedCopyLeavesTheOriginalAlone) {
    using C = typename TypeParam::value_type;
    const C xy[] = {C('x'), C('y'), C(0)};
    const C absent[] = {C('#'), C(0)};
    const std::vector<std::function<void(TypeParam&)>> changes = {
        [&](TypeParam& s) { s.append(xy); },
        [&](TypeParam& s) { s.append(2, C('x')); },
        [&](TypeParam& s) { s += C('x'); },
        [&](TypeParam& s) { s.insert(5, xy); },
        [&](TypeParam& s) { s.erase(3, 2); },
        [&](TypeParam& s) { s.erase(3); },
        [&](TypeParam& s) { s.resize(29); },
        [&](TypeParam& s) { s.resize(34, C('x')); },
        [&](TypeParam& s) { s.assign(xy); },
        [&](TypeParam& s) { s = pattern<TypeParam>(40); },
        [&](TypeParam& s) { s.clear(); },
        [&](TypeParam& s) { s.reserve(500); },
        [&](TypeParam& s) { stdx::replace_all(s, TypeParam(absent), xy); },
        [&](TypeParam& s) { stdx::replace_all(s, pattern<TypeParam>(2), xy); },
    };
    for (std::size_t i = 0; i < changes.size(); ++i) {
        const TypeParam original = pattern<TypeParam>(30);
        TypeParam copy = original;
        ASSERT_EQ(copy.data(), original.data());
        changes[i](copy);
        EXPECT_EQ(original, pattern<TypeParam>(30)) << "change " << i;
        EXPECT_EQ(original.use_count(), copy.data() == original.data() ? 2u : 1u) << i;
        EXPECT_EQ(copy.data()[copy.size()], 0) << "change " << i;
    }
}

TYPED_TEST(StringFormTest, SourcesInsideTheStringItselfAreReadBeforeTheyMove) {
    for (std::size_t n : {std::size_t(5), this->kLongestInPlace, std::size_t(30)}) {
        const TypeParam base = pattern<TypeParam>(n);
        TypeParam s = base;
        EXPECT_EQ(s.append(s), base + base);
        s = base;
        EXPECT_EQ(s.insert(2, s), base.substr(0, 2) + base + base.substr(2));
        s = base;
        EXPECT_EQ(s.append(s.data() + 1, 3), base + base.substr(1, 3));
        s = base;
        EXPECT_EQ(s.assign(s.data() + 2), base.substr(2));
    }
}

TYPED_TEST(StringFormTest, LengthLimitAndPositionsPastTheEndAreRefused) {
    const std::size_t limit = 0x7FFFFFFFFFFFFFFF;
    TypeParam s = pattern<TypeParam>(3);
    EXPECT_EQ(message_of<std::length_error>([&] { s.append(limit - 3, 'x'); }), "basic_string");
    // One unit less is a legal length that merely cannot be allocated.
    EXPECT_THROW(s.append(limit - 4, 'x'), std::bad_alloc);
    EXPECT_THROW(s.reserve(limit), std::length_error);
    EXPECT_EQ(message_of<std::out_of_range>([&] { s.substr(4); }), "basic_string");
    EXPECT_THROW(s.erase(4), std::out_of_range);
    EXPECT_THROW(s.insert(4, s), std::out_of_range);
    EXPECT_EQ(s, pattern<TypeParam>(3));
    EXPECT_TRUE(s.substr(3).empty());
}

TEST(StringGrowth, BlockRoomIsRoundedByByteSize) {
    // length -> capacity on both sides of every rounding bound
    const std::vector<std::pair<std::size_t, std::size_t>> utf16 = {
        {12, 12},     {13, 16},     {124, 124},   {125, 132},   {252, 252},
        {253, 268},   {508, 508},   {509, 540},   {1020, 1020}, {1021, 1084},
        {2045, 2172}, {4093, 4348}, {8187, 8188}, {8188, 8188}, {8189, 8189}};
    for (const auto& [length, capacity] : utf16) {
        EXPECT_EQ(u16string(length, u'x').capacity(), capacity) << length;
    }
    const std::vector<std::pair<std::size_t, std::size_t>> bytes = {
        {24, 24}, {25, 32}, {248, 248}, {249, 264}, {16375, 16376}, {16377, 16377}};
    for (const auto& [length, capacity] : bytes) {
        EXPECT_EQ(mbstring(length, 'x').capacity(), capacity) << length;
    }
}

TEST(StringGrowth, AppendsGrowByHalfTheRoomOtherChangesByWhatTheyNeed) {
    u16string s(100, u'a');
    s.push_back(u'b');  // room 104 -> 156 units
    EXPECT_EQ(s.capacity(), 156u);
    const char16_t* block = s.data();
    s.append(55, u'c');
    EXPECT_EQ(s.data(), block);
    s.push_back(u'd');  // room 160 -> 240 units
    EXPECT_EQ(s.capacity(), 236u);
    s.append(300, u'e');  // more than half the room: exactly what is needed
    EXPECT_EQ(s.capacity(), 460u);

    u16string copy = s;
    copy.erase(0, 300);  // a private block as large as the shared one
    EXPECT_EQ(copy.capacity(), 460u);
    u16string inserted(100, u'a');
    EXPECT_EQ(inserted.insert(0, u"b").capacity(), 104u);
    inserted.reserve(200);
    EXPECT_EQ(inserted.capacity(), 204u);
    mbstring bytes(40, 'a');
    bytes.push_back('b');  // room 48 -> 72 bytes
    EXPECT_EQ(bytes.capacity(), 64u);
}

TEST(StringValue, SearchesCutsAndJoins) {
    const u16string path(u"dir/sub/name.cfg");
    EXPECT_EQ(path.rfind(u'/'), 7u);
    EXPECT_EQ(path.rfind(u"/", 6), 3u);
    EXPECT_EQ(path.find(u'/', 4), 7u);
    EXPECT_EQ(path.find(u16string(u"sub"), 5), u16string::npos);
    EXPECT_EQ(path.find(u"", 17), u16string::npos);
    EXPECT_EQ(u16string(u"aaab").find(u"aab"), 1u);
    EXPECT_EQ(path.substr(4, 3), u"sub");
    EXPECT_EQ(path.substr(0).data(), path.data());
    EXPECT_EQ(u"dir" + u16string(u"/") + u"name" + u'!', u"dir/name!");
    EXPECT_EQ((u16string(10, u'a') + u16string(10, u'a')).capacity(), 20u);
}

TEST(StringValue, OrdersByUnsignedUnitsThenLength) {
    EXPECT_LT(u16string(u"ab"), u16string(u"abc"));
    EXPECT_LT(u16string(u"z"), u"\xF600");
    EXPECT_LT(mbstring("z"), mbstring("\xC3\xA9"));
    EXPECT_GT(u16string(u"b").compare(u"a"), 0);
}

TEST(ReplaceAll, ReplacesEveryOccurrenceLeftToRightWithoutRescanning) {
    u16string path(u"C:\\Templates\\ord8\\");
    EXPECT_EQ(stdx::replace_all(path, u"\\", u"/"), u"C:/Templates/ord8/");
    u16string grows(u"a.a.a");
    EXPECT_EQ(stdx::replace_all(grows, u"a", u"aa"), u"aa.aa.aa");
    u16string overlapping(u"aaaaa");
    EXPECT_EQ(stdx::replace_all(overlapping, u"aa", u"b"), u"bba");
    mbstring bytes("one two two");
    EXPECT_EQ(stdx::replace_all(bytes, "two", ""), "one  ");
    u16string unchanged(u"x");
    EXPECT_EQ(stdx::replace_all(unchanged, u"", u"y"), u"x");
}

TEST(IntegerToText, RadixTenIsSignedOtherRadixesShowTheBitPattern) {
    EXPECT_EQ(integer_to_text<u16string>(-1, 16), u"ffffffff");
    EXPECT_EQ(integer_to_text<u16string>(0), u"0");
    EXPECT_EQ(integer_to_text<mbstring>(std::numeric_limits<std::int32_t>::min(), 10),
              "-2147483648");
    EXPECT_EQ(integer_to_text<mbstring>(-8, 8), "37777777770");
    EXPECT_EQ(integer_to_text<mbstring>(71, 36), "1z");
    EXPECT_TRUE(integer_to_text<mbstring>(5, 37).empty());
}

}  // namespace
