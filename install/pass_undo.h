// install: undoing one installation pass from its record, the single routine behind
// InstallTransaction::Rollback and the recovery of interrupted passes. It removes the
// files the pass created, moves the originals back out of the backup folder, removes
// the directories the pass made when they are empty, and deletes the backup folder only
// when every original in it went back. It never removes a file that was backed up (the
// original comes back over it, or already is it), so running it twice loses nothing.
// Any thread; one record at a time.
#pragma once

#include <set>
#include <vector>

#include "install/install_transaction.h"
#include "text/string.h"

struct LeftBehind {
    stdx::u16string path;
    const char* reason;  // a short English phrase, for reports
};

// What undoing a pass did, or in a dry run would do.
struct UndoReport {
    stdx::u16string templatesDirectory;
    std::vector<stdx::u16string> filesRestored;  // where each original went back to
    std::vector<stdx::u16string> filesRemoved;
    std::vector<stdx::u16string> directoriesRemoved;
    std::vector<LeftBehind> leftBehind;
    // False when an original stayed in the backup folder, which is then kept.
    bool originalsBack = true;
};

// Undoes `record`. A dry run changes nothing and lists what would be undone.
void UndoPass(const TransactionRecord& record, bool dryRun, UndoReport& report);

// Moves the files found below `backupDirectory` back to the same relative places under
// `targetDirectory`. With `expected` (relative paths as system bytes) only those files
// are moved: anything else in the folder is not an original and goes with the folder.
void RestoreBackup(const stdx::u16string& targetDirectory, const stdx::u16string& backupDirectory,
                   const std::set<stdx::mbstring>* expected, bool dryRun, UndoReport& report);

// The backup folder is trusted only as a real directory (not a link) of this user.
bool IsOwnDirectory(const stdx::u16string& path);
