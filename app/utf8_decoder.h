// Strict UTF-8 to UTF-16 decoding for the catalogue's built-in literals. It exists
// because the locale-driven conversion may not be set up for UTF-8 when static
// initialisers run; it must not be used for text from the operating system, which goes
// through the locale conversions of text/. Pure function; safe from any thread.
#pragma once

#include <cstddef>

#include "text/string.h"

namespace app {

// Decodes `count` bytes into `out` and returns true. Returns false, leaving `out`
// unchanged, on any ill-formed input: a stray or missing continuation byte, an
// overlong form, an encoded surrogate, a value above U+10FFFF, or bytes F8..FF.
// Characters above U+FFFF become surrogate pairs. NUL bytes decode to zero units.
bool DecodeUtf8(const char* bytes, std::size_t count, stdx::u16string& out);

}  // namespace app
