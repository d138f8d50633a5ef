// kit: why the kit reader refused a kit, in words a person can act on. Diagnostics
// only: the installer decides on result codes alone and never reads this; tools use it
// to explain a 13 (damaged data). Holds static text and numbers, so filling it never
// allocates and cannot fail. Plain data; it belongs to whoever owns the reader.
#pragma once

#include <cstdint>

// The part of the inflated kit the reader was in.
enum class KitTable : std::uint8_t {
    kNone,      // not known (a record read on its own, or before the tables)
    kHeader,    // the layout field and the single-product strings
    kProducts,  // the product count and records
    kFiles,     // the file count, records and data ranges
};

// The data range a file record claims, given only with the refusal "data range outside
// the kit".
struct ClaimedRange {
    std::uint64_t start = 0;    // in the inflated kit: data area start + stored offset, unwrapped
    std::uint32_t length = 0;   // the record's size field
    std::uint64_t kitSize = 0;  // bytes of the inflated kit
};

struct LoadRefusal {
    // A static string naming the broken rule ("unsafe file name"); null when the last
    // load succeeded or failed for a reason other than damaged data.
    const char* reason = nullptr;
    // Byte of the inflated kit where the refused field or record begins; for a data
    // range, where the file's record begins (its length field).
    std::uint64_t position = 0;
    KitTable table = KitTable::kNone;
    std::uint32_t record = 0;   // 1-based within `table`; 0 outside any record
    ClaimedRange claimedRange;  // all zero except for a data range outside the kit
};
