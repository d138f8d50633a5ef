// Packing: kits the installer's own reader reads back exactly, repeatable output, and
// refusals that do no harm.
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "tests/support/test_support.h"
#include "tool_test_support.h"
#include "tools/file_ptr.h"
#include "tools/inflate_check.h"
#include "tools/installer_reader.h"
#include "tools/pack_command.h"

namespace {

using kittool_test::read_file;
using kittool_test::ScratchDir;
using kittool_test::write_file;

std::string pack(const kittool::PackOptions& options, kittool::PackSummary& summary) {
    std::string error;
    return kittool::run_pack(options, summary, error) ? std::string() : error;
}

// Every product's four fields, one product after another.
std::vector<std::u16string> fields(const std::vector<kittool::KitProduct>& products) {
    std::vector<std::u16string> all;
    for (const kittool::KitProduct& p : products)
        all.insert(all.end(), {p.language, p.name, p.vendor, p.description});
    return all;
}

struct TreeFile {
    std::string path;  // relative, '/' between components, UTF-8
    std::u16string kit_name;
    std::string content;
    std::int64_t time;
};

TEST(RoundTrip, ReaderSeesEveryProductFileAndByteInSortedOrder) {
    std::string noise;  // every byte value, across several inflation buffers
    for (std::uint32_t i = 0, state = 1; i < 200000; ++i)
        noise.push_back(static_cast<char>((state = state * 1103515245u + 12345u) >> 16));
    const std::vector<TreeFile> tree = {
        // in kit order: UTF-8 bytes of the '/' paths
        {"Zeta.txt", u"Zeta.txt", "upper case sorts first", 946684800},
        {"config/network/proxy.cfg", u"config\\network\\proxy.cfg", "port = 3128\n", 1709285400},
        {"config/service.cfg", u"config\\service.cfg", "[service]\n", 1709285401},
        {"data.bin", u"data.bin", noise, 0},
        {"empty.txt", u"empty.txt", "", 4107542400},
        {"notes:v2.txt", u"notes:v2.txt", "a colon past the start is no drive", 1},
        {"\xD0\xBE\xD1\x82\xD1\x87\xD1\x91\xD1\x82.txt", u"\u043E\u0442\u0447\u0451\u0442.txt",
         "\xD0\xA8", 1000000000},
    };
    ScratchDir dir;
    for (auto it = tree.rbegin(); it != tree.rend(); ++it)
        write_file(dir / ("src/" + it->path), it->content, it->time);
    // A byte order mark, comments, blank lines and CR LF line ends are all accepted.
    write_file(dir / "manifest.txt",
               "\xEF\xBB\xBF# products\r\n\r\n"
               "product\tEN\tTemplates\tExample Works\tconfig/service.cfg\r\n \t\n"
               "product\tru\t\xD0\xA8\xD0\xB0\xD0\xB1\xD0\xBB\xD0\xBE\xD0\xBD\xD1\x8B\t\t");
    // --product splits at the first three colons only.
    kittool::PackOptions options{dir / "src",
                                 dir / "ord8.dkz",
                                 {dir / "manifest.txt"},
                                 {"de:Vorlagen:Beispiel:notes:v2.txt"}};
    kittool::PackSummary summary;
    ASSERT_EQ(pack(options, summary), "");
    EXPECT_EQ(summary.warnings, std::vector<std::string>{});

    const kittool::ReaderView view = kittool::load_with_installer_reader(options.output_path);
    ASSERT_EQ(view.code, 0u);
    EXPECT_EQ(fields(view.products),
              (std::vector<std::u16string>{
                  u"EN", u"Templates", u"Example Works", u"config/service.cfg",    //
                  u"ru", u"\u0428\u0430\u0431\u043B\u043E\u043D\u044B", u"", u"",  //
                  u"de", u"Vorlagen", u"Beispiel", u"notes:v2.txt"}));
    kittool::FilePtr sink(std::fopen((dir / "inflated").c_str(), "wb"));
    kittool::InflateReport report;
    std::string error;
    ASSERT_TRUE(kittool::inflate_kit(options.output_path, sink.get(), report, error));
    const std::string inflated = read_file(dir / "inflated");
    ASSERT_EQ(view.files.size(), tree.size());
    for (std::size_t i = 0; i < tree.size(); ++i) {
        SCOPED_TRACE(tree[i].path);
        EXPECT_EQ(view.files[i].name, tree[i].kit_name);
        EXPECT_EQ(view.files[i].modification_time,
                  static_cast<std::uint64_t>(tree[i].time) * 10000000u + 116444736000000000u);
        EXPECT_TRUE(inflated.substr(view.files[i].offset, view.files[i].size) == tree[i].content);
    }
}

TEST(Pack, SameTreeGivesSameBytesAndNeverPacksItsOwnOutput) {
    ScratchDir dir;
    write_file(dir / "src/docs/a.html", "a");
    const kittool::PackOptions options{
        dir / "src", dir / "src/ord8.dkz", {}, {"de:N:V:docs/a.html"}};
    kittool::PackSummary summary;
    ASSERT_EQ(pack(options, summary), "");
    const std::string first = read_file(options.output_path);
    ASSERT_EQ(pack(options, summary), "");  // the kit now lies in src
    EXPECT_EQ(read_file(options.output_path), first);
    EXPECT_EQ(summary.layout, 1u);  // one product, but not English
    EXPECT_EQ(summary.warnings,
              std::vector<std::string>{"no 'en' product: the installer falls "
                                       "back to 'en' for languages the kit lacks"});
}

// Every refusal must leave an earlier kit as it was, and no partial file.
class PackRefusal : public ::testing::Test {
  protected:
    void SetUp() override {
        write_file(dir / "src/good.txt", "good");
        write_file(dir / "ord8.dkz", "earlier kit");
    }
    void expect_refused(const std::string& fragment, std::vector<std::string> products = {},
                        const std::string& output = "ord8.dkz") {
        kittool::PackSummary summary;
        const std::string error = pack({dir / "src", dir / output, {}, products}, summary);
        EXPECT_NE(error, "");
        EXPECT_NE(error.find(fragment), std::string::npos) << error;
        EXPECT_EQ(read_file(dir / "ord8.dkz"), "earlier kit");
        EXPECT_EQ(EntriesOf(dir.path()), (Names{"ord8.dkz", "src"}));
    }
    ScratchDirectory dir;
};

TEST_F(PackRefusal, TextNamesSizesAndWriteFailures) {
    expect_refused("product 'en': name is not valid UTF-8 (byte 3)", {"en:Caf\xE9:V:"});
    expect_refused("more than one product", {"en:A:B:", "EN:C:D:"});
    write_file(dir / "src/C:drive.txt", "x");
    expect_refused("'C:drive.txt': the installer refuses");
    kittool_test::fs::remove(dir / "src/C:drive.txt");

    // Sparse files: sizes are refused before a byte of them is read.
    const std::string huge = dir / "src/huge.bin";
    write_file(huge, "");
    ASSERT_EQ(truncate(huge.c_str(), 0x100000000LL), 0);
    expect_refused("a kit holds files of at most 4294967295 bytes");
    ASSERT_EQ(truncate(huge.c_str(), 0xFFFFFFF0LL), 0);
    expect_refused("the unpacked kit would be");
    kittool_test::fs::remove(huge);

    expect_refused("cannot create '" + (dir / "no-such-folder/ord8.dkz") + "'", {},
                   "no-such-folder/ord8.dkz");
    const FileSizeLimit fullDisk(10);  // a write that fails midway
    expect_refused("cannot write the kit");
}

TEST_F(PackRefusal, LinkPlantedBesideTheKitIsNotFollowed) {
    ASSERT_EQ(symlink((dir / "victim").c_str(), (dir / "ord8.dkz.partial").c_str()), 0);
    kittool::PackSummary summary;
    ASSERT_EQ(pack({dir / "src", dir / "ord8.dkz", {}, {}}, summary), "");
    EXPECT_TRUE(S_ISLNK(StatOf(dir / "ord8.dkz.partial").st_mode));
    EXPECT_EQ(EntriesOf(dir.path()), (Names{"ord8.dkz", "ord8.dkz.partial", "src"}));
}

}  // namespace
