// Packed kits read back through the installer's own reader: products, file records
// and every data byte must come out as they went in.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fs/file_system.h"
#include "kit/install_data.h"
#include "kit/lz_compressor.h"
#include "text/encoding.h"
#include "tool_test_support.h"
#include "tools/pack_command.h"

namespace {

using kittool_test::ScratchDir;
using kittool_test::write_file;

using Kit = InstallData<LZCompressor, FileSystem>;

std::u16string plain(const stdx::u16string& text) {
    return std::u16string(text.data(), text.size());
}

// Loads with the reader, and closes and removes the inflated kit afterwards.
struct LoadedKit {
    explicit LoadedKit(const std::string& path)
        : code(kit.Load(stdx::from_multibyte(stdx::mbstring(path.c_str())))) {}
    ~LoadedKit() {
        if (kit.handle != kNoHandle) FileSystem::CloseFile(kit.handle);
        if (code == 0) FileSystem::DeleteFile(kit.tempPath);
    }
    std::string data_of(std::size_t index) {
        const auto& file = kit.files.at(index);
        std::string bytes(file.size, '\0');
        std::uint32_t read = 0;
        FileSystem::SetFilePointer(kit.handle, static_cast<std::int32_t>(file.offset), nullptr,
                                   kFileBegin);
        EXPECT_EQ(FileSystem::ReadFile(kit.handle, bytes.data(), file.size, &read, nullptr), 0u);
        EXPECT_EQ(read, file.size);
        return bytes;
    }
    Kit kit;
    std::uint32_t code;
};

struct SourceFile {
    std::string path;  // relative, '/' separated, UTF-8
    std::u16string kit_name;
    std::string content;
    std::int64_t time;
};

std::vector<SourceFile> sample_tree() {
    std::string every_byte;
    for (int i = 0; i < 256; ++i) every_byte.push_back(static_cast<char>(i));
    std::string large;  // spans several inflation buffers; xorshift keeps it incompressible
    std::uint32_t state = 2463534242u;
    for (int i = 0; i < 200000; ++i) {
        state ^= state << 13, state ^= state >> 17, state ^= state << 5;
        large.push_back(static_cast<char>(state));
    }
    // In the order the kit must hold them: UTF-8 bytes of the '/' paths.
    return {
        {"Zeta.txt", u"Zeta.txt", "upper case sorts first", 946684800},
        {"config/network/proxy.cfg", u"config\\network\\proxy.cfg", "[proxy]\nport = 3128\n",
         1709285400},
        {"config/service.cfg", u"config\\service.cfg", every_byte, 1709285401},
        {"data.bin", u"data.bin", large, 0},
        {"empty.txt", u"empty.txt", "", 4107542400},
        {"\xD0\xBE\xD1\x82\xD1\x87\xD1\x91\xD1\x82.txt", u"\u043E\u0442\u0447\u0451\u0442.txt",
         "\xD0\xA8\xD0\xB0\xD0\xB1\xD0\xBB\xD0\xBE\xD0\xBD", 1000000000},
    };
}

std::uint64_t file_time(std::int64_t unix_seconds) {
    return static_cast<std::uint64_t>(unix_seconds) * 10000000u + 116444736000000000u;
}

TEST(RoundTrip, ReaderSeesEveryProductFileAndByteInSortedOrder) {
    ScratchDir dir;
    const std::vector<SourceFile> tree = sample_tree();
    for (auto it = tree.rbegin(); it != tree.rend(); ++it)
        write_file(dir / ("src/" + it->path), it->content, it->time);
    write_file(dir / "manifest.txt",
               "product\ten\tTemplates\tExample Works\tconfig\\service.cfg\n"
               "product\tru\t\xD0\xA8\xD0\xB0\xD0\xB1\xD0\xBB\xD0\xBE\xD0\xBD\xD1\x8B\t\t\n");
    kittool::PackOptions options;
    options.source_dir = dir / "src";
    options.output_path = dir / "ord8.dkz";
    options.manifest_paths = {dir / "manifest.txt"};
    options.product_options = {"de:Vorlagen:Beispiel: GmbH:data.bin"};
    kittool::PackSummary summary;
    std::string error;
    ASSERT_TRUE(kittool::run_pack(options, summary, error)) << error;

    LoadedKit loaded(dir / "ord8.dkz");
    ASSERT_EQ(loaded.code, 0u);
    const Kit& kit = loaded.kit;
    ASSERT_EQ(kit.products.size(), 3u);
    const std::u16string expected_products[3][4] = {
        {u"en", u"Templates", u"Example Works", u"config\\service.cfg"},
        {u"ru", u"\u0428\u0430\u0431\u043B\u043E\u043D\u044B", u"", u""},
        {u"de", u"Vorlagen", u"Beispiel", u" GmbH:data.bin"},
    };
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(plain(kit.products[i].language), expected_products[i][0]);
        EXPECT_EQ(plain(kit.products[i].productName), expected_products[i][1]);
        EXPECT_EQ(plain(kit.products[i].provider), expected_products[i][2]);
        EXPECT_EQ(plain(kit.products[i].descriptionFile), expected_products[i][3]);
    }
    ASSERT_EQ(kit.files.size(), tree.size());
    for (std::size_t i = 0; i < tree.size(); ++i) {
        SCOPED_TRACE(tree[i].path);
        EXPECT_EQ(plain(kit.files[i].name), tree[i].kit_name);
        EXPECT_EQ(kit.files[i].modificationTime, file_time(tree[i].time));
        EXPECT_EQ(kit.files[i].size, tree[i].content.size());
        EXPECT_TRUE(loaded.data_of(i) == tree[i].content);
    }
}

TEST(RoundTrip, SingleEnglishProductComesBackAsEnglish) {
    ScratchDir dir;
    write_file(dir / "src/readme.txt", "read me");
    kittool::PackOptions options;
    options.source_dir = dir / "src";
    options.output_path = dir / "ord8.dkz";
    options.product_options = {"en:Name:Vendor:readme.txt"};
    options.level = 1;
    kittool::PackSummary summary;
    std::string error;
    ASSERT_TRUE(kittool::run_pack(options, summary, error)) << error;
    ASSERT_EQ(summary.layout, 0u);

    LoadedKit loaded(dir / "ord8.dkz");
    ASSERT_EQ(loaded.code, 0u);
    ASSERT_EQ(loaded.kit.products.size(), 1u);
    EXPECT_EQ(plain(loaded.kit.products[0].language), u"en");
    EXPECT_EQ(plain(loaded.kit.products[0].provider), u"Vendor");
    ASSERT_EQ(loaded.kit.files.size(), 1u);
    EXPECT_EQ(loaded.data_of(0), "read me");
}

}  // namespace
