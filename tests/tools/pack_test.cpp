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

TEST(Pack, ReaderSeesEveryProductFileAndByteInSortedOrderAndRepacksTheSame) {
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
                                 dir / "src/ord8.dkz",
                                 {dir / "manifest.txt"},
                                 {"de:Vorlagen:Beispiel:notes:v2.txt"}};
    kittool::PackSummary summary;
    ASSERT_EQ(Pack(options, summary), "");
    const std::string first = ReadText(options.output_path);
    ASSERT_EQ(Pack(options, summary), "");  // the kit now lies in src, yet is not packed
    EXPECT_EQ(ReadText(options.output_path), first) << "the same tree gave other bytes";
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

// Every refusal must leave an earlier kit as it was, and nothing beside it.
TEST(Pack, WritesBesideTheKitAndRefusalsLeaveTheEarlierOneAlone) {
    ScratchDirectory dir;
    WriteFileAt(dir / "src/good.txt", "good");
    // A link planted at a predictable temporary name must not be followed.
    ASSERT_EQ(symlink((dir / "victim").c_str(), (dir / "ord8.dkz.partial").c_str()), 0);
    kittool::PackSummary summary;
    ASSERT_EQ(Pack({dir / "src", dir / "ord8.dkz", {}, {}}, summary), "");
    EXPECT_EQ(EntriesOf(dir.path()), (Names{"ord8.dkz", "ord8.dkz.partial", "src"}));
    std::filesystem::remove(dir / "ord8.dkz.partial");
    WriteFileAt(dir / "ord8.dkz", "earlier kit");
    const auto expectRefused = [&](const std::vector<std::string>& products,
                                   const std::string& output, const std::string& fragment) {
        const std::string error = Pack({dir / "src", dir / output, {}, products}, summary);
        EXPECT_TRUE(!error.empty() && error.find(fragment) != std::string::npos) << error;
        EXPECT_EQ(ReadText(dir / "ord8.dkz"), "earlier kit");
        EXPECT_EQ(EntriesOf(dir.path()), (Names{"ord8.dkz", "src"}));
    };
    const struct {
        std::string planted;  // a file in src for this row only; sparse, so never read
        off_t size;
        std::vector<std::string> products;
        std::string fragment;
    } cases[] = {
        {"x", 0, {"en:Caf\xE9:V:"}, "product 'en': name is not valid UTF-8 (byte 3)"},
        {"x", 0, {"en:A:B:", "EN:C:D:"}, "language 'EN' has more than one product record"},
        {"caf\xE9.txt", 0, {}, "file 'caf\xE9.txt': name is not valid UTF-8 (byte 3)"},
        {"C:drive.txt", 0, {}, "'C:drive.txt': the installer refuses this name (it could leave"},
        // U+1F600 takes two surrogates.
        {"\xF0\x9F\x98\x80.txt", 0, {}, "refuses this name (it holds a character beyond U+FFFF)"},
        {"huge.bin", 0x100000000LL, {}, "a kit holds files of at most 4294967295 bytes"},
        {"huge.bin", 0xFFFFFFF0LL, {}, "the unpacked kit would be"},
    };
    for (const auto& [planted, size, products, fragment] : cases) {
        const std::string path = dir / ("src/" + planted);
        WriteFileAt(path, "");
        ASSERT_EQ(truncate(path.c_str(), size), 0);
        expectRefused(products, "ord8.dkz", fragment);
        std::filesystem::remove(path);
    }
    expectRefused({}, "no-such-folder/ord8.dkz",
                  "cannot create '" + (dir / "no-such-folder/ord8.dkz") + "'");
    // A disk that fills while a file is copied, then one that fills at the final flush.
    std::string noise(512 * 1024, '\0');
    for (std::size_t i = 0, x = 1; i < noise.size(); ++i, x = x * 1103515245 + 12345)
        noise[i] = static_cast<char>(x >> 16);
    WriteFileAt(dir / "src/noise.bin", noise);
    for (const rlim_t limit : {rlim_t{64 * 1024}, rlim_t{10}}) {
        const FileSizeLimit fullDisk(limit);
        expectRefused({}, "ord8.dkz", "cannot write the kit");
    }
}

}  // namespace
