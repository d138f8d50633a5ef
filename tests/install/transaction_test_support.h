// What the install tests share: a snapshot of a tree that the "nothing was lost" checks
// compare, files planted with a given time, and a templates directory filled with the
// user's files next to a private temporary directory.
#pragma once

#include <fcntl.h>

#include <map>
#include <string>
#include <tuple>

#include "install/install_transaction.h"
#include "install/recovery.h"
#include "tests/support/test_support.h"

// A file's contents or a link's target, the mode, and a file's modification time or a
// folder's inode (its time changes with its entries; a folder moved aside and made again
// is a new one), by path relative to the root.
using Tree = std::map<std::string, std::tuple<std::string, mode_t, time_t>>;

inline Tree Snapshot(const std::string& root) {
    Tree tree;
    std::error_code missing;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root, missing)) {
        const struct stat status = StatOf(entry.path());
        std::string bytes = entry.is_symlink() ? read_symlink(entry.path()).string() : "";
        if (S_ISREG(status.st_mode)) bytes = ReadText(entry.path());
        tree[entry.path().string().substr(root.size())] = {bytes, status.st_mode,
                                                           S_ISREG(status.st_mode) ? status.st_mtime
                                                           : S_ISDIR(status.st_mode) ? status.st_ino
                                                                                     : 0};
    }
    return tree;
}

inline void Plant(const std::string& path, const std::string& bytes, std::int64_t seconds,
                  mode_t mode = 0644) {
    WriteText(path, bytes);
    chmod(path.c_str(), mode);
    const timespec times[2] = {{time_t(seconds), 0}, {time_t(seconds), 0}};
    utimensat(AT_FDCWD, path.c_str(), times, 0);
}

// A scratch folder holding "templates" with the user's files (odd modes, old times, an
// empty folder, a pipe, links to a file, a folder and nothing, the hostile name), "tmp"
// as TMPDIR and "journals".
struct UserTemplates {
    UserTemplates() {
        std::filesystem::create_directories(tmp);
        for (const auto& [name, mode] : kFiles)
            Plant(At(name), "original " + name, 1300000000, mode);
        std::filesystem::create_directories(At("empty"));
        mkfifo(At("pipe").c_str(), 0600);
        for (const char* name : {"a.dt", "folder", "nowhere"})
            std::filesystem::create_symlink(name, At(std::string("to-") + name));
    }
    std::string At(const std::string& name) const { return templates + "/" + name; }
    RecoveryReport Recover(RecoveryMode how) {
        return RecoverInterruptedPasses(U16(journals), how);
    }

    inline static const std::pair<std::string, mode_t> kFiles[] = {
        {"a.dt", 0640}, {"sub/" + kHostile, 0600}, {"sub/deep/c.dt", 0755}, {"folder/in", 0644}};
    ScratchDirectory scratch;
    const std::string templates = scratch / "templates", tmp = scratch / "tmp";
    const std::string journals = scratch / "journals";
    ScopedEnvironment tmpdir{"TMPDIR", tmp};
};

// What the tests' passes install below their target: three of the user's files replaced
// (one through a link), a new one, and one in new folders inside a folder that was empty.
inline const std::string kKitNames[] = {"a.dt", "sub/" + kHostile, "to-a.dt", "new.dt",
                                        "empty/made/" + kHostile};

// Writes a file the way the pass does: backed up, its folder made, noted, then written.
inline ResultCode Install(InstallTransaction& transaction, const std::string& path) {
    ResultCode code = transaction.BackupFile(U16(path));
    if (code == kOk || code == kFileNotFound)
        code = transaction.CreateDirectoryTree(U16(path.substr(0, path.rfind('/'))));
    if (code == kOk) code = transaction.AddCreatedFile(U16(path));
    if (code == kOk) WriteText(path, "new");
    return code;
}
