#include <algorithm>

#include "fs/file_system.h"
#include "tests/support/test_support.h"

// TMPDIR counts only when it names a directory whose name survives UTF-16: otherwise
// callers would reach another folder. Temporary files and the free space are its own.
TEST(TemporaryFolder, FromTmpdirWithDistinctNewFilesItsFreeSpaceAndLowBitsOfSizes) {
    ScratchDirectory scratch;
    const std::string folder = scratch / "tmp/", emoji = scratch / "\xF0\x9F\x98\x80";
    for (const auto& created : {folder, emoji, scratch / "\xFF"})
        std::filesystem::create_directory(created);
    // clang-format off
    const std::pair<std::string, std::string> cases[] = {
        {"/dev/null", "/var/tmp/"}, {"/tmp", "/tmp/"}, {folder, folder},
        {emoji, "/var/tmp/"}, {scratch / "\xFF", "/var/tmp/"}};
    // clang-format on
    for (const auto& [tmpdir, expected] : cases) {
        ScopedEnvironment environment("TMPDIR", tmpdir);
        stdx::u16string path;
        FileSystem::GetTempDirectory(path);
        EXPECT_EQ(expected, Utf8(path)) << tmpdir;
    }

    ScopedEnvironment environment("TMPDIR", folder);
    Names names;
    stdx::u16string made;
    for (int i = 0; i < 300; ++i) {
        // With and without a trailing slash, which must not be doubled; or none at all.
        const std::string directory[] = {scratch / "tmp", folder, ""};
        ASSERT_EQ(kOk, FileSystem::CreateTempFile(U16(directory[i % 3]), U16(kHostile), made));
        names.insert(Utf8(made).substr(folder.size()));  // a doubled slash would stay
    }
    EXPECT_EQ(300u, names.size());
    EXPECT_EQ(names, EntriesOf(folder));
    for (const std::string& name : names) EXPECT_EQ(kHostile, name.substr(0, name.size() - 6));
    // The name is still reported when the file cannot be made.
    EXPECT_EQ(kCannotWrite, FileSystem::CreateTempFile(U16(scratch / "no"), u"edf", made));
    EXPECT_EQ(scratch / "no/edf", Utf8(made).substr(0, made.size() - 6));

    const std::string sparse = folder + *names.begin();
    std::filesystem::resize_file(sparse, (std::uintmax_t{1} << 32) + 7);
    std::uint32_t size = 0;
    EXPECT_EQ(kOk, FileSystem::GetFileSize(U16(sparse), &size));
    EXPECT_EQ(7u, size);
    EXPECT_EQ(kSizeQueryFailed, FileSystem::GetFileSize(U16(sparse), nullptr));
    EXPECT_EQ(kSizeQueryFailed, FileSystem::GetFileSize(U16(scratch / "missing"), &size));
    EXPECT_EQ(kInvalidParameter, FileSystem::GetFreeSpace(nullptr));
    // Saturated at 4 GiB, not wrapped; give or take what others write meanwhile.
    EXPECT_EQ(kOk, FileSystem::GetFreeSpace(&size));
    EXPECT_NEAR(std::min(1.0 * std::filesystem::space(folder).free, 4294967295.0), size, 64 << 20);
}
