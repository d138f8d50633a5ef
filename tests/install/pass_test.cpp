#include <sched.h>
#include <sys/mount.h>

#include "install/install_pass.h"
#include "install/install_thread.h"
#include "install/install_transaction.h"
#include "tests/install/pass_test_support.h"

using namespace installtest;

class PassTest : public PassFixture {};

TEST_F(PassTest, FirstPassInstallsMissingAndOlderFilesKeepsCurrentOnesAndTheNextSkipsAll) {
    const std::string hostile = templates + "/" + kHostile;
    Plant(hostile, "old and longer than the new bytes", kKitSeconds - 1, 0604);
    Plant(templates + "/newer.txt", "mine", kKitSeconds + 1);
    Plant(templates + "/same second.txt", "mine too", kKitSeconds);  // kit's fraction dropped
    Plant(templates + "/a/unrelated", "not in the kit", 5);
    LoadKit({{Name(kHostile), "new"},
             {u"newer.txt", "kit"},
             {u"same second.txt", "kit"},
             {u"a\\b.dt", "lands in a/b.dt"},
             {u"sub\\" + Name(kHostile), "deep"},
             {u"empty", ""}});
    data.SetJob(&kit, U16(templates), U16(journal));  // no trailing "/": one is added
    const Tree before = Snapshot(templates);

    ASSERT_EQ(RunInstallation(&data), kOk);
    EXPECT_EQ(Published(), Finished());
    const Tree installed = Snapshot(templates);
    ExpectInstalled(before, installed,
                    {{"/" + kHostile, "new"},
                     {"/a/b.dt", "lands in a/b.dt"},
                     {"/sub/" + kHostile, "deep"},
                     {"/empty", ""}});
    EXPECT_EQ(EntriesOf(scratch.tmp), Names{}) << "the backup folder outlived the commit";
    EXPECT_EQ(EntriesOf(journal), Names{}) << "a journal would undo this pass at the next start";

    // A second pass finds every file current: it rewrites none, not even in place.
    const ino_t inode = StatOf(templates + "/a/b.dt").st_ino;
    data.SetStatus(kOk, u"", 0);
    ASSERT_EQ(RunInstallation(&data), kOk);
    EXPECT_EQ(Published(), Finished());
    EXPECT_EQ(Differences(installed, Snapshot(templates)), "");
    EXPECT_EQ(StatOf(templates + "/a/b.dt").st_ino, inode);
}

TEST_F(PassTest, EmptyKitMakesTheTargetAndFinishes) {
    templates = scratch.root / "made/by/the pass";
    LoadKit({});
    ASSERT_EQ(RunInstallation(&data), kOk);
    EXPECT_EQ(Published(), Finished());
    EXPECT_EQ(StatOf(templates).st_mode & S_IFMT, unsigned(S_IFDIR));
    EXPECT_EQ(EntriesOf(scratch.tmp), Names{});
}

TEST_F(PassTest, FailureAtTheThirdOfTenFilesPutsEveryOriginalBack) {
    struct Row {
        const char* what;
        std::u16string thirdName;
        std::function<void(const std::string&)> blockThird;
        rlim_t fileSizeLimit;
        ResultCode code;
    } rows[] = {
        {"a directory in the way", u"f2",
         [](const std::string& path) { WriteText(path + "/inside", "keep"); }, RLIM_INFINITY, 87},
        {"a broken link where its folder must be", u"f2\\below",
         [](const std::string& path) { std::filesystem::create_symlink("nowhere", path); },
         RLIM_INFINITY, 3},
        {"the disk fills", u"f2", [](const std::string&) {}, 1 << 20, 87},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        std::filesystem::remove_all(templates);
        KitFiles files;
        for (int i = 0; i < 10; ++i) {
            const std::string name = "f" + std::to_string(i);
            files.emplace_back(i == 2 ? row.thirdName : Name(name),
                               std::string(i == 2 ? 2 << 20 : 9, 'k'));
            if (i != 2)
                Plant(templates + "/" + name, "original " + name, kKitSeconds - i, 0600 | i);
        }
        row.blockThird(templates + "/f2");
        LoadKit(files);
        const Tree before = Snapshot(templates);
        {
            FileSizeLimit limit(row.fileSizeLimit);
            EXPECT_EQ(RunInstallation(&data), row.code);
        }
        EXPECT_EQ(Published(), Failed(row.code, 20));
        EXPECT_EQ(Differences(before, Snapshot(templates)), "");
        EXPECT_EQ(EntriesOf(scratch.tmp), Names{}) << "a backup folder was left behind";
        EXPECT_EQ(EntriesOf(journal), Names{});
    }
}

