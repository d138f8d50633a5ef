// CI runs the test named "...Concurrency" under ThreadSanitizer.
#include "text/encoding.h"

#include <gtest/gtest.h>
#include <locale.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "text/utf8.h"

namespace {

using stdx::from_multibyte;
using stdx::mbstring;
using stdx::to_multibyte;
using stdx::u16string;

const u16string kText(u"Gr\u00F6\u00DFe/\u041F\u0440\u0438\u0432\u0435\u0442/\u65E5\u672C");
const mbstring kUtf8(
    "Gr\xC3\xB6\xC3\x9F"
    "e/\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82/\xE6\x97\xA5\xE6\x9C\xAC");

bool Decode(const std::string& bytes, u16string& out, std::size_t* badOffset = nullptr) {
    return stdx::decode_utf8(bytes.data(), bytes.size(), out, badOffset);
}

// Each test starts from a UTF-8 environment, whatever the one it runs in.
class Encoding : public ::testing::Test {
  protected:
    void SetUp() override {
        unsetenv("LC_ALL");
        unsetenv("LC_CTYPE");
        setenv("LANG", "C.UTF-8", 1);
    }
};

TEST_F(Encoding, ConvertsBothWaysKeepingLow16BitsAndStoppingAtSurrogates) {
    EXPECT_EQ(from_multibyte(kUtf8), kText);
    EXPECT_EQ(to_multibyte(kText), kUtf8);
    EXPECT_EQ(to_multibyte(u16string(u"x\U0001F600y")), "x");  // a pair is two lone halves
    EXPECT_EQ(from_multibyte(mbstring("a\xF0\x9F\x98\x80z")), u"a\xF600z");
    EXPECT_EQ(from_multibyte(mbstring("a\xF0\x90\x80\x80z")), u"a");  // U+10000 keeps 0
    for (const char* bad : {"\xC3\x28", "ok\xFF", "abc\xE2\x82", "\xED\xA0\x80"})
        EXPECT_TRUE(from_multibyte(mbstring(bad)).empty()) << bad;
    EXPECT_EQ(stdx::compare_no_case(u"TemplatesLocation", u"TEMPLATESLOCATION"), 0);
    EXPECT_LT(stdx::compare_no_case(u"KEY", u"keys"), 0);
    EXPECT_NE(stdx::compare_no_case(u"\u00C4", u"\u00E4"), 0);  // ASCII letters only
}

TEST_F(Encoding, ArrayFormsMeasureAndFillOnlyWhatFits) {
    const char16_t text[] = {u'a', 0x00E9, u'b', u'c', 0};
    EXPECT_EQ(stdx::utf16_to_multibyte(text, 3, nullptr, 0), 4);
    char small[3] = {'q', 'q', 'q'};
    EXPECT_EQ(stdx::utf16_to_multibyte(text, 4, small, 2), 5);
    EXPECT_EQ(std::string(small, 3), std::string("a\0q", 3));  // no half of "é"
    const char16_t unpaired[] = {u'a', u'b', 0xD800, u'c', 0};
    char out6[6] = {'q', 'q', 'q', 'q', 'q', 'q'};
    EXPECT_EQ(stdx::utf16_to_multibyte(unpaired, 4, out6, sizeof out6), -1);
    EXPECT_EQ(std::string(out6, 6), std::string("ab\0\0\0\0", 6));  // zeroed, then filled
    char16_t out[4] = {u'-', u'-', u'-', u'-'};
    EXPECT_EQ(stdx::multibyte_to_utf16("a\xC3\xA9z", 4, out, 2), 3);
    EXPECT_EQ(stdx::multibyte_to_utf16("ab\xC3", 3, out, 4), -1);
    EXPECT_EQ(u16string(out, 4), u"a\u00E9--");
    EXPECT_EQ(stdx::multibyte_to_utf16("a\xC3\xA9", 2, out, 4), -1);  // the limit cuts "é"
    EXPECT_EQ(stdx::multibyte_to_utf16("ab\0cd", 5, nullptr, 0), 2);
}

TEST_F(Encoding, EachCallFollowsTheEnvironmentAndLeavesEveryLocaleAsItWas) {
    setenv("LANG", "C", 1);
    EXPECT_NE(from_multibyte(mbstring("\xC3\xA9")), u"\u00E9");
    setenv("LANG", "de_DE.UTF-8", 1);  // not installed on every machine
    EXPECT_EQ(from_multibyte(kUtf8), kText);
    setenv("LC_ALL", "xx_YY.UTF-8", 1);  // falls back to UTF-8
    EXPECT_EQ(to_multibyte(kText), kUtf8);

    const std::string globalBefore = setlocale(LC_ALL, nullptr);
    const locale_t mine = newlocale(LC_ALL_MASK, "C", locale_t(0));
    const locale_t previous = uselocale(mine);
    EXPECT_EQ(from_multibyte(kUtf8), kText);
    EXPECT_EQ(uselocale(locale_t(0)), mine);
    uselocale(previous);
    freelocale(mine);
    EXPECT_EQ(setlocale(LC_ALL, nullptr), globalBefore);
}

// Every length at its boundaries round-trips; unpaired surrogates are encoded as U+FFFD.
TEST(Utf8, RoundTripsEveryLengthAtItsBoundaries) {
    const std::pair<std::string, u16string> cases[] = {
        {"", u16string()},
        {"A\x7F", u16string(u"A\u007F")},
        {"\xC2\x80\xDF\xBF", u16string(u"\u0080\u07FF")},
        {"\xE0\xA0\x80\xEF\xBF\xBF", u16string(u"\u0800\uFFFF")},
        {"\xED\x9F\xBF\xEE\x80\x80", u16string(u"\uD7FF\uE000")},  // beside the surrogates
        {"\xF0\x90\x80\x80", u16string(u"\U00010000")},
        {"\xF4\x8F\xBF\xBF", u16string(u"\U0010FFFF")},
        {std::string("a\0b", 3), u16string(u"a\0b", 3)},
    };
    for (const auto& [bytes, units] : cases) {
        u16string out;
        EXPECT_TRUE(Decode(bytes, out)) << bytes;
        EXPECT_EQ(out, units) << bytes;
        const mbstring encoded = stdx::encode_utf8(units.data(), units.size());
        EXPECT_EQ(std::string(encoded.data(), encoded.size()), bytes);
    }
    const char16_t lone[] = {u'x', 0xD800, u'y', 0xDC00};
    const mbstring shown = stdx::encode_utf8(lone, 4);
    EXPECT_EQ(std::string(shown.data(), shown.size()), "x\xEF\xBF\xBDy\xEF\xBF\xBD");
}

// Each with the offset of the sequence that fails: continuations without a lead,
// truncated forms, a lead before a non-continuation, overlong forms, surrogates, beyond
// U+10FFFF, five-byte forms and bytes never used.
TEST(Utf8, RefusesIllFormedInputNamesWhereAndLeavesOutputAlone) {
    // clang-format off
    const std::pair<const char*, std::size_t> cases[] = {
        {"\x80", 0},             {"ab\xBF", 2},           {"\xC3", 0},
        {"abc\xE2\x82", 3},      {"\xF0\x9F\x98", 0},     {"\xC3(", 0},
        {"x\xE2(\xA1", 1},       {"x\xC0\xAF", 1},        {"\xC1\xBF", 0},
        {"\xE0\x9F\xBF", 0},     {"\xF0\x8F\xBF\xBF", 0}, {"ok\xED\xA0\x80", 2},
        {"\xED\xBF\xBF", 0},     {"\xF4\x90\x80\x80", 0}, {"\xF8\x90\x80\x80\x80", 0},
        {"\xFE", 0},             {"a\xFF", 1}};
    // clang-format on
    for (const auto& [bytes, offset] : cases) {
        u16string out(u"unchanged");
        std::size_t reported = 99;
        EXPECT_FALSE(Decode(bytes, out, &reported)) << bytes;
        EXPECT_EQ(reported, offset) << bytes;
        EXPECT_EQ(out, u16string(u"unchanged")) << bytes;
    }
}

// Threads convert and share strings at once: each of many blocks is shared by every
// thread, so it dies on whichever lets go last, right after the others have read it or
// made it private.
using TextConcurrency = Encoding;
TEST_F(TextConcurrency, ThreadsConvertAndShareStringsAtOnce) {
    constexpr int kThreads = 4, kRounds = 1000;
    const mbstring bytes = to_multibyte(kText);
    const auto numbered = [](int i) {
        return u16string(40, u'o') + stdx::integer_to_text<u16string>(i);
    };
    std::vector<u16string> originals;
    for (int i = 0; i < kRounds; ++i) originals.push_back(numbered(i));
    std::vector<std::vector<u16string>> handedOver(kThreads, originals);
    originals.clear();
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < kRounds; ++i) {
                u16string& mine = handedOver[t][i];
                const u16string expected = numbered(i);
                bool ok = mine == expected && to_multibyte(kText) == bytes &&
                          from_multibyte(bytes) == kText;
                if (t % 2 == 0) {
                    mine.erase(0, 1);  // a private copy, or in place once alone
                    ok = ok && mine.use_count() == 1 && mine == expected.substr(1);
                }
                mine.clear();
                failures += ok ? 0 : 1;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(failures.load(), 0);
}

}  // namespace
