// Locale-free conversions between UTF-8 (what vendors type and what file names hold)
// and the UTF-16 units the kit stores. The decoder is strict: it never guesses, never
// substitutes, and names the byte where the input stops being UTF-8. The encoder is
// for showing kit text, so it replaces unpaired surrogates instead of failing.
// Pure functions; safe from any thread.
#pragma once

#include <cstddef>
#include <string>

namespace kittool {

// Decodes `utf8` into UTF-16 units. Refuses overlong forms, encoded surrogates, values
// above U+10FFFF, stray continuation bytes and cut-off sequences. On failure returns
// false, leaves `out` partly filled and sets `bad_offset` to the offending byte.
bool utf8_to_utf16(const std::string& utf8, std::u16string& out, std::size_t& bad_offset);

// Encodes UTF-16 units as UTF-8; an unpaired surrogate becomes U+FFFD.
std::string utf16_to_utf8(const char16_t* units, std::size_t count);

// Shows control bytes (below 0x20, and 0x7F) as "\xHH", so that text from a kit or a
// file name can never break a line of the tool's output.
std::string escape_control_bytes(const std::string& text);

// utf16_to_utf8 followed by escape_control_bytes.
std::string utf16_for_display(const char16_t* units, std::size_t count);

}  // namespace kittool
