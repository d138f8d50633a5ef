#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/time.h>
#include <unistd.h>

#include "fs/file_system.h"
#include "fs/platform.h"
#include "test_support.h"

namespace {

// Larger than any sensible copy buffer, with a pattern that shows misplaced chunks.
std::string PatternedBytes(std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>((i * 7919) >> 3);
    return bytes;
}

void SetTimes(const std::string& path, time_t seconds, long nanoseconds) {
    const timespec times[2] = {{seconds - 100, 0}, {seconds, nanoseconds}};
    ASSERT_EQ(0, utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW));
}

void ExpectSameModification(const struct stat& a, const struct stat& b) {
    EXPECT_EQ(fsdetail::ModifyTimeOf(a).tv_sec, fsdetail::ModifyTimeOf(b).tv_sec);
    EXPECT_EQ(fsdetail::ModifyTimeOf(a).tv_nsec, fsdetail::ModifyTimeOf(b).tv_nsec);
}

class CrossVolumeMove : public ::testing::Test {
  protected:
    void SetUp() override {
        if (OtherVolumeBase().empty()) GTEST_SKIP() << "no second file system to move across";
        there_.reset(new ScratchDirectory(OtherVolumeBase()));
    }
    const ScratchDirectory& there() const { return *there_; }
    ScratchDirectory here;

  private:
    std::unique_ptr<ScratchDirectory> there_;
};

}  // namespace

TEST(Move, SameVolumeRenamesAndReplacesAnExistingFile) {
    ScratchDirectory scratch;
    WriteText(scratch / "a", "new");
    WriteText(scratch / "b", "old and longer");
    EXPECT_EQ(kOk, FileSystem::MoveFile(U16(scratch / "a"), U16(scratch / "b")));
    EXPECT_FALSE(Exists(scratch / "a"));
    EXPECT_EQ("new", ReadText(scratch / "b"));
}

TEST(Move, FailuresAreFileNotFoundAndChangeNothing) {
    ScratchDirectory scratch;
    EXPECT_EQ(kFileNotFound, FileSystem::MoveFile(U16(scratch / "missing"), U16(scratch / "b")));
    EXPECT_FALSE(Exists(scratch / "b"));

    // The destination names the new entry; an existing directory there is not entered.
    WriteText(scratch / "file", "kept");
    ASSERT_EQ(0, mkdir((scratch / "dir").c_str(), 0755));
    WriteText(scratch / "dir/inside", "x");
    EXPECT_EQ(kFileNotFound, FileSystem::MoveFile(U16(scratch / "file"), U16(scratch / "dir")));
    EXPECT_EQ("kept", ReadText(scratch / "file"));
    EXPECT_EQ(std::vector<std::string>{"inside"}, EntriesOf(scratch / "dir"));

    // A missing parent of the destination.
    EXPECT_EQ(kFileNotFound,
              FileSystem::MoveFile(U16(scratch / "file"), U16(scratch / "none/file")));
    EXPECT_EQ("kept", ReadText(scratch / "file"));
}

TEST_F(CrossVolumeMove, FileKeepsBytesModeAndNanosecondTimes) {
    const std::string bytes = PatternedBytes(3 * 1024 * 1024 + 17);
    WriteText(here / "big", bytes);
    ASSERT_EQ(0, chmod((here / "big").c_str(), 0751));
    SetTimes(here / "big", 1500000000, 123456789);
    const struct stat before = StatOf(here / "big");
    WriteText(there() / "big", "an older file in the way");

    ASSERT_EQ(kOk, FileSystem::MoveFile(U16(here / "big"), U16(there() / "big")));
    EXPECT_FALSE(Exists(here / "big"));
    // Times before reading: the read itself may update the access time.
    const struct stat after = StatOf(there() / "big");
    EXPECT_EQ(before.st_atime, after.st_atime);
    ExpectSameModification(before, after);
    EXPECT_EQ(0751u, after.st_mode & 07777);
    EXPECT_EQ(bytes, ReadText(there() / "big"));
    EXPECT_EQ(std::vector<std::string>{"big"}, EntriesOf(there().path()));
}

