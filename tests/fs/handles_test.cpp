#include <gtest/gtest.h>

#include "fs/file_system.h"
#include "scratch_directory.h"

TEST(FileHandles, WrittenBytesReadBack) {
    ScratchDirectory scratch;
    FileHandle out = kNoHandle;
    ASSERT_EQ(kOk,
              FileSystem::OpenFile(U16(scratch / "a.bin"), kGenericWrite, 0, kCreateAlways, out));
    std::uint32_t written = 0;
    ASSERT_EQ(kOk, FileSystem::WriteFile(out, "hello", 5, &written, nullptr));
    EXPECT_EQ(5u, written);
    FileSystem::CloseFile(out);

    FileHandle in = kNoHandle;
    ASSERT_EQ(kOk,
              FileSystem::OpenFile(U16(scratch / "a.bin"), kGenericRead, 0, kOpenExisting, in));
    char buffer[16] = {};
    std::uint32_t read = 0;
    ASSERT_EQ(kOk, FileSystem::ReadFile(in, buffer, sizeof buffer, &read, nullptr));
    EXPECT_EQ(5u, read);
    EXPECT_EQ(std::string("hello"), std::string(buffer, read));
    FileSystem::CloseFile(in);
}
