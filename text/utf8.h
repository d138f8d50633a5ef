// Locale-free UTF-8 <-> UTF-16 for text whose encoding is known whatever the locale:
// the catalogue's built-in literals (decoded before main, when the locale may not be
// UTF-8 yet) and kit text that vendors' tools write. Text from the operating system
// goes through the locale conversions of text/encoding.h instead. Pure functions; safe
// from any thread.
#pragma once

#include <cstddef>

#include "text/string.h"

namespace stdx {

// Decodes `count` bytes into `out` and returns true. Returns false, leaving `out`
// unchanged, on any ill-formed input: a stray or missing continuation byte, an overlong
// form, an encoded surrogate, a value above U+10FFFF, or bytes F8..FF; `bad_offset`,
// when given, then receives the position of the sequence that failed. Characters above
// U+FFFF become surrogate pairs; NUL bytes decode to zero units.
bool decode_utf8(const char* bytes, std::size_t count, u16string& out,
                 std::size_t* bad_offset = nullptr);

// Encodes UTF-16 units as UTF-8; an unpaired surrogate becomes U+FFFD, so any kit text
// can be shown.
mbstring encode_utf8(const char16_t* units, std::size_t count);

}  // namespace stdx
