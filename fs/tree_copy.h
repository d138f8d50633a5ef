// Internal to fs/: copying a file, a symbolic link or a whole directory tree of any
// depth to a new name (the walk of fs/tree_walk.h), keeping bytes, permission bits and
// access/modification times (whole seconds). Used where a rename cannot cross file
// systems. Any thread.
#pragma once

#include "text/string.h"

namespace fsdetail {

// Creates `to` exclusively (EEXIST when it is already there) as a copy of `from`.
// Links are copied as links, never followed. Other kinds of entry (devices, sockets,
// pipes) and a file system mounted inside the tree are refused with ENOTSUP. Returns 0, or an errno
// value after removing everything it created, so a failure leaves no partial copy behind.
int CopyTree(const stdx::mbstring& from, const stdx::mbstring& to);

}  // namespace fsdetail
