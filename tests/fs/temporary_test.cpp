#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <set>

#include "fs/file_system.h"
#include "test_support.h"

namespace {

// Runs with TMPDIR set to `value` (unset for nullptr), restoring it afterwards.
std::string TempDirectoryWith(const char* value) {
    const char* old = std::getenv("TMPDIR");
    const std::string saved = old != nullptr ? old : "";
    value != nullptr ? setenv("TMPDIR", value, 1) : unsetenv("TMPDIR");
    stdx::u16string path;
    EXPECT_EQ(kOk, FileSystem::GetTempDirectory(path));
    std::uint32_t free = 0;
    EXPECT_EQ(kOk, FileSystem::GetFreeSpace(&free));
    old != nullptr ? setenv("TMPDIR", saved.c_str(), 1) : unsetenv("TMPDIR");
    // Every candidate lies on the work disk, which has far more than 4 GiB free.
    EXPECT_EQ(0xFFFFFFFFu, free);
    return Utf8(path);
}

}  // namespace

TEST(TempDirectory, UsesTmpdirOnlyWhenItIsADirectoryAndEndsInASlash) {
    ScratchDirectory scratch;
    WriteText(scratch / "file", "x");
    EXPECT_EQ("/var/tmp/", TempDirectoryWith(nullptr));
    EXPECT_EQ("/var/tmp/", TempDirectoryWith(""));
    EXPECT_EQ("/var/tmp/", TempDirectoryWith((scratch / "file").c_str()));
    EXPECT_EQ("/var/tmp/", TempDirectoryWith((scratch / "missing").c_str()));
    EXPECT_EQ("/tmp/", TempDirectoryWith("/tmp"));
    EXPECT_EQ(scratch.path() + "/", TempDirectoryWith((scratch.path() + "/").c_str()));
    EXPECT_EQ(kInvalidParameter, FileSystem::GetFreeSpace(nullptr));
}

TEST(TempFile, ManyCallsGiveDistinctNewEmptyFiles) {
    ScratchDirectory scratch;
    std::set<std::string> names;
    for (int i = 0; i < 300; ++i) {
        stdx::u16string name;
        // Every other call with a trailing slash, which must not be doubled.
        ASSERT_EQ(kOk, FileSystem::CreateTempFile(U16(scratch.path() + (i % 2 ? "/" : "")), u"edf",
                                                  name));
        const std::string path = Utf8(name);
        EXPECT_EQ(scratch / "edf", path.substr(0, path.size() - 6));
        EXPECT_TRUE(S_ISREG(StatOf(path).st_mode) && StatOf(path).st_size == 0) << path;
        names.insert(path);
    }
    EXPECT_EQ(300u, names.size());
    EXPECT_EQ(300u, EntriesOf(scratch.path()).size());
}

TEST(TempFile, UnusableDirectoryIsCannotWriteButStillNamesTheFile) {
    ScratchDirectory scratch;
    WriteText(scratch / "file", "x");
    for (const std::string& directory : {scratch / "missing", scratch / "file"}) {
        stdx::u16string name;
        EXPECT_EQ(kCannotWrite, FileSystem::CreateTempFile(U16(directory), u"edf", name));
        EXPECT_EQ(directory + "/edf", Utf8(name).substr(0, directory.size() + 4));
    }
    EXPECT_EQ(std::vector<std::string>{"file"}, EntriesOf(scratch.path()));
}

TEST(FileSize, IsTheLowThirtyTwoBitsOrOneOnFailure) {
    ScratchDirectory scratch;
    const int fd = open((scratch / "sparse").c_str(), O_WRONLY | O_CREAT, 0600);
    ASSERT_EQ(0, ftruncate(fd, (off_t{1} << 32) + 7));
    close(fd);
    std::uint32_t size = 0;
    EXPECT_EQ(kOk, FileSystem::GetFileSize(U16(scratch / "sparse"), &size));
    EXPECT_EQ(7u, size);
    EXPECT_EQ(kSizeQueryFailed, FileSystem::GetFileSize(U16(scratch / "sparse"), nullptr));
    EXPECT_EQ(kSizeQueryFailed, FileSystem::GetFileSize(U16(scratch / "missing"), &size));
}
