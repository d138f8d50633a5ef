// The tool's own text and time conversions: they decide what bytes land in a kit.
#include <gtest/gtest.h>

#include <string>

#include "tools/file_time.h"
#include "tools/utf_conversion.h"

namespace {

using kittool::file_time_to_iso;
using kittool::unix_seconds_to_file_time;
using kittool::utf16_for_display;
using kittool::utf16_to_utf8;
using kittool::utf8_to_utf16;

TEST(Utf8Decoding, AcceptsEveryEncodingLengthAndBuildsSurrogatePairs) {
    // 1, 2, 3 and 4 byte forms: "a", U+0451, U+20AC, U+1F600.
    const std::string text = "a\xD1\x91\xE2\x82\xAC\xF0\x9F\x98\x80";
    std::u16string out;
    std::size_t bad = 0;
    ASSERT_TRUE(utf8_to_utf16(text, out, bad));
    EXPECT_EQ(out, std::u16string(u"a\u0451\u20AC\xD83D\xDE00"));
    EXPECT_EQ(utf16_to_utf8(out.data(), out.size()), text);
}

TEST(Utf8Decoding, RefusesMalformedInputAndNamesTheByte) {
    struct Case {
        const char* what;
        std::string bytes;
        std::size_t bad_offset;
    };
    const Case cases[] = {
        {"stray continuation", "ab\x80", 2},        {"overlong slash", "x\xC0\xAF", 1},
        {"overlong three-byte", "\xE0\x80\xAF", 0}, {"encoded surrogate", "ok\xED\xA0\x80", 2},
        {"beyond U+10FFFF", "\xF4\x90\x80\x80", 0}, {"cut-off sequence", "abc\xE2\x82", 3},
        {"lead without continuation", "\xC3z", 0},  {"invalid lead byte", "\xFF", 0},
    };
    for (const Case& c : cases) {
        std::u16string out;
        std::size_t bad = 99;
        EXPECT_FALSE(utf8_to_utf16(c.bytes, out, bad)) << c.what;
        EXPECT_EQ(bad, c.bad_offset) << c.what;
    }
}

TEST(Utf16Encoding, ReplacesUnpairedSurrogatesAndEscapesControls) {
    const char16_t lone[] = {u'a', 0xD800, u'b', 0xDC00};
    EXPECT_EQ(utf16_to_utf8(lone, 4),
              "a\xEF\xBF\xBD"
              "b\xEF\xBF\xBD");
    const std::u16string line = u"name\tx\n\x7F\u0451";
    EXPECT_EQ(utf16_for_display(line.data(), line.size()), "name\\x09x\\x0a\\x7f\xD1\x91");
}

TEST(FileTimes, ConvertFromUnixSecondsByTheInstallersRule) {
    std::uint64_t time = 0;
    ASSERT_TRUE(unix_seconds_to_file_time(0, time));
    EXPECT_EQ(time, 116444736000000000u);
    ASSERT_TRUE(unix_seconds_to_file_time(1709285400, time));
    EXPECT_EQ(time, 1709285400ull * 10000000 + 116444736000000000u);
    ASSERT_TRUE(unix_seconds_to_file_time(-11644473600, time));  // 1601-01-01 itself
    EXPECT_EQ(time, 0u);
    EXPECT_FALSE(unix_seconds_to_file_time(-11644473601, time));
    EXPECT_FALSE(unix_seconds_to_file_time(INT64_MAX, time));
}

TEST(FileTimes, PrintAsUtcDatesAcrossLeapRules) {
    auto at = [](std::int64_t unix_seconds) {
        std::uint64_t time = 0;
        EXPECT_TRUE(unix_seconds_to_file_time(unix_seconds, time));
        return file_time_to_iso(time + 9999999);  // a fraction must not round up
    };
    EXPECT_EQ(file_time_to_iso(0), "1601-01-01T00:00:00Z");
    EXPECT_EQ(at(0), "1970-01-01T00:00:00Z");
    EXPECT_EQ(at(951782400), "2000-02-29T00:00:00Z");   // leap by the 400 rule
    EXPECT_EQ(at(978307199), "2000-12-31T23:59:59Z");   // last day of a 400-year cycle
    EXPECT_EQ(at(4107542400), "2100-03-01T00:00:00Z");  // 2100 has no 29 February
    EXPECT_EQ(at(-8520336000), "1700-01-01T00:00:00Z");
    EXPECT_EQ(at(1709285400), "2024-03-01T09:30:00Z");
    EXPECT_EQ(file_time_to_iso(UINT64_MAX), "60056-05-28T05:36:10Z");
}

}  // namespace
