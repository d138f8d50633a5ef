#include "tools/file_time.h"

#include <cstdio>
#include <limits>

#include "fs/file_system.h"

namespace kittool {

namespace {

constexpr std::uint64_t kSecondsPerDay = 86400;
constexpr std::uint64_t kFileTimeUnitsPerSecond = 10000000;

// Days since 1601-01-01 to a proleptic Gregorian date. 1601 opens a 400-year cycle,
// so the cycle arithmetic needs no shift.
void civil_from_days(std::uint64_t days, std::uint64_t& year, unsigned& month, unsigned& day) {
    constexpr std::uint64_t kDaysPer400Years = 146097;
    constexpr std::uint64_t kDaysPer100Years = 36524;
    constexpr std::uint64_t kDaysPer4Years = 1461;
    std::uint64_t cycles400 = days / kDaysPer400Years;
    days %= kDaysPer400Years;
    std::uint64_t cycles100 = days / kDaysPer100Years;
    if (cycles100 == 4) cycles100 = 3;  // the last day of a 400-year cycle
    days -= cycles100 * kDaysPer100Years;
    std::uint64_t cycles4 = days / kDaysPer4Years;
    days %= kDaysPer4Years;
    std::uint64_t years = days / 365;
    if (years == 4) years = 3;  // the leap day at the end of a 4-year cycle
    days -= years * 365;
    year = 1601 + cycles400 * 400 + cycles100 * 100 + cycles4 * 4 + years;

    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    static const unsigned kMonthLengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    month = 0;
    for (;;) {
        const unsigned length = kMonthLengths[month] + (month == 1 && leap ? 1 : 0);
        if (days < length) break;
        days -= length;
        ++month;
    }
    month += 1;
    day = static_cast<unsigned>(days) + 1;
}

}  // namespace

bool unix_seconds_to_file_time(std::int64_t seconds, std::uint64_t& file_time) {
    // The installer's conversion wraps outside this range; the tool refuses instead.
    if (seconds < FileSystem::FileTimeToUnixTime(0) ||
        seconds > FileSystem::FileTimeToUnixTime(std::numeric_limits<FileTime>::max()))
        return false;
    file_time = FileSystem::UnixTimeToFileTime(seconds);
    return true;
}

std::string file_time_to_iso(std::uint64_t file_time) {
    const std::uint64_t seconds = file_time / kFileTimeUnitsPerSecond;
    const std::uint64_t second_of_day = seconds % kSecondsPerDay;
    std::uint64_t year;
    unsigned month, day;
    civil_from_days(seconds / kSecondsPerDay, year, month, day);
    char text[64];
    std::snprintf(text, sizeof text, "%04llu-%02u-%02uT%02u:%02u:%02uZ",
                  static_cast<unsigned long long>(year), month, day,
                  static_cast<unsigned>(second_of_day / 3600),
                  static_cast<unsigned>(second_of_day / 60 % 60),
                  static_cast<unsigned>(second_of_day % 60));
    return text;
}

}  // namespace kittool
