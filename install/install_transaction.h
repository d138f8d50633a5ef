// install: the backup-and-rollback bookkeeping of one installation pass. The pass
// writes straight into the user's templates directory, so before it replaces a file it
// moves the original into a private backup folder under the temporary directory, and
// it notes every directory and file it creates. Commit throws the backup away; Rollback
// moves every original back and removes only what the pass made, so a failed or
// cancelled pass leaves the templates directory as it found it. Every step is first
// appended to a journal in the user's settings folder, so that a pass killed halfway
// can be rolled back at the next start (install/recovery.h). While a pass runs it holds
// an exclusive lock tied to the templates directory: two passes never interleave.
//
// The pass calls, per file: BackupFile (only 0 and 2 let it go on), CreateDirectoryTree
// for the file's folder, AddCreatedFile, then writes the file.
//
// Threads: one transaction belongs to the thread that runs its pass.
#pragma once

#include <memory>
#include <set>
#include <vector>

#include "fs/result_codes.h"
#include "text/string.h"

class InstallProcessData;
class PassJournal;

struct TransactionRecord {
    stdx::u16string targetDirectory;  // as given to Begin, ending in "/"
    stdx::u16string backupDirectory;  // temporary directory + "o8stp" + number + "/", or empty
    // Directories the pass made that did not exist before it, outermost first.
    std::vector<stdx::u16string> createdDirectories;
    std::vector<stdx::u16string> createdFiles;  // files to remove on rollback
    // Paths whose originals were moved (or were about to be moved) into the backup
    // folder. Such a path is never removed on rollback: its original comes back over it.
    std::vector<stdx::u16string> backedUpFiles;
};

class InstallTransaction {
  public:
    // `journalFolder` receives the pass's journal ("~/.ord8/" in the installer; tests
    // give their own). An empty folder means no journal.
    InstallTransaction(InstallProcessData* processData, const stdx::u16string& journalFolder);
    ~InstallTransaction();  // releases the locks; rolls nothing back by itself
    InstallTransaction(const InstallTransaction&) = delete;
    InstallTransaction& operator=(const InstallTransaction&) = delete;

    // Starts a record for `targetDirectory` (an absolute path without "." or ".."
    // components, else 87): opens the journal, creates the directory (recording only the
    // directories that did not exist), takes the lock tied to it (32 when another pass
    // holds it past a short wait) and makes a new backup folder "o8stp<n>" (first free
    // n, mode 0700, made exclusively) under the temporary directory. The backup folder
    // is not recorded as created. Any failure undoes all of that before returning. An
    // empty target: 0 and no backup folder. 87 while an earlier record is still open.
    ResultCode Begin(const stdx::u16string& targetDirectory);
    // Creates `path` and its missing parents; records each one it actually created.
    // 0, 3 when the chain cannot be made, 87 for a path that is neither inside the open
    // record's target nor on the way to it, 1013 when the journal cannot take it.
    ResultCode CreateDirectoryTree(const stdx::u16string& path);
    // The same inside the backup folder, recording nothing.
    ResultCode CreateBackupDirectory(const stdx::u16string& path);
    // Moves the file at `path` (inside the target) to the same relative place in the
    // backup folder. 2 when nothing is at `path` (checked before the move), or when the
    // file there is one this pass already wrote: harmless either way. 87 when `path` is
    // a directory or anything but a regular file or a link to one, lies outside the
    // target, or cannot be moved aside; an original is never overwritten without its
    // backup. Never 3.
    ResultCode BackupFile(const stdx::u16string& path);
    // Notes a file the pass is about to create, to be removed on rollback. 0 (also when
    // it is already noted or was backed up), 183 when something the pass did not make is
    // at `path` (not noted: a rollback must not remove it), 87 outside the target or
    // without an open record, 1013 when the journal cannot take it. Right after a
    // BackupFile that found nothing at `path` (with at most the folders leading to it made
    // in between), that look stands for its own.
    ResultCode AddCreatedFile(const stdx::u16string& path);
    // Removes `directory` and everything below it. Always 0.
    ResultCode DeleteTree(const stdx::u16string& directory);
    // Journals the commit, then deletes the backup folder, then removes the journal.
    ResultCode Commit();
    // Moves every file found in `backupDirectory` (a real listing, depth first) back to
    // the same relative place under `targetDirectory`. Files that cannot be moved back
    // stay where they are.
    void RestoreTree(const stdx::u16string& targetDirectory,
                     const stdx::u16string& backupDirectory);
    // Removes the files the pass created, restores the backed-up originals, removes the
    // directories the pass created (innermost first, only when empty of anything that
    // was not the pass's), and deletes the backup folder only when every file in it went
    // back; the journal goes with it, else both stay for recovery. Returns `code` unchanged.
    ResultCode Rollback(ResultCode code);

    std::vector<TransactionRecord> records;
    InstallProcessData* processData;

  private:
    // Checks the entry the change would make, and appends it to the journal (when there
    // is one) before the change: 87 for a path outside the record, 1013 when unwritten.
    ResultCode Note(char kind, const stdx::u16string& path);
    // Releases the journal (removing it when asked) and the lock; the record is closed.
    void EndPass(bool removeJournal);

    stdx::u16string journalFolder_;
    std::unique_ptr<PassJournal> journal_;
    int targetLock_ = -1;  // descriptor holding the lock tied to the templates directory
    bool open_ = false;    // the last record was begun and is neither committed nor rolled back
    std::set<stdx::u16string> passFiles_;  // paths the open record backed up or created
    // Folders the open record made or saw as folders: asked again for every file in them,
    // they are answered without a stat. One removed meanwhile fails the file's open.
    std::set<stdx::u16string> knownDirectories_;
    // The path the last BackupFile found nothing at; AddCreatedFile for the same path,
    // which the pass calls next with only its folder made in between, needs no second look.
    stdx::u16string vacantPath_;
};
