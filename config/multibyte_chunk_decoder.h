// Turns the launcher file's bytes into UTF-16 one chunk at a time, each chunk decoded
// on its own through stdx::from_multibyte. A chunk that does not decode yields nothing
// (so a UTF-16 file is not understood), and decoding stops at a zero byte, as the C
// library's conversion does. One refinement keeps settings from being lost: a
// multibyte character cut by the end of a chunk is held back and completed by the next.
#pragma once

#include <cstddef>

#include "text/string.h"

namespace config {

class MultibyteChunkDecoder {
  public:
    // The text of `bytes` (plus any bytes held back from the previous chunk). Up to
    // kMaxHeldBack trailing bytes may be kept for the next call; at the end of the input
    // whatever is still held never completed a character and is dropped.
    stdx::u16string decode(const char* bytes, std::size_t count);

    // A UTF-8 character is at most 4 bytes, so a cut leaves at most 3 of them behind.
    static constexpr std::size_t kMaxHeldBack = 3;

  private:
    stdx::mbstring held_;
};

}  // namespace config
