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
    std::string Text(const stdx::mbstring& bytes) { return std::string(bytes.c_str()); }
    ScratchDirectory scratch;
    FindData find;
};

}  // namespace

TEST_F(Enumeration, WildcardOrMissingSearchesYieldNothing) {
    // The pattern matches entries, but "dir/*" itself cannot be stat'ed; the stream stays.
    EXPECT_FALSE(FileSystem::FindFirst(find, U16(scratch / "dir/*")));
    EXPECT_NE(nullptr, find.stream);
    EXPECT_EQ("*", Text(find.mask));
    EXPECT_EQ(scratch / "dir", Text(find.directory));
    FileSystem::FindClose(find);
    EXPECT_FALSE(FileSystem::FindNext(find));
    EXPECT_TRUE(FileSystem::GetFindName(find).empty());

    EXPECT_FALSE(FileSystem::FindFirst(find, U16(scratch / "dir/absent")));
    EXPECT_FALSE(FileSystem::FindFirst(find, U16(scratch / "nowhere/name")));
    EXPECT_FALSE(FileSystem::FindFirst(find, U16(scratch / "dir/")));  // empty mask
    EXPECT_EQ(nullptr, find.stream);
}

TEST_F(Enumeration, ExactPathYieldsItsNameAndAttributeOnce) {
    ASSERT_TRUE(FileSystem::FindFirst(find, U16(scratch / "dir/name")));
    EXPECT_EQ(u"name", FileSystem::GetFindName(find));
    EXPECT_EQ(0u, FileSystem::GetFindAttributes(find));
    EXPECT_FALSE(FileSystem::FindNext(find));
    EXPECT_EQ(nullptr, find.stream);
    // The record reused twice over: the earlier streams must not leak.
    ASSERT_TRUE(FileSystem::FindFirst(find, U16(scratch / "dir/sub")));
    ASSERT_TRUE(FileSystem::FindFirst(find, U16(scratch / "dir/sub")));
    EXPECT_EQ(u"sub", FileSystem::GetFindName(find));
    EXPECT_EQ(kAttributeDirectory, FileSystem::GetFindAttributes(find));
}

TEST_F(Enumeration, PathWithoutSlashIsBothDirectoryAndMask) {
    char saved[4096];
    ASSERT_NE(nullptr, getcwd(saved, sizeof saved));
    ASSERT_EQ(0, chdir(scratch.path().c_str()));
    const bool before = FileSystem::FindFirst(find, u"dir");  // no entry "dir" inside yet
    ASSERT_EQ(0, mkdir("dir/dir", 0755));
    const bool after = FileSystem::FindFirst(find, u"dir");
    ASSERT_EQ(0, chdir(saved));
    EXPECT_FALSE(before);
    ASSERT_TRUE(after);
    EXPECT_EQ("dir", Text(find.directory));
    EXPECT_EQ("dir", Text(find.mask));
    EXPECT_EQ(kAttributeDirectory, FileSystem::GetFindAttributes(find));
}
