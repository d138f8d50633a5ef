// File names that would run commands if any operation handed them to a shell.
#include <gtest/gtest.h>
#include <unistd.h>

#include "fs/file_system.h"
#include "test_support.h"

namespace {

const std::string kHostileName =
    "it's \"quoted\" $(touch pwned) `touch pwned` ;touch pwned; a\nline Žluťoučký кіт";
const std::string kContent = std::string("bytes\0with a NUL and \xff high bytes", 34);
const FileTime kKnownTime = FileSystem::UnixTimeToFileTime(1234567890);

std::string CurrentDirectory() {
    char buffer[4096];
    return getcwd(buffer, sizeof buffer) != nullptr ? buffer : ".";
}

void ExpectNoCommandRan(const std::vector<std::string>& roots) {
    for (const std::string& root : roots) EXPECT_TRUE(FindByName(root, "pwned").empty()) << root;
}

void CreateWithContent(const std::string& path) {
    FileHandle handle = kNoHandle;
    ASSERT_EQ(kOk, FileSystem::OpenFile(U16(path), kGenericWrite, 0, kCreateAlways, handle));
    std::uint32_t written = 0;
    ASSERT_EQ(
        kOk, FileSystem::WriteFile(handle, kContent.data(),
                                   static_cast<std::uint32_t>(kContent.size()), &written, nullptr));
    ASSERT_EQ(kContent.size(), written);
    ASSERT_EQ(kOk, FileSystem::SetFileTime(handle, nullptr, nullptr, &kKnownTime));
    FileSystem::CloseFile(handle);
    ASSERT_EQ(kOk, FileSystem::GetLastError());
}

FileTime WriteTimeOf(const std::string& path) {
    FileHandle handle = kNoHandle;
    FileTime write = 0;
    if (FileSystem::OpenFile(U16(path), kGenericRead, 0, kOpenExisting, handle) == kOk) {
        FileSystem::GetFileTime(handle, nullptr, nullptr, &write);
        FileSystem::CloseFile(handle);
    }
    return write;
}

}  // namespace

TEST(HostileNames, EveryOperationTreatsTheNameAsPlainText) {
    ScratchDirectory scratch;
    ExpectNoCommandRan({CurrentDirectory(), scratch.path()});

    const std::string directory = scratch / kHostileName + "/" + kHostileName;
    ASSERT_EQ(kOk, FileSystem::CreateDirectory(U16(directory)));
    EXPECT_TRUE(S_ISDIR(StatOf(directory).st_mode));

    stdx::u16string temporary;
    ASSERT_EQ(kOk, FileSystem::CreateTempFile(U16(directory), U16(kHostileName), temporary));
    EXPECT_TRUE(Exists(Utf8(temporary)));
    ASSERT_EQ(kOk, FileSystem::DeleteFile(temporary));

    const std::string file = directory + "/" + kHostileName;
    CreateWithContent(file);
    EXPECT_EQ(kContent, ReadText(file));
    EXPECT_EQ(kKnownTime, WriteTimeOf(file));

    FindData find;
    ASSERT_TRUE(FileSystem::FindFirst(find, U16(file)));
    EXPECT_EQ(kHostileName, Utf8(FileSystem::GetFindName(find)));

    const std::string moved = scratch / kHostileName + "/moved " + kHostileName;
    ASSERT_EQ(kOk, FileSystem::MoveFile(U16(file), U16(moved)));
    EXPECT_FALSE(Exists(file));
    EXPECT_EQ(kContent, ReadText(moved));

    ASSERT_EQ(kOk, FileSystem::DeleteFile(U16(moved)));
    EXPECT_FALSE(Exists(moved));
    ASSERT_EQ(kOk, FileSystem::DeleteDirectory(U16(scratch / kHostileName)));
    EXPECT_FALSE(Exists(scratch / kHostileName));
    EXPECT_TRUE(Exists(scratch.path()));

    ExpectNoCommandRan({CurrentDirectory(), scratch.path()});
}

TEST(HostileNames, CrossVolumeMovesKeepBytesModeAndTime) {
    const std::string otherBase = OtherVolumeBase();
    if (otherBase.empty()) GTEST_SKIP() << "no second file system to move across";
    ScratchDirectory here;
    ScratchDirectory there(otherBase);

    const std::string file = here / kHostileName;
    CreateWithContent(file);
    ASSERT_EQ(0, chmod(file.c_str(), 0640));

    // A file out to the other volume...
    const std::string away = there / kHostileName;
    ASSERT_EQ(kOk, FileSystem::MoveFile(U16(file), U16(away)));
    EXPECT_FALSE(Exists(file));
    EXPECT_EQ(kContent, ReadText(away));
    EXPECT_EQ(0640u, StatOf(away).st_mode & 07777);
    EXPECT_EQ(kKnownTime, WriteTimeOf(away));

    // ...and back inside a directory of the same hostile name, moved as a whole.
    const std::string awayDirectory = there / ("dir " + kHostileName);
    ASSERT_EQ(kOk, FileSystem::CreateDirectory(U16(awayDirectory)));
    ASSERT_EQ(kOk, FileSystem::MoveFile(U16(away), U16(awayDirectory + "/" + kHostileName)));
    const std::string back = here / ("dir " + kHostileName);
    ASSERT_EQ(kOk, FileSystem::MoveFile(U16(awayDirectory), U16(back)));
    EXPECT_FALSE(Exists(awayDirectory));
    const std::string backFile = back + "/" + kHostileName;
    EXPECT_EQ(kContent, ReadText(backFile));
    EXPECT_EQ(0640u, StatOf(backFile).st_mode & 07777);
    EXPECT_EQ(kKnownTime, WriteTimeOf(backFile));

    ExpectNoCommandRan({CurrentDirectory(), here.path(), there.path()});
}
