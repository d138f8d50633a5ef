// What only the kit tool's tests need beyond tests/support: source files with a chosen
// time, and the checked-in reference kits.
#pragma once

#include <sys/time.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "tests/support/test_support.h"

// Writes `bytes` to `path`, making parent folders, and gives it that modification time.
inline void WriteFileAt(const std::string& path, const std::string& bytes,
                        std::int64_t unixSeconds = 1709285400) {
    WriteText(path, bytes);
    const timeval times[2] = {{static_cast<time_t>(unixSeconds), 0},
                              {static_cast<time_t>(unixSeconds), 0}};
    utimes(path.c_str(), times);
}

inline std::string SourcePath(const std::string& relative) {
    const char* root = std::getenv("ORD8_SOURCE_DIR");
    return std::string(root != nullptr ? root : ".") + "/" + relative;
}

// One of the reference kits in tests/data/kit, by its name without ".deflate".
inline std::string ReferenceKit(const std::string& name) {
    return SourcePath("tests/data/kit/" + name + ".deflate");
}
