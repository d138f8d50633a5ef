#include <algorithm>

#include "fs/file_system.h"
#include "tests/support/test_support.h"

// Enumeration finds only an exact path: an entry is reported only when the search path
// itself can be stat'ed.
TEST(Directories, CreateDeleteAndFindWithoutReachingThroughLinks) {
    ScratchDirectory scratch;
    const std::string tree = scratch / kHostile, deep = tree + "/b/" + kHostile;
    const std::string precious = scratch / "outside/precious";
    EXPECT_EQ(kOk, FileSystem::CreateDirectory(U16(tree + "//b/" + kHostile + "/")));
    EXPECT_EQ(kOk, FileSystem::CreateDirectory(U16(deep)));  // already there
    WriteText(precious, "precious");
    for (const std::string& path : {precious, precious + "/a", std::string()})
        EXPECT_EQ(kFileNotFound, FileSystem::CreateDirectory(U16(path))) << path;

    FindData find;  // used again and again: a stream left open must not leak
    for (const char* search : {"*", "absent", "nowhere/name", ""})
        EXPECT_FALSE(FileSystem::FindFirst(find, U16(scratch / search))) << search;
    for (const auto& [path, attributes] : {std::pair{tree, kAttributeDirectory}, {precious, 0u}}) {
        ASSERT_TRUE(FileSystem::FindFirst(find, U16(path)));
        EXPECT_EQ(path.substr(path.rfind('/') + 1), Utf8(FileSystem::GetFindName(find)));
        EXPECT_EQ(attributes, FileSystem::GetFindAttributes(find));
        EXPECT_FALSE(FileSystem::FindNext(find));
        EXPECT_TRUE(FileSystem::GetFindName(find).empty());
    }

    // DeleteFile writes one line, only for real failures.
    WriteText(deep + "/file", "2");
    testing::internal::CaptureStderr();
    FileSystem::DeleteFile(U16(deep + "/file"));
    FileSystem::DeleteFile(U16(scratch / "missing"));
    FileSystem::DeleteFile(U16(deep));  // a directory; the newline must not break the line
    const std::string diagnostic = testing::internal::GetCapturedStderr();
    EXPECT_NE(std::string::npos, diagnostic.find("a\\012line")) << diagnostic;
    EXPECT_EQ(1, std::count(diagnostic.begin(), diagnostic.end(), '\n')) << diagnostic;
    EXPECT_EQ(Names{}, EntriesOf(deep));

    std::filesystem::create_directory_symlink("../../outside", tree + "/b/to-dir");
    std::filesystem::create_directory_symlink("outside", scratch / "alias");
    FileSystem::DeleteDirectory(U16(tree + "/"));
    FileSystem::DeleteDirectory(U16(scratch / "alias"));       // only the link
    FileSystem::DeleteDirectory(U16(scratch / "outside/.."));  // refused
    EXPECT_EQ(Names{"outside"}, EntriesOf(scratch.path()));
    EXPECT_EQ("precious", ReadText(precious));
}
