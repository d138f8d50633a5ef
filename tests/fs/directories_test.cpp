#include <gtest/gtest.h>
#include <unistd.h>

#include "fs/file_system.h"
#include "test_support.h"

TEST(CreateDirectory, MakesEveryMissingParentAndAcceptsWhatExists) {
    ScratchDirectory scratch;
    const std::string deep = scratch / "a/b//c/d";
    EXPECT_EQ(kOk, FileSystem::CreateDirectory(U16(deep)));
    EXPECT_TRUE(S_ISDIR(StatOf(scratch / "a/b/c/d").st_mode));
    EXPECT_EQ(kOk, FileSystem::CreateDirectory(U16(deep)));
    EXPECT_EQ(kOk, FileSystem::CreateDirectory(U16(scratch / "a/b/e/")));
    EXPECT_TRUE(S_ISDIR(StatOf(scratch / "a/b/e").st_mode));

    // A link to a directory counts as the directory, as for any path lookup.
    ASSERT_EQ(0, symlink("a/b", (scratch / "link").c_str()));
    EXPECT_EQ(kOk, FileSystem::CreateDirectory(U16(scratch / "link/f")));
    EXPECT_TRUE(S_ISDIR(StatOf(scratch / "a/b/f").st_mode));
}

TEST(CreateDirectory, FileInTheWayOrEmptyPathIsFileNotFound) {
    ScratchDirectory scratch;
    WriteText(scratch / "file", "keep me");
    EXPECT_EQ(kFileNotFound, FileSystem::CreateDirectory(U16(scratch / "file")));
    EXPECT_EQ(kFileNotFound, FileSystem::CreateDirectory(U16(scratch / "file/sub/deeper")));
    EXPECT_EQ("keep me", ReadText(scratch / "file"));
    EXPECT_EQ(kFileNotFound, FileSystem::CreateDirectory(stdx::u16string()));
}

TEST(DeleteDirectory, RemovesTheTreeButNothingReachedThroughLinks) {
    ScratchDirectory scratch;
    const std::string outside = scratch / "outside";
    ASSERT_EQ(0, mkdir(outside.c_str(), 0755));
    WriteText(outside + "/precious", "precious");

    const std::string tree = scratch / "tree";
    ASSERT_EQ(kOk, FileSystem::CreateDirectory(U16(tree + "/x/y/z")));
    WriteText(tree + "/x/file", "1");
    WriteText(tree + "/x/y/z/file", "2");
    ASSERT_EQ(0, symlink(outside.c_str(), (tree + "/x/to-dir").c_str()));
    ASSERT_EQ(0, symlink((outside + "/precious").c_str(), (tree + "/to-file").c_str()));
    ASSERT_EQ(0, chmod((tree + "/x/y").c_str(), 0500));

    EXPECT_EQ(kOk, FileSystem::DeleteDirectory(U16(tree + "/")));
    EXPECT_FALSE(Exists(tree));
    EXPECT_EQ("precious", ReadText(outside + "/precious"));

    // Given a link itself, only the link goes.
    ASSERT_EQ(0, symlink(outside.c_str(), (scratch / "alias").c_str()));
    EXPECT_EQ(kOk, FileSystem::DeleteDirectory(U16(scratch / "alias")));
    EXPECT_FALSE(Exists(scratch / "alias"));
    EXPECT_EQ("precious", ReadText(outside + "/precious"));
}

TEST(DeleteDirectory, AlwaysSucceedsAndRefusesDotPaths) {
    ScratchDirectory scratch;
    EXPECT_EQ(kOk, FileSystem::DeleteDirectory(U16(scratch / "never-there")));
    WriteText(scratch / "plain", "x");
    EXPECT_EQ(kOk, FileSystem::DeleteDirectory(U16(scratch / "plain")));
    EXPECT_FALSE(Exists(scratch / "plain"));

    ASSERT_EQ(0, mkdir((scratch / "sub").c_str(), 0755));
    WriteText(scratch / "keep", "x");
    EXPECT_EQ(kOk, FileSystem::DeleteDirectory(U16(scratch / "sub/..")));
    EXPECT_EQ(kOk, FileSystem::DeleteDirectory(U16(scratch / "sub/.")));
    EXPECT_TRUE(Exists(scratch / "keep"));
    EXPECT_TRUE(Exists(scratch / "sub"));
}

TEST(DeleteFile, RemovesFilesAndComplainsOnlyAboutRealFailures) {
    ScratchDirectory scratch;
    WriteText(scratch / "file", "x");
    ASSERT_EQ(0, mkdir((scratch / "dir").c_str(), 0755));

    testing::internal::CaptureStderr();
    EXPECT_EQ(kOk, FileSystem::DeleteFile(U16(scratch / "file")));
    EXPECT_EQ(kOk, FileSystem::DeleteFile(U16(scratch / "missing")));
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
    EXPECT_FALSE(Exists(scratch / "file"));

    testing::internal::CaptureStderr();
    EXPECT_EQ(kOk, FileSystem::DeleteFile(U16(scratch / "dir")));
    const std::string diagnostic = testing::internal::GetCapturedStderr();
    EXPECT_NE(std::string::npos, diagnostic.find(scratch / "dir"));
    EXPECT_EQ(1, std::count(diagnostic.begin(), diagnostic.end(), '\n'));
    EXPECT_TRUE(Exists(scratch / "dir"));
}
