#include "test_support.h"

#include <dirent.h>
#include <ftw.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "text/encoding.h"

namespace {
// Paths with non-ASCII letters need a UTF-8 locale, as the installer sets up at start.
const bool kUtf8Locale = [] { return setenv("LC_ALL", "C.UTF-8", 1) == 0; }();

thread_local std::vector<std::string>* matches = nullptr;
thread_local const char* wantedName = nullptr;
}  // namespace

std::string ScratchDirectory::DefaultBase() {
    const char* binary = std::getenv("ORD8_BINARY_DIR");
    return binary != nullptr ? binary : "/tmp";
}

ScratchDirectory::ScratchDirectory(const std::string& base) {
    static_cast<void>(kUtf8Locale);
    std::vector<char> pattern(base.begin(), base.end());
    const std::string tail = "/fs-test-XXXXXX";
    pattern.insert(pattern.end(), tail.begin(), tail.end());
    pattern.push_back('\0');
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed in " + base);
    path_ = pattern.data();
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
    struct stat main {
    }, other{};
    if (stat(ScratchDirectory::DefaultBase().c_str(), &main) != 0) return "";
    if (stat("/dev/shm", &other) != 0 || !S_ISDIR(other.st_mode)) return "";
    return main.st_dev != other.st_dev ? "/dev/shm" : "";
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

CurrentDirectoryGuard::CurrentDirectoryGuard() {
    char buffer[PATH_MAX];
    if (getcwd(buffer, sizeof buffer) != nullptr) saved_ = buffer;
}

CurrentDirectoryGuard::~CurrentDirectoryGuard() {
    if (!saved_.empty()) static_cast<void>(chdir(saved_.c_str()));
}

EnvironmentGuard::EnvironmentGuard(const char* name, const char* value) : name_(name) {
    if (const char* old = std::getenv(name)) {
        wasSet_ = true;
        saved_ = old;
    }
    if (value != nullptr)
        setenv(name, value, 1);
    else
        unsetenv(name);
}

EnvironmentGuard::~EnvironmentGuard() {
    if (wasSet_)
        setenv(name_.c_str(), saved_.c_str(), 1);
    else
        unsetenv(name_.c_str());
}

stdx::u16string U16(const std::string& utf8) {
    return stdx::from_multibyte(stdx::mbstring(utf8.data(), utf8.size()));
}

std::string Utf8(const stdx::u16string& text) {
    const stdx::mbstring bytes = stdx::to_multibyte(text);
    return std::string(bytes.data(), bytes.size());
}

bool Exists(const std::string& path) {
    struct stat status;
    return lstat(path.c_str(), &status) == 0;
}

struct stat StatOf(const std::string& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) status.st_mode = 0;
    return status;
}

void WriteText(const std::string& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << bytes;
}

std::string ReadText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream content;
    content << in.rdbuf();
    return content.str();
}

std::vector<std::string> EntriesOf(const std::string& directory) {
    std::vector<std::string> names;
    if (DIR* stream = opendir(directory.c_str())) {
        while (const dirent* entry = readdir(stream)) {
            if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
                names.push_back(entry->d_name);
        }
        closedir(stream);
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<std::string> FindByName(const std::string& root, const std::string& name) {
    std::vector<std::string> found;
    matches = &found;
    wantedName = name.c_str();
    nftw(
        root.c_str(),
        [](const char* entry, const struct stat*, int, FTW* where) {
            if (std::strcmp(entry + where->base, wantedName) == 0) matches->push_back(entry);
            return 0;
        },
        16, FTW_PHYS);
    matches = nullptr;
    return found;
}
