#include "text/string.h"

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/text/text_printing.h"

namespace {

using stdx::mbstring;
using stdx::u16string;

// The in-place limit of each type, stated independently of the implementation.
template <class S>
constexpr std::size_t kLongestInPlace = 0;
template <>
constexpr std::size_t kLongestInPlace<u16string> = 11;
template <>
constexpr std::size_t kLongestInPlace<mbstring> = 23;

// n units "abc...zabc..." made in one step, so the block has exactly the needed room.
template <class S>
S pattern(std::size_t n) {
    std::vector<typename S::value_type> units(n);
    for (std::size_t i = 0; i < n; ++i)
        units[i] = static_cast<typename S::value_type>('a' + i % 26);
    return S(units.data(), n);
}

template <class S>
void expect_terminated(const S& s) {
    EXPECT_EQ(s.data()[s.size()], typename S::value_type(0));
}

template <class S>
class StringFormTest : public ::testing::Test {};
using StringTypes = ::testing::Types<u16string, mbstring>;
struct StringTypeNames {
    template <class S>
    static std::string GetName(int) {
        return std::is_same<S, u16string>::value ? "Utf16" : "Bytes";
    }
};
TYPED_TEST_SUITE(StringFormTest, StringTypes, StringTypeNames);

TYPED_TEST(StringFormTest, TextUpToTheRoomStaysInPlaceAndLongerTextGoesToABlock) {
    const std::size_t longest = kLongestInPlace<TypeParam>;
    const TypeParam in_place = pattern<TypeParam>(longest);
    EXPECT_EQ(in_place.use_count(), 0u);
    EXPECT_EQ(in_place.capacity(), longest);
    expect_terminated(in_place);

    const TypeParam on_heap = pattern<TypeParam>(longest + 1);
    EXPECT_EQ(on_heap.use_count(), 1u);
    EXPECT_EQ(on_heap.size(), longest + 1);
    expect_terminated(on_heap);
}

TYPED_TEST(StringFormTest, GrowingAndShrinkingUnitByUnitKeepsTextAndForm) {
    const TypeParam expected = pattern<TypeParam>(100);
    TypeParam s;
    for (std::size_t n = 1; n <= 100; ++n) {
        s.push_back(expected[n - 1]);
        ASSERT_EQ(s, pattern<TypeParam>(n));
        ASSERT_EQ(s.use_count() == 0, n <= kLongestInPlace<TypeParam>) << n;
        expect_terminated(s);
    }
    while (!s.empty()) {
        s.erase(s.size() - 1);
        ASSERT_EQ(s, pattern<TypeParam>(s.size()));
        ASSERT_EQ(s.use_count() == 0, s.size() <= kLongestInPlace<TypeParam>) << s.size();
        expect_terminated(s);
    }
}

TYPED_TEST(StringFormTest, EveryChangeToASharedCopyLeavesTheOriginalAlone) {
    using C = typename TypeParam::value_type;
    const C x[] = {C('x'), C('y'), C(0)};
    const std::vector<std::function<void(TypeParam&)>> changes = {
        [&](TypeParam& s) { s.append(x); },
        [&](TypeParam& s) { s.append(TypeParam(x)); },
        [&](TypeParam& s) { s.append(3, C('x')); },
        [&](TypeParam& s) { s.push_back(C('x')); },
        [&](TypeParam& s) { s += C('x'); },
        [&](TypeParam& s) { s.insert(5, x); },
        [&](TypeParam& s) { s.erase(3, 2); },
        [&](TypeParam& s) { s.erase(3); },
        [&](TypeParam& s) { s.resize(s.size() - 1); },
        [&](TypeParam& s) { s.resize(s.size() + 4, C('x')); },
        [&](TypeParam& s) { s.assign(x); },
        [&](TypeParam& s) { s.assign(pattern<TypeParam>(40).data(), 40); },
        [&](TypeParam& s) { s = x; },
        [&](TypeParam& s) { s.clear(); },
        [&](TypeParam& s) { s.reserve(500); },
        [&](TypeParam& s) { stdx::replace_all(s, TypeParam(pattern<TypeParam>(2)), x); },
    };
    for (std::size_t i = 0; i < changes.size(); ++i) {
        const TypeParam original = pattern<TypeParam>(30);
        const TypeParam before = pattern<TypeParam>(30);
        TypeParam copy = original;
        ASSERT_EQ(copy.data(), original.data());
        ASSERT_EQ(original.use_count(), 2u);
        changes[i](copy);
        EXPECT_EQ(original, before) << "change " << i;
        EXPECT_EQ(original.use_count(), 1u) << "change " << i;
        expect_terminated(copy);
    }
}

TYPED_TEST(StringFormTest, ErasingFromABlockIntoTheRoomKeepsBothEnds) {
    const TypeParam full = pattern<TypeParam>(30);
    TypeParam shared = full;
    shared.erase(3, 20);
    EXPECT_EQ(shared.use_count(), 0u);
    EXPECT_EQ(shared, full.substr(0, 3) + full.substr(23));
    EXPECT_EQ(full, pattern<TypeParam>(30));
}

TYPED_TEST(StringFormTest, SourcesInsideTheStringItselfAreReadBeforeTheyMove) {
    for (std::size_t n : {std::size_t(5), kLongestInPlace<TypeParam>, std::size_t(30)}) {
        const TypeParam base = pattern<TypeParam>(n);
        TypeParam s = base;
        s.append(s);
        EXPECT_EQ(s, base + base);
        s = base;
        s.insert(2, s);
        EXPECT_EQ(s, base.substr(0, 2) + base + base.substr(2));
        s = base;
        s.append(s.data() + 1, 3);
        EXPECT_EQ(s, base + base.substr(1, 3));
        s = base;
        s.assign(s.data() + 2);
        EXPECT_EQ(s, base.substr(2));
    }
}

TYPED_TEST(StringFormTest, LengthLimitAndPositionsPastTheEndAreRefused) {
    using C = typename TypeParam::value_type;
    const std::size_t limit = 0x7FFFFFFFFFFFFFFF;
    TypeParam s = pattern<TypeParam>(3);
    try {
        s.append(limit - 3, C('x'));
        ADD_FAILURE() << "no length error";
    } catch (const std::length_error& e) {
        EXPECT_STREQ(e.what(), "basic_string");
    }
    // One unit shorter is a legal length that simply cannot be allocated.
    EXPECT_THROW(s.append(limit - 4, C('x')), std::bad_alloc);
    EXPECT_THROW(s.resize(limit), std::length_error);
    EXPECT_THROW(s.reserve(limit), std::length_error);
    EXPECT_EQ(s, pattern<TypeParam>(3));

    try {
        s.substr(4);
        ADD_FAILURE() << "no range error";
    } catch (const std::out_of_range& e) {
        EXPECT_STREQ(e.what(), "basic_string");
    }
    EXPECT_THROW(s.erase(4), std::out_of_range);
    EXPECT_THROW(s.insert(4, s), std::out_of_range);
    EXPECT_TRUE(s.substr(3).empty());
    EXPECT_EQ(s, pattern<TypeParam>(3));
}

TEST(StringGrowth, BlockRoomIsRoundedByByteSize) {
    // length -> capacity, for every rounding step and both sides of each bound
    const std::vector<std::pair<std::size_t, std::size_t>> utf16 = {
        {12, 12},     {13, 16},     {124, 124},   {125, 132},   {252, 252},
        {253, 268},   {508, 508},   {509, 540},   {1020, 1020}, {1021, 1084},
        {2045, 2172}, {4093, 4348}, {8187, 8188}, {8188, 8188}, {8189, 8189}};
    for (const auto& [length, capacity] : utf16) {
        EXPECT_EQ(u16string(length, u'x').capacity(), capacity) << length;
    }
    const std::vector<std::pair<std::size_t, std::size_t>> bytes = {
        {24, 24},     {25, 32},       {248, 248},     {249, 264},    {1016, 1016},
        {1017, 1080}, {16375, 16376}, {16376, 16376}, {16377, 16377}};
    for (const auto& [length, capacity] : bytes) {
        EXPECT_EQ(mbstring(length, 'x').capacity(), capacity) << length;
    }
}

TEST(StringGrowth, AppendsGrowByHalfTheRoomOtherChangesByWhatTheyNeed) {
    u16string s(100, u'a');
    ASSERT_EQ(s.capacity(), 100u);
    s.push_back(u'b');  // room 104 -> 156 units
    EXPECT_EQ(s.capacity(), 156u);
    const char16_t* block = s.data();
    s.append(55, u'c');
    EXPECT_EQ(s.data(), block);
    s.push_back(u'd');  // room 160 -> 240 units
    EXPECT_EQ(s.capacity(), 236u);
    s.append(300, u'e');  // more than half the room again: exactly what is needed
    EXPECT_EQ(s.capacity(), 460u);

    u16string inserted(100, u'a');
    inserted.insert(0, u"b");
    EXPECT_EQ(inserted.capacity(), 104u);

    mbstring bytes(40, 'a');
    bytes.push_back('b');  // room 48 -> 72 bytes
    EXPECT_EQ(bytes.capacity(), 64u);
}

TEST(StringGrowth, PrivateCopyOfASharedBlockKeepsItsSize) {
    u16string roomy(100, u'a');
    roomy.push_back(u'b');
    u16string copy = roomy;
    copy.erase(0, 1);
    EXPECT_EQ(copy.capacity(), 156u);
    EXPECT_NE(copy.data(), roomy.data());

    u16string reserved(30, u'a');
    reserved.reserve(200);
    EXPECT_EQ(reserved.capacity(), 204u);
    u16string small(u"short");
    small.reserve(200);
    EXPECT_EQ(small.use_count(), 0u);
}

TEST(StringValue, MovesAndSwapsTransferWithoutTouchingTheCount) {
    u16string heap(40, u'h');
    u16string other = heap;
    u16string moved = std::move(heap);
    EXPECT_TRUE(heap.empty());  // NOLINT: moved-from strings are empty by contract
    expect_terminated(heap);
    EXPECT_EQ(moved.use_count(), 2u);
    heap = u"reused";
    EXPECT_EQ(heap, u"reused");

    u16string in_place(u"tiny");
    swap(in_place, moved);
    EXPECT_EQ(in_place, u16string(40, u'h'));
    EXPECT_EQ(moved, u"tiny");
    EXPECT_EQ(in_place.use_count(), 2u);
}

TEST(StringValue, SearchesSplitPaths) {
    const u16string path(u"dir/sub/name.cfg");
    EXPECT_EQ(path.find(u'/'), 3u);
    EXPECT_EQ(path.find(u'/', 4), 7u);
    EXPECT_EQ(path.rfind(u'/'), 7u);
    EXPECT_EQ(path.rfind(u'/', 6), 3u);
    EXPECT_EQ(path.rfind(u"/", 3), 3u);
    EXPECT_EQ(path.find(u"sub"), 4u);
    EXPECT_EQ(path.rfind(u16string(u"d")), 0u);
    EXPECT_EQ(path.find(u"sub", 5), u16string::npos);
    EXPECT_EQ(path.find(u'/', 100), u16string::npos);
    EXPECT_EQ(path.find(u"", 16), 16u);
    EXPECT_EQ(path.find(u"", 17), u16string::npos);
    EXPECT_EQ(path.rfind(u""), 16u);
    EXPECT_EQ(u16string(u"aaab").find(u"aab"), 1u);
    EXPECT_EQ(u16string(u"ab").find(u"abc"), u16string::npos);
    EXPECT_EQ(u16string().rfind(u'/'), u16string::npos);
    EXPECT_EQ(path.substr(8), u"name.cfg");
    EXPECT_EQ(path.substr(4, 3), u"sub");
    const u16string whole = path.substr(0);
    EXPECT_EQ(whole.data(), path.data());
}

TEST(StringValue, ComparesByUnsignedUnitsThenLength) {
    EXPECT_LT(u16string(u"ab"), u16string(u"abc"));
    EXPECT_LT(u16string(u"abc"), u16string(u"abd"));
    EXPECT_LT(u16string(u"z"), u16string(u"\xF600"));
    EXPECT_LT(mbstring("z"), mbstring("\xC3\xA9"));
    EXPECT_LT(u"a", u16string(u"b"));
    EXPECT_LT(u16string(u"a"), u"b");
    EXPECT_FALSE(u16string(u"b") < u"b");
    EXPECT_EQ(u16string(u"b").compare(u"b"), 0);
    EXPECT_GT(u16string(u"b").compare(u16string(u"a")), 0);
    EXPECT_NE(u16string(u"ab"), u"a");
    EXPECT_EQ(u"x", u16string(u"x"));
    EXPECT_EQ(u16string(static_cast<const char16_t*>(nullptr)), u"");
}

TEST(StringValue, ConcatenationMakesExactlyTheNeededBlock) {
    const u16string ten(10, u'a');
    const u16string joined = ten + ten;
    EXPECT_EQ(joined, u16string(20, u'a'));
    EXPECT_EQ(joined.capacity(), 20u);
    EXPECT_EQ(u"dir" + u16string(u"/") + u"name" + u'!', u"dir/name!");
    EXPECT_EQ(u16string().back(), u'\0');
    EXPECT_EQ(joined.back(), u'a');
}

}  // namespace
