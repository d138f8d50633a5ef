// The tool's text at its edges: kit text (UTF-16) as UTF-8 by the strict locale-free
// rules of text/utf8.h, and escaping for one-line output. Pure functions; safe from any
// thread.
#pragma once

#include <string>

#include "text/string.h"

namespace kittool {

// Encodes UTF-16 units as UTF-8; an unpaired surrogate becomes U+FFFD.
std::string ToUtf8(const stdx::u16string& text);

// Shows control bytes (below 0x20, and 0x7F) as "\xHH", so that text from a kit or a
// file name can never break a line of the tool's output.
std::string escape_control_bytes(const std::string& text);

// One message line on stderr: "ord8kit: " and `message` with control bytes escaped, so
// that file names and kit text can never break it.
void Tell(const std::string& message);

}  // namespace kittool
