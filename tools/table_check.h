// Walks the tables of an inflated kit and names the first thing that the installer's
// reader refuses: a record shorter than its fixed fields, a string or field running
// past its record, a read past the end, a count that cannot fit, a data range outside
// the kit, an unsafe file name. It exists to explain a refusal in words; the reader
// itself stays the judge of what loads. Reads only; single-threaded per call.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace kittool {

struct TableReport {
    bool sound = false;
    std::string problem;  // one line, set when not sound
    std::uint64_t product_count = 0;
    std::uint64_t file_count = 0;
    std::uint64_t data_start = 0;  // first byte after the last file record
};

// Names longer than this many units are not checked but refused: no file system takes
// a path of that length, and the check would have to hold it in memory.
constexpr std::uint64_t kLongestCheckedName = 1u << 20;

// `inflated` holds the inflated kit from position 0; `inflated_size` is its length.
TableReport check_kit_tables(std::FILE* inflated, std::uint64_t inflated_size);

}  // namespace kittool
