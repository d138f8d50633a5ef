// kit: LZCompressor inflates the whole distribution kit, one raw deflate stream, into
// another file, in pieces of at most 32 KiB so that neither the kit nor its inflated
// content is ever held in memory as a whole. It does not interpret the inflated bytes
// (that is InstallData's job) and it never deletes either file. It is the project's one
// inflate loop: tools that judge a kit ask it for a StreamReport instead of inflating
// the kit themselves.
//
// Threads: stateless; calls on different files may run on any threads at once.
#pragma once

#include <cstdint>

#include "fs/result_codes.h"
#include "text/string.h"

// How the deflate stream ended.
enum class StreamEnd {
    kNotInflated,  // inflation never ran or was cut off by a write failure
    kComplete,     // the end-of-stream marker was reached
    kEndsEarly,    // the kit ran out first (a truncated kit)
    kCorrupt,      // the data is not valid raw deflate
    kTooLarge,     // it unpacks beyond kitformat::kLargestInflatedKit; inflation stopped
};

// What Decompress saw of the stream, for tools that explain a kit; the installer asks
// for none. Counts are in bytes.
struct StreamReport {
    StreamEnd end = StreamEnd::kNotInflated;
    std::uint64_t consumed = 0;      // kit bytes used up to the end marker, the fault or the cut
    std::uint64_t trailing = 0;      // kit bytes after the end marker (complete streams only)
    std::uint64_t inflatedSize = 0;  // bytes the stream unpacked to before it stopped
    const char* damage = nullptr;    // zlib's static words for a corrupt stream, else null
};

class LZCompressor {
  public:
    // Size of the output buffer that each inflate round fills.
    static constexpr std::uint32_t kOutputBufferSize = 32768;

    // Inflates `source` (raw deflate, no header or trailer) into `destination`, which is
    // created, or emptied when it exists. Results:
    //   0     the stream ended, or the input ran out before its end (a truncated kit
    //         gives a shorter destination, not an error); bytes after the end of the
    //         stream are ignored; an empty source gives an empty destination;
    //   2/87  the open failure of either file, passed through (destination untouched
    //         when the source cannot be opened);
    //   13    the data is not a valid raw deflate stream, or it unpacks to more than
    //         kitformat::kLargestInflatedKit bytes (the reader could not address them;
    //         inflation stops there), or the source cannot be mapped, or the inflater
    //         cannot be set up;
    //   1013  a write to the destination failed or came up short, so a full volume is
    //         never mistaken for a good kit.
    // Both files are closed on every path. `report`, when given, is overwritten with
    // how the stream ended, on every path.
    ResultCode Decompress(const stdx::u16string& source, const stdx::u16string& destination,
                          StreamReport* report = nullptr) const;
};
