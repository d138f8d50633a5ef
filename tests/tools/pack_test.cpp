// Packing: what goes into a kit, in which order, and what is refused without harm.
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "kit/kit_format.h"
#include "tool_test_support.h"
#include "tools/pack_command.h"

namespace {

using kittool_test::inflate_raw;
using kittool_test::read_file;
using kittool_test::ScratchDir;
using kittool_test::write_file;

bool pack(const kittool::PackOptions& options, kittool::PackSummary& summary, std::string& error) {
    return kittool::run_pack(options, summary, error);
}

kittool::PackOptions options_for(const ScratchDir& dir,
                                 std::vector<std::string> products = {"en:Name:Vendor:"}) {
    kittool::PackOptions options;
    options.source_dir = dir / "src";
    options.output_path = dir / "ord8.dkz";
    options.product_options = std::move(products);
    return options;
}

std::uint32_t layout_of(const std::string& kit_path) {
    const std::string inflated = inflate_raw(read_file(kit_path));
    EXPECT_GE(inflated.size(), 4u);
    return kitformat::read_u32le(reinterpret_cast<const unsigned char*>(inflated.data()));
}

TEST(Pack, SameTreeGivesSameBytesWhateverTheCreationOrder) {
    ScratchDir first, second;
    const char* names[] = {"b.txt", "a/z.cfg", "a/b/c.txt", "\xD0\xB0.txt", "A.txt"};
    for (int i = 0; i < 5; ++i) write_file(first / ("src/" + std::string(names[i])), names[i]);
    for (int i = 4; i >= 0; --i) write_file(second / ("src/" + std::string(names[i])), names[i]);

    kittool::PackSummary summary;
    std::string error;
    ASSERT_TRUE(pack(options_for(first), summary, error)) << error;
    ASSERT_TRUE(pack(options_for(second), summary, error)) << error;
    EXPECT_EQ(summary.file_count, 5u);
    EXPECT_EQ(read_file(first / "ord8.dkz"), read_file(second / "ord8.dkz"));
    EXPECT_FALSE(read_file(first / "ord8.dkz").empty());
}

TEST(Pack, ChoosesLayoutZeroOnlyForOneEnglishProduct) {
    ScratchDir dir;
    write_file(dir / "src/a.txt", "a");
    kittool::PackSummary summary;
    std::string error;
    const struct {
        std::vector<std::string> products;
        std::uint32_t layout;
    } cases[] = {{{"en:N:V:a.txt"}, 0},
                 {{"ru:N:V:a.txt"}, 1},
                 {{"en:N:V:a.txt", "de:N:V:a.txt"}, 1},
                 {{}, 1}};
    for (const auto& c : cases) {
        ASSERT_TRUE(pack(options_for(dir, c.products), summary, error)) << error;
        EXPECT_EQ(summary.layout, c.layout);
        EXPECT_EQ(layout_of(dir / "ord8.dkz"), c.layout);
    }
}

TEST(Pack, LevelZeroStoresAndLevelNineCompresses) {
    ScratchDir dir;
    write_file(dir / "src/report.txt", std::string(20000, 'x'));
    kittool::PackOptions options = options_for(dir);
    kittool::PackSummary stored, compressed;
    std::string error;
    options.level = 0;
    ASSERT_TRUE(pack(options, stored, error)) << error;
    const std::string stored_bytes = read_file(dir / "ord8.dkz");
    EXPECT_EQ((stored_bytes[0] >> 1) & 3, 0);  // block type: stored
    options.level = 9;
    ASSERT_TRUE(pack(options, compressed, error)) << error;
    EXPECT_GT(stored.kit_size, stored.inflated_size);
    EXPECT_LT(compressed.kit_size, 200u);
    EXPECT_EQ(inflate_raw(stored_bytes), inflate_raw(read_file(dir / "ord8.dkz")));
    options.level = 10;
    EXPECT_FALSE(pack(options, compressed, error));
}

TEST(Pack, NeverPacksItsOwnOutputAndSkipsLinks) {
    ScratchDir dir;
    write_file(dir / "src/a.txt", "a");
    ASSERT_EQ(symlink("a.txt", (dir / "src/link.txt").c_str()), 0);
    kittool::PackOptions options = options_for(dir);
    options.output_path = dir / "src/ord8.dkz";
    kittool::PackSummary summary;
    std::string error;
    ASSERT_TRUE(pack(options, summary, error)) << error;
    ASSERT_TRUE(pack(options, summary, error)) << error;  // the first kit now lies in src
    EXPECT_EQ(summary.file_count, 1u);
    ASSERT_FALSE(summary.warnings.empty());
    EXPECT_EQ(summary.warnings[0], "skipped 'link.txt': not a regular file");
}

TEST(Pack, WarnsAboutMissingDescriptionsAndEnglish) {
    ScratchDir dir;
    write_file(dir / "src/docs/about.html", "<p>");
    kittool::PackSummary summary;
    std::string error;
    ASSERT_TRUE(pack(options_for(dir, {"en:N:V:docs/about.html"}), summary, error)) << error;
    EXPECT_TRUE(summary.warnings.empty()) << summary.warnings[0];
    ASSERT_TRUE(pack(options_for(dir, {"de:N:V:docs\\missing.html"}), summary, error));
    ASSERT_EQ(summary.warnings.size(), 2u);
    EXPECT_NE(summary.warnings[0].find("no 'en' product"), std::string::npos);
    EXPECT_NE(summary.warnings[1].find("'docs\\missing.html'"), std::string::npos);
}

// Each refusal must leave an earlier kit exactly as it was, and no partial file.
class PackRefusal : public ::testing::Test {
  protected:
    void SetUp() override {
        write_file(dir / "src/good.txt", "good");
        write_file(dir / "ord8.dkz", "earlier kit");
    }
    void expect_refused(const kittool::PackOptions& options, const std::string& fragment) {
        kittool::PackSummary summary;
        std::string error;
        EXPECT_FALSE(pack(options, summary, error));
        EXPECT_NE(error.find(fragment), std::string::npos) << error;
        EXPECT_EQ(error.find('\n'), std::string::npos);
        EXPECT_EQ(read_file(dir / "ord8.dkz"), "earlier kit");
        EXPECT_FALSE(kittool_test::fs::exists(dir / "ord8.dkz.partial"));
    }
    ScratchDir dir;
};

TEST_F(PackRefusal, MissingOrNonDirectorySource) {
    kittool::PackOptions options = options_for(dir);
    options.source_dir = dir / "absent";
    expect_refused(options, "cannot read directory '" + (dir / "absent") + "'");
    options.source_dir = dir / "src/good.txt";
    expect_refused(options, "is not a directory");
}

TEST_F(PackRefusal, NamesTheInstallerCannotUse) {
    write_file(dir / "src/sub/back\\slash.txt", "x");
    expect_refused(options_for(dir), "'sub/back\\slash.txt': a backslash");
    kittool_test::fs::remove(dir / "src/sub/back\\slash.txt");

    write_file(dir / "src/C:drive.txt", "x");
    expect_refused(options_for(dir), "'C:drive.txt': the installer refuses");
    kittool_test::fs::remove(dir / "src/C:drive.txt");

    std::ofstream(dir / "src/bad-\xFF.txt") << "x";
    if (!kittool_test::fs::exists(dir / "src/bad-\xFF.txt"))
        GTEST_SKIP() << "this file system refuses names that are not UTF-8";
    expect_refused(options_for(dir), "name is not valid UTF-8 (byte 4)");
}

TEST_F(PackRefusal, BadProductText) {
    expect_refused(options_for(dir, {"en:Caf\xE9:V:"}), "product 'en': name is not valid UTF-8");
    expect_refused(options_for(dir, {"en:A:B:", "EN:C:D:"}), "more than one product");
    expect_refused(options_for(dir, {"en-no-colons"}), "LANG:NAME:VENDOR:DESCRIPTION");
    kittool::PackOptions options = options_for(dir, {});
    options.manifest_paths = {dir / "missing-manifest.txt"};
    expect_refused(options, "cannot read manifest");
}

TEST_F(PackRefusal, SizesBeyondThirtyTwoBits) {
    // Sparse files: the sizes are refused before a byte of them is read.
    const std::string huge = dir / "src/huge.bin";
    write_file(huge, "");
    ASSERT_EQ(truncate(huge.c_str(), 0x100000000LL), 0);
    expect_refused(options_for(dir), "a kit holds files of at most 4294967295 bytes");

    ASSERT_EQ(truncate(huge.c_str(), 0xFFFFFFF0LL), 0);
    expect_refused(options_for(dir), "the unpacked kit would be");
}

TEST_F(PackRefusal, UnwritableOutput) {
    kittool::PackOptions options = options_for(dir);
    options.output_path = dir / "no-such-folder/ord8.dkz";
    expect_refused(options, "cannot create '" + options.output_path + "'");
}

}  // namespace