TEST_F(PassTest, WritingStopsAtThe8MiBAfterACancelAndCutsAnOlderLongerFile) {
    std::string big(20 << 20, '\0');
    for (std::size_t i = 0; i < big.size(); i += 4096) big[i] = char(i >> 12);
    LoadKit({{u"big", big}});
    const std::string path = templates + "/big";
    Plant(path, std::string(21 << 20, 'x'), 1);
    ASSERT_EQ(WriteFileData(kit, 0, U16(path)), kOk);
    EXPECT_TRUE(ReadText(path) == big);
    EXPECT_EQ(StatOf(path).st_mtime, kKitSeconds);

    data.SetCancelled(true);
    std::filesystem::remove(path);
    EXPECT_EQ(WriteFileData(kit, 0, U16(path), &data), kCancelled);
    EXPECT_EQ(StatOf(path).st_size, 8 << 20);
}

TEST(PassChecks, FileAgeAndTheVolumesRoom) {
    ScratchDirectory scratch;
    Plant(scratch / "older", "", kKitSeconds - 1);
    Plant(scratch / "same second", "", kKitSeconds);
    Plant(scratch / "newer", "", kKitSeconds + 1);
    std::filesystem::create_directory(scratch / "folder");
    const std::pair<const char*, int> ages[] = {
        {"missing", 1}, {"older", 1}, {"same second", 0}, {"newer", 0}, {"folder", 1}};
    for (const auto& [name, older] : ages)
        EXPECT_EQ(IsFileOlder(U16(scratch / name), kKitTime), older) << name;

    // Files take whole blocks; replaced ones give theirs back only when the backup leaves.
    const struct {
        std::vector<FileRoom> files;
        std::uint64_t available;
        bool backupLeaves, fits;
    } rooms[] = {
        {{{1, 0}, {1, 0}}, 8192, false, true},
        {{{1, 0}, {1, 0}, {1, 0}}, 8192, false, false},
        {{{4096, 0}, {4097, 0}}, 12288, false, true},
        {{{4096, 0}, {4097, 0}}, 12287, false, false},
        {{{0, 0}, {0, 9000}}, 0, false, true},
        {{{8192, 8192}}, 4096, false, false},
        {{{8192, 8192}}, 4096, true, true},
        {{{8192, 1}}, 4096, true, true},
        {{{8192, 1}}, 4095, true, false},
        {{{4096, 1 << 20}, {8192, 0}}, 0, true, true},
    };
    for (const auto& row : rooms)
        EXPECT_EQ(FitsOnVolume(row.files, 4096, row.available, row.backupLeaves), row.fits)
            << row.files.size() << " files, " << row.available << " bytes";
    EXPECT_TRUE(FitsOnVolume({{10, 0}}, 0, 10, false));  // a volume reporting no block size
}

// On a 1 MiB volume of its own (a child with a private mount table, when the system
// allows one): a kit that does not fit fails at once with 1013 and changes nothing; one
// that fits only because the replaced file's backup leaves the volume is installed.
TEST_F(PassTest, ThePassRefusesAtOnceAKitTheVolumeCannotHold) {
    std::string half(600 << 10, 'h');
    LoadKit({{u"one", half}, {u"two", half}});
    const int outcome = [&] {
        const pid_t child = fork();
        if (child == 0) {
            if (unshare(CLONE_NEWNS) != 0 ||
                mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
                mount("ord8", templates.c_str(), "tmpfs", 0, "size=1m") != 0)
                _exit(77);
            Plant(templates + "/one", std::string(600 << 10, 'o'), 1);
            const Tree before = Snapshot(templates);
            if (RunInstallation(&data) != kCannotWrite || !(Published() == Failed(kCannotWrite, 0)))
                _exit(1);
            if (!Differences(before, Snapshot(templates)).empty()) _exit(2);
            kit.files.resize(1);  // "one" alone replaces a file of its size: it fits
            if (RunInstallation(&data) != kOk || ReadText(templates + "/one") != half) _exit(3);
            _exit(0);
        }
        int status = 0;
        return waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }();
    if (outcome == 77) GTEST_SKIP() << "no private tmpfs mount allowed here";
    EXPECT_EQ(outcome, 0)
        << "1: not refused with 1013, 2: the tree changed, 3: a fitting kit failed";
}

TEST(ProcessData, TheJobsDirectoryEndsInASeparatorAndANewJobClearsTheStatus) {
    InstallProcessData data;
    data.Init();
    const std::pair<const char16_t*, const char16_t*> directories[] = {
        {u"/x/y", u"/x/y/"}, {u"/x/y/", u"/x/y/"}, {u"C:\\t\\", u"C:\\t\\"}, {u"", u""}};
    for (const auto& [given, stored] : directories) {
        data.SetStatus(kCannotWrite, u"old", 40);
        data.SetCancelled(true);
        data.SetJob(nullptr, given, u"j");
        Kit* kit = reinterpret_cast<Kit*>(1);
        stdx::u16string directory, journal;
        data.GetJob(kit, directory, journal);
        EXPECT_TRUE(kit == nullptr && directory == stored && journal == u"j") << Utf8(given);
        ResultCode code;
        stdx::u16string text;
        std::int32_t progress;
        data.GetStatus(code, text, progress);
        EXPECT_TRUE(code == kOk && progress == 0 && !data.IsCancelled()) << Utf8(given);
    }
}
