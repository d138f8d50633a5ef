// Scratch directories and file helpers shared by the kit tool's tests.
#pragma once

#include <sys/time.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace kittool_test {

namespace fs = std::filesystem;

// A fresh directory, removed with everything in it at the end of the test.
class ScratchDir {
  public:
    ScratchDir() {
        std::string pattern = (fs::temp_directory_path() / "kittool-test-XXXXXX").string();
        path_ = mkdtemp(pattern.data()) != nullptr ? pattern : std::string();
    }
    ~ScratchDir() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    ScratchDir(const ScratchDir&) = delete;
    ScratchDir& operator=(const ScratchDir&) = delete;

    std::string operator/(const std::string& relative) const { return path_ + "/" + relative; }

  private:
    std::string path_;
};

// Writes `content` to `path`, creating parent folders, and sets its modification time.
inline void write_file(const std::string& path, const std::string& content,
                       std::int64_t unix_seconds = 1709285400) {
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << content;
    const timeval times[2] = {{static_cast<time_t>(unix_seconds), 0},
                              {static_cast<time_t>(unix_seconds), 0}};
    utimes(path.c_str(), times);
}

inline std::string read_file(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline std::string source_path(const std::string& relative) {
    const char* root = std::getenv("ORD8_SOURCE_DIR");
    return std::string(root != nullptr ? root : ".") + "/" + relative;
}

// One of the reference kits in tests/data/kit, by its name without ".deflate".
inline std::string reference_kit(const std::string& name) {
    return source_path("tests/data/kit/" + name + ".deflate");
}

}  // namespace kittool_test
