// Internal to fs/: the one walk over a directory tree, shared by removal, copying and the
// installer's restore of a backup folder (install/pass_undo.cpp).
// It holds a bounded number of descriptors however deep the tree is: only the current
// directory stays open, each directory's names are read in full when it is entered,
// and the way back up is its "..", checked against the device and inode the walk came
// down from, so a directory moved elsewhere meanwhile ends the walk instead of letting
// it go on outside the tree. No link is ever followed, and the walk never enters
// another file system: a directory on another device is handed over as an entry.
// Any thread; a visitor serves one walk at a time.
#pragma once

#include <sys/stat.h>

namespace fsdetail {

// Each call answers 0 or an errno value.
class TreeVisitor {
  public:
    virtual ~TreeVisitor() = default;
    // `name` in `directoryFd` is not walked into: not a directory, a directory on
    // another file system, or one that could not be opened or listed.
    virtual int VisitEntry(int directoryFd, const char* name, const struct stat& status) = 0;
    // The walk is about to go into the directory `name`.
    virtual int EnterDirectory(const char* name, const struct stat& status) = 0;
    // Everything below `name` has been visited; `directoryFd` holds it.
    virtual int LeaveDirectory(int directoryFd, const char* name, const struct stat& status) = 0;
};

enum class OnFailure {
    kStop,      // end the walk at the first failure
    kContinue,  // go on with what can still be reached; an entry gone meanwhile is no failure
};

// Visits `name` in `parentFd` (AT_FDCWD for a path) and, when it is a directory,
// everything below it, children before their directory's LeaveDirectory. Returns the
// errno value of the first failure, or 0. A directory that is no longer where the walk
// left it always ends the walk (ESTALE).
int WalkTree(int parentFd, const char* name, TreeVisitor& visitor, OnFailure onFailure);

// Opens the directory `name` in `parentFd` without following a link, filling `status`
// from the open directory. -1 with errno set on failure.
int OpenDirectoryAt(int parentFd, const char* name, struct stat& status);

// Opens the parent of the directory open as `fd`, provided it is the directory
// `expected` describes (same device and inode); -1 with errno (ESTALE for another one).
int OpenParent(int fd, const struct stat& expected);

}  // namespace fsdetail
