// Conversions between UTF-16 text and the environment's multibyte encoding
// (UTF-8 in practice), and the case-insensitive comparison built on them. Each
// conversion uses the locale that LC_ALL, LC_CTYPE or LANG name at the time of
// the call (falling back to a UTF-8 locale when that one is not installed) as a
// per-thread locale, so any threads may convert at once and the process-wide
// locale is never changed. Unconvertible text never throws: see each function.
#pragma once

#include <cstddef>

#include "text/string.h"

namespace stdx {

// Converts units up to the first zero unit or `count`, each unit on its own: a
// character above U+FFFF (a surrogate pair) or an unpaired surrogate has no
// multibyte form. Returns the bytes the whole text needs, terminator not
// counted, or -1 when some unit has no multibyte form. When that result is not
// zero and `out` is given, the whole output area is zeroed and receives as much
// converted text as fits in out_size bytes, stopping before the first unit
// that does not convert (so a failed conversion still yields the text before
// it). A text that fills the area exactly is not terminated.
std::ptrdiff_t utf16_to_multibyte(const char16_t* units, std::size_t count, char* out,
                                  std::size_t out_size);

// Converts bytes up to the first zero byte or `byte_count`. Returns the number of
// characters they hold, or -1 for an invalid or cut-off byte sequence. When that
// result is positive and `out` is given, the first min(out_units, result)
// characters are written, each as its low 16 bits (U+1F600 becomes 0xF600);
// nothing is terminated. On -1 the output keeps what it held.
std::ptrdiff_t multibyte_to_utf16(const char* bytes, std::size_t byte_count, char16_t* out,
                                  std::size_t out_units);

// The multibyte form of text; text after a unit that does not convert is lost.
// Throws std::length_error("basic_string") when 4 bytes per unit cannot be
// reserved.
mbstring to_multibyte(const u16string& text);
// The UTF-16 form of bytes up to their first zero byte; the empty string when the
// bytes are not valid in the encoding. A character whose low 16 bits are zero
// (U+10000, U+20000, ...) ends the text.
u16string from_multibyte(const mbstring& bytes);
// Negative, zero or positive; compares the multibyte forms with the C library's
// case folding, which in practice treats only ASCII letters alike.
int compare_no_case(const u16string& a, const u16string& b);

}  // namespace stdx
