// PROVISIONAL: stands in for the real string type until text/ lands; the
// interface below is the contract every other module codes against.
//
// stdx::basic_string<C, fix_char_traits<C>> members other modules may use:
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
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace stdx {

template <class C>
struct fix_char_traits : std::char_traits<C> {};

template <class C, class Traits>
using basic_string = std::basic_string<C, Traits>;

using u16string = basic_string<char16_t, fix_char_traits<char16_t>>;
using mbstring = basic_string<char, fix_char_traits<char>>;

template <class String>
String& replace_all(String& s, const String& from, const String& to) {
    if (from.empty()) return s;
    for (std::size_t pos = s.find(from); pos != String::npos; pos = s.find(from, pos + to.size()))
        s.replace(pos, from.size(), to);
    return s;
}

template <class String>
String integer_to_text(std::int32_t value, int radix = 10) {
    using C = typename String::value_type;
    const char* digits = "0123456789abcdefghijklmnopqrstuvwxyz";
    bool negative = radix == 10 && value < 0;
    std::uint32_t v = negative ? 0u - static_cast<std::uint32_t>(value) : static_cast<std::uint32_t>(value);
    C buf[40];
    int n = 0;
    do {
        buf[n++] = static_cast<C>(digits[v % static_cast<std::uint32_t>(radix)]);
        v /= static_cast<std::uint32_t>(radix);
    } while (v != 0);
    String out;
    if (negative) out.push_back(C('-'));
    while (n > 0) out.push_back(buf[--n]);
    return out;
}

}  // namespace stdx
