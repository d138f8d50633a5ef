#include <optional>
#include <random>

#include "tests/install/transaction_test_support.h"

using Outcome = JournalRecovery::Outcome;

// A pass that replaced and created files ends every way it can (a plain commit and
// rollback are the pass tests' business): rolled back with an original blocked,
// abandoned (as a killed pass is) with its journal spoilt, or killed in a child at a
// random step (thirty times, the seed printed); then recovery meets what is left. Each end
// leaves the templates as they were or with the new files, and the backup folder and
// journal gone or kept, only as it deserves; a dry run changes nothing and foretells the
// real run. On the way, the pass takes the first free backup name and refuses to move
// aside anything of the user's but files and links to them; while it lives, a second
// pass into its directory (through a link) gets 32 and recovery leaves it alone.
TEST(Transaction, EveryEndOfAPassLeavesTheTemplatesAndItsTracesAsItDeserves) {
    const unsigned seed = std::random_device{}();
    std::mt19937 random(seed);
    std::printf("seed %u\n", seed);
    struct Row {
        const char* name;
        std::function<void(InstallTransaction&, UserTemplates&, const std::string& journal)> end;
        std::optional<Outcome> outcome;  // none: no journal is left (or, after a kill, any)
        bool undone, journalGone, backupGone;
    };
    std::vector<Row> rows = {
        // An original that cannot go back (a folder took its place) stays in the backup
        // folder, kept with the journal; the rest is restored. Once the obstacle is gone,
        // recovery finishes the job.
        {"rolled back with an original blocked",
         [](auto& t, auto& u, auto&) {
             std::filesystem::remove(u.At("a.dt"));
             std::filesystem::create_directories(u.At("a.dt/in-the-way"));
             EXPECT_EQ(87u, t.Rollback(87));
             EXPECT_EQ("original sub/" + kHostile, ReadText(u.At("sub/" + kHostile)));
             std::filesystem::remove_all(u.At("a.dt"));
         },
         Outcome::kUndone, true, true, true},
        {"abandoned with a torn last entry",
         [](auto&, auto&, auto& j) { std::ofstream(j, std::ios::app) << "F"; }, Outcome::kUndone,
         true, true, true},
        {"abandoned after the commit entry",
         [](auto&, auto&, auto& j) { std::ofstream(j, std::ios::app) << 'C' << std::string(4, 0); },
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
    rows.insert(rows.begin(), kSanitizedBuild ? 6 : 30,  // six suffice where each costs more
                {"killed", nullptr, std::nullopt, true, true, true});
    for (std::size_t run = 0; run < rows.size(); ++run) {
        const Row& row = rows[run];
        SCOPED_TRACE(row.name + (", run " + std::to_string(run)));
        if (geteuid() != 0 && row.name == std::string("another user's")) continue;
        UserTemplates user;
        std::filesystem::create_directory(user.tmp + "/o8stp0");
        WriteText(user.tmp + "/o8stp1", "someone else's file");
        const Tree before = Snapshot(user.templates);
        if (!row.end) {
            const std::string target =  // found full, found empty, or made
                user.templates + (run % 3 == 0   ? "/"
                                  : run % 3 == 1 ? "/empty/"
                                                 : "/new/inner/");
            const int killAfter = run == 0 ? 6 : int(random() % 7);  // of Begin and five files
            int steps[2];
            ASSERT_EQ(0, pipe(steps));
            const pid_t child = fork();
            if (child == 0) {
                InstallTransaction transaction(nullptr, U16(user.journals));
                ResultCode code = transaction.Begin(U16(target));
                // Each step done is told; after the last, the pass waits to be killed.
                for (std::size_t i = 0; code == kOk && write(steps[1], "+", 1) == 1; ++i)
                    code = i < std::size(kKitNames) ? Install(transaction, target + kKitNames[i])
                                                    : pause();
                _exit(1);
            }
            close(steps[1]);
            char done;
            for (int i = 0; i < killAfter && read(steps[0], &done, 1) == 1;) ++i;
            if (run == 0) {
                std::filesystem::create_directory_symlink(user.templates, user.scratch / "alias");
                const Tree during = Snapshot(user.scratch.path());
                InstallTransaction second(nullptr, U16(user.journals));
                EXPECT_EQ(kInUse, second.Begin(U16(user.scratch / "alias/")));
                EXPECT_EQ(Outcome::kPassRunning,
                          user.Recover(RecoveryMode::kUndo).journals.at(0).outcome);
                EXPECT_EQ(during, Snapshot(user.scratch.path()));
            }
            kill(child, SIGKILL);
            int status = 0;
            waitpid(child, &status, 0);
            EXPECT_TRUE(WIFSIGNALED(status)) << "the scripted pass failed before it was killed";
            close(steps[0]);
        } else {
            InstallTransaction transaction(nullptr, U16(user.journals));
            for (const char* target : {"relative/templates/", "/x/../templates/", "/x/./y"})
                EXPECT_EQ(kInvalidParameter, transaction.Begin(U16(target))) << target;
            ASSERT_EQ(kOk, transaction.Begin(U16(user.At(""))));
            EXPECT_EQ(kInvalidParameter, transaction.Begin(U16(user.At(""))))
                << "one open at a time";
            EXPECT_EQ(0700u, StatOf(user.tmp + "/o8stp2").st_mode & 07777);
            for (const std::string name : {"folder", "pipe", "to-folder", "to-nowhere",
                                           "a.dt/under-a-file", "sub/../a.dt", "../outside", ""})
                EXPECT_EQ(kInvalidParameter, transaction.BackupFile(U16(user.At(name)))) << name;
            EXPECT_EQ(Names{}, EntriesOf(user.tmp + "/o8stp2")) << "something was moved aside";
            EXPECT_EQ(kInvalidParameter, transaction.AddCreatedFile(U16(user.scratch / "out")));
            for (const std::string& name : kKitNames)
                ASSERT_EQ(kOk, Install(transaction, user.At(name))) << name;
            // A kit naming one file twice: the second write must not back up the first.
            EXPECT_EQ(kFileNotFound, transaction.BackupFile(U16(user.At("a.dt"))));
            // A file of the user's the pass did not back up is never noted for removal.
            EXPECT_EQ(kAlreadyExists, transaction.AddCreatedFile(U16(user.At("sub/deep/c.dt"))));
            const std::string journal = user.journals + "/" + *EntriesOf(user.journals).begin();
            row.end(transaction, user, journal);
        }
        const Tree left = Snapshot(user.scratch.path());
        const RecoveryReport dry = user.Recover(RecoveryMode::kDryRun);
        EXPECT_EQ(left, Snapshot(user.scratch.path())) << "the dry run changed something";
        const RecoveryReport report = user.Recover(RecoveryMode::kUndo);
        EXPECT_EQ(row.undone, before == Snapshot(user.templates));
        EXPECT_EQ(row.journalGone, EntriesOf(user.journals).empty());
        // Only an empty backup folder may stay: one made by a pass killed before it could
        // journal the folder's name.
        EXPECT_EQ(row.backupGone, EntriesOf(user.tmp + "/o8stp2").empty());
        for (const std::string& name : kKitNames)  // a finished commit keeps every new file
            EXPECT_TRUE(!row.journalGone || row.undone || ReadText(user.At(name)) == "new") << name;
        if (!row.end) continue;
        ASSERT_EQ(row.outcome ? 1u : 0u, report.journals.size());
        if (!row.outcome) continue;
        EXPECT_EQ(*row.outcome, report.journals[0].outcome);
        EXPECT_EQ(*row.outcome, dry.journals.at(0).outcome);
        EXPECT_EQ(row.journalGone, report.journals[0].journalRemoved);
        EXPECT_EQ(dry.journals[0].undo.filesRestored, report.journals[0].undo.filesRestored);
        EXPECT_EQ(dry.journals[0].undo.filesRemoved, report.journals[0].undo.filesRemoved);
    }
}
