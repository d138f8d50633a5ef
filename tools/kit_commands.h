// `ord8kit list` and `ord8kit verify`: what a kit holds, and whether the installer can
// use it. Both load the kit once with the installer's own reader and leave nothing
// behind. Single-threaded.
#pragma once

#include <string>
#include <vector>

namespace kittool {

// One tab-separated line per product ("product", language, name, vendor, description)
// and per file ("file", size, UTC time, name), each ending in a line feed. False with
// a one-line `error` when the reader refuses the kit.
bool ListKit(const std::string& kitPath, std::string& listing, std::string& error);

struct KitVerdict {
    // Empty when the installer can use the kit; otherwise one line: the first problem,
    // then the installer reader's answer.
    std::string error;
    // What the installer copes with but no writer should produce: bytes after the end of
    // the deflate stream, or a stream without its end marker whose tables and data
    // ranges are all whole. One line each.
    std::vector<std::string> warnings;
    std::string summary;  // "ok: 3 product(s), ..." when there is no error
};

KitVerdict VerifyKit(const std::string& kitPath);

}  // namespace kittool
