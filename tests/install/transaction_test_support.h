// What the transaction and recovery tests share: a templates directory filled with the
// user's files, a private temporary directory, and a snapshot of a tree that the
// "nothing was lost" checks compare.
#pragma once

#include <fcntl.h>

#include <map>
#include <string>
#include <tuple>

#include "install/install_transaction.h"
#include "tests/support/test_support.h"

// A file's contents or a link's target, the mode, and a file's modification time (a
// folder's changes with its entries), by path relative to the root.
using Tree = std::map<std::string, std::tuple<std::string, mode_t, time_t>>;

inline Tree Snapshot(const std::string& root) {
    Tree tree;
    std::error_code missing;
    for (auto it = std::filesystem::recursive_directory_iterator(root, missing);
         it != std::filesystem::recursive_directory_iterator(); ++it) {
        const std::string path = it->path().string();
        const struct stat status = StatOf(path);
        const std::string bytes = S_ISREG(status.st_mode) ? ReadText(path)
                                  : S_ISLNK(status.st_mode)
                                      ? std::filesystem::read_symlink(path).string()
                                      : "";
        tree[path.substr(root.size())] = {bytes, status.st_mode,
                                          S_ISREG(status.st_mode) ? status.st_mtime : 0};
    }
    return tree;
}

// A scratch folder holding "templates" with the user's files (odd modes, old times, a
// link, the hostile name), "tmp" as TMPDIR and "journals".
struct UserTemplates {
    UserTemplates() {
        std::filesystem::create_directories(tmp);
        for (const auto& [name, mode] : kFiles) {
            WriteText(templates + "/" + name, "original " + name);
            chmod((templates + "/" + name).c_str(), mode);
            const timespec times[2] = {{1300000000, 0}, {1300000000, 0}};
            utimensat(AT_FDCWD, (templates + "/" + name).c_str(), times, 0);
        }
        std::filesystem::create_symlink("a.dt", templates + "/link.dt");
    }
    stdx::u16string Target() const { return U16(templates + "/"); }
    stdx::u16string In(const std::string& name) const { return U16(templates + "/" + name); }

    inline static const std::pair<std::string, mode_t> kFiles[] = {
        {"a.dt", 0640}, {"sub/" + kHostile, 0600}, {"sub/deep/c.dt", 0755}};
    ScratchDirectory scratch;
    const std::string templates = scratch / "templates", tmp = scratch / "tmp";
    const std::string journals = scratch / "journals";
    ScopedEnvironment tmpdir{"TMPDIR", tmp};
};

// What the tests' passes install: three of the user's files replaced (one a link), two
// new ones, one in new folders.
inline const std::string kKitNames[] = {"a.dt", "sub/" + kHostile, "link.dt", "new.dt",
                                        "made/here/" + kHostile};

// Writes a file the way the pass does: backed up, noted, then written.
inline ResultCode Install(InstallTransaction& transaction, const stdx::u16string& path,
                          const std::string& bytes) {
    const ResultCode backup = transaction.BackupFile(path);
    if (backup != kOk && backup != kFileNotFound) return backup;
    const stdx::u16string folder = path.substr(0, path.rfind(u'/'));
    if (const ResultCode code = transaction.CreateDirectoryTree(folder)) return code;
    if (const ResultCode code = transaction.AddCreatedFile(path)) return code;
    WriteText(Utf8(path), bytes);
    return kOk;
}
