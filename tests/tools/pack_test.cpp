// Packing: repeatable output, the layout choice, and refusals that do no harm.
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "tool_test_support.h"
#include "tools/pack_command.h"

namespace {

using kittool_test::read_file;
using kittool_test::ScratchDir;
using kittool_test::write_file;

kittool::PackOptions options_for(const ScratchDir& dir,
                                 std::vector<std::string> products = {"en:Name:Vendor:"}) {
    kittool::PackOptions options;
    options.source_dir = dir / "src";
    options.output_path = dir / "ord8.dkz";
    options.product_options = std::move(products);
    return options;
}

TEST(Pack, SameTreeGivesSameBytesWhateverTheCreationOrder) {
    ScratchDir first, second;
    const std::string names[] = {"b.txt", "a/z.cfg", "a/b/c.txt", "\xD0\xB0.txt", "A.txt"};
    for (const std::string& name : names) write_file(first / ("src/" + name), name);
    for (int i = 4; i >= 0; --i) write_file(second / ("src/" + names[i]), names[i]);
    kittool::PackSummary summary;
    std::string error;
    ASSERT_TRUE(kittool::run_pack(options_for(first), summary, error)) << error;
    ASSERT_TRUE(kittool::run_pack(options_for(second), summary, error)) << error;
    EXPECT_EQ(summary.file_count, 5u);
    EXPECT_EQ(read_file(first / "ord8.dkz"), read_file(second / "ord8.dkz"));
}

TEST(Pack, ChoosesLayoutZeroOnlyForOneEnglishProduct) {
    ScratchDir dir;
    write_file(dir / "src/a.txt", "a");
    const std::pair<std::vector<std::string>, std::uint32_t> cases[] = {
        {{"en:N:V:a.txt"}, 0}, {{"ru:N:V:a.txt"}, 1}, {{"en:N:V:", "de:N:V:"}, 1}, {{}, 1}};
    for (const auto& [products, layout] : cases) {
        kittool::PackSummary summary;
        std::string error;
        ASSERT_TRUE(kittool::run_pack(options_for(dir, products), summary, error)) << error;
        EXPECT_EQ(summary.layout, layout);
    }
}

TEST(Pack, NeverPacksItsOwnOutputAndSkipsLinksWithAWarning) {
    ScratchDir dir;
    write_file(dir / "src/docs/a.html", "a");
    ASSERT_EQ(symlink("docs/a.html", (dir / "src/link.html").c_str()), 0);
    kittool::PackOptions options = options_for(dir, {"de:N:V:docs/a.html"});
    options.output_path = dir / "src/ord8.dkz";
    kittool::PackSummary summary;
    std::string error;
    ASSERT_TRUE(kittool::run_pack(options, summary, error)) << error;
    ASSERT_TRUE(kittool::run_pack(options, summary, error)) << error;  // kit now lies in src
    EXPECT_EQ(summary.file_count, 1u);
    // The description file is found whichever separator names it.
    EXPECT_EQ(summary.warnings,
              (std::vector<std::string>{"skipped 'link.html': not a regular file",
                                        "no 'en' product: the installer falls back to 'en' "
                                        "for languages the kit lacks"}));
}

// Every refusal must leave an earlier kit as it was, and no partial file.
class PackRefusal : public ::testing::Test {
  protected:
    void SetUp() override {
        write_file(dir / "src/good.txt", "good");
        write_file(dir / "ord8.dkz", "earlier kit");
    }
    void expect_refused(const kittool::PackOptions& options, const std::string& fragment) {
        kittool::PackSummary summary;
        std::string error;
        EXPECT_FALSE(kittool::run_pack(options, summary, error));
        EXPECT_NE(error.find(fragment), std::string::npos) << error;
        EXPECT_EQ(read_file(dir / "ord8.dkz"), "earlier kit");
        EXPECT_FALSE(kittool_test::fs::exists(dir / "ord8.dkz.partial"));
    }
    ScratchDir dir;
};

TEST_F(PackRefusal, NamesAndTextTheInstallerCannotUse) {
    expect_refused(options_for(dir, {"en:Caf\xE9:V:"}), "product 'en': name is not valid UTF-8");
    expect_refused(options_for(dir, {"en:A:B:", "EN:C:D:"}), "more than one product");
    write_file(dir / "src/C:drive.txt", "x");
    expect_refused(options_for(dir), "'C:drive.txt': the installer refuses");
    kittool_test::fs::remove(dir / "src/C:drive.txt");
    std::ofstream(dir / "src/bad-\xFF.txt") << "x";
    if (!kittool_test::fs::exists(dir / "src/bad-\xFF.txt"))
        GTEST_SKIP() << "this file system refuses names that are not UTF-8";
    expect_refused(options_for(dir), "name is not valid UTF-8 (byte 4)");
}

TEST_F(PackRefusal, SizesBeyondThirtyTwoBitsAndAnUnwritableOutput) {
    // Sparse files: sizes are refused before a byte of them is read.
    const std::string huge = dir / "src/huge.bin";
    write_file(huge, "");
    ASSERT_EQ(truncate(huge.c_str(), 0x100000000LL), 0);
    expect_refused(options_for(dir), "a kit holds files of at most 4294967295 bytes");
    ASSERT_EQ(truncate(huge.c_str(), 0xFFFFFFF0LL), 0);
    expect_refused(options_for(dir), "the unpacked kit would be");
    kittool_test::fs::remove(huge);

    kittool::PackOptions options = options_for(dir);
    options.output_path = dir / "no-such-folder/ord8.dkz";
    expect_refused(options, "cannot create '" + options.output_path + "'");
}

}  // namespace
