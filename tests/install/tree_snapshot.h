// A directory tree as data, to prove that an installation changed nothing, or only what
// it should: relative path -> kind, bytes (a link's target), permission bits and
// modification time. Directories carry no time: adding an entry and taking it away again
// changes it even when everything was put back. Uses nothing of the code under test.
#pragma once

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <string>
#include <tuple>

#include "tests/support/test_support.h"

namespace installtest {

struct EntryState {
    char kind = '?';    // 'f' regular file, 'd' directory, 'l' symbolic link, '?' other
    std::string bytes;  // a file's contents or a link's target
    mode_t mode = 0;    // permission bits
    time_t mtime = 0;   // 0 for directories

    bool operator==(const EntryState& other) const {
        return std::tie(kind, bytes, mode, mtime) ==
               std::tie(other.kind, other.bytes, other.mode, other.mtime);
    }
    bool operator!=(const EntryState& other) const { return !(*this == other); }
};

using TreeSnapshot = std::map<std::string, EntryState>;

// Everything below `root` (not `root` itself), links not followed; empty when missing.
inline TreeSnapshot SnapshotTree(const std::string& root) {
    TreeSnapshot tree;
    std::error_code error;
    for (auto it = std::filesystem::recursive_directory_iterator(root, error);
         !error && it != std::filesystem::recursive_directory_iterator(); it.increment(error)) {
        const std::string path = it->path().string();
        const struct stat status = StatOf(path);
        EntryState& entry = tree[path.substr(root.size() + 1)];
        entry.mode = status.st_mode & 07777;
        if (S_ISDIR(status.st_mode)) {
            entry.kind = 'd';
        } else if (S_ISLNK(status.st_mode)) {
            entry.kind = 'l';
            entry.bytes = std::filesystem::read_symlink(path, error).string();
            entry.mtime = status.st_mtime;
        } else {
            entry.kind = S_ISREG(status.st_mode) ? 'f' : '?';
            entry.bytes = ReadText(path);
            entry.mtime = status.st_mtime;
        }
    }
    return tree;
}

// "" when both are equal; otherwise one line for each path that differs.
inline std::string TreeDifferences(const TreeSnapshot& before, const TreeSnapshot& after) {
    const auto describe = [](const TreeSnapshot& tree, const std::string& path) {
        const auto found = tree.find(path);
        if (found == tree.end()) return std::string("missing");
        const EntryState& e = found->second;
        return std::string(1, e.kind) + " mode " + std::to_string(e.mode) + " time " +
               std::to_string(e.mtime) + " " + std::to_string(e.bytes.size()) + " bytes";
    };
    std::string differences;
    TreeSnapshot all = before;
    all.insert(after.begin(), after.end());
    for (const auto& [path, ignored] : all) {
        const auto was = before.find(path), is = after.find(path);
        if (was != before.end() && is != after.end() && was->second == is->second) continue;
        differences += path + ": " + describe(before, path) + " -> " + describe(after, path) + "\n";
    }
    return differences;
}

}  // namespace installtest
