#include "install/pass_undo.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "fs/file_system.h"
#include "fs/tree_walk.h"
#include "text/encoding.h"

namespace {

bool Exists(const stdx::mbstring& path) {
    struct stat status;
    return lstat(path.c_str(), &status) == 0;
}

// Walks the backup folder and moves each original back. The walk hands over entries
// relative to the directory it is in; `relative_` follows it down and up.
class Restorer : public fsdetail::TreeVisitor {
  public:
    Restorer(const stdx::u16string& target, const stdx::u16string& backup,
             const std::set<stdx::mbstring>* expected, bool dryRun, UndoReport& report)
        : target_(target), backup_(backup), expected_(expected), dryRun_(dryRun), report_(report) {}

    int VisitEntry(int, const char* name, const struct stat& status) override {
        if (depth_ == 0) return Keep(backup_, "the backup folder is not a directory");
        const stdx::mbstring relative = relative_ + name;
        if (expected_ != nullptr && expected_->count(relative) == 0) return 0;
        const stdx::u16string relativeText = stdx::from_multibyte(relative);
        const stdx::u16string from = backup_ + relativeText, to = target_ + relativeText;
        // A name that does not come back whole would be moved to another place.
        const std::optional<stdx::mbstring> back = FileSystem::ToSystemPath(relativeText);
        if (!back || *back != relative) return Keep(from, "its name does not convert");
        if (S_ISDIR(status.st_mode)) return Keep(from, "a folder the walk could not enter");
        if (!dryRun_ && FileSystem::MoveFile(from, to) != kOk)
            return Keep(from, "cannot be moved back");
        report_.filesRestored.push_back(to);
        return 0;
    }
    int EnterDirectory(const char* name, const struct stat&) override {
        if (depth_++ > 0) relative_ += stdx::mbstring(name) + "/";
        return 0;
    }
    int LeaveDirectory(int, const char*, const struct stat&) override {
        if (--depth_ > 0) {
            relative_.resize(relative_.size() - 1);
            const stdx::mbstring::size_type slash = relative_.rfind('/');
            relative_.resize(slash == stdx::mbstring::npos ? 0 : slash + 1);
        }
        return 0;
    }

  private:
    int Keep(const stdx::u16string& path, const char* reason) {
        report_.leftBehind.push_back({path, reason});
        report_.originalsBack = false;
        return 0;
    }

    const stdx::u16string& target_;
    const stdx::u16string& backup_;
    const std::set<stdx::mbstring>* expected_;
    const bool dryRun_;
    UndoReport& report_;
    int depth_ = 0;
    stdx::mbstring relative_;  // of the directory being walked, ending in "/" unless empty
};

}  // namespace

bool IsOwnDirectory(const stdx::u16string& path) {
    const std::optional<stdx::mbstring> system = FileSystem::ToSystemPath(path);
    struct stat status;
    return system && lstat(system->c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == geteuid();
}

void RestoreBackup(const stdx::u16string& targetDirectory, const stdx::u16string& backupDirectory,
                   const std::set<stdx::mbstring>* expected, bool dryRun, UndoReport& report) {
    const std::optional<stdx::mbstring> backup = FileSystem::ToSystemPath(backupDirectory);
    if (!backup) return;
    Restorer restorer(targetDirectory, backupDirectory, expected, dryRun, report);
    const int error =
        fsdetail::WalkTree(AT_FDCWD, backup->c_str(), restorer, fsdetail::OnFailure::kContinue);
    if (error != 0 && error != ENOENT) {
        report.leftBehind.push_back({backupDirectory, "the backup folder could not be read whole"});
        report.originalsBack = false;
    }
}

void UndoPass(const TransactionRecord& record, bool dryRun, UndoReport& report) {
    const stdx::u16string& target = record.targetDirectory;
    report.templatesDirectory = target;
    const std::set<stdx::u16string> backedUp(record.backedUpFiles.begin(),
                                             record.backedUpFiles.end());
    for (const stdx::u16string& file : record.createdFiles) {
        // A backed-up path holds either the pass's file, which its original replaces
        // below, or the original itself: removing it could lose the only copy.
        if (backedUp.count(file) != 0) continue;
        const std::optional<stdx::mbstring> path = FileSystem::ToSystemPath(file);
        if (!path || !Exists(*path)) continue;
        if (!dryRun && unlink(path->c_str()) != 0 && errno != ENOENT) {
            report.leftBehind.push_back({file, "cannot be removed"});
            continue;
        }
        report.filesRemoved.push_back(file);
    }

    const stdx::u16string& backup = record.backupDirectory;
    bool backupUsable = !backup.empty();
    if (backupUsable && !IsOwnDirectory(backup)) {
        backupUsable = false;
        const std::optional<stdx::mbstring> path = FileSystem::ToSystemPath(backup);
        if (path && Exists(*path)) {
            report.leftBehind.push_back({backup, "the backup folder is not this user's own"});
            report.originalsBack = false;
        } else if (!backedUp.empty()) {
            report.leftBehind.push_back({backup, "the backup folder is missing"});
        }
    }
    if (backupUsable) {
        std::set<stdx::mbstring> expected;
        for (const stdx::u16string& file : backedUp) {
            if (file.size() <= target.size() || file.substr(0, target.size()) != target) continue;
            if (const auto relative = FileSystem::ToSystemPath(file.substr(target.size())))
                expected.insert(*relative);
        }
        RestoreBackup(target, backup, &expected, dryRun, report);
    }

    for (auto directory = record.createdDirectories.rbegin();
         directory != record.createdDirectories.rend(); ++directory) {
        const std::optional<stdx::mbstring> path = FileSystem::ToSystemPath(*directory);
        if (!path || !Exists(*path)) continue;
        // rmdir removes only an empty directory: whatever else is in it stays.
        if (!dryRun && rmdir(path->c_str()) != 0) {
            report.leftBehind.push_back({*directory, "a folder the pass made is not empty"});
            continue;
        }
        report.directoriesRemoved.push_back(*directory);
    }

    if (!dryRun && backupUsable && report.originalsBack) FileSystem::DeleteDirectory(backup);
}
