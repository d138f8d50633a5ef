// Internal to fs/: removing a file or a whole directory tree of any depth with system
// calls (the walk of fs/tree_walk.h). A symbolic link is always removed as a link, never
// followed, so nothing outside the tree can be reached through one; a file system
// mounted inside the tree is left alone. Any thread.
#pragma once

#include "text/string.h"

namespace fsdetail {

// Removes `path` and, for a directory, everything below it. Returns 0 when nothing of
// it is left (including when it was never there), else the errno value of the first
// failure; the rest is still removed as far as possible. Refuses (EINVAL) the empty
// path, "/" and paths ending in "." or "..".
int RemoveTree(const stdx::mbstring& path);

}  // namespace fsdetail
