#include "app/utf8_decoder.h"

#include <cstdint>

namespace app {
namespace {

struct SequenceShape {
    std::size_t length;      // bytes in the whole sequence
    std::uint32_t leadBits;  // payload bits of the lead byte
    std::uint32_t minimum;   // smallest value this length may carry (refuses overlong forms)
};

// Zero length marks a byte that cannot start a sequence.
SequenceShape ShapeOf(std::uint8_t lead) {
    if (lead < 0x80) return {1, lead, 0};
    if ((lead & 0xE0) == 0xC0) return {2, lead & 0x1Fu, 0x80};
    if ((lead & 0xF0) == 0xE0) return {3, lead & 0x0Fu, 0x800};
    if ((lead & 0xF8) == 0xF0) return {4, lead & 0x07u, 0x10000};
    return {0, 0, 0};
}

bool IsContinuation(std::uint8_t byte) { return (byte & 0xC0) == 0x80; }

}  // namespace

bool DecodeUtf8(const char* bytes, std::size_t count, stdx::u16string& out) {
    stdx::u16string decoded;
    decoded.reserve(count);
    std::size_t pos = 0;
    while (pos < count) {
        const SequenceShape shape = ShapeOf(static_cast<std::uint8_t>(bytes[pos]));
        if (shape.length == 0 || shape.length > count - pos) return false;
        std::uint32_t value = shape.leadBits;
        for (std::size_t i = 1; i < shape.length; ++i) {
            const auto byte = static_cast<std::uint8_t>(bytes[pos + i]);
            if (!IsContinuation(byte)) return false;
            value = (value << 6) | (byte & 0x3Fu);
        }
        if (value < shape.minimum || value > 0x10FFFF) return false;
        if (value >= 0xD800 && value <= 0xDFFF) return false;
        if (value >= 0x10000) {
            const std::uint32_t offset = value - 0x10000;
            decoded.push_back(static_cast<char16_t>(0xD800 + (offset >> 10)));
            decoded.push_back(static_cast<char16_t>(0xDC00 + (offset & 0x3FF)));
        } else {
            decoded.push_back(static_cast<char16_t>(value));
        }
        pos += shape.length;
    }
    out.swap(decoded);
    return true;
}

}  // namespace app
