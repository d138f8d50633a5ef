#include "install/install_pass.h"

#include <sys/stat.h>
#include <sys/statvfs.h>

#include <chrono>
#include <cstdlib>
#include <optional>
#include <thread>

#include "app/string_catalogue.h"
#include "install/install_transaction.h"

namespace {

using Kit = InstallProcessData::Kit;

// How much of a large file is copied between two looks at the cancel flag: small
// enough that a cancel takes effect within a moment, large enough to cost nothing.
constexpr std::uint32_t kCancelCheckBytes = 8u << 20;

// The window tests' hold: bounded, so a test that never cancels still ends.
constexpr char kHoldVariable[] = "ORD8_TEST_HOLD_AT_FILE";
constexpr std::chrono::milliseconds kHoldPoll{10};
constexpr std::chrono::seconds kHoldLimit{120};

// The 1-based file to hold before, or 0. Anything but a plain positive number is no hold,
// so a stray value can never stop a real installation.
std::size_t HoldAtFile() {
    const char* value = std::getenv(kHoldVariable);
    if (value == nullptr || *value < '1' || *value > '9') return 0;
    char* end = nullptr;
    const unsigned long long file = std::strtoull(value, &end, 10);
    return *end == '\0' && file <= SIZE_MAX ? static_cast<std::size_t>(file) : 0;
}

// True once cancelled; false when the hold ran out and the pass goes on.
bool HoldUntilCancelled(InstallProcessData* processData) {
    const auto deadline = std::chrono::steady_clock::now() + kHoldLimit;
    while (!processData->IsCancelled()) {
        if (std::chrono::steady_clock::now() >= deadline) return false;
        std::this_thread::sleep_for(kHoldPoll);
    }
    return true;
}

// One stat, following links as opening the path would: whether a file is there, what
// kind, how old and how large. Nothing when it cannot be seen.
std::optional<struct stat> StatusOf(const stdx::u16string& path) {
    const std::optional<stdx::mbstring> target = FileSystem::ToSystemPath(path);
    struct stat status;
    if (!target || stat(target->c_str(), &status) != 0) return std::nullopt;
    return status;
}

// A regular file at least as new as the kit's file, at the whole seconds the file
// system keeps: the pass leaves it alone.
bool IsCurrent(const std::optional<struct stat>& status, FileTime kitTime) {
    if (!status || !S_ISREG(status->st_mode)) return false;
    const std::int64_t kitSeconds = FileSystem::FileTimeToUnixTime(kitTime);
    return std::int64_t{status->st_mtime} >= kitSeconds;
}

stdx::u16string ParentOf(const stdx::u16string& path) {
    const std::size_t slash = path.rfind(u'/');
    return slash == stdx::u16string::npos ? path : path.substr(0, slash);
}

std::int32_t Percent(std::size_t done, std::size_t count) {
    return static_cast<std::int32_t>(done * 100 / count);
}

// 1013 when the planned files do not fit on the templates volume. A volume that cannot
// be asked is not refused: the writes themselves will tell.
ResultCode CheckRoom(const stdx::u16string& targetDirectory, const stdx::u16string& backupDirectory,
                     const std::vector<FileRoom>& files) {
    const std::optional<stdx::mbstring> target = FileSystem::ToSystemPath(targetDirectory);
    struct statvfs volume;
    if (!target || statvfs(target->c_str(), &volume) != 0) return kOk;
    const std::optional<struct stat> targetStatus = StatusOf(targetDirectory);
    const std::optional<struct stat> backupStatus = StatusOf(backupDirectory);
    const bool backupLeaves =
        targetStatus && backupStatus && targetStatus->st_dev != backupStatus->st_dev;
    const std::uint64_t available = std::uint64_t{volume.f_bavail} * volume.f_frsize;
    return FitsOnVolume(files, volume.f_frsize, available, backupLeaves) ? kOk : kCannotWrite;
}

// Rolls back, then publishes the cancel with the text and percentage last shown, so a
// poller that sees 1223 knows the directory is as it was.
ResultCode CancelPass(InstallTransaction& transaction, InstallProcessData* processData) {
    transaction.Rollback(kCancelled);
    ResultCode code;
    stdx::u16string text;
    std::int32_t progress;
    processData->GetStatus(code, text, progress);
    processData->SetStatus(kCancelled, text, progress);
    return kCancelled;
}

}  // namespace

stdx::u16string TargetPath(const stdx::u16string& targetDirectory, const stdx::u16string& name) {
    stdx::u16string relative = name;
    return targetDirectory + stdx::replace_all(relative, u"\\", u"/");
}

bool FitsOnVolume(const std::vector<FileRoom>& files, std::uint64_t blockSize,
                  std::uint64_t available, bool backupLeavesVolume) {
    if (blockSize == 0) blockSize = 1;
    const auto blocks = [blockSize](std::uint64_t bytes) {
        return bytes / blockSize + (bytes % blockSize != 0 ? 1 : 0);
    };
    std::uint64_t added = 0, freed = 0;
    for (const FileRoom& file : files) {
        added += blocks(file.written);
        if (backupLeavesVolume) freed += blocks(file.replaced);
    }
    const std::uint64_t needed = added > freed ? added - freed : 0;
    return needed <= available / blockSize;
}

