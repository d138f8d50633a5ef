#include <sys/resource.h>
#include <sys/time.h>

#include "fs/file_system.h"
#include "tests/support/test_support.h"

// Larger than any sensible copy buffer, with a pattern that shows misplaced chunks.
static std::string Patterned(std::size_t size) {
    std::string bytes(size, '\0');
    // Multiplied by a large odd number: no two copy buffers' worth of it are alike.
    for (std::uint32_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i * 2654435761u >> 24);
    return bytes;
}

// A directory on another device than the current one, or "" when there is none.
static std::string OtherVolume() {
    const struct stat here = StatOf("."), shm = StatOf("/dev/shm");
    return S_ISDIR(shm.st_mode) && here.st_dev != shm.st_dev ? "/dev/shm" : "";
}

static ResultCode Move(const std::string& from, const std::string& to) {
    return FileSystem::MoveFile(U16(from), U16(to));
}

// Within a volume (a rename) and across (a copy, made to fail part way by the size
// limit): a failure leaves the source, the old destination and no partial copy. The
// tree is deeper than the soft descriptor limit set for its move and removal: a walk
// holding a descriptor per level could neither copy nor remove it.
TEST(Move, FailuresChangeNothingAndDeepTreesArriveWholeWithModesTimesAndLinks) {
    std::string sub;
    for (int level = 0; level < 300; ++level) sub += "/d";
    const std::string big = sub + "/" + kHostile, bytes = Patterned(3 * 1024 * 1024 + 17);
    for (const bool across : {false, true}) {
        const std::string volume = across ? OtherVolume() : ".";
        if (volume.empty()) GTEST_SKIP() << "no second file system to move across";
        ScratchDirectory here, there(volume);
        const std::string old = "previous version" + bytes, tree = there / "tree";
        WriteText(here / kHostile, old);
        WriteText(there / kHostile, bytes);
        WriteText(tree + big, bytes);
        std::filesystem::create_symlink(big.substr(1), tree + "/link");
        std::filesystem::create_directory(here / "dir");
        if (across) {
            FileSizeLimit limit(64 * 1024);
            EXPECT_EQ(kFileNotFound, Move(there / kHostile, here / kHostile));
            EXPECT_EQ(kFileNotFound, Move(tree, here / "tree"));
        }
        EXPECT_EQ(kFileNotFound, Move(there / "gone", here / "gone"));
        // The destination names the new entry: an existing directory there is not entered.
        EXPECT_EQ(kFileNotFound, Move(there / kHostile, here / "dir"));
        EXPECT_EQ((Names{"d", "link"}), EntriesOf(tree));
        EXPECT_EQ(old, ReadText(here / kHostile));
        EXPECT_EQ((Names{"dir", kHostile}), EntriesOf(here.path()));
        EXPECT_TRUE(EntriesOf(here / "dir").empty());
        EXPECT_EQ(kOk, Move(there / kHostile, here / kHostile));
        EXPECT_EQ(bytes, ReadText(here / kHostile));

        // Set only now: the failed copies read the source, which may touch its access time.
        const timeval times[2] = {{1400000000, 0}, {1500000000, 0}};
        const std::pair<std::string, mode_t> modes[] = {{sub, 0750}, {big, 0640}};
        for (const auto& [path, mode] : modes)
            ASSERT_EQ(0, chmod((tree + path).c_str(), mode) | utimes((tree + path).c_str(), times));
        rlimit saved{};
        getrlimit(RLIMIT_NOFILE, &saved);
        const rlimit low = {64, saved.rlim_max};
        ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &low));
        EXPECT_EQ(kOk, Move(tree, here / "tree"));
        EXPECT_EQ(Names{}, EntriesOf(there.path()));
        EXPECT_EQ((Names{"d", "link"}), EntriesOf(here / "tree"));
        for (const auto& [path, mode] : modes) {
            // Checked before reading, which may touch the access time.
            const struct stat status = StatOf(here / "tree" + path);
            EXPECT_EQ(1400000000, status.st_atime) << path;
            EXPECT_EQ(1500000000, status.st_mtime) << path;
            EXPECT_EQ(mode, status.st_mode & 07777) << path;
        }
        EXPECT_TRUE(S_ISLNK(StatOf(here / "tree/link").st_mode));
        EXPECT_EQ(bytes, ReadText(here / "tree/link"));
        FileSystem::DeleteDirectory(U16(here / "tree"));
        setrlimit(RLIMIT_NOFILE, &saved);
        EXPECT_EQ((Names{"dir", kHostile}), EntriesOf(here.path()));
    }
}
