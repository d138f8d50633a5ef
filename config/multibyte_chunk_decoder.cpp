#include "config/multibyte_chunk_decoder.h"

#include "text/encoding.h"

namespace config {

stdx::u16string MultibyteChunkDecoder::decode(const char* bytes, std::size_t count) {
    stdx::mbstring input = held_;
    const std::size_t carried = held_.size();
    input.append(bytes, count);
    held_.clear();
    if (input.empty()) return stdx::u16string();

    // Text stops at a zero byte, so such a chunk never reaches its end: nothing to hold.
    if (input.find('\0') != stdx::mbstring::npos) return stdx::from_multibyte(input);

    // Non-empty text without a zero byte decodes to something unless it is invalid, so an
    // empty result means "try again without the last few bytes".
    const std::size_t most = input.size() - 1 < kMaxHeldBack ? input.size() - 1 : kMaxHeldBack;
    for (std::size_t hold = 0; hold <= most; ++hold) {
        stdx::u16string text = stdx::from_multibyte(input.substr(0, input.size() - hold));
        if (!text.empty()) {
            held_ = input.substr(input.size() - hold);
            return text;
        }
    }
    // Bytes held back last time that start no character after all are the only loss.
    if (carried > 0) return decode(input.data() + carried, input.size() - carried);
    return stdx::u16string();
}

}  // namespace config
