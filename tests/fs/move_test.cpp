#include <sys/resource.h>
#include <sys/time.h>

#include "fs/file_system.h"
#include "tests/support/test_support.h"

namespace {

// Larger than any sensible copy buffer, with a pattern that shows misplaced chunks.
std::string Patterned(std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>((i * 7919) >> 3);
    return bytes;
}

// A directory on another device than the current one, or "" when there is none.
std::string OtherVolume() {
    const struct stat here = StatOf("."), shm = StatOf("/dev/shm");
    return S_ISDIR(shm.st_mode) && here.st_dev != shm.st_dev ? "/dev/shm" : "";
}

}  // namespace

TEST(Move, SameVolumeReplacesAFileButFailuresChangeNothing) {
    ScratchDirectory scratch;
    WriteText(scratch / kHostile, "new");
    WriteText(scratch / "b", "old and longer");
    EXPECT_EQ(kOk, FileSystem::MoveFile(U16(scratch / kHostile), U16(scratch / "b")));
    EXPECT_EQ("new", ReadText(scratch / "b"));
    std::filesystem::create_directory(scratch / "dir");
    EXPECT_EQ(kFileNotFound, FileSystem::MoveFile(U16(scratch / "gone"), U16(scratch / "c")));
    // The destination names the new entry; an existing directory there is not entered.
    EXPECT_EQ(kFileNotFound, FileSystem::MoveFile(U16(scratch / "b"), U16(scratch / "dir")));
    EXPECT_EQ((Names{"b", "dir"}), EntriesOf(scratch.path()));
    EXPECT_TRUE(EntriesOf(scratch / "dir").empty());
}

// The tree is deeper than the soft descriptor limit set here: a walk holding a
// descriptor per level could neither remove nor copy it.
TEST(CrossVolumeMove, DeepTreeArrivesWholeWithModesTimesAndLinks) {
    ScratchDirectory here;
    std::optional<ScratchDirectory> there;
    if (!OtherVolume().empty()) there.emplace(OtherVolume());
    std::string sub;
    for (int level = 0; level < 300; ++level) sub += "/d";
    const std::string from = here / kHostile, big = sub + "/" + kHostile;
    WriteText(here / "removed" + big, "x");
    WriteText(from + big, Patterned(3 * 1024 * 1024 + 17));
    std::filesystem::create_symlink(big.substr(1), from + "/link");
    ASSERT_EQ(0, chmod((from + big).c_str(), 0640));
    ASSERT_EQ(0, chmod((from + sub).c_str(), 0750));
    const timeval times[2] = {{1400000000, 0}, {1500000000, 0}};
    ASSERT_EQ(0, utimes((from + big).c_str(), times));
    ASSERT_EQ(0, utimes((from + sub).c_str(), times));
    rlimit saved{};
    getrlimit(RLIMIT_NOFILE, &saved);
    const rlimit low = {64, saved.rlim_max};
    ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &low));
    FileSystem::DeleteDirectory(U16(here / "removed"));
    const std::string to = there ? *there / "moved" : "";
    const ResultCode moved = there ? FileSystem::MoveFile(U16(from), U16(to)) : kOk;
    setrlimit(RLIMIT_NOFILE, &saved);
    EXPECT_EQ(there ? Names{} : Names{kHostile}, EntriesOf(here.path()));
    if (!there) GTEST_SKIP() << "removed; no second file system to move across";
    ASSERT_EQ(kOk, moved);
    EXPECT_EQ((Names{"d", "link"}), EntriesOf(to));
    for (const auto& [path, mode] : {std::pair{to + sub, 0750u}, {to + big, 0640u}}) {
        // Checked before reading, which may touch the access time.
        const struct stat status = StatOf(path);
        EXPECT_EQ(1400000000, status.st_atime) << path;
        EXPECT_EQ(1500000000, status.st_mtime) << path;
        EXPECT_EQ(mode, status.st_mode & 07777) << path;
    }
    EXPECT_TRUE(S_ISLNK(StatOf(to + "/link").st_mode));
    EXPECT_EQ(Patterned(3 * 1024 * 1024 + 17), ReadText(to + "/link"));
}

TEST(CrossVolumeMove, FailedMoveLeavesSourceAndOldDestinationAndNoPartialCopy) {
    if (OtherVolume().empty()) GTEST_SKIP() << "no second file system to move across";
    ScratchDirectory here, there(OtherVolume());
    WriteText(there / kHostile, Patterned(1024 * 1024));
    WriteText(here / kHostile, "previous version");
    WriteText(there / "tree/small", "small");
    WriteText(there / "tree/large", Patterned(512 * 1024));
    {
        FileSizeLimit limit(64 * 1024);  // the copies fail part way
        EXPECT_EQ(kFileNotFound, FileSystem::MoveFile(U16(there / kHostile), U16(here / kHostile)));
        EXPECT_EQ(kFileNotFound, FileSystem::MoveFile(U16(there / "tree"), U16(here / "tree")));
    }
    // The copy succeeds but cannot be renamed over a directory.
    std::filesystem::create_directory(here / "dir");
    EXPECT_EQ(kFileNotFound, FileSystem::MoveFile(U16(there / "tree/small"), U16(here / "dir")));

    EXPECT_EQ((Names{"large", "small"}), EntriesOf(there / "tree"));
    EXPECT_EQ("previous version", ReadText(here / kHostile));
    EXPECT_EQ((Names{"dir", kHostile}), EntriesOf(here.path()));
    EXPECT_TRUE(EntriesOf(here / "dir").empty());
    // Without the limit the same move goes through and replaces the old file.
    EXPECT_EQ(kOk, FileSystem::MoveFile(U16(there / kHostile), U16(here / kHostile)));
    EXPECT_EQ(Patterned(1024 * 1024), ReadText(here / kHostile));
}
