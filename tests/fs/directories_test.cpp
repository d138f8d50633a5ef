#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>

#include "fs/file_system.h"
#include "test_support.h"

TEST(CreateDirectory, MakesMissingParentsAcceptsExistingAndRefusesFilesInTheWay) {
    ScratchDirectory scratch;
    EXPECT_EQ(kOk, FileSystem::CreateDirectory(U16(scratch / "a/b//c/")));
    EXPECT_EQ(kOk, FileSystem::CreateDirectory(U16(scratch / "a/b/c")));
    EXPECT_TRUE(S_ISDIR(StatOf(scratch / "a/b/c").st_mode));
    // A link to a directory counts as that directory, as for any path lookup.
    ASSERT_EQ(0, symlink("a/b", (scratch / "link").c_str()));
    EXPECT_EQ(kOk, FileSystem::CreateDirectory(U16(scratch / "link/d")));
    EXPECT_TRUE(S_ISDIR(StatOf(scratch / "a/b/d").st_mode));

    WriteText(scratch / "file", "keep me");
    EXPECT_EQ(kFileNotFound, FileSystem::CreateDirectory(U16(scratch / "file")));
    EXPECT_EQ(kFileNotFound, FileSystem::CreateDirectory(U16(scratch / "file/sub/deeper")));
    EXPECT_EQ(kFileNotFound, FileSystem::CreateDirectory(stdx::u16string()));
    EXPECT_EQ("keep me", ReadText(scratch / "file"));
}

TEST(DeleteDirectory, RemovesTheTreeButNothingReachedThroughLinks) {
    ScratchDirectory scratch;
    ASSERT_EQ(0, mkdir((scratch / "outside").c_str(), 0755));
    WriteText(scratch / "outside/precious", "precious");
    ASSERT_EQ(kOk, FileSystem::CreateDirectory(U16(scratch / "tree/x/y")));
    WriteText(scratch / "tree/x/y/file", "2");
    ASSERT_EQ(0, symlink("../../outside", (scratch / "tree/x/to-dir").c_str()));
    ASSERT_EQ(0, symlink("../outside/precious", (scratch / "tree/to-file").c_str()));
    ASSERT_EQ(0, chmod((scratch / "tree/x").c_str(), 0500));
    ASSERT_EQ(0, symlink("outside", (scratch / "alias").c_str()));

    EXPECT_EQ(kOk, FileSystem::DeleteDirectory(U16(scratch / "tree/")));
    EXPECT_EQ(kOk, FileSystem::DeleteDirectory(U16(scratch / "alias")));  // only the link
    EXPECT_EQ(kOk, FileSystem::DeleteDirectory(U16(scratch / "never-there")));
    EXPECT_EQ(kOk, FileSystem::DeleteDirectory(U16(scratch / "outside/..")));  // refused
    EXPECT_EQ(std::vector<std::string>{"outside"}, EntriesOf(scratch.path()));
    EXPECT_EQ("precious", ReadText(scratch / "outside/precious"));
}

TEST(DeleteFile, RemovesFilesAndWritesOneLineOnlyForRealFailures) {
    ScratchDirectory scratch;
    WriteText(scratch / "file", "x");
    testing::internal::CaptureStderr();
    EXPECT_EQ(kOk, FileSystem::DeleteFile(U16(scratch / "file")));
    EXPECT_EQ(kOk, FileSystem::DeleteFile(U16(scratch / "missing")));
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
    EXPECT_FALSE(Exists(scratch / "file"));

    // A directory cannot be unlinked; its name, newline and all, is shown on one line.
    ASSERT_EQ(0, mkdir((scratch / "two\nlines").c_str(), 0755));
    testing::internal::CaptureStderr();
    EXPECT_EQ(kOk, FileSystem::DeleteFile(U16(scratch / "two\nlines")));
    const std::string diagnostic = testing::internal::GetCapturedStderr();
    EXPECT_NE(std::string::npos, diagnostic.find(scratch / "two\\012lines")) << diagnostic;
    EXPECT_EQ(1, std::count(diagnostic.begin(), diagnostic.end(), '\n'));
    EXPECT_TRUE(Exists(scratch / "two\nlines"));
}
