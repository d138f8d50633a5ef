// The text module holds all text of the installer as values of one string type:
// stdx::u16string (UTF-16 code units) for everything the program shows or keeps, and its byte
// twin stdx::mbstring for text handed to the C library and the shell. Short text lives inside
// the object; longer text lives in a heap block shared between copies through an atomic
// reference count and copied before any change. Conversions to and from the environment's
// multibyte encoding live in text/encoding.h. The module does no I/O, never changes the
// process-wide locale, never treats surrogate pairs specially, and throws only the length and
// position errors listed below (or std::bad_alloc when memory runs out). Threading: one string
// object belongs to one thread at a time, while copies sharing a block may be made, changed and
// released on any threads at once; conversions may run on any threads at once.
//
// Members of stdx::basic_string<C, fix_char_traits<C>> other modules may use:
//   ctors: (), (const C*), (const C*, size_type), (size_type n, C c), copy, move
//   assign(const C*, n), assign(const C*), operator=(str|const C*)
//   append(const C*, n), append(const C*), append(str), append(n, c), push_back(c)
//   operator+=(str|const C*|C); free operator+ (str+str, str+const C*, const C*+str, str+C)
//   size(), length(), empty(), data(), c_str(), operator[](i) const, back() const
//   begin()/end() const (const C*), clear(), resize(n[, c]), reserve(n), erase(pos[, n])
//   insert(pos, str|const C*)
//   find(C|const C*|str, pos = 0), rfind(C|const C*|str, pos = npos), substr(pos, n = npos)
//   compare(str|const C*), ==, !=, < (str or const C* on either side), swap(member and free)
//   npos, value_type, traits_type, size_type
// Free functions: replace_all(str, from, to) -> str&; integer_to_text<String>(int32_t, radix)
// For diagnostics and tests: capacity(), use_count().
//
// Errors: a length of 0x7FFFFFFFFFFFFFFF units or more throws
// std::length_error("basic_string"); a position past the end given to substr,
// erase or insert throws std::out_of_range("basic_string"). A null const C*
// reads as the empty text. data() and c_str() are always zero-terminated.
#pragma once

#include "text/basic_string.h"
#include "text/fix_char_traits.h"
#include "text/string_functions.h"

namespace stdx {

using u16string = basic_string<char16_t, fix_char_traits<char16_t>>;
using mbstring = basic_string<char, fix_char_traits<char>>;

}  // namespace stdx
