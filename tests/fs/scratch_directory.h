// A private directory per test, removed with everything in it afterwards, plus the
// path helpers the fs tests share. Lives under the build tree (the main disk) unless
// a base is given, e.g. /dev/shm for a second file system.
#pragma once

#include <sys/stat.h>

#include <string>

#include "text/string.h"

class ScratchDirectory {
  public:
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

stdx::u16string U16(const std::string& utf8);
std::string Utf8(const stdx::u16string& text);

bool Exists(const std::string& path);
struct stat StatOf(const std::string& path);  // lstat; st_mode 0 when missing
void WriteText(const std::string& path, const std::string& bytes);
std::string ReadText(const std::string& path);  // empty when missing
