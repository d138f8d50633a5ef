#include "fs/tree_removal.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "fs/path_text.h"
#include "fs/tree_walk.h"

namespace fsdetail {
namespace {

// Every removal is relative to the directory that holds the entry, so nothing reached
// through a link swapped in during the walk can be removed.
class Removal : public TreeVisitor {
  public:
    // A directory arrives here when the walk did not enter it: rmdir then removes it
    // only when empty, and never a mount point.
    int VisitEntry(int directoryFd, const char* name, const struct stat& status) override {
        if (unlinkat(directoryFd, name, S_ISDIR(status.st_mode) ? AT_REMOVEDIR : 0) == 0 ||
            errno == ENOENT)
            return 0;
        return errno;
    }
    int EnterDirectory(const char*, const struct stat&) override { return 0; }
    int LeaveDirectory(int directoryFd, const char* name, const struct stat& status) override {
        return VisitEntry(directoryFd, name, status);
    }
};

}  // namespace

int RemoveTree(const stdx::mbstring& path) {
    const stdx::mbstring trimmed = WithoutTrailingSlashes(path);
    const stdx::mbstring last = LastComponentOf(trimmed);
    if (trimmed.empty() || trimmed == "/" || last == "." || last == "..") return EINVAL;
    Removal removal;
    return WalkTree(AT_FDCWD, trimmed.c_str(), removal, OnFailure::kContinue);
}

}  // namespace fsdetail
