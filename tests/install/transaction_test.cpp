#include "install/recovery.h"
#include "tests/install/transaction_test_support.h"

// A pass into an existing templates directory and into one it makes, ended either way:
// a rollback leaves the user's tree exactly as it was (bytes, modes, times, the link,
// every folder), a commit leaves the new files; neither leaves a backup folder.
TEST(Transaction, RollbackRestoresReplacedFilesAndCommitKeepsTheNewOnes) {
    for (const bool commit : {false, true}) {
        for (const std::string below : {"", "/new/nested"}) {
            SCOPED_TRACE(std::string(commit ? "commit" : "rollback") + " into templates" + below);
            UserTemplates user;
            const Tree before = Snapshot(user.templates);
            const stdx::u16string target = U16(user.templates + below + "/");
            InstallTransaction transaction(nullptr, U16(user.journals));
            ASSERT_EQ(kOk, transaction.Begin(target));
            EXPECT_EQ((Names{"o8stp0"}), EntriesOf(user.tmp));
            EXPECT_EQ(0700u, StatOf(user.tmp + "/o8stp0").st_mode & 07777);
            for (const std::string& name : kKitNames)
                ASSERT_EQ(kOk, Install(transaction, target + U16(name), "new " + name));
            // A kit naming one file twice: the second write must not back up the first.
            EXPECT_EQ(kFileNotFound, transaction.BackupFile(target + U16("a.dt")));
            // A file of the user's the pass did not back up is never noted for removal.
            EXPECT_EQ(below.empty() ? kAlreadyExists : kInvalidParameter,
                      transaction.AddCreatedFile(user.In("sub/deep/c.dt")));

            EXPECT_EQ(1223u, commit ? transaction.Commit() + 1223 : transaction.Rollback(1223));
            EXPECT_TRUE(EntriesOf(user.tmp).empty());
            EXPECT_TRUE(EntriesOf(user.journals).empty());
            if (!commit) {
                EXPECT_EQ(before, Snapshot(user.templates));
                continue;
            }
            for (const std::string& name : kKitNames)
                EXPECT_EQ("new " + name, ReadText(Utf8(target) + name)) << name;
        }
    }
}

// Only regular files and links to them are moved aside. Anything else of the user's at
// a kit path ends the pass, and nothing of it is moved or lost.
TEST(Transaction, BackupFileRefusesWhatIsNotAFileAndMovesNothing) {
    UserTemplates user;
    std::filesystem::create_directories(user.templates + "/folder/inside");
    WriteText(user.templates + "/folder/inside/kept.dt", "kept");
    mkfifo((user.templates + "/pipe").c_str(), 0600);
    std::filesystem::create_symlink("folder", user.templates + "/to-folder");
    std::filesystem::create_symlink("nowhere", user.templates + "/dangling");
    const Tree before = Snapshot(user.templates);
    InstallTransaction transaction(nullptr, U16(user.journals));
    ASSERT_EQ(kOk, transaction.Begin(user.Target()));
    for (const std::string name : {"folder", "pipe", "to-folder", "dangling", "a.dt/under-a-file",
                                   "sub/../a.dt", "../outside.dt", ""})
        EXPECT_EQ(kInvalidParameter, transaction.BackupFile(user.In(name))) << name;
    EXPECT_EQ(kFileNotFound, transaction.BackupFile(user.In("missing.dt")));
    EXPECT_EQ(before, Snapshot(user.templates));
    EXPECT_EQ(kInvalidParameter, transaction.AddCreatedFile(U16(user.scratch / "outside.dt")));
    EXPECT_EQ(kInvalidParameter, transaction.Rollback(kInvalidParameter));
    EXPECT_EQ(before, Snapshot(user.templates));
    EXPECT_TRUE(EntriesOf(user.tmp).empty());
    EXPECT_TRUE(EntriesOf(user.journals).empty());
}

// An original that cannot go back (a folder took its place) stays in the backup folder,
// which is kept with the journal; the rest is restored and the code comes back
// unchanged. Once the obstacle is gone, recovery finishes the job.
TEST(Transaction, AnOriginalThatCannotGoBackKeepsTheBackupFolderUntilRecovery) {
    UserTemplates user;
    const Tree before = Snapshot(user.templates);
    {
        InstallTransaction transaction(nullptr, U16(user.journals));
        ASSERT_EQ(kOk, transaction.Begin(user.Target()));
        ASSERT_EQ(kOk, Install(transaction, user.In("a.dt"), "new"));
        ASSERT_EQ(kOk, Install(transaction, user.In("sub/deep/c.dt"), "new"));
        std::filesystem::remove(user.templates + "/a.dt");
        std::filesystem::create_directories(user.templates + "/a.dt/in-the-way");
        EXPECT_EQ(87u, transaction.Rollback(87));
        EXPECT_EQ("original a.dt", ReadText(user.tmp + "/o8stp0/a.dt"));
        EXPECT_EQ("original sub/deep/c.dt", ReadText(user.templates + "/sub/deep/c.dt"));
        EXPECT_EQ(Names{"o8stp0"}, EntriesOf(user.tmp));
    }
    ASSERT_EQ(1u, EntriesOf(user.journals).size());
    std::filesystem::remove_all(user.templates + "/a.dt");
    RecoverInterruptedPasses(U16(user.journals), RecoveryMode::kUndo);
    EXPECT_EQ(before, Snapshot(user.templates));
    EXPECT_TRUE(EntriesOf(user.tmp).empty());
    EXPECT_TRUE(EntriesOf(user.journals).empty());
}

// The backup folder takes the first free number, never an existing name of any kind;
// a target that is not a clean absolute path is refused before anything is made.
TEST(Transaction, BeginTakesTheFirstFreeBackupNameAndRefusesUnclearTargets) {
    UserTemplates user;
    std::filesystem::create_directory(user.tmp + "/o8stp0");
    WriteText(user.tmp + "/o8stp1", "someone else's file");
    InstallTransaction transaction(nullptr, U16(user.journals));
    for (const char* target : {"relative/templates/", "/x/../templates/", "/x/./y"})
        EXPECT_EQ(kInvalidParameter, transaction.Begin(U16(target))) << target;
    ASSERT_EQ(kOk, transaction.Begin(user.Target()));
    EXPECT_EQ(U16(user.tmp + "/o8stp2/"), transaction.records.back().backupDirectory);
    EXPECT_EQ(kInvalidParameter, transaction.Begin(user.Target())) << "one open record at a time";
    EXPECT_EQ(kOk, transaction.Commit());
    EXPECT_EQ((Names{"o8stp0", "o8stp1"}), EntriesOf(user.tmp));
    EXPECT_EQ("someone else's file", ReadText(user.tmp + "/o8stp1"));
}
