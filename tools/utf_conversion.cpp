#include "tools/utf_conversion.h"

#include <cstdio>

#include "text/utf8.h"

namespace kittool {

std::string ToUtf8(const stdx::u16string& text) {
    const stdx::mbstring encoded = stdx::encode_utf8(text.data(), text.size());
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

void Tell(const std::string& message) {
    std::fprintf(stderr, "ord8kit: %s\n", escape_control_bytes(message).c_str());
}

}  // namespace kittool