TEST_F(CrossVolumeMove, DirectoryTreeArrivesWholeAndLinksStayLinks) {
    const std::string from = here / "tree";
    ASSERT_EQ(0, mkdir(from.c_str(), 0755));
    ASSERT_EQ(0, mkdir((from + "/empty").c_str(), 0700));
    ASSERT_EQ(0, mkdir((from + "/sub").c_str(), 0755));
    WriteText(from + "/sub/data", PatternedBytes(70000));
    WriteText(from + "/top", "top");
    ASSERT_EQ(0, symlink("sub/data", (from + "/link").c_str()));
    ASSERT_EQ(0, mkdir((from + "/locked").c_str(), 0755));
    WriteText(from + "/locked/inside", "inside");
    ASSERT_EQ(0, chmod((from + "/locked").c_str(), 0555));
    SetTimes(from + "/sub", 1400000000, 5);
    const struct stat subBefore = StatOf(from + "/sub");

    const std::string to = there() / "tree";
    ASSERT_EQ(kOk, FileSystem::MoveFile(U16(from), U16(to)));
    EXPECT_FALSE(Exists(from));
    EXPECT_EQ((std::vector<std::string>{"empty", "link", "locked", "sub", "top"}), EntriesOf(to));
    EXPECT_EQ(PatternedBytes(70000), ReadText(to + "/sub/data"));
    EXPECT_EQ("top", ReadText(to + "/top"));
    EXPECT_TRUE(S_ISLNK(StatOf(to + "/link").st_mode));
    EXPECT_EQ(PatternedBytes(70000), ReadText(to + "/link"));
    EXPECT_EQ(0700u, StatOf(to + "/empty").st_mode & 07777);
    EXPECT_EQ(0555u, StatOf(to + "/locked").st_mode & 07777);
    EXPECT_EQ("inside", ReadText(to + "/locked/inside"));
    ExpectSameModification(subBefore, StatOf(to + "/sub"));
    EXPECT_EQ(std::vector<std::string>{"tree"}, EntriesOf(there().path()));
}

TEST_F(CrossVolumeMove, FailedFileCopyLeavesSourceAndDestinationUntouched) {
    const std::string bytes = PatternedBytes(1024 * 1024);
    WriteText(there() / "source", bytes);
    WriteText(here / "target", "previous version");
    {
        FileSizeLimit limit(64 * 1024);
        EXPECT_EQ(kFileNotFound,
                  FileSystem::MoveFile(U16(there() / "source"), U16(here / "target")));
    }
    EXPECT_EQ(bytes, ReadText(there() / "source"));
    EXPECT_EQ("previous version", ReadText(here / "target"));
    EXPECT_EQ(std::vector<std::string>{"target"}, EntriesOf(here.path()));
}

TEST_F(CrossVolumeMove, FailedTreeCopyLeavesNoPartialTree) {
    const std::string from = there() / "tree";
    ASSERT_EQ(0, mkdir(from.c_str(), 0755));
    ASSERT_EQ(0, mkdir((from + "/a").c_str(), 0755));
    WriteText(from + "/a/small", "small");
    WriteText(from + "/a/large", PatternedBytes(512 * 1024));
    {
        FileSizeLimit limit(16 * 1024);
        EXPECT_EQ(kFileNotFound, FileSystem::MoveFile(U16(from), U16(here / "tree")));
    }
    EXPECT_EQ((std::vector<std::string>{"large", "small"}), EntriesOf(from + "/a"));
    EXPECT_EQ(PatternedBytes(512 * 1024), ReadText(from + "/a/large"));
    EXPECT_TRUE(EntriesOf(here.path()).empty());
}

TEST_F(CrossVolumeMove, DestinationDirectoryInTheWayIsRefusedWithoutLeftovers) {
    WriteText(there() / "file", "payload");
    ASSERT_EQ(0, mkdir((here / "occupied").c_str(), 0755));
    WriteText(here / "occupied/resident", "resident");
    EXPECT_EQ(kFileNotFound, FileSystem::MoveFile(U16(there() / "file"), U16(here / "occupied")));
    EXPECT_EQ("payload", ReadText(there() / "file"));
    EXPECT_EQ(std::vector<std::string>{"occupied"}, EntriesOf(here.path()));
    EXPECT_EQ(std::vector<std::string>{"resident"}, EntriesOf(here / "occupied"));
}
