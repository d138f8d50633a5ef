#include <gtest/gtest.h>
#include <unistd.h>

#include "fs/file_system.h"
#include "test_support.h"

namespace {

class Enumeration : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(0, mkdir((scratch / "dir").c_str(), 0755));
        ASSERT_EQ(0, mkdir((scratch / "dir/sub").c_str(), 0755));
        WriteText(scratch / "dir/name", "x");
    }
    ScratchDirectory scratch;
};

}  // namespace

TEST_F(Enumeration, WildcardSearchYieldsNothingButKeepsTheStreamOpen) {
    FindData find;
    EXPECT_FALSE(FileSystem::FindFirst(find, U16(scratch / "dir/*")));
    // The pattern matched an entry, but "dir/*" itself cannot be stat'ed.
    EXPECT_NE(nullptr, find.stream);
    EXPECT_EQ("*", std::string(find.mask.c_str()));
    EXPECT_EQ(scratch / "dir", std::string(find.directory.c_str()));
    FileSystem::FindClose(find);
    EXPECT_EQ(nullptr, find.stream);
    EXPECT_FALSE(FileSystem::FindNext(find));
    EXPECT_TRUE(FileSystem::GetFindName(find).empty());
    EXPECT_EQ(0u, FileSystem::GetFindAttributes(find));
}

TEST_F(Enumeration, ExactPathYieldsItsNameAndAttribute) {
    FindData find;
    ASSERT_TRUE(FileSystem::FindFirst(find, U16(scratch / "dir/name")));
    EXPECT_EQ(u"name", FileSystem::GetFindName(find));
    EXPECT_EQ(0u, FileSystem::GetFindAttributes(find));
    // Only one entry carries that name, so the enumeration then runs out and closes.
    EXPECT_FALSE(FileSystem::FindNext(find));
    EXPECT_EQ(nullptr, find.stream);

    // The same record again, for a directory: the earlier stream must not leak.
    ASSERT_TRUE(FileSystem::FindFirst(find, U16(scratch / "dir/sub")));
    ASSERT_TRUE(FileSystem::FindFirst(find, U16(scratch / "dir/sub")));
    EXPECT_EQ(u"sub", FileSystem::GetFindName(find));
    EXPECT_EQ(kAttributeDirectory, FileSystem::GetFindAttributes(find));
}

TEST_F(Enumeration, MissingOrMismatchedSearchesFindNothing) {
    FindData find;
    EXPECT_FALSE(FileSystem::FindFirst(find, U16(scratch / "dir/absent")));
    EXPECT_EQ(nullptr, find.stream);
    EXPECT_FALSE(FileSystem::FindFirst(find, U16(scratch / "nowhere/name")));
    EXPECT_EQ(nullptr, find.stream);
    // A trailing slash leaves an empty mask, which no entry matches.
    EXPECT_FALSE(FileSystem::FindFirst(find, U16(scratch / "dir/")));
    EXPECT_EQ(std::string(), std::string(find.mask.c_str()));
    EXPECT_EQ(nullptr, find.stream);
}

TEST_F(Enumeration, PathWithoutSlashIsBothDirectoryAndMask) {
    CurrentDirectoryGuard restore;
    ASSERT_EQ(0, chdir(scratch.path().c_str()));
    FindData find;
    // "dir" holds no entry called "dir" yet.
    EXPECT_FALSE(FileSystem::FindFirst(find, u"dir"));
    EXPECT_EQ("dir", std::string(find.directory.c_str()));
    EXPECT_EQ("dir", std::string(find.mask.c_str()));

    ASSERT_EQ(0, mkdir("dir/dir", 0755));
    ASSERT_TRUE(FileSystem::FindFirst(find, u"dir"));
    EXPECT_EQ(u"dir", FileSystem::GetFindName(find));
    EXPECT_EQ(kAttributeDirectory, FileSystem::GetFindAttributes(find));
}
