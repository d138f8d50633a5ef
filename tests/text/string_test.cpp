#include "text/string.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <new>
#include <stdexcept>
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

template <class S>
class StringFormTest : public ::testing::Test {
  protected:
    // Stated here rather than taken from the type, so a wrong limit is caught.
    static constexpr std::size_t kLongestInPlace = sizeof(typename S::value_type) == 2 ? 11 : 23;
};
using StringTypes = ::testing::Types<u16string, mbstring>;
TYPED_TEST_SUITE(StringFormTest, StringTypes);

// Short text stays in place, longer text moves to a block, which grows by half its room.
TYPED_TEST(StringFormTest, ShortTextStaysInPlaceAndGrowingTextMovesOnlyLogarithmicallyOften) {
    TypeParam s;
    int moves = 0;
    for (std::size_t n = 1; n <= 100000; ++n) {
        const auto* before = s.data();
        s.push_back(static_cast<typename TypeParam::value_type>('a' + (n - 1) % 26));
        moves += s.data() != before;
        if (n > 60) continue;
        ASSERT_EQ(s, pattern<TypeParam>(n));
        ASSERT_EQ(s.use_count(), n <= this->kLongestInPlace ? 0u : 1u) << n;
        ASSERT_EQ(s.data()[n], 0) << n;
    }
    EXPECT_EQ(s, pattern<TypeParam>(100000));
    EXPECT_LT(moves, 40);  // about 25 moves to 100,000 units
    const TypeParam full = pattern<TypeParam>(30);
    TypeParam cut = full;
    cut.erase(3, 20);  // from a shared block straight into the room
    EXPECT_EQ(cut, full.substr(0, 3) + full.substr(23));
    EXPECT_EQ(cut.use_count(), 0u);
}

TYPED_TEST(StringFormTest, EveryChangeToASharedCopyLeavesTheOriginalAlone) {
    using S = TypeParam;
    void (*const changes[])(S&) = {
        [](S& s) { s.append(pattern<S>(2)); },  // fits the block's spare room
        [](S& s) { s.insert(5, pattern<S>(2)); },
        [](S& s) { s.erase(3, 2); },
        [](S& s) { s.erase(3); },
        [](S& s) { s.resize(34, 'x'); },
        [](S& s) { s.clear(); },
        [](S& s) { s.reserve(500); },
        [](S& s) { stdx::replace_all(s, S(3, '#'), pattern<S>(2)); },
        [](S& s) { stdx::replace_all(s, pattern<S>(2), S(1, '#')); },
    };
    int change = 0;
    for (const auto apply : changes) {
        SCOPED_TRACE(change++);
        const S original = pattern<S>(30);
        S copy = original;
        ASSERT_EQ(copy.data(), original.data());
        apply(copy);
        EXPECT_EQ(original, pattern<S>(30));
        EXPECT_EQ(original.use_count(), copy.data() == original.data() ? 2u : 1u);
        EXPECT_EQ(copy.data()[copy.size()], 0);
    }
}

// Sources inside the string itself are read before they move; positions past the end
// and the length limit are refused, leaving the string alone.
TYPED_TEST(StringFormTest, AppendsAndInsertsOfItselfAndPositionAndLengthErrors) {
    for (std::size_t n : {std::size_t(5), this->kLongestInPlace, std::size_t(30)}) {
        const TypeParam base = pattern<TypeParam>(n);
        TypeParam s = base;
        EXPECT_EQ(s.append(s), base + base);
        s = base;
        EXPECT_EQ(s.insert(2, s), base.substr(0, 2) + base + base.substr(2));
        s = base;
        EXPECT_EQ(s.append(s.data() + 1, 3), base + base.substr(1, 3));
    }
    const std::size_t limit = 0x7FFFFFFFFFFFFFFF;
    TypeParam s = pattern<TypeParam>(3);
    EXPECT_THROW(s.append(limit - 3, 'x'), std::length_error);
    EXPECT_THROW(s.append(limit - 4, 'x'), std::bad_alloc);  // legal, but cannot be allocated
    EXPECT_THROW(s.reserve(limit), std::length_error);
    EXPECT_THROW(s.substr(4), std::out_of_range);
    EXPECT_THROW(s.erase(4), std::out_of_range);
    EXPECT_THROW(s.insert(4, s), std::out_of_range);
    EXPECT_EQ(s, pattern<TypeParam>(3));
    EXPECT_TRUE(s.substr(3).empty());
}

TEST(StringValue, SearchesReplacesNumbersAndOrdersByUnsignedUnits) {
    const u16string path(u"dir/sub/name.cfg");
    EXPECT_EQ(path.rfind(u"/", 6), 3u);
    EXPECT_EQ(path.find(u'/', 4), 7u);
    EXPECT_EQ(path.find(u16string(u"sub"), 5), u16string::npos);
    EXPECT_EQ(path.find(u"", 17), u16string::npos);
    EXPECT_EQ(u16string(u"aaab").find(u"aab"), 1u);
    EXPECT_LT(u16string(u"z"), u"\xF600");
    EXPECT_LT(mbstring("z"), mbstring("\xC3\xA9"));
    const auto replaced = [](u16string s, const u16string& from, const u16string& to) {
        return stdx::replace_all(s, from, to);  // left to right, without rescanning
    };
    EXPECT_EQ(replaced(u"a.a.a", u"a", u"aa"), u"aa.aa.aa");
    EXPECT_EQ(replaced(u"aaaaa", u"aa", u"b"), u"bba");
    EXPECT_EQ(replaced(u"x", u"", u"y"), u"x");
    // Radix ten is signed, the others show the bit pattern.
    EXPECT_EQ(integer_to_text<u16string>(-1, 16), u"ffffffff");
    EXPECT_EQ(integer_to_text<u16string>(0), u"0");
    EXPECT_EQ(integer_to_text<mbstring>(INT32_MIN, 10), "-2147483648");
    EXPECT_EQ(integer_to_text<mbstring>(71, 36), "1z");
    EXPECT_TRUE(integer_to_text<mbstring>(5, 37).empty());
}

}  // namespace
