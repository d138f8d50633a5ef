#include "install/recovery.h"

#include <sys/file.h>

#include <random>

#include "tests/install/transaction_test_support.h"

using Outcome = JournalRecovery::Outcome;

// A pass that replaced and created files and then stopped without commit or rollback,
// as a killed one does. Answers its journal.
static std::string AbandonedPass(UserTemplates& user) {
    InstallTransaction transaction(nullptr, U16(user.journals));
    EXPECT_EQ(kOk, transaction.Begin(user.Target()));
    for (const std::string& name : kKitNames)
        EXPECT_EQ(kOk, Install(transaction, user.In(name), "new"));
    return user.journals + "/" + *EntriesOf(user.journals).begin();
}

// Only an empty backup folder may stay: one made by a pass killed before it could
// journal the folder's name.
static void ExpectNoBackupLeft(const UserTemplates& user) {
    for (const std::string& name : EntriesOf(user.tmp))
        EXPECT_TRUE(EntriesOf(user.tmp + "/" + name).empty()) << name;
}

// Killed at a random point, in a child, the pass is undone by recovery: the templates
// are exactly as before and no journal or backup is left.
TEST(Recovery, APassKilledAtAnyPointIsUndoneAtTheNextStart) {
    const unsigned seed = std::random_device{}();
    std::mt19937 random(seed);
    std::printf("seed %u\n", seed);
    for (int run = 0; run < 30; ++run) {
        UserTemplates user;
        const Tree before = Snapshot(user.templates);
        const std::string target = user.templates + (run % 2 ? "/" : "/fresh/inner/");
        const int killAfter = static_cast<int>(random() % (std::size(kKitNames) + 2));
        SCOPED_TRACE("seed " + std::to_string(seed) + ", run " + std::to_string(run) +
                     ", killed after step " + std::to_string(killAfter));
        int steps[2];
        ASSERT_EQ(0, pipe(steps));
        const pid_t child = fork();
        if (child == 0) {
            InstallTransaction transaction(nullptr, U16(user.journals));
            auto done = [&](ResultCode code) {
                if (code != kOk || write(steps[1], "+", 1) != 1) _exit(1);
            };
            done(transaction.Begin(U16(target)));
            for (const std::string& name : kKitNames)
                done(Install(transaction, U16(target + name), "new"));
            for (;;) pause();
        }
        close(steps[1]);
        char step;
        for (int i = 0; i < killAfter && read(steps[0], &step, 1) == 1;) ++i;
        kill(child, SIGKILL);
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status)) << "the scripted pass failed before it was killed";
        close(steps[0]);
        RecoverInterruptedPasses(U16(user.journals), RecoveryMode::kUndo);
        EXPECT_EQ(before, Snapshot(user.templates));
        EXPECT_TRUE(EntriesOf(user.journals).empty());
        ExpectNoBackupLeft(user);
    }
}

