#include "fs/tree_copy.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <vector>

#include "fs/tree_removal.h"
#include "fs/tree_walk.h"

namespace fsdetail {
namespace {

constexpr std::size_t kCopyBufferSize = 256 * 1024;

// Whole seconds, as everywhere in this layer: FileTime values carry no fraction either.
struct WholeSecondTimes {
    timespec values[2];
    explicit WholeSecondTimes(const struct stat& status)
        : values{{status.st_atime, 0}, {status.st_mtime, 0}} {}
};

// Keeps the first failure: the later ones are usually its consequences.
int FirstOf(int first, int second) { return first != 0 ? first : second; }

int WriteAll(int fd, const char* data, std::size_t size) {
    while (size > 0) {
        const ssize_t written = write(fd, data, size);
        if (written < 0) {
            if (errno == EINTR) continue;
            return errno;
        }
        data += written;
        size -= static_cast<std::size_t>(written);
    }
    return 0;
}

int CopyBytes(int in, int out) {
    std::unique_ptr<char[]> buffer(new char[kCopyBufferSize]);
    for (;;) {
        const ssize_t got = read(in, buffer.get(), kCopyBufferSize);
        if (got == 0) return 0;
        if (got < 0) {
            if (errno == EINTR) continue;
            return errno;
        }
        if (const int error = WriteAll(out, buffer.get(), static_cast<std::size_t>(got)))
            return error;
    }
}

int CopyRegularFile(int fromFd, const char* from, int toFd, const char* to) {
    // Non-blocking so that a pipe swapped in since the walk looked cannot hang the open.
    const int in = openat(fromFd, from, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (in < 0) return errno;
    struct stat status;
    const int statError = fstat(in, &status) != 0 ? errno : S_ISREG(status.st_mode) ? 0 : ENOTSUP;
    if (statError != 0) {
        close(in);
        return statError;
    }
    // Private until the permission bits are copied at the end.
    const int out = openat(toFd, to, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (out < 0) {
        const int error = errno;
        close(in);
        return error;
    }
    int error = CopyBytes(in, out);
    if (error == 0 && fchmod(out, status.st_mode & 07777) != 0) error = errno;
    if (error == 0 && futimens(out, WholeSecondTimes(status).values) != 0) error = errno;
    // close() can report a delayed write failure (network volumes); it counts.
    if (close(out) != 0) error = FirstOf(error, errno);
    close(in);
    if (error != 0) unlinkat(toFd, to, 0);
    return error;
}

int CopySymbolicLink(int fromFd, const char* from, int toFd, const char* to,
                     const struct stat& status) {
    std::vector<char> target(static_cast<std::size_t>(status.st_size) + 1);
    for (;;) {
        const ssize_t length = readlinkat(fromFd, from, target.data(), target.size());
        if (length < 0) return errno;
        if (static_cast<std::size_t>(length) < target.size()) {
            target[static_cast<std::size_t>(length)] = '\0';
            break;
        }
        target.resize(target.size() * 2);  // the link changed size since lstat
    }
    if (symlinkat(target.data(), toFd, to) != 0) return errno;
    // Not every system can set a link's own times; the link itself is what matters.
    utimensat(toFd, to, WholeSecondTimes(status).values, AT_SYMLINK_NOFOLLOW);
    return 0;
}

// Builds the copy beside the walk, holding one descriptor of its own: the directory of
// the copy that matches the walk's current one.
class Copy : public TreeVisitor {
  public:
    explicit Copy(const stdx::mbstring& to) : to_(to) {}
    ~Copy() override {
        if (fd_ != AT_FDCWD) close(fd_);
    }
    Copy(const Copy&) = delete;
    Copy& operator=(const Copy&) = delete;

    bool MadeRoot() const { return madeRoot_; }

    int VisitEntry(int directoryFd, const char* name, const struct stat& status) override {
        if (S_ISREG(status.st_mode))
            return CopyRegularFile(directoryFd, name, fd_, TargetName(name));
        if (S_ISLNK(status.st_mode))
            return CopySymbolicLink(directoryFd, name, fd_, TargetName(name), status);
        return ENOTSUP;  // devices, pipes, sockets, and directories the walk does not enter
    }

    int EnterDirectory(const char* name, const struct stat&) override {
        // Owner-writable while filling it, whatever the source's bits say.
        if (mkdirat(fd_, TargetName(name), 0700) != 0) return errno;
        madeRoot_ = true;
        struct stat made;
        const int fd = OpenDirectoryAt(fd_, TargetName(name), made);
        if (fd < 0) return errno;
        if (fd_ != AT_FDCWD) close(fd_);
        fd_ = fd;
        made_.push_back(made);
        return 0;
    }

    int LeaveDirectory(int, const char*, const struct stat& status) override {
        made_.pop_back();
        int parent = AT_FDCWD;
        // Climbed first: the copied bits may deny the search that ".." needs.
        if (!made_.empty() && (parent = OpenParent(fd_, made_.back())) < 0) return errno;
        int error = fchmod(fd_, status.st_mode & 07777) != 0 ? errno : 0;
        // Times last: adding the entries changed the modification time.
        if (error == 0 && futimens(fd_, WholeSecondTimes(status).values) != 0) error = errno;
        close(fd_);
        fd_ = parent;
        return error;
    }

  private:
    // The top of the copy has its own name; below it the names are the source's.
    const char* TargetName(const char* name) const { return made_.empty() ? to_.c_str() : name; }

    const stdx::mbstring to_;
    int fd_ = AT_FDCWD;              // the copy's current directory; AT_FDCWD above the top
    std::vector<struct stat> made_;  // the copy's directories from the top down
    bool madeRoot_ = false;
};

}  // namespace

int CopyTree(const stdx::mbstring& from, const stdx::mbstring& to) {
    int error = 0;
    bool madeRoot = false;
    {
        Copy copy(to);
        error = WalkTree(AT_FDCWD, from.c_str(), copy, OnFailure::kStop);
        madeRoot = copy.MadeRoot();
    }
    // A directory the copy made is removed whole; a file removes itself on failure.
    if (error != 0 && madeRoot) RemoveTree(to);
    return error;
}

}  // namespace fsdetail
