#include <algorithm>

#include "fs/file_system.h"
#include "tests/support/test_support.h"

TEST(CreateDirectory, MakesMissingParentsAcceptsExistingAndRefusesFilesInTheWay) {
    ScratchDirectory scratch;
    const std::string deep = scratch / kHostile + "/b/" + kHostile;
    EXPECT_EQ(kOk, FileSystem::CreateDirectory(U16(scratch / kHostile + "//b/" + kHostile + "/")));
    EXPECT_EQ(kOk, FileSystem::CreateDirectory(U16(deep)));
    EXPECT_TRUE(S_ISDIR(StatOf(deep).st_mode));
    WriteText(scratch / "file", "keep me");
    for (const std::string& path : {scratch / "file", scratch / "file/sub/deeper", std::string()})
        EXPECT_EQ(kFileNotFound, FileSystem::CreateDirectory(U16(path))) << path;
    EXPECT_EQ("keep me", ReadText(scratch / "file"));
}

TEST(Deletion, RemovesTheTreeButNothingReachedThroughLinks) {
    ScratchDirectory scratch;
    WriteText(scratch / "outside/precious", "precious");
    WriteText(scratch / kHostile + "/x/y/file", "2");
    std::filesystem::create_directory_symlink("../../outside", scratch / kHostile + "/x/to-dir");
    std::filesystem::create_directory_symlink("outside", scratch / "alias");

    FileSystem::DeleteDirectory(U16(scratch / kHostile + "/"));
    FileSystem::DeleteDirectory(U16(scratch / "alias"));       // only the link
    FileSystem::DeleteDirectory(U16(scratch / "outside/.."));  // refused
    EXPECT_EQ(Names{"outside"}, EntriesOf(scratch.path()));
    EXPECT_EQ("precious", ReadText(scratch / "outside/precious"));

    // DeleteFile writes one line, only for real failures.
    WriteText(scratch / kHostile, "x");
    testing::internal::CaptureStderr();
    FileSystem::DeleteFile(U16(scratch / kHostile));
    FileSystem::DeleteFile(U16(scratch / "missing"));
    // A directory cannot be unlinked; the newline in its name must not break the line.
    std::filesystem::create_directory(scratch / kHostile);
    FileSystem::DeleteFile(U16(scratch / kHostile));
    const std::string diagnostic = testing::internal::GetCapturedStderr();
    EXPECT_NE(std::string::npos, diagnostic.find("a\\012line")) << diagnostic;
    EXPECT_EQ(1, std::count(diagnostic.begin(), diagnostic.end(), '\n')) << diagnostic;
    EXPECT_EQ((Names{kHostile, "outside"}), EntriesOf(scratch.path()));
}

// Only an exact path finds anything: an entry is reported only when the search path
// itself can be stat'ed.
TEST(Enumeration, OnlyAnExactPathYieldsItsEntryAndOnlyOnce) {
    ScratchDirectory scratch;
    WriteText(scratch / kHostile, "x");
    std::filesystem::create_directory(scratch / "sub");
    FindData find;
    // "*" matches, but cannot be stat'ed itself; the stream stays open on the match (and
    // must not leak when the record is used again).
    EXPECT_FALSE(FileSystem::FindFirst(find, U16(scratch / "*")));
    EXPECT_FALSE(FileSystem::GetFindName(find).empty());
    for (const char* search : {"absent", "nowhere/name", ""})
        EXPECT_FALSE(FileSystem::FindFirst(find, U16(scratch / search))) << search;
    EXPECT_TRUE(FileSystem::GetFindName(find).empty());

    ASSERT_TRUE(FileSystem::FindFirst(find, U16(scratch / kHostile)));
    EXPECT_EQ(kHostile, Utf8(FileSystem::GetFindName(find)));
    EXPECT_EQ(0u, FileSystem::GetFindAttributes(find));
    EXPECT_FALSE(FileSystem::FindNext(find));
    EXPECT_TRUE(FileSystem::GetFindName(find).empty());
    ASSERT_TRUE(FileSystem::FindFirst(find, U16(scratch / "sub")));
    EXPECT_EQ(u"sub", FileSystem::GetFindName(find));
    EXPECT_EQ(kAttributeDirectory, FileSystem::GetFindAttributes(find));
}
