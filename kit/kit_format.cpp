#include "kit/kit_format.h"

namespace kitformat {
namespace {

bool is_separator(char16_t unit) { return unit == u'/' || unit == u'\\'; }

bool is_ascii_letter(char16_t unit) {
    return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z');
}

}  // namespace

bool is_safe_file_name(const char16_t* units, std::size_t count) {
    return FileNameRefusal(units, count) == nullptr;
}

const char* FileNameRefusal(const char16_t* units, std::size_t count) {
    if (units == nullptr || count == 0) return kUnsafeFileName;
    if (is_separator(units[0])) return kUnsafeFileName;
    // "C:" is absolute on the systems kits are made on; refuse it wherever it is meant.
    if (count >= 2 && is_ascii_letter(units[0]) && units[1] == u':') return kUnsafeFileName;

    bool surrogate = false;
    std::size_t segment_start = 0;
    for (std::size_t i = 0; i <= count; ++i) {
        if (i < count && units[i] == 0) return kUnsafeFileName;
        if (i < count && units[i] >= 0xD800 && units[i] <= 0xDFFF) surrogate = true;
        if (i == count || is_separator(units[i])) {
            const bool parent = i - segment_start == 2 && units[segment_start] == u'.' &&
                                units[segment_start + 1] == u'.';
            if (parent) return kUnsafeFileName;
            segment_start = i + 1;
        }
    }
    return surrogate ? kSurrogateInFileName : nullptr;
}

}  // namespace kitformat