// Each journal is trusted, finished or undone only as it deserves.
TEST(Recovery, JournalsAreUndoneFinishedOrLeftAsTheyDeserve) {
    const auto journalBytes = [](const std::string& path, const std::string& bytes) {
        std::ofstream(path, std::ios::binary | std::ios::app) << bytes;
    };
    struct Case {
        const char* name;
        std::function<void(UserTemplates&, const std::string& journal)> change;
        Outcome outcome;
        bool undone, removed;
    } cases[] = {
        {"as left", [](auto&, auto&) {}, Outcome::kUndone, true, true},
        {"torn last entry", [&](auto&, auto& j) { journalBytes(j, std::string("F\x09\0\0", 4)); },
         Outcome::kUndone, true, true},
        {"committed", [&](auto&, auto& j) { journalBytes(j, std::string("C\0\0\0\0", 5)); },
         Outcome::kCommitFinished, false, true},
        {"templates gone",
         [](auto& u, auto&) { std::filesystem::rename(u.templates, u.scratch / "moved"); },
         Outcome::kTemplatesMissing, false, false},
        {"a link to a journal",
         [](auto& u, auto& j) {
             std::filesystem::rename(j, u.scratch / "real");
             std::filesystem::create_symlink(u.scratch / "real", j);
         },
         Outcome::kUntrusted, false, false},
        {"another user's",
         [](auto&, auto& j) { ASSERT_EQ(0, chown(j.c_str(), kNobody, kNobody)) << "needs root"; },
         Outcome::kUntrusted, false, false},
        {"not a journal", [](auto&, auto& j) { WriteText(j, "0123456789"); }, Outcome::kNotAJournal,
         false, false},
        {"empty", [](auto&, auto& j) { WriteText(j, ""); }, Outcome::kNothingDone, false, true},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        if (geteuid() != 0 && test.name == std::string("another user's")) continue;
        UserTemplates user;
        const Tree before = Snapshot(user.templates);
        const std::string journal = AbandonedPass(user);
        test.change(user, journal);
        const Tree after = Snapshot(user.templates);
        const RecoveryReport dry =
            RecoverInterruptedPasses(U16(user.journals), RecoveryMode::kDryRun);
        EXPECT_EQ(after, Snapshot(user.templates));
        const RecoveryReport report =
            RecoverInterruptedPasses(U16(user.journals), RecoveryMode::kUndo);
        ASSERT_EQ(1u, report.journals.size());
        const JournalRecovery& done = report.journals[0];
        EXPECT_EQ(test.outcome, done.outcome);
        EXPECT_EQ(test.outcome, dry.journals.at(0).outcome);
        EXPECT_EQ(test.removed, done.journalRemoved && !std::filesystem::is_symlink(journal) &&
                                    !std::filesystem::exists(journal));
        EXPECT_EQ(test.undone, before == Snapshot(user.templates));
        if (test.outcome == Outcome::kCommitFinished) {  // only the deletion is finished
            EXPECT_TRUE(EntriesOf(user.tmp).empty());
            EXPECT_EQ("new", ReadText(user.templates + "/a.dt"));
        }
        if (!test.undone) continue;
        ExpectNoBackupLeft(user);
        // The dry run told what the real one did.
        EXPECT_EQ(3u, done.undo.filesRestored.size());
        EXPECT_EQ(dry.journals[0].undo.filesRestored, done.undo.filesRestored);
        EXPECT_EQ(dry.journals[0].undo.filesRemoved, done.undo.filesRemoved);
        EXPECT_EQ((std::vector<stdx::u16string>{user.In("made/here"), user.In("made")}),
                  done.undo.directoriesRemoved);
    }
}

// While a pass runs, a second one into the same directory (here through a link) gets
// 32 and changes nothing, and recovery leaves the live pass's journal alone.
TEST(Recovery, ALivePassKeepsOthersOutOfItsDirectoryAndItsJournal) {
    UserTemplates user;
    std::filesystem::create_directory_symlink(user.templates, user.scratch / "alias");
    InstallTransaction live(nullptr, U16(user.journals));
    ASSERT_EQ(kOk, live.Begin(user.Target()));
    ASSERT_EQ(kOk, Install(live, user.In("a.dt"), "new"));
    const Tree during = Snapshot(user.templates);
    const pid_t child = fork();
    if (child == 0) {
        InstallTransaction second(nullptr, U16(user.journals));
        const bool refused = second.Begin(U16(user.scratch / "alias/")) == kInUse;
        const RecoveryReport report =
            RecoverInterruptedPasses(U16(user.journals), RecoveryMode::kUndo);
        _exit(refused && report.journals.size() == 1 &&
                      report.journals[0].outcome == Outcome::kPassRunning
                  ? 0
                  : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(0, status);
    EXPECT_EQ(during, Snapshot(user.templates));
    EXPECT_EQ(Names{"o8stp0"}, EntriesOf(user.tmp));
    EXPECT_EQ(1u, EntriesOf(user.journals).size());
}
