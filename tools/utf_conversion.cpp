#include "tools/utf_conversion.h"

namespace kittool {

namespace {

bool is_continuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

void append_code_point(std::u16string& out, char32_t cp) {
    if (cp < 0x10000) {
        out.push_back(static_cast<char16_t>(cp));
        return;
    }
    cp -= 0x10000;
    out.push_back(static_cast<char16_t>(0xD800 + (cp >> 10)));
    out.push_back(static_cast<char16_t>(0xDC00 + (cp & 0x3FF)));
}

void append_utf8(std::string& out, char32_t cp) {
    if (cp < 0x80) {
        out.push_back(static_cast<char>(cp));
    } else if (cp < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else if (cp < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    }
}

}  // namespace

bool utf8_to_utf16(const std::string& utf8, std::u16string& out, std::size_t& bad_offset) {
    out.clear();
    const std::size_t size = utf8.size();
    std::size_t i = 0;
    while (i < size) {
        const auto lead = static_cast<unsigned char>(utf8[i]);
        if (lead < 0x80) {
            out.push_back(lead);
            ++i;
            continue;
        }
        std::size_t length;
        char32_t cp;
        char32_t smallest;  // below this the sequence is an overlong form
        if ((lead & 0xE0) == 0xC0) {
            length = 2, cp = lead & 0x1F, smallest = 0x80;
        } else if ((lead & 0xF0) == 0xE0) {
            length = 3, cp = lead & 0x0F, smallest = 0x800;
        } else if ((lead & 0xF8) == 0xF0) {
            length = 4, cp = lead & 0x07, smallest = 0x10000;
        } else {
            bad_offset = i;
            return false;
        }
        for (std::size_t k = 1; k < length; ++k) {
            if (i + k >= size || !is_continuation(static_cast<unsigned char>(utf8[i + k]))) {
                bad_offset = i;
                return false;
            }
            cp = (cp << 6) | (static_cast<unsigned char>(utf8[i + k]) & 0x3F);
        }
        if (cp < smallest || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) {
            bad_offset = i;
            return false;
        }
        append_code_point(out, cp);
        i += length;
    }
    return true;
}

std::string utf16_to_utf8(const char16_t* units, std::size_t count) {
    std::string out;
    out.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        char32_t unit = units[i];
        const bool high = unit >= 0xD800 && unit <= 0xDBFF;
        const bool low = unit >= 0xDC00 && unit <= 0xDFFF;
        if (high && i + 1 < count && units[i + 1] >= 0xDC00 && units[i + 1] <= 0xDFFF) {
            unit = 0x10000 + ((unit - 0xD800) << 10) + (units[i + 1] - 0xDC00);
            ++i;
        } else if (high || low) {
            unit = 0xFFFD;
        }
        append_utf8(out, unit);
    }
    return out;
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
