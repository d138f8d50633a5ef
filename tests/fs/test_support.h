// What the fs tests share: a private directory per test (removed afterwards without
// using the code under test), a second file system for cross-volume moves, a file-size
// limit that makes writes fail part way, and small path helpers.
#pragma once

#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <string>
#include <vector>

#include "text/string.h"

class ScratchDirectory {
  public:
    // Under the build tree (the main disk) unless another base is given.
    explicit ScratchDirectory(const std::string& base = DefaultBase());
    ~ScratchDirectory();
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;

    const std::string& path() const { return path_; }
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }
    static std::string DefaultBase();

  private:
    std::string path_;
};

// A base directory on another device than DefaultBase(), or "" when there is none.
std::string OtherVolumeBase();

// While alive, files cannot grow beyond `bytes`: writes past it come back short or
// fail with EFBIG instead of killing the process.
class FileSizeLimit {
  public:
    explicit FileSizeLimit(rlim_t bytes);
    ~FileSizeLimit();

  private:
    rlimit saved_{};
    void (*savedHandler_)(int) = SIG_DFL;
};

stdx::u16string U16(const std::string& utf8);
std::string Utf8(const stdx::u16string& text);
bool Exists(const std::string& path);
struct stat StatOf(const std::string& path);  // lstat; st_mode 0 when missing
void WriteText(const std::string& path, const std::string& bytes);
std::string ReadText(const std::string& path);                     // empty when missing
std::vector<std::string> EntriesOf(const std::string& directory);  // sorted, no dot entries
