// `ord8kit list` and `ord8kit verify`: what a kit holds, and whether the installer can
// use it. Both read the kit and write only scratch files that they remove again.
// Single-threaded.
#pragma once

#include <string>

namespace kittool {

// One tab-separated line per product ("product", language, name, vendor, description)
// and per file ("file", size, UTC time, name), each ending in a line feed. False with
// `error` when the reader refuses the kit.
bool list_kit(const std::string& kit_path, std::string& listing, std::string& error);

// True with a one-line `summary` when the kit is sound from its first byte to its
// last; false with a one-line `error` giving the first problem and, once the stream
// could be read, the installer reader's own answer.
bool verify_kit(const std::string& kit_path, std::string& summary, std::string& error);

}  // namespace kittool
