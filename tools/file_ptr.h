// An owned C stdio stream that is closed when it goes out of scope. For files whose
// close result does not matter (read-only or scratch); writers call fclose on release()
// themselves to see the result. Not shared between threads.
#pragma once

#include <cstdio>
#include <memory>

namespace kittool {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

using FilePtr = std::unique_ptr<std::FILE, FileCloser>;

}  // namespace kittool
