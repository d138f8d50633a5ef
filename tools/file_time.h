// Conversions between Unix seconds and the kit's file times (100-ns units since
// 1601-01-01 UTC), and the ISO form the tool prints. Only whole seconds are carried,
// as the installer does, so packing is repeatable whatever the file system's clock
// resolution. Pure functions; safe from any thread.
#pragma once

#include <cstdint>
#include <string>

namespace kittool {

// The installer's own conversion (FileSystem::UnixTimeToFileTime), refusing with false
// the times it cannot hold: before 1601, or so far ahead that they do not fit 64 bits.
bool unix_seconds_to_file_time(std::int64_t seconds, std::uint64_t& file_time);

// "YYYY-MM-DDTHH:MM:SSZ" in UTC; fractions of a second are dropped. Every 64-bit value
// has a form (the largest lies in the year 60056).
std::string file_time_to_iso(std::uint64_t file_time);

}  // namespace kittool
