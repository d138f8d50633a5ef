#include <optional>

#include "install/recovery.h"
#include "tests/install/transaction_test_support.h"

using Outcome = JournalRecovery::Outcome;

// A pass that replaced and created files, ended every way it can: rolled back, committed,
// or abandoned (as a killed pass is) with its journal as left or spoilt, then met by
// recovery. Each end leaves the templates as they were or with the new files, and the
// backup folder and journal gone or kept, only as it deserves; a dry run changes nothing
// and foretells the real run. On the way, the pass takes the first free backup name and
// refuses to move aside anything of the user's but files and links to them.
TEST(Transaction, EveryEndOfAPassLeavesTheTemplatesAndItsTracesAsItDeserves) {
    struct {
        const char* name;
        std::function<void(InstallTransaction&, UserTemplates&, const std::string& journal)> end;
        std::optional<Outcome> outcome;  // none: recovery finds no journal
        bool undone, journalGone, backupGone;
    } rows[] = {
        {"rolled back", [](auto& t, auto&, auto&) { EXPECT_EQ(1223u, t.Rollback(1223)); },
         std::nullopt, true, true, true},
        {"committed", [](auto& t, auto&, auto&) { t.Commit(); }, std::nullopt, false, true, true},
        // An original that cannot go back (a folder took its place) stays in the backup
        // folder, kept with the journal; the rest is restored. Once the obstacle is gone,
        // recovery finishes the job.
        {"rolled back with an original blocked",
         [](auto& t, auto& u, auto&) {
             std::filesystem::remove(u.In8("a.dt"));
             std::filesystem::create_directories(u.In8("a.dt/in-the-way"));
             EXPECT_EQ(87u, t.Rollback(87));
             EXPECT_EQ("original a.dt", ReadText(u.tmp + "/o8stp2/a.dt"));
             EXPECT_EQ("original sub/" + kHostile, ReadText(u.In8("sub/" + kHostile)));
             std::filesystem::remove_all(u.In8("a.dt"));
         },
         Outcome::kUndone, true, true, true},
        {"abandoned with a torn last entry",
         [](auto&, auto&, auto& j) {
             std::ofstream(j, std::ios::app) << std::string("F\t\0\0", 4);
         },
         Outcome::kUndone, true, true, true},
        {"abandoned after the commit entry",
         [](auto&, auto&, auto& j) {
             std::ofstream(j, std::ios::app) << std::string("C\0\0\0\0", 5);
         },
         Outcome::kCommitFinished, false, true, true},
        {"templates gone",
         [](auto&, auto& u, auto&) { std::filesystem::rename(u.templates, u.scratch / "moved"); },
         Outcome::kTemplatesMissing, false, false, false},
        {"a link to a journal",
         [](auto&, auto& u, auto& j) {
             std::filesystem::rename(j, u.scratch / "real");
             std::filesystem::create_symlink(u.scratch / "real", j);
         },
         Outcome::kUntrusted, false, false, false},
        {"another user's",
         [](auto&, auto&, auto& j) { ASSERT_EQ(0, chown(j.c_str(), kNobody, kNobody)); },
         Outcome::kUntrusted, false, false, false},
        {"not a journal", [](auto&, auto&, auto& j) { WriteText(j, "0123456789"); },
         Outcome::kNotAJournal, false, false, false},
        {"empty", [](auto&, auto&, auto& j) { WriteText(j, ""); }, Outcome::kNothingDone, false,
         true, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        if (geteuid() != 0 && row.name == std::string("another user's")) continue;
        UserTemplates user;
        std::filesystem::create_directory(user.tmp + "/o8stp0");
        WriteText(user.tmp + "/o8stp1", "someone else's file");
        const Tree before = Snapshot(user.templates);
        std::string journal;
        {
            InstallTransaction transaction(nullptr, U16(user.journals));
            for (const char* target : {"relative/templates/", "/x/../templates/", "/x/./y"})
                EXPECT_EQ(kInvalidParameter, transaction.Begin(U16(target))) << target;
            ASSERT_EQ(kOk, transaction.Begin(user.In("")));
            EXPECT_EQ(kInvalidParameter, transaction.Begin(user.In(""))) << "one open at a time";
            EXPECT_EQ(0700u, StatOf(user.tmp + "/o8stp2").st_mode & 07777);
            for (const std::string name : {"folder", "pipe", "to-folder", "to-nowhere",
                                           "a.dt/under-a-file", "sub/../a.dt", "../outside", ""})
                EXPECT_EQ(kInvalidParameter, transaction.BackupFile(user.In(name))) << name;
            EXPECT_EQ(Names{}, EntriesOf(user.tmp + "/o8stp2")) << "something was moved aside";
            EXPECT_EQ(kInvalidParameter, transaction.AddCreatedFile(U16(user.scratch / "out")));
            for (const std::string& name : kKitNames)
                ASSERT_EQ(kOk, Install(transaction, user.In8(name))) << name;
            // A kit naming one file twice: the second write must not back up the first.
            EXPECT_EQ(kFileNotFound, transaction.BackupFile(user.In("a.dt")));
            // A file of the user's the pass did not back up is never noted for removal.
            EXPECT_EQ(kAlreadyExists, transaction.AddCreatedFile(user.In("sub/deep/c.dt")));
            journal = user.journals + "/" + *EntriesOf(user.journals).begin();
            row.end(transaction, user, journal);
        }
        const Tree left = Snapshot(user.scratch.path());
        const RecoveryReport dry =
            RecoverInterruptedPasses(U16(user.journals), RecoveryMode::kDryRun);
        EXPECT_EQ(left, Snapshot(user.scratch.path())) << "the dry run changed something";
        const RecoveryReport report =
            RecoverInterruptedPasses(U16(user.journals), RecoveryMode::kUndo);
        EXPECT_EQ(row.undone, before == Snapshot(user.templates));
        EXPECT_EQ(row.journalGone, EntriesOf(user.journals).empty());
        EXPECT_EQ(row.backupGone, EntriesOf(user.tmp).size() == 2);  // only o8stp0 and o8stp1
        EXPECT_EQ("someone else's file", ReadText(user.tmp + "/o8stp1"));
        for (const std::string& name : kKitNames)  // a finished commit keeps every new file
            EXPECT_TRUE(!row.journalGone || row.undone || ReadText(user.In8(name)) == "new")
                << name;
        ASSERT_EQ(row.outcome ? 1u : 0u, report.journals.size());
        if (!row.outcome) continue;
        EXPECT_EQ(*row.outcome, report.journals[0].outcome);
        EXPECT_EQ(*row.outcome, dry.journals.at(0).outcome);
        EXPECT_EQ(row.journalGone, report.journals[0].journalRemoved);
        EXPECT_EQ(dry.journals[0].undo.filesRestored, report.journals[0].undo.filesRestored);
        EXPECT_EQ(dry.journals[0].undo.filesRemoved, report.journals[0].undo.filesRemoved);
    }
}
