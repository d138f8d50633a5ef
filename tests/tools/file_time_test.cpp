// The tool's time conversions: they decide what times land in a kit.
#include "tools/file_time.h"

#include <gtest/gtest.h>

namespace {

// The conversion itself is checked on every file of the round trip; here its limits.
TEST(FileTimes, ConvertWithinTheirRangeAndPrintAcrossLeapRules) {
    std::uint64_t time = 0;
    EXPECT_FALSE(kittool::unix_seconds_to_file_time(-11644473601, time));
    EXPECT_FALSE(kittool::unix_seconds_to_file_time(INT64_MAX, time));

    const std::pair<std::int64_t, const char*> dates[] = {
        {-11644473600, "1601-01-01T00:00:00Z"}, {0, "1970-01-01T00:00:00Z"},
        {951782400, "2000-02-29T00:00:00Z"},    {978307199, "2000-12-31T23:59:59Z"},
        {4107542400, "2100-03-01T00:00:00Z"},   {-8520336000, "1700-01-01T00:00:00Z"},
        {1709285400, "2024-03-01T09:30:00Z"},
    };
    for (const auto& [seconds, iso] : dates) {
        ASSERT_TRUE(kittool::unix_seconds_to_file_time(seconds, time));
        EXPECT_EQ(kittool::file_time_to_iso(time + 9999999), iso);  // fractions never round up
    }
    EXPECT_EQ(kittool::file_time_to_iso(UINT64_MAX), "60056-05-28T05:36:10Z");
}

}  // namespace
