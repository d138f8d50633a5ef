#include "scratch_directory.h"

#include <ftw.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "text/encoding.h"

namespace {
// Paths with non-ASCII letters need a UTF-8 locale, as the installer sets up at start.
const bool kUtf8Locale = [] { return setenv("LC_ALL", "C.UTF-8", 1) == 0; }();
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
