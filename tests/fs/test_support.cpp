#include "test_support.h"

#include <dirent.h>
#include <ftw.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "text/encoding.h"

namespace {
// Paths with non-ASCII letters need a UTF-8 locale, as the installer sets up at start.
const bool kUtf8Locale = setenv("LC_ALL", "C.UTF-8", 1) == 0;
}  // namespace

std::string ScratchDirectory::DefaultBase() {
    const char* binary = std::getenv("ORD8_BINARY_DIR");
    return binary != nullptr ? binary : "/tmp";
}

ScratchDirectory::ScratchDirectory(const std::string& base) {
    static_cast<void>(kUtf8Locale);
    std::string pattern = base + "/fs-test-XXXXXX";
    if (mkdtemp(&pattern[0]) == nullptr) throw std::runtime_error("mkdtemp failed in " + base);
    path_ = pattern;
}

ScratchDirectory::~ScratchDirectory() {
    // Independent of the code under test, so a broken removal there cannot hide here.
    nftw(
        path_.c_str(),
        [](const char* entry, const struct stat*, int type, FTW*) {
            return type == FTW_DP ? rmdir(entry) : unlink(entry);
        },
        16, FTW_DEPTH | FTW_PHYS);
}

std::string OtherVolumeBase() {
    const struct stat main = StatOf(ScratchDirectory::DefaultBase()), other = StatOf("/dev/shm");
    return S_ISDIR(other.st_mode) && main.st_dev != other.st_dev ? "/dev/shm" : "";
}

FileSizeLimit::FileSizeLimit(rlim_t bytes) {
    getrlimit(RLIMIT_FSIZE, &saved_);
    savedHandler_ = std::signal(SIGXFSZ, SIG_IGN);
    rlimit limited = saved_;
    limited.rlim_cur = bytes;
    setrlimit(RLIMIT_FSIZE, &limited);
}

FileSizeLimit::~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &saved_);
    std::signal(SIGXFSZ, savedHandler_);
}

stdx::u16string U16(const std::string& utf8) {
    return stdx::from_multibyte(stdx::mbstring(utf8.data(), utf8.size()));
}

std::string Utf8(const stdx::u16string& text) {
    const stdx::mbstring bytes = stdx::to_multibyte(text);
    return std::string(bytes.data(), bytes.size());
}

bool Exists(const std::string& path) { return StatOf(path).st_mode != 0; }

struct stat StatOf(const std::string& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) status.st_mode = 0;
    return status;
}

void WriteText(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

std::string ReadText(const std::string& path) {
    std::ostringstream content;
    content << std::ifstream(path, std::ios::binary).rdbuf();
    return content.str();
}

std::vector<std::string> EntriesOf(const std::string& directory) {
    std::vector<std::string> names;
    if (DIR* stream = opendir(directory.c_str())) {
        while (const dirent* entry = readdir(stream)) {
            const std::string name = entry->d_name;
            if (name != "." && name != "..") names.push_back(name);
        }
        closedir(stream);
    }
    std::sort(names.begin(), names.end());
    return names;
}
