// Free helpers over stdx::basic_string: replacing every occurrence of a text,
// and writing an integer as text. Pure functions; safe from any thread.
#pragma once

#include <cstdint>

#include "text/basic_string.h"

namespace stdx {

namespace detail {
// Keeps `from` and `to` out of template deduction, so literals convert to String.
template <class T>
struct same_type {
    using type = T;
};
}  // namespace detail

// Replaces every occurrence of `from` in s, scanning left to right without
// rescanning replaced text, and returns s. An empty `from` changes nothing, and
// s keeps its shared block when nothing matches.
template <class String>
String& replace_all(String& s, const typename detail::same_type<String>::type& from,
                    const typename detail::same_type<String>::type& to) {
    if (from.empty()) return s;
    typename String::size_type hit = s.find(from);
    if (hit == String::npos) return s;
    String replaced;
    typename String::size_type start = 0;
    for (; hit != String::npos; hit = s.find(from, start)) {
        replaced.append(s.data() + start, hit - start);
        replaced.append(to);
        start = hit + from.size();
    }
    replaced.append(s.data() + start, s.size() - start);
    s.swap(replaced);
    return s;
}

// Digits 0-9 then lower-case letters. Radix 10 writes a minus sign for negative
// values; other radixes write the value's 32-bit pattern (-1 in radix 16 is
// "ffffffff"). A radix outside 2..36 gives the empty string.
template <class String>
String integer_to_text(std::int32_t value, int radix = 10) {
    using C = typename String::value_type;
    if (radix < 2 || radix > 36) return String();
    const bool negative = radix == 10 && value < 0;
    const std::uint32_t pattern = static_cast<std::uint32_t>(value);
    std::uint32_t rest = negative ? 0u - pattern : pattern;
    const auto base = static_cast<std::uint32_t>(radix);
    C digits[33];  // 32 binary digits and a sign at most
    std::size_t first = sizeof(digits) / sizeof(C);
    do {
        const std::uint32_t digit = rest % base;
        digits[--first] = static_cast<C>(digit < 10 ? '0' + digit : 'a' + (digit - 10));
        rest /= base;
    } while (rest != 0);
    if (negative) digits[--first] = C('-');
    return String(digits + first, sizeof(digits) / sizeof(C) - first);
}

}  // namespace stdx
