#include "fs/file_replacement.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

namespace {

// Platform difference: on macOS fsync only hands the data to the drive, which may keep
// it in its cache; F_FULLFSYNC asks the drive to write it out (not every file system
// supports it, hence the fallback). Elsewhere fsync does both.
int FlushToStorage(int fd) {
#if defined(__APPLE__)
    if (fcntl(fd, F_FULLFSYNC) == 0) return 0;
#endif
    return fsync(fd);
}

constexpr mode_t kNewFileMode = 0644;
constexpr int kMaxLinkHops = 40;  // the usual kernel limit; more means a loop

stdx::mbstring FolderPrefix(const stdx::mbstring& path) {  // with its "/", or empty
    const std::size_t slash = path.rfind('/');
    return slash == stdx::mbstring::npos ? stdx::mbstring() : path.substr(0, slash + 1);
}

// The file that a write to `path` must replace: the end of its chain of links, which
// need not exist yet. False for a link loop or an unreadable link.
bool ResolveLinkTarget(stdx::mbstring path, stdx::mbstring& target) {
    for (int hop = 0; hop < kMaxLinkHops; ++hop) {
        struct stat status {};
        if (lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) {
            target = path;
            return true;
        }
        std::vector<char> link(static_cast<std::size_t>(status.st_size) + 2);
        const ssize_t length = readlink(path.c_str(), link.data(), link.size());
        // A link that grew since lstat may have been cut: treat it as unreadable.
        if (length < 0 || static_cast<std::size_t>(length) >= link.size()) return false;
        const stdx::mbstring next(link.data(), static_cast<std::size_t>(length));
        path = !next.empty() && next[0] == '/' ? next : FolderPrefix(path) + next;
    }
    return false;
}

}  // namespace

FileReplacement::~FileReplacement() {
    if (stream_ != nullptr) std::fclose(stream_);
    if (!temporary_.empty()) unlink(temporary_.c_str());
}

FileReplacement::Outcome FileReplacement::Begin(const stdx::mbstring& path) {
    if (path.empty() || !ResolveLinkTarget(path, target_)) return Outcome::kCannotCreate;

    mode_t mode = kNewFileMode;
    struct stat status {};
    if (stat(target_.c_str(), &status) == 0) {
        // Replacing a file the user may not write would override the protection, so it
        // is refused as the plain open for writing would be.
        if (!S_ISREG(status.st_mode) || faccessat(AT_FDCWD, target_.c_str(), W_OK, AT_EACCESS) != 0)
            return Outcome::kCannotCreate;
        mode = status.st_mode & 07777;
    }

    const std::size_t slash = target_.rfind('/');
    const std::size_t nameStart = slash == stdx::mbstring::npos ? 0 : slash + 1;
    stdx::mbstring pattern = target_.substr(0, nameStart);
    pattern += ".";
    pattern += target_.substr(nameStart);
    pattern += ".XXXXXX";
    std::vector<char> name(pattern.c_str(), pattern.c_str() + pattern.size() + 1);
    // The installer runs shell commands; they must not inherit the descriptor.
    const int fd = mkostemp(name.data(), O_CLOEXEC);
    if (fd < 0) return Outcome::kCannotCreate;
    temporary_.assign(name.data());
    if (fchmod(fd, mode) != 0) {
        close(fd);
        return Outcome::kCannotCreate;
    }
    stream_ = fdopen(fd, "w");
    if (stream_ == nullptr) {
        close(fd);
        return Outcome::kCannotCreate;
    }
    return Outcome::kDone;
}

FileReplacement::Outcome FileReplacement::Commit() {
    if (stream_ == nullptr) return Outcome::kCannotCreate;
    // Errors of buffered writes show only when the buffer goes out, so each step counts.
    const bool flushed = std::fflush(stream_) == 0 && std::ferror(stream_) == 0 &&
                         FlushToStorage(fileno(stream_)) == 0;
    const bool closed = std::fclose(stream_) == 0;
    stream_ = nullptr;
    if (!flushed || !closed) return Outcome::kCannotWrite;

    if (rename(temporary_.c_str(), target_.c_str()) != 0) return Outcome::kCannotCreate;
    temporary_.clear();

    // Make the rename itself durable; the new contents are already safe if this fails.
    const stdx::mbstring folder = FolderPrefix(target_);
    const int dirFd = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY);
    if (dirFd >= 0) {
        FlushToStorage(dirFd);
        close(dirFd);
    }
    return Outcome::kDone;
}
