#include "tools/utf_conversion.h"

#include "text/utf8.h"

namespace kittool {

bool utf8_to_utf16(const std::string& utf8, std::u16string& out, std::size_t& bad_offset) {
    stdx::u16string decoded;
    if (!stdx::decode_utf8(utf8.data(), utf8.size(), decoded, &bad_offset)) return false;
    out.assign(decoded.data(), decoded.size());
    return true;
}

std::string utf16_to_utf8(const char16_t* units, std::size_t count) {
    const stdx::mbstring encoded = stdx::encode_utf8(units, count);
    return std::string(encoded.data(), encoded.size());
}

std::string escape_control_bytes(const std::string& text) {
    std::string shown;
    shown.reserve(text.size());
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7F) {
            shown.push_back(c);
            continue;
        }
        static const char kHex[] = "0123456789abcdef";
        shown += "\\x";
        shown.push_back(kHex[byte >> 4]);
        shown.push_back(kHex[byte & 0xF]);
    }
    return shown;
}

std::string utf16_for_display(const char16_t* units, std::size_t count) {
    return escape_control_bytes(utf16_to_utf8(units, count));
}

}  // namespace kittool
