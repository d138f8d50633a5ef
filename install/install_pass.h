// install: one installation pass. It copies every file of the job's kit into the
// templates directory inside one InstallTransaction (install/install_transaction.h):
// a file already there with the kit's time or a newer one is kept, an older one is moved
// into the backup folder first, and each file the pass writes is noted before it is
// made, so that a failure or a cancel puts the directory back as it was. It checks that
// the volume has room before the first file, and publishes its progress, its end and
// its failures through InstallProcessData. It neither starts threads nor touches the
// window (install/install_thread.h runs it). For tests only: with ORD8_TEST_HOLD_AT_FILE=n
// (n > 0) the pass, after publishing file n's status, waits up to 120 s for a cancel.
//
// Threads: a pass runs on one thread; another thread may poll the status and cancel.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "fs/file_system.h"
#include "fs/result_codes.h"
#include "install/install_process_data.h"
#include "text/string.h"

class InstallTransaction;

// One pass over the job in `processData`, inside `transaction` (fresh, made for this
// pass). Publishes (0, path, i*100/n) before file i of n, and after the commit
// (0, IDS_INSTALL_FINISH, 100). A failure publishes (code, IDS_INSTALL_ERROR, percentage
// reached) and rolls back; a cancel, seen before the pass begins, before every file and
// every 8 MiB inside one, rolls back and then publishes (1223, last text, last
// percentage). Returns that code.
// Codes: those of Begin, BackupFile and CreateDirectoryTree, of the file's writing, 1013
// when the volume lacks room, 87 without a kit, 1223.
ResultCode InstallFiles(InstallTransaction& transaction, InstallProcessData* processData);

// Publishes (code, IDS_INSTALL_ERROR, progress), then rolls the pass back. Returns `code`.
ResultCode ReportInstallError(InstallTransaction& transaction, ResultCode code,
                              std::int32_t progress);

// Writes file `fileIndex` of the kit to `path`: opened without cutting it, the kit's
// bytes copied over from the kit's handle at the file's offset, cut at its length, and
// given the kit's time; closed on every path. With `processData`, a cancel seen between
// two 8 MiB pieces ends it with 1223. Otherwise 0 or the failing step's code.
ResultCode WriteFileData(InstallProcessData::Kit& installData, std::size_t fileIndex,
                         const stdx::u16string& path, InstallProcessData* processData = nullptr);

// Where the pass writes the kit file `name` (folders separated by "\") under
// `targetDirectory` (ending in "/").
stdx::u16string TargetPath(const stdx::u16string& targetDirectory, const stdx::u16string& name);

// 1 when `path` would be written by a pass for a kit file of time `time`: nothing is
// there (or nothing a stat can see), it is not a regular file, or its time is older.
// File times are kept in whole seconds, so `time` is compared at that resolution: a
// file just installed is never older than its kit time. 0 otherwise.
int IsFileOlder(const stdx::u16string& path, FileTime time);

// The room one file needs: the bytes written, and those of the older file it replaces.
struct FileRoom {
    std::uint64_t written = 0;
    std::uint64_t replaced = 0;
};

// Whether `files` fit in `available` bytes of a volume with blocks of `blockSize`:
// every file takes whole blocks, and a replaced file gives its blocks back only when
// its backup leaves the volume (on the same volume it holds them until the commit).
bool FitsOnVolume(const std::vector<FileRoom>& files, std::uint64_t blockSize,
                  std::uint64_t available, bool backupLeavesVolume);
