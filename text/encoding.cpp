// PROVISIONAL quick implementation; text/ replaces it.
#include "text/encoding.h"

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <locale.h>
#include <strings.h>
#include <vector>

namespace stdx {
namespace {
locale_t environment_locale() {
    thread_local locale_t loc = [] {
        locale_t l = newlocale(LC_ALL_MASK, "", locale_t(0));
        if (!l) l = newlocale(LC_ALL_MASK, "C.UTF-8", locale_t(0));
        return l;
    }();
    return loc;
}
struct ScopedLocale {
    locale_t old;
    ScopedLocale() : old(uselocale(environment_locale())) {}
    ~ScopedLocale() { uselocale(old); }
};
}  // namespace

std::ptrdiff_t utf16_to_multibyte(const char16_t* units, std::size_t count, char* out,
                                  std::size_t out_size) {
    std::vector<wchar_t> wide(count + 1, 0);
    for (std::size_t i = 0; i < count && units[i]; ++i) wide[i] = static_cast<wchar_t>(units[i]);
    ScopedLocale scoped;
    std::size_t n = std::wcstombs(nullptr, wide.data(), 0);
    std::memset(out, 0, out_size);
    std::wcstombs(out, wide.data(), out_size);
    return n == static_cast<std::size_t>(-1) ? -1 : static_cast<std::ptrdiff_t>(n);
}

std::ptrdiff_t multibyte_to_utf16(const char* bytes, std::size_t byte_count, char16_t* out,
                                  std::size_t out_units) {
    std::string copy(bytes, byte_count);
    ScopedLocale scoped;
    std::size_t n = std::mbstowcs(nullptr, copy.c_str(), 0);
    if (n == static_cast<std::size_t>(-1)) return -1;
    std::vector<wchar_t> wide(n + 1, 0);
    std::mbstowcs(wide.data(), copy.c_str(), n + 1);
    for (std::size_t i = 0; i < n && i < out_units; ++i) out[i] = static_cast<char16_t>(wide[i]);
    return static_cast<std::ptrdiff_t>(n);
}

mbstring to_multibyte(const u16string& text) {
    std::vector<char> out(text.size() * 4 + 1, 0);
    utf16_to_multibyte(text.data(), text.size(), out.data(), out.size());
    return mbstring(out.data());
}

u16string from_multibyte(const mbstring& bytes) {
    std::vector<char16_t> out(bytes.size() * 4 + 1, 0);
    multibyte_to_utf16(bytes.c_str(), bytes.size(), out.data(), bytes.size() + 1);
    return u16string(out.data());
}

int compare_no_case(const u16string& a, const u16string& b) {
    return strcasecmp(to_multibyte(a).c_str(), to_multibyte(b).c_str());
}

}  // namespace stdx
