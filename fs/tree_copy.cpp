#include "fs/tree_copy.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <vector>

#include "fs/path_text.h"
#include "fs/tree_removal.h"

namespace fsdetail {
namespace {

constexpr std::size_t kCopyBufferSize = 256 * 1024;

// Whole seconds, as everywhere in this layer: FileTime values carry no fraction either.
struct WholeSecondTimes {
    timeval values[2];
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

int CopyRegularFile(const stdx::mbstring& from, const stdx::mbstring& to) {
    const int in = open(from.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
    if (in < 0) return errno;
    struct stat status;
    if (fstat(in, &status) != 0) {
        const int error = errno;
        close(in);
        return error;
    }
    // Private until the permission bits are copied at the end.
    const int out = open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (out < 0) {
        const int error = errno;
        close(in);
        return error;
    }
    int error = CopyBytes(in, out);
    if (error == 0 && fchmod(out, status.st_mode & 07777) != 0) error = errno;
    if (error == 0 && futimes(out, WholeSecondTimes(status).values) != 0) error = errno;
    // close() can report a delayed write failure (network volumes); it counts.
    if (close(out) != 0) error = FirstOf(error, errno);
    close(in);
    if (error != 0) unlink(to.c_str());
    return error;
}

int CopySymbolicLink(const stdx::mbstring& from, const stdx::mbstring& to,
                     const struct stat& status) {
    std::vector<char> target(static_cast<std::size_t>(status.st_size) + 1);
    for (;;) {
        const ssize_t length = readlink(from.c_str(), target.data(), target.size());
        if (length < 0) return errno;
        if (static_cast<std::size_t>(length) < target.size()) {
            target[static_cast<std::size_t>(length)] = '\0';
            break;
        }
        target.resize(target.size() * 2);  // the link changed size since lstat
    }
    if (symlink(target.data(), to.c_str()) != 0) return errno;
    // Not every system can set a link's own times; the link itself is what matters.
    lutimes(to.c_str(), WholeSecondTimes(status).values);
    return 0;
}

int CopyEntry(const stdx::mbstring& from, const stdx::mbstring& to);

int CopyDirectoryContents(const stdx::mbstring& from, const stdx::mbstring& to) {
    DIR* stream = opendir(from.c_str());
    if (stream == nullptr) return errno;
    int error = 0;
    errno = 0;
    while (error == 0) {
        const dirent* entry = readdir(stream);
        if (entry == nullptr) {
            error = errno;  // 0 at the end of the directory
            break;
        }
        if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0) continue;
        const stdx::mbstring name(entry->d_name);
        error = CopyEntry(JoinPath(from, name), JoinPath(to, name));
        errno = 0;
    }
    closedir(stream);
    return error;
}

int CopyDirectory(const stdx::mbstring& from, const stdx::mbstring& to, const struct stat& status) {
    // Owner-writable while filling it, whatever the source's bits say.
    if (mkdir(to.c_str(), 0700) != 0) return errno;
    int error = CopyDirectoryContents(from, to);
    if (error == 0 && chmod(to.c_str(), status.st_mode & 07777) != 0) error = errno;
    // Times last: adding the entries changed the modification time.
    if (error == 0 && utimes(to.c_str(), WholeSecondTimes(status).values) != 0) error = errno;
    if (error != 0) RemoveTree(to);
    return error;
}

int CopyEntry(const stdx::mbstring& from, const stdx::mbstring& to) {
    struct stat status;
    if (lstat(from.c_str(), &status) != 0) return errno;
    if (S_ISREG(status.st_mode)) return CopyRegularFile(from, to);
    if (S_ISDIR(status.st_mode)) return CopyDirectory(from, to, status);
    if (S_ISLNK(status.st_mode)) return CopySymbolicLink(from, to, status);
    return ENOTSUP;
}

}  // namespace

int CopyTree(const stdx::mbstring& from, const stdx::mbstring& to) { return CopyEntry(from, to); }

}  // namespace fsdetail
