// What every test module shares: a private scratch folder that also watches for file
// names run as commands, a name built to be run as one, byte-exact file access, an
// environment variable set for one scope, a file-size limit that makes writes fail part
// way, and a child process that has given up root. None of it uses the code under test,
// so a fault there cannot hide in the checks. Module headers add only what is their own.
#pragma once

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>

#include "text/encoding.h"

using Names = std::set<std::string>;

// Tests name their files with this wherever they can. It would run commands were any
// operation to hand it to a shell, and "pwned" would then appear in the current directory.
// It also holds a newline and letters beyond ASCII.
inline const std::string kHostile =
    "it's \"quoted\" $(touch pwned) `touch pwned` ;touch pwned; a\nline Žluťoučký кіт";

// Non-ASCII names need a UTF-8 locale, as the installer sets up at start.
inline const bool kUtf8Locale = setenv("LC_ALL", "C.UTF-8", 1) == 0;

inline stdx::u16string U16(const std::string& utf8) { return stdx::from_multibyte(utf8.c_str()); }
inline std::string Utf8(const stdx::u16string& text) { return stdx::to_multibyte(text).c_str(); }

// lstat; st_mode is 0 when the path is missing.
inline struct stat StatOf(const std::string& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) status.st_mode = 0;
    return status;
}

// Replaces the file, making the missing parent directories too.
inline void WriteText(const std::string& path, const std::string& bytes) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

inline std::string ReadText(const std::string& path) {  // empty when missing
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

inline Names EntriesOf(const std::string& directory) {  // empty when missing
    Names names;
    std::error_code missing;
    for (const auto& entry : std::filesystem::directory_iterator(directory, missing))
        names.insert(entry.path().filename().string());
    return names;
}

// Made under `base` (by default the current directory, in the build tree) and removed
// afterwards, checking on the way out that no file name reached a shell.
class ScratchDirectory {
  public:
    explicit ScratchDirectory(const std::string& base = std::filesystem::current_path())
        : path_(base + "/ord8-test-XXXXXX") {
        if (mkdtemp(&path_[0]) == nullptr) throw std::runtime_error("mkdtemp failed in " + base);
    }
    ~ScratchDirectory() {
        EXPECT_FALSE(std::filesystem::exists("pwned")) << "a file name was run as a command";
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;

    const std::string& path() const { return path_; }
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }

  private:
    std::string path_;
};

// Sets (or, with nullopt, unsets) an environment variable until the end of the scope.
class ScopedEnvironment {
  public:
    ScopedEnvironment(const char* name, const std::optional<std::string>& value) : name_(name) {
        if (const char* old = std::getenv(name)) saved_ = old;
        value ? setenv(name, value->c_str(), 1) : unsetenv(name);
    }
    ~ScopedEnvironment() { saved_ ? setenv(name_, saved_->c_str(), 1) : unsetenv(name_); }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

  private:
    const char* name_;
    std::optional<std::string> saved_;
};

// While alive, files cannot grow beyond `bytes`: writes past it come back short or fail
// with EFBIG instead of killing the process. It stands in for a full disk.
struct FileSizeLimit {
    explicit FileSizeLimit(rlim_t bytes) {
        getrlimit(RLIMIT_FSIZE, &saved);
        const rlimit limited = {bytes, saved.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limited);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &saved);
        std::signal(SIGXFSZ, savedHandler);
    }
    void (*savedHandler)(int) = std::signal(SIGXFSZ, SIG_IGN);
    rlimit saved{};
};

// Built with sanitizers (ORD8_SANITIZE): tests that repeat random cases run fewer rounds.
#ifdef ORD8_SANITIZED
constexpr bool kSanitizedBuild = true;
#else
constexpr bool kSanitizedBuild = false;
#endif

// The user id permission tests act as: root is not stopped by permissions.
constexpr uid_t kNobody = 65534;

// Runs `body` in a child that has become `kNobody` and answers its exit status, or -1
// when the child could not drop root or did not exit normally. Only for callers that are
// root (CI is); others skip such tests.
inline int RunAsNobody(const std::function<int()>& body) {
    const pid_t child = fork();
    if (child == 0) {
        if (setgid(kNobody) != 0 || setuid(kNobody) != 0) _exit(255);
        _exit(body());
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status)) return -1;
    return WEXITSTATUS(status) == 255 ? -1 : WEXITSTATUS(status);
}
