#include <gtest/gtest.h>
#include <sys/time.h>
#include <unistd.h>

#include <memory>

#include "fs/file_system.h"
#include "test_support.h"

namespace {

using Names = std::vector<std::string>;

// Larger than any sensible copy buffer, with a pattern that shows misplaced chunks.
std::string Patterned(std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>((i * 7919) >> 3);
    return bytes;
}

class CrossVolumeMove : public ::testing::Test {
  protected:
    void SetUp() override {
        if (OtherVolumeBase().empty()) GTEST_SKIP() << "no second file system to move across";
        there.reset(new ScratchDirectory(OtherVolumeBase()));
    }
    std::string There(const std::string& name) const { return *there / name; }
    ScratchDirectory here;
    std::unique_ptr<ScratchDirectory> there;
};

}  // namespace

TEST(Move, SameVolumeReplacesAFileButFailuresChangeNothing) {
    ScratchDirectory scratch;
    WriteText(scratch / "a", "new");
    WriteText(scratch / "b", "old and longer");
    EXPECT_EQ(kOk, FileSystem::MoveFile(U16(scratch / "a"), U16(scratch / "b")));
    EXPECT_EQ("new", ReadText(scratch / "b"));
    EXPECT_EQ(kFileNotFound, FileSystem::MoveFile(U16(scratch / "gone"), U16(scratch / "c")));
    EXPECT_EQ(kFileNotFound, FileSystem::MoveFile(U16(scratch / "b"), U16(scratch / "no/b")));
    // The destination names the new entry; an existing directory there is not entered.
    ASSERT_EQ(0, mkdir((scratch / "dir").c_str(), 0755));
    EXPECT_EQ(kFileNotFound, FileSystem::MoveFile(U16(scratch / "b"), U16(scratch / "dir")));
    EXPECT_EQ((Names{"b", "dir"}), EntriesOf(scratch.path()));
    EXPECT_TRUE(EntriesOf(scratch / "dir").empty());
}

TEST_F(CrossVolumeMove, DirectoryTreeArrivesWholeWithModesTimesAndLinks) {
    const std::string from = here / "tree", to = There("tree");
    for (const char* directory : {"", "/sub", "/locked"})
        ASSERT_EQ(0, mkdir((from + directory).c_str(), 0755));
    WriteText(from + "/sub/big", Patterned(3 * 1024 * 1024 + 17));
    WriteText(from + "/locked/inside", "inside");
    ASSERT_EQ(0, symlink("sub/big", (from + "/link").c_str()));
    ASSERT_EQ(0, chmod((from + "/locked").c_str(), 0555));
    const timeval times[2] = {{1400000000, 0}, {1500000000, 0}};
    ASSERT_EQ(0, utimes((from + "/sub/big").c_str(), times));
    ASSERT_EQ(0, utimes((from + "/sub").c_str(), times));

    ASSERT_EQ(kOk, FileSystem::MoveFile(U16(from), U16(to)));
    EXPECT_TRUE(EntriesOf(here.path()).empty());
    EXPECT_EQ((Names{"link", "locked", "sub"}), EntriesOf(to));
    for (const std::string& path : {to + "/sub", to + "/sub/big"}) {
        // Checked before reading, which may touch the access time.
        const struct stat status = StatOf(path);
        EXPECT_EQ(1400000000, status.st_atime) << path;
        EXPECT_EQ(1500000000, status.st_mtime) << path;
    }
    EXPECT_EQ(0555u, StatOf(to + "/locked").st_mode & 07777);
    EXPECT_TRUE(S_ISLNK(StatOf(to + "/link").st_mode));
    EXPECT_EQ(Patterned(3 * 1024 * 1024 + 17), ReadText(to + "/link"));
    EXPECT_EQ("inside", ReadText(to + "/locked/inside"));
}

TEST_F(CrossVolumeMove, FailedMoveLeavesSourceAndOldDestinationAndNoPartialCopy) {
    WriteText(There("file"), Patterned(1024 * 1024));
    WriteText(here / "file", "previous version");
    ASSERT_EQ(0, mkdir(There("tree").c_str(), 0755));
    WriteText(There("tree/small"), "small");
    WriteText(There("tree/large"), Patterned(512 * 1024));
    {
        FileSizeLimit limit(64 * 1024);  // the copies fail part way
        EXPECT_EQ(kFileNotFound, FileSystem::MoveFile(U16(There("file")), U16(here / "file")));
        EXPECT_EQ(kFileNotFound, FileSystem::MoveFile(U16(There("tree")), U16(here / "tree")));
    }
    // The copy succeeds but cannot be renamed over a directory.
    ASSERT_EQ(0, mkdir((here / "dir").c_str(), 0755));
    EXPECT_EQ(kFileNotFound, FileSystem::MoveFile(U16(There("tree/small")), U16(here / "dir")));

    EXPECT_EQ(Patterned(1024 * 1024), ReadText(There("file")));
    EXPECT_EQ(Patterned(512 * 1024), ReadText(There("tree/large")));
    EXPECT_EQ((Names{"large", "small"}), EntriesOf(There("tree")));
    EXPECT_EQ("previous version", ReadText(here / "file"));
    EXPECT_EQ((Names{"dir", "file"}), EntriesOf(here.path()));
    EXPECT_TRUE(EntriesOf(here / "dir").empty());
}
