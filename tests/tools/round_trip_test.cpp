// Packed kits read back through the installer's own reader: products, file records
// and every data byte must come out as they went in, in both layouts.
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

std::u16string plain(const stdx::u16string& text) { return {text.data(), text.size()}; }

// Loads with the reader, and closes and removes the inflated kit afterwards.
struct LoadedKit {
    explicit LoadedKit(const std::string& path)
        : code(kit.Load(stdx::from_multibyte(stdx::mbstring(path.c_str())))) {}
    ~LoadedKit() {
        if (code != 0) return;
        FileSystem::CloseFile(kit.handle);
        FileSystem::DeleteFile(kit.tempPath);
    }
    std::string data_of(std::size_t index) {
        const auto& file = kit.files.at(index);
        std::string bytes(file.size, '\0');
        std::uint32_t read = 0;
        FileSystem::SetFilePointer(kit.handle, static_cast<std::int32_t>(file.offset), nullptr,
                                   kFileBegin);
        FileSystem::ReadFile(kit.handle, bytes.data(), file.size, &read, nullptr);
        return bytes.substr(0, read);
    }
    InstallData<LZCompressor, FileSystem> kit;
    std::uint32_t code;
};

struct TreeFile {
    std::string path;  // relative, '/' between components, UTF-8
    std::u16string kit_name;
    std::string content;
    std::int64_t time;
};

TEST(RoundTrip, ReaderSeesEveryProductFileAndByteInSortedOrder) {
    std::string every_byte, noise;  // noise spans several inflation buffers
    for (int i = 0; i < 256; ++i) every_byte.push_back(static_cast<char>(i));
    for (std::uint32_t i = 0, state = 2463534242u; i < 200000; ++i) {
        state ^= state << 13, state ^= state >> 17, state ^= state << 5;
        noise.push_back(static_cast<char>(state));
    }
    const std::vector<TreeFile> tree = {
        // in kit order: UTF-8 bytes of the '/' paths
        {"Zeta.txt", u"Zeta.txt", "upper case sorts first", 946684800},
        {"config/network/proxy.cfg", u"config\\network\\proxy.cfg", "port = 3128\n", 1709285400},
        {"config/service.cfg", u"config\\service.cfg", every_byte, 1709285401},
        {"data.bin", u"data.bin", noise, 0},
        {"empty.txt", u"empty.txt", "", 4107542400},
        {"\xD0\xBE\xD1\x82\xD1\x87\xD1\x91\xD1\x82.txt", u"\u043E\u0442\u0447\u0451\u0442.txt",
         "\xD0\xA8", 1000000000},
    };
    ScratchDir dir;
    for (auto it = tree.rbegin(); it != tree.rend(); ++it)
        write_file(dir / ("src/" + it->path), it->content, it->time);
    // A byte order mark, comments, blank lines and CR LF line ends are all accepted.
    write_file(dir / "manifest.txt",
               "\xEF\xBB\xBF# products\r\n\r\n"
               "product\ten\tTemplates\tExample Works\tconfig\\service.cfg\r\n \t\n"
               "product\tru\t\xD0\xA8\xD0\xB0\xD0\xB1\xD0\xBB\xD0\xBE\xD0\xBD\xD1\x8B\t\t");
    kittool::PackOptions options;
    options.source_dir = dir / "src";
    options.output_path = dir / "ord8.dkz";
    options.manifest_paths = {dir / "manifest.txt"};
    options.product_options = {"de:Vorlagen:Beispiel:docs:a.html"};  // splits at 3 colons
    kittool::PackSummary summary;
    std::string error;
    ASSERT_TRUE(kittool::run_pack(options, summary, error)) << error;

    LoadedKit loaded(dir / "ord8.dkz");
    ASSERT_EQ(loaded.code, 0u);
    const std::vector<std::vector<std::u16string>> products = {
        {u"en", u"Templates", u"Example Works", u"config\\service.cfg"},
        {u"ru", u"\u0428\u0430\u0431\u043B\u043E\u043D\u044B", u"", u""},
        {u"de", u"Vorlagen", u"Beispiel", u"docs:a.html"}};
    ASSERT_EQ(loaded.kit.products.size(), products.size());
    for (std::size_t i = 0; i < products.size(); ++i) {
        const config::ProductInfo& product = loaded.kit.products[i];
        EXPECT_EQ(
            (std::vector<std::u16string>{plain(product.language), plain(product.productName),
                                         plain(product.provider), plain(product.descriptionFile)}),
            products[i]);
    }
    ASSERT_EQ(loaded.kit.files.size(), tree.size());
    for (std::size_t i = 0; i < tree.size(); ++i) {
        SCOPED_TRACE(tree[i].path);
        EXPECT_EQ(plain(loaded.kit.files[i].name), tree[i].kit_name);
        EXPECT_EQ(loaded.kit.files[i].modificationTime,
                  static_cast<std::uint64_t>(tree[i].time) * 10000000u + 116444736000000000u);
        EXPECT_TRUE(loaded.data_of(i) == tree[i].content);
    }

    // The single-product layout stores no language: the reader must still find English.
    options.manifest_paths.clear();
    options.product_options = {"en:Name:Vendor:data.bin"};
    ASSERT_TRUE(kittool::run_pack(options, summary, error)) << error;
    ASSERT_EQ(summary.layout, 0u);
    LoadedKit single(dir / "ord8.dkz");
    ASSERT_EQ(single.code, 0u);
    ASSERT_EQ(single.kit.products.size(), 1u);
    EXPECT_EQ(plain(single.kit.products[0].language), u"en");
    EXPECT_EQ(plain(single.kit.products[0].descriptionFile), u"data.bin");
    EXPECT_TRUE(single.data_of(3) == noise);
}

}  // namespace