int IsFileOlder(const stdx::u16string& path, FileTime time) {
    return IsCurrent(StatusOf(path), time) ? 0 : 1;
}

ResultCode ReportInstallError(InstallTransaction& transaction, ResultCode code,
                              std::int32_t progress) {
    transaction.processData->SetStatus(code, LoadString("IDS_INSTALL_ERROR"), progress);
    return transaction.Rollback(code);
}

ResultCode WriteFileData(Kit& installData, std::size_t fileIndex, const stdx::u16string& path,
                         InstallProcessData* processData) {
    const auto& file = installData.files[fileIndex];
    FileHandle output = kNoHandle;
    ResultCode code = FileSystem::OpenFile(path, kGenericWrite, 0, kCreateAlways, output);
    if (code != kOk) return code;
    std::uint64_t offset = file.offset;
    for (std::uint32_t remaining = file.size; remaining > 0 && code == kOk;) {
        if (remaining != file.size && processData != nullptr && processData->IsCancelled()) {
            code = kCancelled;
            break;
        }
        const std::uint32_t piece = remaining < kCancelCheckBytes ? remaining : kCancelCheckBytes;
        std::uint32_t copied = 0;
        code = FileSystem::CopyRange(installData.handle, offset, output, piece,
                                     installData.buffer.get(), installData.bufferSize, &copied);
        offset += piece;
        remaining -= piece;
    }
    // Cut what is left of an older, longer file, if one was ever opened here.
    if (code == kOk) code = FileSystem::SetEndOfFile(output);
    if (code == kOk) {
        const FileTime time = file.modificationTime;
        code = FileSystem::SetFileTime(output, nullptr, &time, &time);
    }
    FileSystem::CloseFile(output);
    // A delayed write failure surfaces at close (network volumes); it counts.
    if (code == kOk) code = FileSystem::GetLastError();
    return code;
}

ResultCode InstallFiles(InstallTransaction& transaction, InstallProcessData* processData) {
    transaction.processData = processData;
    Kit* kit = nullptr;
    stdx::u16string targetDirectory, journalFolder;
    processData->GetJob(kit, targetDirectory, journalFolder);
    if (kit == nullptr) {
        processData->SetStatus(kInvalidParameter, LoadString("IDS_INSTALL_ERROR"), 0);
        return kInvalidParameter;
    }
    // Cancelled before it began: nothing to undo, only the answer to give.
    if (processData->IsCancelled()) return CancelPass(transaction, processData);
    ResultCode code = transaction.Begin(targetDirectory);
    if (code != kOk) return ReportInstallError(transaction, code, 0);

    // Each file is judged once, before anything is written: the same look decides
    // whether it is kept and how much room the pass needs.
    const std::size_t count = kit->files.size();
    const std::size_t holdAt = HoldAtFile();
    std::vector<bool> kept(count);
    std::vector<FileRoom> room(count);  // none for kept files
    for (std::size_t i = 0; i < count; ++i) {
        const auto& file = kit->files[i];
        const std::optional<struct stat> status = StatusOf(TargetPath(targetDirectory, file.name));
        kept[i] = IsCurrent(status, file.modificationTime);
        if (kept[i]) continue;
        room[i].written = file.size;
        if (status && S_ISREG(status->st_mode)) room[i].replaced = std::uint64_t(status->st_size);
    }
    code = CheckRoom(targetDirectory, transaction.records.back().backupDirectory, room);
    if (code != kOk) return ReportInstallError(transaction, code, 0);

    for (std::size_t i = 0; i < count; ++i) {
        if (processData->IsCancelled()) return CancelPass(transaction, processData);
        const stdx::u16string path = TargetPath(targetDirectory, kit->files[i].name);
        const std::int32_t progress = Percent(i, count);
        processData->SetFileStatus(path, progress);
        if (i + 1 == holdAt && HoldUntilCancelled(processData))
            return CancelPass(transaction, processData);
        if (kept[i]) continue;
        code = transaction.BackupFile(path);
        if (code != kOk && code != kFileNotFound)
            return ReportInstallError(transaction, code, progress);
        code = transaction.CreateDirectoryTree(ParentOf(path));
        if (code != kOk) return ReportInstallError(transaction, code, progress);
        // Only now: a rollback removes what is noted, and the original is in the backup.
        code = transaction.AddCreatedFile(path);
        if (code != kOk) return ReportInstallError(transaction, code, progress);
        code = WriteFileData(*kit, i, path, processData);
        if (code == kCancelled) return CancelPass(transaction, processData);
        if (code != kOk) return ReportInstallError(transaction, code, progress);
    }
    code = transaction.Commit();
    if (code != kOk) return ReportInstallError(transaction, code, 100);
    processData->SetStatus(kOk, LoadString("IDS_INSTALL_FINISH"), 100);
    return kOk;
}
