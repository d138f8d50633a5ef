#include "fs/tree_walk.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

#include "text/string.h"

namespace fsdetail {
namespace {

bool SameNode(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// Names are read in full before any is acted on: changing a directory while readdir
// walks it may skip entries on some file systems.
int ListEntries(int fd, std::vector<stdx::mbstring>& names) {
    // The stream gets its own descriptor; `fd` stays the walk's.
    const int copy = fcntl(fd, F_DUPFD_CLOEXEC, 0);
    if (copy < 0) return errno;
    DIR* stream = fdopendir(copy);
    if (stream == nullptr) {
        const int error = errno;
        close(copy);
        return error;
    }
    int error = 0;
    for (;;) {
        errno = 0;
        const dirent* entry = readdir(stream);
        if (entry == nullptr) {
            error = errno;  // 0 at the end of the directory
            break;
        }
        if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
            names.push_back(stdx::mbstring(entry->d_name));
    }
    closedir(stream);
    return error;
}

class Walk {
  public:
    Walk(TreeVisitor& visitor, OnFailure onFailure) : visitor_(visitor), onFailure_(onFailure) {}
    ~Walk() {
        if (fd_ >= 0) close(fd_);
    }
    Walk(const Walk&) = delete;
    Walk& operator=(const Walk&) = delete;

    int Run(int parentFd, const char* name) {
        if (Visit(parentFd, stdx::mbstring(name))) return firstError_;
        while (!levels_.empty()) {
            Level& level = levels_.back();
            if (level.next < level.names.size()) {
                // A copy: entering a directory below grows levels_ and moves `level`.
                const stdx::mbstring entry = level.names[level.next++];
                if (Visit(fd_, entry)) break;
                continue;
            }
            const Level done = std::move(levels_.back());
            levels_.pop_back();
            int holder = parentFd;
            if (!levels_.empty()) {
                holder = OpenParent(fd_, levels_.back().status);
                if (holder < 0) {
                    Failed(errno);
                    break;  // never carry on from a place outside the tree
                }
            }
            close(fd_);
            fd_ = levels_.empty() ? -1 : holder;
            if (Failed(visitor_.LeaveDirectory(holder, done.name.c_str(), done.status))) break;
        }
        return firstError_;
    }

  private:
    struct Level {
        stdx::mbstring name;                // in its parent
        struct stat status {};              // of the directory itself
        std::vector<stdx::mbstring> names;  // its entries, read when it was entered
        std::size_t next = 0;
    };

    // Keeps the first failure: later ones are usually its consequences. True when the
    // walk must end.
    bool Failed(int error) {
        if (error == 0) return false;
        if (firstError_ == 0) firstError_ = error;
        return onFailure_ == OnFailure::kStop;
    }

    // Hands `name` in `directoryFd` to the visitor, or makes it the current directory
    // when it is one to walk into. True when the walk must end.
    bool Visit(int directoryFd, const stdx::mbstring& name) {
        struct stat status;
        if (fstatat(directoryFd, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
            return (errno != ENOENT || onFailure_ == OnFailure::kStop) && Failed(errno);
        const bool otherVolume = !levels_.empty() && status.st_dev != device_;
        if (!S_ISDIR(status.st_mode) || otherVolume)
            return Failed(visitor_.VisitEntry(directoryFd, name.c_str(), status));
        Level child{name, {}, {}, 0};
        const int fd = OpenDirectoryAt(directoryFd, name.c_str(), child.status);
        int error = fd < 0                            ? errno
                    : !SameNode(status, child.status) ? EAGAIN  // swapped since fstatat
                                                      : ListEntries(fd, child.names);
        if (error == 0) error = visitor_.EnterDirectory(name.c_str(), child.status);
        if (error != 0) {
            if (fd >= 0) close(fd);
            return Failed(error) || Failed(visitor_.VisitEntry(directoryFd, name.c_str(), status));
        }
        if (levels_.empty()) device_ = child.status.st_dev;
        // The parent's names are all read; it is reopened through ".." on the way back.
        if (fd_ >= 0) close(fd_);
        fd_ = fd;
        levels_.push_back(std::move(child));
        return false;
    }

    TreeVisitor& visitor_;
    const OnFailure onFailure_;
    int firstError_ = 0;
    int fd_ = -1;  // the directory of levels_.back(); -1 outside the tree
    dev_t device_ = 0;
    std::vector<Level> levels_;
};

}  // namespace

int WalkTree(int parentFd, const char* name, TreeVisitor& visitor, OnFailure onFailure) {
    return Walk(visitor, onFailure).Run(parentFd, name);
}

int OpenDirectoryAt(int parentFd, const char* name, struct stat& status) {
    const int fd = openat(parentFd, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0) return -1;
    if (fstat(fd, &status) != 0) {
        const int error = errno;
        close(fd);
        errno = error;
        return -1;
    }
    return fd;
}

int OpenParent(int fd, const struct stat& expected) {
    struct stat status;
    const int parent = OpenDirectoryAt(fd, "..", status);
    if (parent < 0) return -1;
    if (!SameNode(status, expected)) {
        close(parent);
        errno = ESTALE;
        return -1;
    }
    return parent;
}

}  // namespace fsdetail
