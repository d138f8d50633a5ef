// kit: LZCompressor inflates the whole distribution kit, one raw deflate stream, into
// another file, in pieces of at most 32 KiB so that neither the kit nor its inflated
// content is ever held in memory as a whole. It does not interpret the inflated bytes
// (that is InstallData's job) and it never deletes either file.
//
// Threads: stateless; calls on different files may run on any threads at once.
#pragma once

#include <cstdint>

#include "fs/result_codes.h"
#include "text/string.h"

class LZCompressor {
  public:
    // Size of the output buffer that each inflate round fills.
    static constexpr std::uint32_t kOutputBufferSize = 32768;

    // Inflates `source` (raw deflate, no header or trailer) into `destination`, which is
    // created or truncated. Results:
    //   0     the stream ended, or the input ran out before its end (a truncated kit
    //         gives a shorter destination, not an error); bytes after the end of the
    //         stream are ignored; an empty source gives an empty destination;
    //   2/87  the open failure of either file, passed through (destination untouched
    //         when the source cannot be opened);
    //   13    the data is not a valid raw deflate stream, or the source cannot be mapped,
    //         or the inflater cannot be set up;
    //   1013  a write to the destination failed or came up short, so a full volume is
    //         never mistaken for a good kit.
    // Both files are closed on every path.
    ResultCode Decompress(const stdx::u16string& source, const stdx::u16string& destination) const;
};
