// The tool's own text and time conversions: they decide what bytes land in a kit.
#include <gtest/gtest.h>

#include <string>

#include "tools/file_time.h"
#include "tools/utf_conversion.h"

namespace {

TEST(Utf8Decoding, BuildsSurrogatePairsAndRefusesMalformedInputNamingTheByte) {
    const std::string text = "a\xD1\x91\xE2\x82\xAC\xF0\x9F\x98\x80";  // 1 to 4 byte forms
    std::u16string out;
    std::size_t bad = 0;
    ASSERT_TRUE(kittool::utf8_to_utf16(text, out, bad));
    EXPECT_EQ(out, std::u16string(u"a\u0451\u20AC\xD83D\xDE00"));
    EXPECT_EQ(kittool::utf16_to_utf8(out.data(), out.size()), text);

    const std::pair<std::string, std::size_t> malformed[] = {
        {"ab\x80", 2},            // stray continuation
        {"x\xC0\xAF", 1},         // overlong '/'
        {"\xE0\x80\xAF", 0},      // overlong three-byte form
        {"ok\xED\xA0\x80", 2},    // encoded surrogate
        {"\xF4\x90\x80\x80", 0},  // beyond U+10FFFF
        {"abc\xE2\x82", 3},       // cut off
        {"\xFF", 0},              // no such lead byte
    };
    for (const auto& [bytes, offset] : malformed) {
        EXPECT_FALSE(kittool::utf8_to_utf16(bytes, out, bad)) << offset;
        EXPECT_EQ(bad, offset);
    }
}

TEST(FileTimes, ConvertByTheInstallersRuleAndPrintAcrossLeapRules) {
    std::uint64_t time = 0;
    ASSERT_TRUE(kittool::unix_seconds_to_file_time(1709285400, time));
    EXPECT_EQ(time, 1709285400ull * 10000000 + 116444736000000000u);
    ASSERT_TRUE(kittool::unix_seconds_to_file_time(-11644473600, time));  // 1601 itself
    EXPECT_EQ(time, 0u);
    EXPECT_FALSE(kittool::unix_seconds_to_file_time(-11644473601, time));
    EXPECT_FALSE(kittool::unix_seconds_to_file_time(INT64_MAX, time));

    const std::pair<std::int64_t, const char*> dates[] = {
        {0, "1970-01-01T00:00:00Z"},           {951782400, "2000-02-29T00:00:00Z"},
        {978307199, "2000-12-31T23:59:59Z"},   {4107542400, "2100-03-01T00:00:00Z"},
        {-8520336000, "1700-01-01T00:00:00Z"}, {1709285400, "2024-03-01T09:30:00Z"},
    };
    for (const auto& [seconds, iso] : dates) {
        ASSERT_TRUE(kittool::unix_seconds_to_file_time(seconds, time));
        EXPECT_EQ(kittool::file_time_to_iso(time + 9999999), iso);  // fractions never round up
    }
    EXPECT_EQ(kittool::file_time_to_iso(UINT64_MAX), "60056-05-28T05:36:10Z");
}

}  // namespace
