// PROVISIONAL until text/ lands: conversions between UTF-16 text and the
// locale's multibyte encoding (UTF-8 in practice). Safe to call from any thread.
#pragma once

#include <cstddef>

#include "text/string.h"

namespace stdx {

// Array forms. utf16_to_multibyte returns the bytes the conversion needs (or -1);
// multibyte_to_utf16 returns the characters the input holds (or -1).
std::ptrdiff_t utf16_to_multibyte(const char16_t* units, std::size_t count, char* out,
                                  std::size_t out_size);
std::ptrdiff_t multibyte_to_utf16(const char* bytes, std::size_t byte_count, char16_t* out,
                                  std::size_t out_units);

mbstring to_multibyte(const u16string& text);
u16string from_multibyte(const mbstring& bytes);
int compare_no_case(const u16string& a, const u16string& b);

}  // namespace stdx
