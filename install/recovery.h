// install: undoing installation passes that ended without a commit or a rollback (the
// process was killed, crashed or lost its terminal). Each pass leaves a journal in the
// user's settings folder (install/pass_journal.h); at start-up the installer, the
// headless install and `ord8kit recover` hand that folder here. Every journal whose
// lock is free is undone exactly as InstallTransaction::Rollback would have done, then
// removed; a committed one only has its backup folder deleted. Only regular files of
// this user, opened without following links, are read, and a journal is read up to its
// last whole entry. Nothing is touched while a live pass holds the journal or the
// templates directory. A dry run reports what would be undone and changes nothing.
// Any thread; passes running meanwhile in this or other processes are left alone.
#pragma once

#include <vector>

#include "install/pass_undo.h"
#include "text/string.h"

enum class RecoveryMode { kUndo, kDryRun };

struct JournalRecovery {
    enum class Outcome {
        kUndone,            // rolled back: `undo` says what, and what was left behind
        kCommitFinished,    // the pass had committed; its backup folder is deleted
        kNothingDone,       // the pass died before it changed anything
        kPassRunning,       // a live pass holds the journal
        kTemplatesInUse,    // a live pass holds the templates directory: later
        kTemplatesMissing,  // the templates directory, not made by the pass, is gone: kept
        kUntrusted,         // a link, not a regular file, or another user's
        kNotAJournal,       // unreadable, too large, or without the journal header
    };
    stdx::u16string journal;
    Outcome outcome = Outcome::kNotAJournal;
    const char* damage = nullptr;  // why reading stopped before the end, or null
    UndoReport undo;               // the templates directory and what was (or would be) undone
    bool journalRemoved = false;
};

struct RecoveryReport {
    std::vector<JournalRecovery> journals;  // by journal name
};

RecoveryReport RecoverInterruptedPasses(const stdx::u16string& journalFolder, RecoveryMode mode);
