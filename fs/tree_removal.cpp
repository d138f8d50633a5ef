#include "fs/tree_removal.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <vector>

#include "fs/path_text.h"

namespace fsdetail {
namespace {

int RemoveEntryAt(int parentFd, const char* name);

bool IsDotOrDotDot(const char* name) {
    return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

// Works on descriptors (openat/unlinkat with O_NOFOLLOW) so that a directory swapped
// for a link while we walk cannot redirect the removal elsewhere.
int RemoveContents(int directoryFd) {
    DIR* stream = fdopendir(directoryFd);
    if (stream == nullptr) {
        const int error = errno;
        close(directoryFd);
        return error;
    }
    // Names are collected first: removing entries while readdir is still walking the
    // same directory may skip some on certain file systems.
    std::vector<stdx::mbstring> names;
    while (const dirent* entry = readdir(stream)) {
        if (!IsDotOrDotDot(entry->d_name)) names.push_back(stdx::mbstring(entry->d_name));
    }
    int firstError = 0;
    for (const stdx::mbstring& name : names) {
        const int error = RemoveEntryAt(dirfd(stream), name.c_str());
        if (firstError == 0) firstError = error;
    }
    closedir(stream);
    return firstError;
}

int RemoveEntryAt(int parentFd, const char* name) {
    struct stat status;
    if (fstatat(parentFd, name, &status, AT_SYMLINK_NOFOLLOW) != 0)
        return errno == ENOENT ? 0 : errno;
    if (!S_ISDIR(status.st_mode)) {
        if (unlinkat(parentFd, name, 0) == 0 || errno == ENOENT) return 0;
        return errno;
    }
    int firstError = 0;
    const int fd = openat(parentFd, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0)
        firstError = errno;
    else
        firstError = RemoveContents(fd);
    if (unlinkat(parentFd, name, AT_REMOVEDIR) != 0 && errno != ENOENT && firstError == 0)
        firstError = errno;
    return firstError;
}

}  // namespace

int RemoveTree(const stdx::mbstring& path) {
    const stdx::mbstring trimmed = WithoutTrailingSlashes(path);
    const stdx::mbstring last = LastComponentOf(trimmed);
    if (trimmed.empty() || trimmed == "/" || last == "." || last == "..") return EINVAL;
    return RemoveEntryAt(AT_FDCWD, trimmed.c_str());
}

}  // namespace fsdetail
