// install: the journal of one installation pass, so that a pass killed halfway can be
// undone at the next start (install/recovery.h). The pass appends an entry before each
// change it makes, one write per entry and no flush per file; the byte format is in
// doc/install-journal.md. A live pass holds an exclusive flock on its journal, which is
// how recovery tells a running pass from a dead one. The reader trusts nothing in the
// file: every length is checked against what remains, and it stops at the first entry
// that is torn or breaks a rule, keeping what came before.
// One journal belongs to one thread; ParseJournal may run on any.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "fs/result_codes.h"
#include "install/install_transaction.h"
#include "text/string.h"

namespace journal {

constexpr char kMagic[8] = {'O', 'R', 'D', '8', 'J', 'N', 'L', '1'};
constexpr std::size_t kEntryHeaderBytes = 5;  // kind, then the length in units (u32 LE)
constexpr std::uint32_t kMaxPathUnits = 4096;
constexpr char kFilePrefix[] = "o8journal-";  // then six letters or digits

// Entry kinds. Each is written before the change it names, except the backup folder,
// which is journaled right after it was made: its name is known only then, and an empty
// folder left by a crash in between holds nothing of the user's.
constexpr char kTemplates = 'T';     // the templates directory, first and once
constexpr char kBackupFolder = 'B';  // at most once
constexpr char kDirectory = 'D';     // a directory about to be made
constexpr char kBackedUp = 'S';      // a file about to be moved into the backup folder
constexpr char kCreatedFile = 'F';   // a file about to be created
constexpr char kCommitted = 'C';     // empty path; the backup folder is about to go

// Absolute, without "." or ".." components and without zero units: then a prefix test
// tells what lies inside a directory.
bool IsCleanAbsolutePath(const stdx::u16string& path);

// Why `path` may not be journaled as `kind` after the entries that made `record`, or
// null. The reader stops at such an entry, so the writer never writes one.
const char* Refusal(char kind, const stdx::u16string& path, const TransactionRecord& record);

struct Contents {
    TransactionRecord record;  // targetDirectory empty when no entry was read
    bool hasHeader = false;
    bool committed = false;
    std::size_t wholeBytes = 0;    // up to the end of the last entry taken
    const char* damage = nullptr;  // why reading stopped before the end, or null
};

// Reads a journal's bytes up to its last whole, valid entry.
Contents Parse(const std::uint8_t* bytes, std::size_t size);

}  // namespace journal

class PassJournal {
  public:
    // Makes a new journal in `folder` (created with mode 0700 when missing) under a
    // unique name, locks it and writes its header and templates entry. 0, or 1013.
    static ResultCode Create(const stdx::u16string& folder, const stdx::u16string& templates,
                             std::unique_ptr<PassJournal>& journal);
    ~PassJournal();  // closes the file, which releases the lock; the file stays

    // One entry in one write. 1013 when it cannot be written whole; every later append
    // then fails too, since nothing after a torn entry would be read.
    ResultCode Append(char kind, const stdx::u16string& path);
    // Removes the file and releases the lock.
    void Remove();

  private:
    PassJournal(int fd, const stdx::mbstring& path) : fd_(fd), path_(path) {}

    int fd_;
    stdx::mbstring path_;
    bool broken_ = false;
};
