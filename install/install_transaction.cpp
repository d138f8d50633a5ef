#include "install/install_transaction.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "fs/file_system.h"
#include "install/directory_lock.h"
#include "install/pass_journal.h"
#include "install/pass_undo.h"

namespace {

// Long enough for a pass that is ending to let go; short enough to answer the user.
constexpr std::chrono::milliseconds kLockWait(2000);

// Far more than any temporary directory holds; only ends a hopeless search.
constexpr int kMaxBackupNumber = 1000000;

bool IsDirectory(const stdx::mbstring& path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool StartsWith(const stdx::u16string& text, const stdx::u16string& prefix) {
    return text.size() >= prefix.size() && text.substr(0, prefix.size()) == prefix;
}

// The text before the last "/", or the whole path when there is none.
stdx::u16string FolderOf(const stdx::u16string& path) {
    const stdx::u16string::size_type slash = path.rfind(u'/');
    return slash == stdx::u16string::npos ? path : path.substr(0, slash);
}

// The temporary directory is shared with other users: the folder is made exclusively
// (an existing name is never taken over) and readable by its owner only.
ResultCode MakeBackupFolder(stdx::u16string& backupDirectory) {
    stdx::u16string base;
    FileSystem::GetTempDirectory(base);
    for (int number = 0; number < kMaxBackupNumber; ++number) {
        const stdx::u16string candidate =
            base + u"o8stp" + stdx::integer_to_text<stdx::u16string>(number, 10);
        const std::optional<stdx::mbstring> path = FileSystem::ToSystemPath(candidate);
        if (!path) return kInvalidParameter;
        if (mkdir(path->c_str(), 0700) == 0) {
            backupDirectory = candidate + u"/";
            return kOk;
        }
        if (errno != EEXIST) return errno == ENOENT ? kPathNotFound : kInvalidParameter;
    }
    return kAlreadyExists;
}

}  // namespace

InstallTransaction::InstallTransaction(InstallProcessData* processData,
                                       const stdx::u16string& journalFolder)
    : processData(processData), journalFolder_(journalFolder) {}

InstallTransaction::~InstallTransaction() { EndPass(false); }

ResultCode InstallTransaction::Begin(const stdx::u16string& targetDirectory) {
    if (open_) return kInvalidParameter;
    records.emplace_back();
    TransactionRecord& record = records.back();
    if (targetDirectory.empty()) return kOk;
    if (!journal::IsCleanAbsolutePath(targetDirectory)) return kInvalidParameter;
    record.targetDirectory = targetDirectory;
    if (record.targetDirectory.back() != u'/') record.targetDirectory.push_back(u'/');
    open_ = true;
    passFiles_.clear();
    knownDirectories_.clear();
    vacantPath_.clear();

    ResultCode code = kOk;
    if (!journalFolder_.empty())
        code = PassJournal::Create(journalFolder_, record.targetDirectory, journal_);
    if (code == kOk) code = CreateDirectoryTree(record.targetDirectory);
    if (code == kOk) code = LockDirectory(record.targetDirectory, kLockWait, targetLock_);
    stdx::u16string backup;
    if (code == kOk) code = MakeBackupFolder(backup);
    if (code == kOk && (code = Note(journal::kBackupFolder, backup)) != kOk) {
        if (const auto path = FileSystem::ToSystemPath(backup)) rmdir(path->c_str());
    }
    if (code == kOk) record.backupDirectory = backup;
    if (code != kOk) {
        UndoReport report;
        UndoPass(record, false, report);
        record.createdDirectories.clear();
        record.backupDirectory.clear();
        EndPass(true);
    }
    return code;
}

ResultCode InstallTransaction::CreateDirectoryTree(const stdx::u16string& path) {
    if (path.empty()) return kOk;
    if (open_ && knownDirectories_.count(path) != 0) return kOk;
    const std::optional<stdx::mbstring> whole = FileSystem::ToSystemPath(path);
    if (!whole) return kPathNotFound;
    // Asked once per installed file: an existing folder must cost at most one stat.
    if (IsDirectory(*whole)) {
        if (open_) knownDirectories_.insert(path);
        return kOk;
    }
    // Each component in turn, outermost first, so a rollback can remove them innermost
    // first; one that existed before is never recorded.
    for (stdx::u16string::size_type end = 1; end <= path.size(); ++end) {
        if (end < path.size() && (path[end] != u'/' || path[end - 1] == u'/')) continue;
        if (end == path.size() && path[end - 1] == u'/') break;
        const stdx::u16string component = path.substr(0, end);
        const std::optional<stdx::mbstring> system = FileSystem::ToSystemPath(component);
        if (!system) return kPathNotFound;
        if (IsDirectory(*system)) continue;
        if (open_) {
            if (const ResultCode code = Note(journal::kDirectory, component)) return code;
        }
        if (mkdir(system->c_str(), 0777) != 0) {
            // Made meanwhile by someone else: theirs, not ours to remove.
            if (errno == EEXIST && IsDirectory(*system)) {
                vacantPath_.clear();
                continue;
            }
            return kPathNotFound;
        }
        if (open_) records.back().createdDirectories.push_back(component);
        // Only the folders leading to it leave the vacant path vacant.
        if (!StartsWith(vacantPath_, component + u"/")) vacantPath_.clear();
    }
    if (open_) knownDirectories_.insert(path);
    return kOk;
}

ResultCode InstallTransaction::CreateBackupDirectory(const stdx::u16string& path) {
    if (path.empty()) return kOk;
    // Everything below the backup folder goes with it: nothing to record.
    return FileSystem::CreateDirectory(path) == kOk ? kOk : kPathNotFound;
}

ResultCode InstallTransaction::BackupFile(const stdx::u16string& path) {
    vacantPath_.clear();
    if (!open_) return kInvalidParameter;
    TransactionRecord& record = records.back();
    if (record.backupDirectory.empty() || path.size() <= record.targetDirectory.size() ||
        !StartsWith(path, record.targetDirectory) || !journal::IsCleanAbsolutePath(path))
        return kInvalidParameter;
    // The pass's own file is no original, and moving it would overwrite the backup.
    if (passFiles_.count(path) != 0) return kFileNotFound;
    const std::optional<stdx::mbstring> system = FileSystem::ToSystemPath(path);
    if (!system) return kInvalidParameter;
    struct stat status;
    if (lstat(system->c_str(), &status) != 0) {
        if (errno != ENOENT) return kInvalidParameter;
        vacantPath_ = path;
        return kFileNotFound;
    }
    // A link is moved as a link, and only when it leads to a file. A folder of the
    // user's is never moved: inside the backup folder it would go at the commit.
    if (S_ISLNK(status.st_mode) && stat(system->c_str(), &status) != 0) return kInvalidParameter;
    if (!S_ISREG(status.st_mode)) return kInvalidParameter;

    const stdx::u16string backupPath =
        record.backupDirectory + path.substr(record.targetDirectory.size());
    if (CreateBackupDirectory(FolderOf(backupPath)) != kOk) return kInvalidParameter;
    if (const ResultCode code = Note(journal::kBackedUp, path)) return code;
    record.backedUpFiles.push_back(path);
    passFiles_.insert(path);
    return FileSystem::MoveFile(path, backupPath) == kOk ? kOk : kInvalidParameter;
}

ResultCode InstallTransaction::AddCreatedFile(const stdx::u16string& path) {
    if (!open_) return kInvalidParameter;
    TransactionRecord& record = records.back();
    if (path.size() <= record.targetDirectory.size() || !StartsWith(path, record.targetDirectory) ||
        !journal::IsCleanAbsolutePath(path))
        return kInvalidParameter;
    if (passFiles_.count(path) != 0) return kOk;
    const bool seenVacant = path == vacantPath_;
    vacantPath_.clear();
    if (!seenVacant) {
        const std::optional<stdx::mbstring> system = FileSystem::ToSystemPath(path);
        if (!system) return kInvalidParameter;
        struct stat status;
        if (lstat(system->c_str(), &status) == 0) return kAlreadyExists;
    }
    if (const ResultCode code = Note(journal::kCreatedFile, path)) return code;
    record.createdFiles.push_back(path);
    passFiles_.insert(path);
    return kOk;
}

ResultCode InstallTransaction::DeleteTree(const stdx::u16string& directory) {
    vacantPath_.clear();
    if (!directory.empty()) FileSystem::DeleteDirectory(directory);
    return kOk;
}

ResultCode InstallTransaction::Commit() {
    if (!open_) return kOk;
    // Without its commit entry the journal must go first: recovering it would restore
    // originals the commit is about to delete.
    if (Note(journal::kCommitted, u"") != kOk && journal_) journal_->Remove();
    DeleteTree(records.back().backupDirectory);
    EndPass(true);
    return kOk;
}

void InstallTransaction::RestoreTree(const stdx::u16string& targetDirectory,
                                     const stdx::u16string& backupDirectory) {
    vacantPath_.clear();
    UndoReport ignored;
    RestoreBackup(targetDirectory, backupDirectory, nullptr, false, ignored);
}

ResultCode InstallTransaction::Rollback(ResultCode code) {
    if (!open_) return code;
    UndoReport report;
    UndoPass(records.back(), false, report);
    EndPass(report.originalsBack);
    return code;
}

ResultCode InstallTransaction::Note(char kind, const stdx::u16string& path) {
    if (journal::Refusal(kind, path, records.back()) != nullptr) return kInvalidParameter;
    return journal_ ? journal_->Append(kind, path) : kOk;
}

void InstallTransaction::EndPass(bool removeJournal) {
    if (journal_ && removeJournal) journal_->Remove();
    journal_.reset();
    if (targetLock_ >= 0) close(targetLock_);
    targetLock_ = -1;
    open_ = false;
    passFiles_.clear();
    knownDirectories_.clear();
    vacantPath_.clear();
}
