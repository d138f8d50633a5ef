#include "text/encoding.h"

#include <strings.h>
#include <wchar.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <vector>

#include "text/environment_locale.h"

namespace stdx {
namespace {

constexpr std::size_t kFailed = static_cast<std::size_t>(-1);

// Widening each unit alone turns a surrogate pair into two lone surrogates,
// which no multibyte encoding accepts; that is the intended limit of this
// conversion, not an oversight.
std::vector<wchar_t> widen_units(const char16_t* units, std::size_t count) {
    std::vector<wchar_t> wide(count + 1, L'\0');
    for (std::size_t i = 0; i < count && units[i] != u'\0'; ++i) {
        wide[i] = static_cast<wchar_t>(units[i]);
    }
    return wide;
}

// The bytes before byte_count or the first zero byte, terminated, so that a
// sequence cut off by the limit reads as invalid just as it would before a zero
// byte.
std::vector<char> terminated_bytes(const char* bytes, std::size_t byte_count) {
    std::size_t length = 0;
    while (length < byte_count && bytes[length] != '\0') ++length;
    std::vector<char> terminated(bytes, bytes + length);
    terminated.push_back('\0');
    return terminated;
}

}  // namespace

std::ptrdiff_t utf16_to_multibyte(const char16_t* units, std::size_t count, char* out,
                                  std::size_t out_size) {
    const std::vector<wchar_t> wide = widen_units(units, units != nullptr ? count : 0);
    detail::EnvironmentLocaleScope locale;
    std::mbstate_t state{};
    const wchar_t* source = wide.data();
    const std::size_t needed = wcsrtombs(nullptr, &source, 0, &state);
    // A failed measurement still converts: the output then keeps the text up to
    // the first unconvertible unit, which keeps as much of a path as possible.
    if (needed != 0 && out != nullptr && out_size != 0) {
        std::memset(out, 0, out_size);
        state = std::mbstate_t{};
        source = wide.data();
        wcsrtombs(out, &source, out_size, &state);
    }
    return needed == kFailed ? -1 : static_cast<std::ptrdiff_t>(needed);
}

std::ptrdiff_t multibyte_to_utf16(const char* bytes, std::size_t byte_count, char16_t* out,
                                  std::size_t out_units) {
    if (bytes == nullptr) return 0;
    const std::vector<char> terminated = terminated_bytes(bytes, byte_count);
    // No character takes less than a byte, so this always has room.
    std::vector<wchar_t> wide(terminated.size());
    std::size_t count = 0;
    {
        detail::EnvironmentLocaleScope locale;
        std::mbstate_t state{};
        const char* source = terminated.data();
        count = mbsrtowcs(wide.data(), &source, wide.size(), &state);
    }
    if (count == kFailed) return -1;
    if (out != nullptr) {
        const std::size_t copied = out_units < count ? out_units : count;
        for (std::size_t i = 0; i < copied; ++i) {
            // Keeps the low 16 bits: characters above U+FFFF are cut, not paired.
            out[i] = static_cast<char16_t>(static_cast<std::uint32_t>(wide[i]));
        }
    }
    return static_cast<std::ptrdiff_t>(count);
}

mbstring to_multibyte(const u16string& text) {
    const std::size_t units = text.size();
    if (units > (std::numeric_limits<std::size_t>::max() - 1) / 4) {
        throw std::length_error("basic_string");
    }
    std::vector<char> bytes(units * 4 + 1, '\0');  // UTF-8 needs at most 4 bytes a unit
    utf16_to_multibyte(text.data(), units, bytes.data(), bytes.size());
    return mbstring(bytes.data());
}

u16string from_multibyte(const mbstring& bytes) {
    // A character takes at least one byte, so size + 1 units always suffice.
    std::vector<char16_t> units(bytes.size() + 1, u'\0');
    multibyte_to_utf16(bytes.c_str(), bytes.size(), units.data(), units.size());
    return u16string(units.data());
}

int compare_no_case(const u16string& a, const u16string& b) {
    return strcasecmp(to_multibyte(a).c_str(), to_multibyte(b).c_str());
}

}  // namespace stdx
