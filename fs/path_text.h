// Internal to fs/: the few pieces of path arithmetic the operations share, on the bytes
// handed to system calls (FileSystem::ToSystemPath makes them). Pure functions, any thread.
#pragma once

#include "text/string.h"

namespace fsdetail {

// `path` without trailing '/' characters; "/" and "" stay as they are.
stdx::mbstring WithoutTrailingSlashes(const stdx::mbstring& path);

// The directory holding the last component of `path` ("." when there is no '/', "/" for
// entries of the root). Trailing slashes of `path` are ignored.
stdx::mbstring ParentOf(const stdx::mbstring& path);

// The last component of `path`, trailing slashes ignored.
stdx::mbstring LastComponentOf(const stdx::mbstring& path);

// directory + "/" + name, without doubling a slash the directory already ends in.
stdx::mbstring JoinPath(const stdx::mbstring& directory, const stdx::mbstring& name);

}  // namespace fsdetail
