// Scratch directories, file helpers and kit inflation shared by the kit tool's tests.
#pragma once

#include <sys/stat.h>
#include <sys/time.h>
#include <zlib.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

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
        fs::permissions(path_, fs::perms::owner_all, fs::perm_options::add, ignored);
        fs::remove_all(path_, ignored);
    }
    ScratchDir(const ScratchDir&) = delete;
    ScratchDir& operator=(const ScratchDir&) = delete;

    std::string operator/(const std::string& relative) const { return path_ + "/" + relative; }
    const std::string& path() const { return path_; }

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

// Inflates a raw deflate stream whole; empty when it is not one complete stream.
inline std::string inflate_raw(const std::string& stream) {
    z_stream z{};
    if (inflateInit2(&z, -15) != Z_OK) return {};
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(stream.data()));
    z.avail_in = static_cast<uInt>(stream.size());
    std::string out;
    char chunk[4096];
    int status;
    do {
        z.next_out = reinterpret_cast<Bytef*>(chunk);
        z.avail_out = sizeof chunk;
        status = inflate(&z, Z_NO_FLUSH);
        out.append(chunk, sizeof chunk - z.avail_out);
    } while (status == Z_OK);
    inflateEnd(&z);
    return status == Z_STREAM_END ? out : std::string();
}

}  // namespace kittool_test
