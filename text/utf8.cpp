#include "text/utf8.h"

#include <cstdint>

namespace stdx {
namespace {

struct SequenceShape {
    std::size_t length;      // bytes in the whole sequence
    std::uint32_t leadBits;  // payload bits of the lead byte
    std::uint32_t minimum;   // smallest value this length may carry (refuses overlong forms)
};

// Zero length marks a byte that cannot start a sequence.
SequenceShape shape_of(std::uint8_t lead) {
    if (lead < 0x80) return {1, lead, 0};
    if ((lead & 0xE0) == 0xC0) return {2, lead & 0x1Fu, 0x80};
    if ((lead & 0xF0) == 0xE0) return {3, lead & 0x0Fu, 0x800};
    if ((lead & 0xF8) == 0xF0) return {4, lead & 0x07u, 0x10000};
    return {0, 0, 0};
}

bool is_continuation(std::uint8_t byte) { return (byte & 0xC0) == 0x80; }
bool is_surrogate(std::uint32_t value) { return value >= 0xD800 && value <= 0xDFFF; }

void append_utf8(mbstring& out, std::uint32_t value) {
    if (value < 0x80) {
        out.push_back(static_cast<char>(value));
        return;
    }
    const std::size_t length = value < 0x800 ? 2 : value < 0x10000 ? 3 : 4;
    static const unsigned char kLeadMarks[] = {0, 0, 0xC0, 0xE0, 0xF0};
    char bytes[4];
    for (std::size_t i = length - 1; i > 0; --i, value >>= 6)
        bytes[i] = static_cast<char>(0x80 | (value & 0x3F));
    bytes[0] = static_cast<char>(kLeadMarks[length] | value);
    out.append(bytes, length);
}

}  // namespace

bool decode_utf8(const char* bytes, std::size_t count, u16string& out, std::size_t* bad_offset) {
    u16string decoded;
    decoded.reserve(count);
    std::size_t pos = 0;
    const auto fail = [&] {
        if (bad_offset != nullptr) *bad_offset = pos;
        return false;
    };
    while (pos < count) {
        const SequenceShape shape = shape_of(static_cast<std::uint8_t>(bytes[pos]));
        if (shape.length == 0 || shape.length > count - pos) return fail();
        std::uint32_t value = shape.leadBits;
        for (std::size_t i = 1; i < shape.length; ++i) {
            const auto byte = static_cast<std::uint8_t>(bytes[pos + i]);
            if (!is_continuation(byte)) return fail();
            value = (value << 6) | (byte & 0x3Fu);
        }
        if (value < shape.minimum || value > 0x10FFFF || is_surrogate(value)) return fail();
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

mbstring encode_utf8(const char16_t* units, std::size_t count) {
    mbstring out;
    out.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        std::uint32_t value = units[i];
        const bool high = value >= 0xD800 && value <= 0xDBFF;
        if (high && i + 1 < count && units[i + 1] >= 0xDC00 && units[i + 1] <= 0xDFFF) {
            value = 0x10000 + ((value - 0xD800) << 10) + (units[i + 1] - 0xDC00u);
            ++i;
        } else if (is_surrogate(value)) {
            value = 0xFFFD;
        }
        append_utf8(out, value);
    }
    return out;
}

}  // namespace stdx
