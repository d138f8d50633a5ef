#include <sys/statvfs.h>

#include "fs/file_system.h"
#include "tests/support/test_support.h"

// A folder whose name does not survive UTF-16 would be reached under another name.
TEST(TempDirectory, UsesTmpdirOnlyWhenItNamesADirectoryThatConvertsWhole) {
    ScratchDirectory scratch;
    WriteText(scratch / "file", "x");
    const std::string emoji = scratch / "\xF0\x9F\x98\x80", invalid = scratch / "\xFF";
    std::filesystem::create_directory(emoji);
    std::filesystem::create_directory(invalid);
    const std::pair<std::string, std::string> cases[] = {{scratch / "file", "/var/tmp/"},
                                                         {"/tmp", "/tmp/"},
                                                         {scratch / "", scratch / ""},
                                                         {emoji, "/var/tmp/"},
                                                         {invalid, "/var/tmp/"}};
    for (const auto& [tmpdir, expected] : cases) {
        ScopedEnvironment environment("TMPDIR", tmpdir);
        stdx::u16string path;
        FileSystem::GetTempDirectory(path);
        EXPECT_EQ(expected, Utf8(path)) << tmpdir;
    }
}

TEST(SpaceQueries, SizesAreTheLowThirtyTwoBitsAndFailuresHaveTheirCodes) {
    ScratchDirectory scratch;
    WriteText(scratch / kHostile, "");
    std::filesystem::resize_file(scratch / kHostile, (std::uintmax_t{1} << 32) + 7);  // sparse
    std::uint32_t size = 0;
    EXPECT_EQ(kOk, FileSystem::GetFileSize(U16(scratch / kHostile), &size));
    EXPECT_EQ(7u, size);
    EXPECT_EQ(kSizeQueryFailed, FileSystem::GetFileSize(U16(scratch / kHostile), nullptr));
    EXPECT_EQ(kSizeQueryFailed, FileSystem::GetFileSize(U16(scratch / "missing"), &size));
    // Saturated at 4 GiB; below that it follows the temporary volume (give or take
    // what other processes write meanwhile).
    stdx::u16string temp;
    FileSystem::GetTempDirectory(temp);
    struct statvfs volume {};
    ASSERT_EQ(0, statvfs(Utf8(temp).c_str(), &volume));
    const std::uint64_t actual = std::uint64_t{volume.f_bfree} * volume.f_frsize;
    EXPECT_EQ(kOk, FileSystem::GetFreeSpace(&size));
    if (actual > 0xFFFFFFFFu + (std::uint64_t{64} << 20)) {
        EXPECT_EQ(0xFFFFFFFFu, size);
    } else {
        EXPECT_NEAR(static_cast<double>(actual), static_cast<double>(size), 64 << 20);
    }
    EXPECT_EQ(kInvalidParameter, FileSystem::GetFreeSpace(nullptr));
}

TEST(TempFile, EachCallMakesADistinctNewEmptyFileOrSaysItCannotWrite) {
    ScratchDirectory scratch;
    Names names;
    for (int i = 0; i < 300; ++i) {
        stdx::u16string made;
        // Every other call with a trailing slash, which must not be doubled.
        const std::string directory = scratch.path() + (i % 2 ? "/" : "");
        ASSERT_EQ(kOk, FileSystem::CreateTempFile(U16(directory), U16(kHostile), made));
        const std::string name = Utf8(made);
        EXPECT_EQ(scratch / kHostile, name.substr(0, name.size() - 6));
        EXPECT_EQ(0, StatOf(name).st_size) << name;
        names.insert(name);
    }
    EXPECT_EQ(300u, names.size());
    EXPECT_EQ(names.size(), EntriesOf(scratch.path()).size());
    // The name is still reported when the file cannot be made.
    stdx::u16string name;
    EXPECT_EQ(kCannotWrite, FileSystem::CreateTempFile(U16(scratch / "no"), u"edf", name));
    EXPECT_EQ(scratch / "no/edf", Utf8(name).substr(0, name.size() - 6));
    EXPECT_FALSE(std::filesystem::exists(scratch / "no"));
    // No directory means the temporary one.
    ScopedEnvironment environment("TMPDIR", scratch / "no");
    std::filesystem::create_directory(scratch / "no");
    ASSERT_EQ(kOk, FileSystem::CreateTempFile(u"", u"edf", name));
    EXPECT_EQ(scratch / "no/edf", Utf8(name).substr(0, name.size() - 6));
}
