#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>

#include "install/install_thread.h"
#include "tests/install/pass_test_support.h"

using namespace installtest;

namespace {

using Clock = std::chrono::steady_clock;

bool IsOver(const Status& status) { return status.code != kOk || status.progress == 100; }

}  // namespace

class InstallConcurrency : public PassFixture {
  protected:
    InstallThread worker;
};

TEST_F(InstallConcurrency, OnlyASuccessfulPassRepeatsAndAStopEndsThePauseAtOnce) {
    Plant(templates + "/kept", "newer", kKitSeconds + 5);
    LoadKit({{u"a\\one", "1"}, {u"kept", "kit"}, {u"two", "22"}});
    StartInstallThread(worker, &data);
    ASSERT_EQ(worker.createResult, 0);
    ASSERT_TRUE(WaitFor([](const Status& s) { return IsOver(s); })) << Published();
    ASSERT_EQ(Published(), Finished());
    const TreeSnapshot installed = SnapshotTree(templates);
    const ino_t inode = StatOf(templates + "/two").st_ino;

    // The worker runs the pass again after its pause and says so again; it skips all.
    data.SetStatus(kOk, u"seen", 0);
    ASSERT_TRUE(WaitFor([](const Status& s) { return s.progress == 100; })) << Published();
    EXPECT_EQ(Published(), Finished());
    const auto asked = Clock::now();
    StopAndJoinInstallThread(worker);
    EXPECT_LT(Clock::now() - asked, std::chrono::milliseconds(500)) << "the pause outlived a stop";
    EXPECT_EQ(Published(), Finished());
    EXPECT_EQ(TreeDifferences(installed, SnapshotTree(templates)), "");
    EXPECT_EQ(StatOf(templates + "/two").st_ino, inode);
}

TEST_F(InstallConcurrency, StopAndJoinAfterAFailureKeepsTheErrorAndTheWorkerEnds) {
    WriteText(templates + "/blocked/inside", "keep");
    LoadKit({{u"blocked", "a directory is in the way"}});
    StartInstallThread(worker, &data);
    ASSERT_TRUE(WaitFor([](const Status& s) { return s.code != kOk; }));
    StopAndJoinInstallThread(worker);
    EXPECT_EQ(Published(), Failed(kInvalidParameter, 0));
    EXPECT_EQ(worker.createResult, -1);
    StopAndJoinInstallThread(worker);  // twice is harmless
    EXPECT_EQ(ReadText(templates + "/blocked/inside"), "keep");
}

// A stop while a file of 64 MiB is copied ends the pass between two 8 MiB pieces.
TEST_F(InstallConcurrency, AStopInsideALargeFileEndsThePassWithinAMoment) {
    LoadKit({{u"large", std::string(64 << 20, 'L')}});
    const TreeSnapshot before = SnapshotTree(templates);
    StartInstallThread(worker, &data);
    ASSERT_TRUE(
        WaitFor([&](const Status& s) { return s.text == templates + "/large" || IsOver(s); }));
    const auto asked = Clock::now();
    StopAndJoinInstallThread(worker);
    EXPECT_LT(Clock::now() - asked, std::chrono::seconds(2));
    EXPECT_EQ(Published(), (Status{kCancelled, templates + "/large", 0}));
    EXPECT_EQ(TreeDifferences(before, SnapshotTree(templates)), "");
    EXPECT_EQ(EntriesOf(scratch.tmp), Names{});
}

// Twenty runs, each stopping at a random file of 40 over random originals (older,
// newer, missing): each ends with 1223 and the templates exactly as they were.
TEST_F(InstallConcurrency, ACancelAtAnyFileLeavesTheTemplatesAsTheyWere) {
    const char* given = std::getenv("ORD8_SEED");  // to repeat a run
    const unsigned firstSeed = given ? unsigned(std::stoul(given)) : std::random_device()();
    std::printf("first seed %u (ORD8_SEED repeats it)\n", firstSeed);
    constexpr int kFiles = 40;
    KitFiles files;
    for (int i = 0; i < kFiles; ++i)
        files.emplace_back(Name(kHostile + "/" + std::to_string(i)),
                           std::string(512 << 10, char('a' + i % 26)));
    LoadKit(files);
    for (unsigned run = 0; run < 20; ++run) {
        const unsigned seed = firstSeed + run;
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        std::filesystem::remove_all(templates);
        for (int i = 0; i < kFiles; ++i) {
            const std::string path = templates + "/" + kHostile + "/" + std::to_string(i);
            if (const int age = int(random() % 3))
                Plant(path, "original", kKitSeconds + (age == 1 ? -9 : 9));
        }
        const TreeSnapshot before = SnapshotTree(templates);
        const int stopAt = int(random() % (kFiles / 2));
        const std::string stopPath = templates + "/" + kHostile + "/" + std::to_string(stopAt);
        data.SetJob(&kit, U16(templates), U16(journal));
        StartInstallThread(worker, &data);
        ASSERT_TRUE(WaitFor([&](const Status& s) { return s.text == stopPath || IsOver(s); }));
        StopAndJoinInstallThread(worker);
        const Status status = Published();
        EXPECT_EQ(status.code, kCancelled) << status;
        EXPECT_GE(status.progress, stopAt * 100 / kFiles);
        EXPECT_EQ(TreeDifferences(before, SnapshotTree(templates)), "");
        EXPECT_EQ(EntriesOf(scratch.tmp), Names{});
        if (HasFailure()) break;
    }
}
