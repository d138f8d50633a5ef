// Inflates a whole kit file into a caller's scratch file and says how its deflate
// stream ended. Stricter than the installer, which tolerates a stream that stops early
// and ignores bytes after the stream's end: here both are reported. Streams in chunks,
// never holding the kit in memory. Single-threaded per call; no shared state.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace kittool {

enum class StreamState {
    kComplete,   // the stream reached its end marker
    kEndsEarly,  // the file ran out first (a truncated kit)
    kCorrupt,    // the deflate data is invalid
    kTooLarge,   // unpacks beyond the 4 GiB a kit can address; inflation stopped there
};

struct InflateReport {
    StreamState state = StreamState::kComplete;
    std::uint64_t inflated_size = 0;   // bytes written to the sink
    std::uint64_t consumed = 0;        // kit bytes used up to the end or the fault
    std::uint64_t trailing_bytes = 0;  // after the end of a complete stream
    std::string detail;                // zlib's words for a corrupt stream
};

// Writes the inflated bytes to `sink` (binary, not owned). False with `error` only when
// the kit cannot be read or the sink cannot be written; a bad stream is a report.
bool inflate_kit(const std::string& kit_path, std::FILE* sink, InflateReport& report,
                 std::string& error);

}  // namespace kittool
