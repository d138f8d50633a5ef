// File names that would run commands if any operation handed them to a shell. A
// command would run in this process's current directory, so "pwned" would appear there.
#include <gtest/gtest.h>

#include "fs/file_system.h"
#include "test_support.h"

namespace {

const std::string kHostile =
    "it's \"quoted\" $(touch pwned) `touch pwned` ;touch pwned; a\nline Žluťoučký кіт";
const std::string kContent = std::string("bytes\0and \xff", 11);
const FileTime kKnownTime = FileSystem::UnixTimeToFileTime(1234567890);

void CreateWithContent(const std::string& path) {
    FileHandle handle = kNoHandle;
    ASSERT_EQ(kOk, FileSystem::OpenFile(U16(path), kGenericWrite, 0, kCreateAlways, handle));
    std::uint32_t written = 0;
    ASSERT_EQ(kOk, FileSystem::WriteFile(handle, kContent.data(), 11, &written, nullptr));
    ASSERT_EQ(kOk, FileSystem::SetFileTime(handle, nullptr, nullptr, &kKnownTime));
    FileSystem::CloseFile(handle);
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
    const std::string directory = scratch / kHostile + "/" + kHostile;
    ASSERT_EQ(kOk, FileSystem::CreateDirectory(U16(directory)));
    stdx::u16string temporary;
    ASSERT_EQ(kOk, FileSystem::CreateTempFile(U16(directory), U16(kHostile), temporary));
    EXPECT_TRUE(Exists(Utf8(temporary)));
    FileSystem::DeleteFile(temporary);
    EXPECT_FALSE(Exists(Utf8(temporary)));

    const std::string file = directory + "/" + kHostile;
    CreateWithContent(file);
    EXPECT_EQ(kKnownTime, WriteTimeOf(file));
    FindData find;
    ASSERT_TRUE(FileSystem::FindFirst(find, U16(file)));
    EXPECT_EQ(kHostile, Utf8(FileSystem::GetFindName(find)));

    const std::string moved = scratch / kHostile + "/moved " + kHostile;
    ASSERT_EQ(kOk, FileSystem::MoveFile(U16(file), U16(moved)));
    EXPECT_EQ(kContent, ReadText(moved));
    FileSystem::DeleteFile(U16(moved));
    EXPECT_FALSE(Exists(moved));
    FileSystem::DeleteDirectory(U16(scratch / kHostile));
    EXPECT_TRUE(EntriesOf(scratch.path()).empty());
    EXPECT_FALSE(Exists("pwned"));
}

TEST(HostileNames, CrossVolumeMovesKeepBytesModeAndTime) {
    if (OtherVolumeBase().empty()) GTEST_SKIP() << "no second file system to move across";
    ScratchDirectory here, there(OtherVolumeBase());
    CreateWithContent(here / kHostile);
    ASSERT_EQ(0, chmod((here / kHostile).c_str(), 0640));
    // The file out on its own, replacing an older one, then back inside a directory
    // moved as a whole.
    WriteText(there / kHostile, "older");
    ASSERT_EQ(kOk, FileSystem::MoveFile(U16(here / kHostile), U16(there / kHostile)));
    ASSERT_EQ(kOk, FileSystem::CreateDirectory(U16(there / "d" + kHostile)));
    ASSERT_EQ(kOk, FileSystem::MoveFile(U16(there / kHostile),
                                        U16(there / "d" + kHostile + "/" + kHostile)));
    ASSERT_EQ(kOk, FileSystem::MoveFile(U16(there / "d" + kHostile), U16(here / "d" + kHostile)));

    const std::string back = here / "d" + kHostile + "/" + kHostile;
    EXPECT_EQ(0640u, StatOf(back).st_mode & 07777);
    EXPECT_EQ(kKnownTime, WriteTimeOf(back));
    EXPECT_EQ(kContent, ReadText(back));
    EXPECT_EQ(std::vector<std::string>{"d" + kHostile}, EntriesOf(here.path()));
    EXPECT_TRUE(EntriesOf(there.path()).empty());
    EXPECT_FALSE(Exists("pwned"));
}
