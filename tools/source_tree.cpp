#include "tools/source_tree.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace kittool {

namespace {

struct Identity {
    bool valid = false;
    dev_t device = 0;
    ino_t inode = 0;
};

Identity identity_of(const std::string& path) {
    Identity id;
    struct stat status;
    if (!path.empty() && stat(path.c_str(), &status) == 0) {
        id.valid = true;
        id.device = status.st_dev;
        id.inode = status.st_ino;
    }
    return id;
}

std::string join(const std::string& left, const std::string& right) {
    if (left.empty()) return right;
    return left + '/' + right;
}

}  // namespace

bool list_source_tree(const std::string& root, const std::string& exclude_path,
                      TreeListing& listing, std::string& error) {
    struct stat root_status;
    if (stat(root.c_str(), &root_status) != 0) {
        error = "cannot read directory '" + root + "': " + std::strerror(errno);
        return false;
    }
    if (!S_ISDIR(root_status.st_mode)) {
        error = "'" + root + "' is not a directory";
        return false;
    }
    const Identity excluded = identity_of(exclude_path);

    // An explicit work list instead of recursion: a deep tree cannot exhaust the stack.
    std::vector<std::string> pending{""};
    while (!pending.empty()) {
        const std::string relative_dir = pending.back();
        pending.pop_back();
        const std::string dir_path = join(root, relative_dir);
        DIR* dir = opendir(dir_path.c_str());
        if (dir == nullptr) {
            error = "cannot read directory '" + dir_path + "': " + std::strerror(errno);
            return false;
        }
        errno = 0;
        while (const dirent* entry = readdir(dir)) {
            const std::string name = entry->d_name;
            if (name == "." || name == "..") continue;
            const std::string relative = join(relative_dir, name);
            const std::string full = join(root, relative);
            struct stat status;
            if (lstat(full.c_str(), &status) != 0) {
                error = "cannot read '" + full + "': " + std::strerror(errno);
                closedir(dir);
                return false;
            }
            if (S_ISDIR(status.st_mode)) {
                pending.push_back(relative);
            } else if (!S_ISREG(status.st_mode)) {
                listing.skipped.push_back(relative);
            } else if (!(excluded.valid && excluded.device == status.st_dev &&
                         excluded.inode == status.st_ino)) {
                SourceFile file;
                file.relative_path = relative;
                file.full_path = full;
                file.size = static_cast<std::uint64_t>(status.st_size);
                file.modified_seconds = static_cast<std::int64_t>(status.st_mtime);
                listing.files.push_back(std::move(file));
            }
            errno = 0;
        }
        const int read_error = errno;
        closedir(dir);
        if (read_error != 0) {
            error = "cannot read directory '" + dir_path + "': " + std::strerror(read_error);
            return false;
        }
    }
    std::sort(
        listing.files.begin(), listing.files.end(),
        [](const SourceFile& a, const SourceFile& b) { return a.relative_path < b.relative_path; });
    std::sort(listing.skipped.begin(), listing.skipped.end());
    return true;
}

}  // namespace kittool
