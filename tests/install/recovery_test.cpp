#include "install/recovery.h"

#include <random>

#include "tests/install/transaction_test_support.h"

// Killed at a random step, in a child, the pass is undone by recovery: the templates are
// exactly as before and no journal or backup is left; a target it found empty stays, one
// it made goes. Once, while the pass lives, a second pass into the same directory (here
// through a link) gets 32 and recovery leaves the live pass alone, changing nothing.
TEST(Recovery, APassKilledAtAnyStepIsUndoneAndWhileAliveKeepsOthersOut) {
    const unsigned seed = std::random_device{}();
    std::mt19937 random(seed);
    std::printf("seed %u\n", seed);
    const int steps = int(std::size(kKitNames)) + 1;  // Begin, then each file
    const char* const below[] = {"/", "/empty/", "/new/inner/"};
    for (int run = 0; run < 30; ++run) {
        UserTemplates user;
        const Tree before = Snapshot(user.templates);
        const std::string target = user.templates + below[run % 3];
        const int killAfter = run == 0 ? steps : int(random() % (steps + 1));
        SCOPED_TRACE("seed " + std::to_string(seed) + ", run " + std::to_string(run) +
                     ", killed after step " + std::to_string(killAfter));
        int pipeEnds[2];
        ASSERT_EQ(0, pipe(pipeEnds));
        const pid_t child = fork();
        if (child == 0) {
            InstallTransaction transaction(nullptr, U16(user.journals));
            auto done = [&](ResultCode code) {
                if (code != kOk || write(pipeEnds[1], "+", 1) != 1) _exit(1);
            };
            done(transaction.Begin(U16(target)));
            for (const std::string& name : kKitNames) done(Install(transaction, target + name));
            for (;;) pause();
        }
        close(pipeEnds[1]);
        char step;
        for (int i = 0; i < killAfter && read(pipeEnds[0], &step, 1) == 1;) ++i;
        if (run == 0) {
            std::filesystem::create_directory_symlink(user.templates, user.scratch / "alias");
            const Tree during = Snapshot(user.scratch.path());
            InstallTransaction second(nullptr, U16(user.journals));
            EXPECT_EQ(kInUse, second.Begin(U16(user.scratch / "alias/")));
            const RecoveryReport report =
                RecoverInterruptedPasses(U16(user.journals), RecoveryMode::kUndo);
            EXPECT_EQ(JournalRecovery::Outcome::kPassRunning, report.journals.at(0).outcome);
            EXPECT_EQ(during, Snapshot(user.scratch.path()));
        }
        kill(child, SIGKILL);
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status)) << "the scripted pass failed before it was killed";
        close(pipeEnds[0]);
        RecoverInterruptedPasses(U16(user.journals), RecoveryMode::kUndo);
        EXPECT_EQ(before, Snapshot(user.templates));
        EXPECT_EQ(Names{}, EntriesOf(user.journals));
        // Only an empty backup folder may stay: one made by a pass killed before it could
        // journal the folder's name.
        for (const std::string& name : EntriesOf(user.tmp))
            EXPECT_EQ(Names{}, EntriesOf(user.tmp + "/" + name)) << name;
    }
}
