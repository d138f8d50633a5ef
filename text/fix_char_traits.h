// Character traits for stdx::basic_string: the few array operations the string
// needs over units of type C, with a zero unit as terminator. Units are opaque
// values compared as unsigned numbers, so byte text orders like memcmp and
// UTF-16 text orders by code unit. Pure functions; safe from any thread.
#pragma once

#include <cstddef>
#include <type_traits>

namespace stdx {

template <class C>
struct fix_char_traits {
    using char_type = C;

    static constexpr C terminator() { return C(0); }

    static bool eq(C a, C b) { return a == b; }
    static bool lt(C a, C b) { return as_unsigned(a) < as_unsigned(b); }

    // Units before the first zero unit.
    static std::size_t length(const C* s) {
        std::size_t n = 0;
        while (s[n] != C(0)) ++n;
        return n;
    }

    // Negative, zero or positive as a orders before, with or after b over n units.
    static int compare(const C* a, const C* b, std::size_t n) {
        for (std::size_t i = 0; i < n; ++i) {
            if (a[i] != b[i]) return lt(a[i], b[i]) ? -1 : 1;
        }
        return 0;
    }

    // Ranges must not overlap.
    static C* copy(C* dst, const C* src, std::size_t n) {
        for (std::size_t i = 0; i < n; ++i) dst[i] = src[i];
        return dst;
    }

    // Ranges may overlap.
    static C* move(C* dst, const C* src, std::size_t n) {
        if (dst < src) {
            for (std::size_t i = 0; i < n; ++i) dst[i] = src[i];
        } else if (src < dst) {
            for (std::size_t i = n; i > 0; --i) dst[i - 1] = src[i - 1];
        }
        return dst;
    }

    // First of the n units equal to c, or nullptr.
    static const C* find(const C* s, std::size_t n, C c) {
        for (std::size_t i = 0; i < n; ++i) {
            if (s[i] == c) return s + i;
        }
        return nullptr;
    }

    static C* assign(C* dst, std::size_t n, C c) {
        for (std::size_t i = 0; i < n; ++i) dst[i] = c;
        return dst;
    }

    static void assign(C& dst, C c) { dst = c; }

  private:
    static auto as_unsigned(C c) { return static_cast<std::make_unsigned_t<C>>(c); }
};

}  // namespace stdx
