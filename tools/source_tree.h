// Finds the files a kit is packed from: every regular file below a directory, at any
// depth, in a fixed order so that the same tree always gives the same kit. Reads only
// directory entries and file status, never file contents; follows no symbolic link.
// Safe from any thread (no shared state).
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

namespace kittool {

struct SourceFile {
    std::string relative_path;  // below the root, components joined with '/'
    std::string full_path;      // root + '/' + relative_path, for opening
    std::uint64_t size = 0;
    std::int64_t modified_seconds = 0;  // Unix time, whole seconds
};

struct TreeListing {
    std::vector<SourceFile> files;     // sorted by relative_path, byte by byte
    std::vector<std::string> skipped;  // relative paths of links, devices and the like
};

// Lists `root`. A file that is the same file as `exclude_path` (when that exists) is
// left out, so a kit written into the tree it is packed from never packs itself.
// False with `error` when the root or a directory below it cannot be read.
bool list_source_tree(const std::string& root, const std::string& exclude_path,
                      TreeListing& listing, std::string& error);

}  // namespace kittool
