// Readable failure messages for the string types: printable ASCII as is,
// everything else as hexadecimal unit values.
#pragma once

#include <ostream>

#include "text/string.h"

namespace stdx {

template <class C, class T>
void PrintTo(const basic_string<C, T>& s, std::ostream* os) {
    *os << '"';
    for (C c : s) {
        const auto unit = static_cast<unsigned>(static_cast<std::make_unsigned_t<C>>(c));
        if (unit >= 0x20 && unit < 0x7F) {
            *os << static_cast<char>(unit);
        } else {
            *os << "\\x" << std::hex << unit << std::dec;
        }
    }
    *os << "\" (" << s.size() << " units)";
}

}  // namespace stdx
