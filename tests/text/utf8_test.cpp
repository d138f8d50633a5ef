#include "text/utf8.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

using Text = stdx::u16string;

bool Decode(const std::string& bytes, Text& out, std::size_t* bad_offset = nullptr) {
    return stdx::decode_utf8(bytes.data(), bytes.size(), out, bad_offset);
}

TEST(Utf8, RoundTripsEveryLengthAtItsBoundaries) {
    const std::pair<std::string, Text> cases[] = {
        {"", Text()},
        {"A\x7F", Text(u"A\u007F")},
        {"\xC2\x80\xDF\xBF", Text(u"\u0080\u07FF")},
        {"\xE0\xA0\x80\xEF\xBF\xBF", Text(u"\u0800\uFFFF")},
        {"\xED\x9F\xBF\xEE\x80\x80", Text(u"\uD7FF\uE000")},  // either side of the surrogates
        {"\xF0\x90\x80\x80", Text(u"\U00010000")},
        {"\xF4\x8F\xBF\xBF", Text(u"\U0010FFFF")},
        {std::string("a\0b", 3), Text(u"a\0b", 3)},
    };
    for (const auto& [bytes, units] : cases) {
        Text out;
        EXPECT_TRUE(Decode(bytes, out)) << bytes;
        EXPECT_EQ(out, units) << bytes;
        const stdx::mbstring encoded = stdx::encode_utf8(units.data(), units.size());
        EXPECT_EQ(std::string(encoded.data(), encoded.size()), bytes);
    }
}

TEST(Utf8, RefusesIllFormedInputNamesWhereAndLeavesOutputAlone) {
    // Each with the offset of the sequence that fails.
    const std::pair<const char*, std::size_t> cases[] = {
        {"\x80", 0},                  // continuation without a lead
        {"ab\xBF", 2},                // the same after good text
        {"\xC3", 0},                  // truncated two-byte form
        {"abc\xE2\x82", 3},           // truncated three-byte form
        {"\xF0\x9F\x98", 0},          // truncated four-byte form
        {"\xC3(", 0},                 // lead followed by a non-continuation
        {"x\xE2(\xA1", 1},            // broken in the middle
        {"x\xC0\xAF", 1},             // overlong '/'
        {"\xC1\xBF", 0},              // overlong U+007F
        {"\xE0\x9F\xBF", 0},          // overlong U+07FF
        {"\xF0\x8F\xBF\xBF", 0},      // overlong U+FFFF
        {"ok\xED\xA0\x80", 2},        // high surrogate
        {"\xED\xBF\xBF", 0},          // low surrogate
        {"\xF4\x90\x80\x80", 0},      // U+110000
        {"\xF8\x90\x80\x80\x80", 0},  // five-byte form
        {"\xFE", 0},
        {"a\xFF", 1},
    };
    for (const auto& [bytes, offset] : cases) {
        Text out(u"unchanged");
        std::size_t reported = 99;
        EXPECT_FALSE(Decode(bytes, out, &reported)) << bytes;
        EXPECT_EQ(reported, offset) << bytes;
        EXPECT_EQ(out, Text(u"unchanged")) << bytes;
    }
}

TEST(Utf8, EncodingReplacesUnpairedSurrogates) {
    const char16_t lone[] = {u'x', 0xD800, u'y', 0xDC00};
    const stdx::mbstring shown = stdx::encode_utf8(lone, 4);
    EXPECT_EQ(std::string(shown.data(), shown.size()), "x\xEF\xBF\xBDy\xEF\xBF\xBD");
}

}  // namespace
