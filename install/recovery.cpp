#include "install/recovery.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "fs/file_system.h"
#include "install/directory_lock.h"
#include "install/pass_journal.h"
#include "text/encoding.h"

namespace {

// A kit of a hundred thousand files journals a few megabytes.
constexpr off_t kMaxJournalBytes = 64 << 20;

using Outcome = JournalRecovery::Outcome;

class Descriptor {
  public:
    explicit Descriptor(int fd = -1) : fd_(fd) {}
    ~Descriptor() {
        if (fd_ >= 0) close(fd_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int& get() { return fd_; }

  private:
    int fd_;
};

bool IsJournalName(const char* name) {
    const std::size_t prefix = std::strlen(journal::kFilePrefix);
    return std::strncmp(name, journal::kFilePrefix, prefix) == 0 && std::strlen(name) == prefix + 6;
}

bool ReadAll(int fd, std::vector<std::uint8_t>& bytes) {
    for (std::size_t done = 0; done < bytes.size();) {
        const ssize_t got = read(fd, bytes.data() + done, bytes.size() - done);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return false;
        done += static_cast<std::size_t>(got);
    }
    return true;
}

Outcome Recover(const stdx::mbstring& path, bool dryRun, JournalRecovery& result) {
    // Not following a link: a journal is trusted only as this user's own file.
    Descriptor file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status;
    if (file.get() < 0) return errno == ELOOP ? Outcome::kUntrusted : Outcome::kNotAJournal;
    if (fstat(file.get(), &status) != 0) return Outcome::kNotAJournal;
    if (!S_ISREG(status.st_mode) || status.st_uid != geteuid()) return Outcome::kUntrusted;
    if (flock(file.get(), LOCK_EX | LOCK_NB) != 0) return Outcome::kPassRunning;
    if (status.st_size > kMaxJournalBytes) return Outcome::kNotAJournal;
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(status.st_size));
    if (!ReadAll(file.get(), bytes)) return Outcome::kNotAJournal;

    const journal::Contents contents = journal::Parse(bytes.data(), bytes.size());
    result.damage = contents.damage;
    const TransactionRecord& record = contents.record;
    // Shorter than its header, or the header alone: the pass died before its first
    // change (the header and the templates entry are one write).
    const bool nothingDone = bytes.size() < sizeof journal::kMagic ||
                             (contents.hasHeader && record.targetDirectory.empty());
    if (!contents.hasHeader && !nothingDone) return Outcome::kNotAJournal;
    Outcome outcome = Outcome::kNothingDone;
    if (!nothingDone) {
        result.undo.templatesDirectory = record.targetDirectory;
        const std::optional<stdx::mbstring> templates =
            FileSystem::ToSystemPath(record.targetDirectory);
        struct stat folder;
        const bool exists =
            templates && stat(templates->c_str(), &folder) == 0 && S_ISDIR(folder.st_mode);
        // A pass killed while making the templates directory left only folders of its
        // own on the way to it; any other missing directory may be on a volume that is
        // not mounted now.
        const std::vector<stdx::u16string>& made = record.createdDirectories;
        const stdx::u16string target =
            record.targetDirectory.substr(0, record.targetDirectory.size() - 1);
        if (!exists && (std::find(made.begin(), made.end(), target) == made.end() ||
                        !record.backedUpFiles.empty()))
            return Outcome::kTemplatesMissing;
        Descriptor lock;
        const ResultCode code =
            exists ? LockDirectory(record.targetDirectory, std::chrono::milliseconds(0), lock.get())
                   : kOk;
        if (code != kOk)
            return code == kInUse ? Outcome::kTemplatesInUse : Outcome::kTemplatesMissing;
        if (contents.committed) {
            outcome = Outcome::kCommitFinished;
            if (!dryRun && IsOwnDirectory(record.backupDirectory))
                FileSystem::DeleteDirectory(record.backupDirectory);
        } else {
            outcome = Outcome::kUndone;
            UndoPass(record, dryRun, result.undo);
            // An original left in the backup folder keeps the journal for the next try.
            if (!result.undo.originalsBack) return outcome;
        }
    }
    if (!dryRun) result.journalRemoved = unlink(path.c_str()) == 0;
    return outcome;
}

}  // namespace

RecoveryReport RecoverInterruptedPasses(const stdx::u16string& journalFolder, RecoveryMode mode) {
    RecoveryReport report;
    const std::optional<stdx::mbstring> folder = FileSystem::ToSystemPath(journalFolder);
    DIR* stream = folder ? opendir(folder->c_str()) : nullptr;
    if (stream == nullptr) return report;
    std::vector<stdx::mbstring> names;
    while (const dirent* entry = readdir(stream))
        if (IsJournalName(entry->d_name)) names.push_back(stdx::mbstring(entry->d_name));
    closedir(stream);
    std::sort(names.begin(), names.end());

    stdx::mbstring base = *folder;
    if (!base.empty() && base.back() != '/') base.push_back('/');
    for (const stdx::mbstring& name : names) {
        JournalRecovery result;
        result.journal = stdx::from_multibyte(base + name);
        result.outcome = Recover(base + name, mode == RecoveryMode::kDryRun, result);
        report.journals.push_back(std::move(result));
    }
    return report;
}
