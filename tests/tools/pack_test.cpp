// Packing: kits the installer's own reader reads back exactly, repeatable output, and
// refusals that do no harm.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "kit/lz_compressor.h"
#include "tool_test_support.h"
#include "tools/installer_reader.h"
#include "tools/pack_command.h"

namespace {

std::string Pack(const kittool::PackOptions& options, kittool::PackSummary& summary) {
    std::string error;
    return kittool::run_pack(options, summary, error) ? std::string() : error;
}

TEST(RoundTrip, ReaderSeesEveryProductFileAndByteInSortedOrder) {
    std::string noise;  // every byte value, across several inflation buffers
    for (std::uint32_t i = 0, state = 1; i < 200000; ++i)
        noise.push_back(static_cast<char>((state = state * 1103515245u + 12345u) >> 16));
    const struct {
        std::string path;  // relative, '/' between components, UTF-8
        std::string content;
        std::int64_t time;
    } tree[] = {
        // in kit order: UTF-8 bytes of the '/' paths
        {"Zeta.txt", "upper case sorts first", 946684800},
        {"config/network/proxy.cfg", "port = 3128\n", 1709285400},
        {"config/service.cfg", "[service]\n", 1709285401},
        {"data.bin", noise, 0},
        {"empty.txt", "", 4107542400},
        {kHostile, "a name meant for a shell", 1},
        {"notes:v2.txt", "a colon past the start is no drive", 2},
        {"\xD0\xBE\xD1\x82\xD1\x87\xD1\x91\xD1\x82.txt", "\xD0\xA8", 1000000000},
    };
    ScratchDirectory dir;
    for (const auto& file : tree) WriteFileAt(dir / ("src/" + file.path), file.content, file.time);
    // A byte order mark, comments, blank lines and CR LF line ends are all accepted.
    WriteFileAt(dir / "manifest.txt",
                "\xEF\xBB\xBF# products\r\n\r\n"
                "product\tEN\tTemplates\tExample Works\tconfig/service.cfg\r\n \t\n"
                "product\tru\t\xD0\xA8\xD0\xB0\xD0\xB1\xD0\xBB\xD0\xBE\xD0\xBD\xD1\x8B\t\t");
    // --product splits at the first three colons only.
    kittool::PackOptions options{dir / "src",
                                 dir / "ord8.dkz",
                                 {dir / "manifest.txt"},
                                 {"de:Vorlagen:Beispiel:notes:v2.txt"}};
    kittool::PackSummary summary;
    ASSERT_EQ(Pack(options, summary), "");
    EXPECT_EQ(summary.warnings, std::vector<std::string>{});

    const kittool::LoadedKit kit = kittool::LoadKit(options.output_path);
    ASSERT_EQ(kit.code, 0u);
    std::string products;
    for (const config::ProductInfo& p : kit.products)
        products += Utf8(p.language) + "|" + Utf8(p.productName) + "|" + Utf8(p.provider) + "|" +
                    Utf8(p.descriptionFile) + "\n";
    EXPECT_EQ(products,
              "EN|Templates|Example Works|config/service.cfg\n"
              "ru|\xD0\xA8\xD0\xB0\xD0\xB1\xD0\xBB\xD0\xBE\xD0\xBD\xD1\x8B||\n"
              "de|Vorlagen|Beispiel|notes:v2.txt\n");
    ASSERT_EQ(LZCompressor().Decompress(U16(options.output_path), U16(dir / "inflated")), 0u);
    const std::string inflated = ReadText(dir / "inflated");
    ASSERT_EQ(kit.files.size(), std::size(tree));
    for (std::size_t i = 0; i < kit.files.size(); ++i) {
        SCOPED_TRACE(tree[i].path);
        std::string kitName = tree[i].path;
        std::replace(kitName.begin(), kitName.end(), '/', '\\');
        EXPECT_EQ(Utf8(kit.files[i].name), kitName);
        EXPECT_EQ(kit.files[i].modificationTime,
                  static_cast<std::uint64_t>(tree[i].time) * 10000000u + 116444736000000000u);
        EXPECT_TRUE(inflated.substr(kit.files[i].offset, kit.files[i].size) == tree[i].content);
    }
}

TEST(Pack, SameTreeGivesSameBytesAndNeverPacksItsOwnOutput) {
    ScratchDirectory dir;
    WriteFileAt(dir / "src/docs/a.html", "a");
    const kittool::PackOptions options{
        dir / "src", dir / "src/ord8.dkz", {}, {"de:N:V:docs/a.html"}};
    kittool::PackSummary summary;
    ASSERT_EQ(Pack(options, summary), "");
    const std::string first = ReadText(options.output_path);
    ASSERT_EQ(Pack(options, summary), "");  // the kit now lies in src
    EXPECT_EQ(ReadText(options.output_path), first);
    EXPECT_EQ(summary.layout, 1u);  // one product, but not English
    EXPECT_EQ(summary.warnings,
              std::vector<std::string>{"no 'en' product: the installer falls "
                                       "back to 'en' for languages the kit lacks"});
}

// Every refusal must leave an earlier kit as it was, and nothing beside it.
class PackRefusal : public ::testing::Test {
  protected:
    void SetUp() override {
        WriteFileAt(dir / "src/good.txt", "good");
        WriteFileAt(dir / "ord8.dkz", "earlier kit");
    }
    void ExpectRefused(const std::string& fragment, std::vector<std::string> products = {},
                       const std::string& output = "ord8.dkz") {
        kittool::PackSummary summary;
        const std::string error = Pack({dir / "src", dir / output, {}, products}, summary);
        EXPECT_NE(error, "");
        EXPECT_NE(error.find(fragment), std::string::npos) << error;
        EXPECT_EQ(ReadText(dir / "ord8.dkz"), "earlier kit");
        EXPECT_EQ(EntriesOf(dir.path()), (Names{"ord8.dkz", "src"}));
    }
    ScratchDirectory dir;
};

TEST_F(PackRefusal, TextNamesSizesAndWriteFailures) {
    ExpectRefused("product 'en': name is not valid UTF-8 (byte 3)", {"en:Caf\xE9:V:"});
    ExpectRefused("more than one product", {"en:A:B:", "EN:C:D:"});
    WriteFileAt(dir / "src/C:drive.txt", "x");
    ExpectRefused("'C:drive.txt': the installer refuses this name (it could leave");
    std::filesystem::remove(dir / "src/C:drive.txt");
    WriteFileAt(dir / "src/\xF0\x9F\x98\x80.txt", "x");  // U+1F600 takes two surrogates
    ExpectRefused("the installer refuses this name (it holds a character beyond U+FFFF)");
    std::filesystem::remove(dir / "src/\xF0\x9F\x98\x80.txt");

    // Sparse files: sizes are refused before a byte of them is read.
    const std::string huge = dir / "src/huge.bin";
    WriteFileAt(huge, "");
    ASSERT_EQ(truncate(huge.c_str(), 0x100000000LL), 0);
    ExpectRefused("a kit holds files of at most 4294967295 bytes");
    ASSERT_EQ(truncate(huge.c_str(), 0xFFFFFFF0LL), 0);
    ExpectRefused("the unpacked kit would be");
    std::filesystem::remove(huge);

    ExpectRefused("cannot create '" + (dir / "no-such-folder/ord8.dkz") + "'", {},
                  "no-such-folder/ord8.dkz");
    const FileSizeLimit fullDisk(10);  // a write that fails midway
    ExpectRefused("cannot write the kit");
}

TEST_F(PackRefusal, LinkPlantedAtTheOldPartialNameIsNotFollowed) {
    ASSERT_EQ(symlink((dir / "victim").c_str(), (dir / "ord8.dkz.partial").c_str()), 0);
    kittool::PackSummary summary;
    ASSERT_EQ(Pack({dir / "src", dir / "ord8.dkz", {}, {}}, summary), "");
    EXPECT_TRUE(S_ISLNK(StatOf(dir / "ord8.dkz.partial").st_mode));
    EXPECT_EQ(EntriesOf(dir.path()), (Names{"ord8.dkz", "ord8.dkz.partial", "src"}));
}

}  // namespace
