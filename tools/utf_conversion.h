// The tool's text in std strings: UTF-8 (what vendors type and what file names hold)
// to and from the UTF-16 units the kit stores, by the strict locale-free rules of
// text/utf8.h, and escaping for one-line output. Pure functions; safe from any thread.
#pragma once

#include <cstddef>
#include <string>

namespace kittool {

// Decodes `utf8` into UTF-16 units; on failure returns false and sets `bad_offset` to
// the offending byte.
bool utf8_to_utf16(const std::string& utf8, std::u16string& out, std::size_t& bad_offset);

// Encodes UTF-16 units as UTF-8; an unpaired surrogate becomes U+FFFD.
std::string utf16_to_utf8(const char16_t* units, std::size_t count);

// Shows control bytes (below 0x20, and 0x7F) as "\xHH", so that text from a kit or a
// file name can never break a line of the tool's output.
std::string escape_control_bytes(const std::string& text);

// utf16_to_utf8 followed by escape_control_bytes.
std::string utf16_for_display(const char16_t* units, std::size_t count);

}  // namespace kittool
