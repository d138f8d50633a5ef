#include "text/utf8.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

using Text = stdx::u16string;

bool Decode(const std::string& bytes, Text& out, std::size_t* bad_offset = nullptr) {
    return stdx::decode_utf8(bytes.data(), bytes.size(), out, bad_offset);
}

TEST(Utf8, DecodesEveryLengthAtItsBoundaries) {
    struct Case {
        std::string bytes;
        Text units;
    };
    const Case cases[] = {
        {"", Text()},
        {"A\x7F", Text(u"A\u007F")},
        {"\xC2\x80\xDF\xBF", Text(u"\u0080\u07FF")},
        {"\xE0\xA0\x80\xEF\xBF\xBF", Text(u"\u0800\uFFFF")},
        {"\xED\x9F\xBF\xEE\x80\x80", Text(u"\uD7FF\uE000")},  // either side of the surrogates
        {"\xF0\x90\x80\x80", Text(u"\U00010000")},
        {"\xF0\x9F\x98\x80", Text(u"\U0001F600")},
        {"\xF4\x8F\xBF\xBF", Text(u"\U0010FFFF")},
        {std::string("a\0b", 3), Text(u"a\0b", 3)},
    };
    for (const Case& c : cases) {
        Text out;
        EXPECT_TRUE(Decode(c.bytes, out)) << c.bytes;
        EXPECT_EQ(out, c.units) << c.bytes;
    }
}

TEST(Utf8, RefusesIllFormedInputAndLeavesOutputAlone) {
    const char* const bad[] = {
        "\x80",                  // continuation without a lead
        "ab\xBF",                // the same after good text
        "\xC3",                  // truncated two-byte form
        "\xE2\x82",              // truncated three-byte form
        "\xF0\x9F\x98",          // truncated four-byte form
        "\xC3(",                 // lead followed by a non-continuation
        "\xE2(\xA1",             // broken in the middle
        "\xC0\xAF",              // overlong '/'
        "\xC1\xBF",              // overlong U+007F
        "\xE0\x9F\xBF",          // overlong U+07FF
        "\xF0\x8F\xBF\xBF",      // overlong U+FFFF
        "\xED\xA0\x80",          // high surrogate
        "\xED\xBF\xBF",          // low surrogate
        "\xF4\x90\x80\x80",      // U+110000
        "\xF8\x88\x80\x80\x80",  // five-byte form
        "\xFE",
        "\xFF",
    };
    for (const char* bytes : bad) {
        Text out(u"unchanged");
        EXPECT_FALSE(Decode(bytes, out)) << bytes;
        EXPECT_EQ(out, Text(u"unchanged"));
    }
}

TEST(Utf8, NamesTheSequenceWhereDecodingStopped) {
    const std::pair<std::string, std::size_t> malformed[] = {
        {"ab\x80", 2},          // stray continuation
        {"x\xC0\xAF", 1},       // overlong '/'
        {"ok\xED\xA0\x80", 2},  // encoded surrogate
        {"abc\xE2\x82", 3},     // cut off
    };
    for (const auto& [bytes, offset] : malformed) {
        Text out;
        std::size_t bad = 99;
        EXPECT_FALSE(Decode(bytes, out, &bad));
        EXPECT_EQ(bad, offset) << bytes;
    }
}

TEST(Utf8, EncodesPairsAndReplacesUnpairedSurrogates) {
    const std::string text = "a\xD1\x91\xE2\x82\xAC\xF0\x9F\x98\x80";  // 1 to 4 byte forms
    Text units;
    ASSERT_TRUE(Decode(text, units));
    const stdx::mbstring encoded = stdx::encode_utf8(units.data(), units.size());
    EXPECT_EQ(std::string(encoded.data(), encoded.size()), text);

    const char16_t lone[] = {u'x', 0xD800, u'y', 0xDC00};
    const stdx::mbstring shown = stdx::encode_utf8(lone, 4);
    EXPECT_EQ(std::string(shown.data(), shown.size()), "x\xEF\xBF\xBDy\xEF\xBF\xBD");
}

}  // namespace
