#include "kit/install_data.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>

#include "kit/lz_compressor.h"
#include "kit_test_support.h"

using namespace kittest;

namespace {

class InstallDataTest : public ::testing::Test {
  protected:
    ~InstallDataTest() override {
        if (kit.handle != kNoHandle) FileSystem::CloseFile(kit.handle);
    }
    ResultCode Load(const Bytes& inflated) { return kit.Load(Path(scratch.StoreKit(inflated))); }
    std::uint32_t Position() {
        return FileSystem::SetFilePointer(kit.handle, 0, nullptr, kFileCurrent);
    }
    // File `index`'s bytes as the worker will copy them through the open handle.
    std::string ContentOf(std::size_t index) {
        const auto& file = kit.files.at(index);
        std::string content(file.size, '\0');
        std::uint32_t read = 0;
        FileSystem::SetFilePointer(kit.handle, static_cast<std::int32_t>(file.offset), nullptr,
                                   kFileBegin);
        FileSystem::ReadFile(kit.handle, content.data(), file.size, &read, nullptr);
        return content.substr(0, read);
    }

    ScratchFolder scratch;
    InstallData<LZCompressor, FileSystem> kit;
};

TEST_F(InstallDataTest, MultiLanguageKitRoundTrips) {
    const std::string big(70000, 'b');
    const Bytes inflated =
        BuildKit({u"en", u"\u0440\u0443"}, {{u"t/a", "alpha"}, {u"t\\b", big}, {u"c", ""}});
    ASSERT_EQ(Load(inflated), kOk);
    ASSERT_EQ(kit.products.size(), 2u);
    EXPECT_EQ(Std(kit.products[1].language), u"\u0440\u0443");
    EXPECT_EQ(Std(kit.products[1].productName), u"P-\u0440\u0443");
    EXPECT_EQ(Std(kit.products[1].provider), u"Tavri");
    ASSERT_EQ(kit.files.size(), 3u);
    const auto dataStart = static_cast<std::uint32_t>(inflated.size() - 70005);
    EXPECT_EQ(Position(), dataStart) << "the handle waits at the data area";
    EXPECT_EQ(Std(kit.files[1].name), u"t\\b");
    EXPECT_EQ(kit.files[1].modificationTime, 0x01D900000007u);
    EXPECT_EQ(kit.files[2].offset, dataStart + 70005) << "an empty file may end the kit";
    EXPECT_EQ(ContentOf(0), "alpha");
    EXPECT_EQ(ContentOf(1), big);
    const std::filesystem::path inflatedKit = NativePath(kit.tempPath);
    EXPECT_EQ(inflatedKit.parent_path(), scratch.root + "/tmp");
    EXPECT_EQ(inflatedKit.filename().string().substr(0, 3), "edf");
    EXPECT_EQ(ReadBytes(inflatedKit), inflated) << "the inflated kit stays for the worker";
}

TEST_F(InstallDataTest, RecordLengthMovesTheReaderAndDataMayLieAnywhere) {
    // Layout 0xFFFFFFFF; extra bytes after the fields; data out of order and overlapping.
    KitWriter inflated;
    inflated.U32(0xFFFFFFFF).U32(1).Record(ProductBody(u"en").Raw("xyz"));
    inflated.U32(2).Record(FileBody(u"late", 4, 4).Raw("???")).Record(FileBody(u"early", 0, 6));
    const auto dataStart = static_cast<std::uint32_t>(inflated.bytes.size());
    ASSERT_EQ(Load(inflated.Raw("abcdefgh").bytes), kOk);
    EXPECT_EQ(Std(kit.products.at(0).productName), u"P-en");
    ASSERT_EQ(kit.files.size(), 2u);
    EXPECT_EQ(Std(kit.files[1].name), u"early");
    EXPECT_EQ(kit.files[0].offset, dataStart + 4);
    EXPECT_EQ(ContentOf(0), "efgh");
    EXPECT_EQ(ContentOf(1), "abcdef");
}

TEST_F(InstallDataTest, SingleProductLayoutIsEnglish) {
    const Bytes inflated =
        KitWriter().U32(0).String(u"Ledger").String(u"").String(u"d.html").U32(0).bytes;
    ASSERT_EQ(Load(inflated), kOk);
    ASSERT_EQ(kit.products.size(), 1u);
    EXPECT_EQ(Std(kit.products[0].language), u"en");
    EXPECT_EQ(Std(kit.products[0].productName), u"Ledger");
    EXPECT_TRUE(kit.products[0].provider.empty());
    EXPECT_EQ(Std(kit.products[0].descriptionFile), u"d.html");
    EXPECT_EQ(Position(), inflated.size());
}

// Kits made by an independent writer and encoder; their README's table says what each
// must give: 0 with its counts, or 13. A NAME.deflate.inflated file holds the exact
// inflated bytes; without one, inflation itself must fail.
TEST_F(InstallDataTest, ReferenceKitsLoadAsDocumented) {
    const char* source = std::getenv("ORD8_SOURCE_DIR");
    const std::filesystem::path folder =
        std::filesystem::path(source ? source : ".") / "tests/data/kit";
    std::ifstream readme(folder / "README.md");
    if (!readme) GTEST_SKIP() << "no reference kits";
    const std::regex row(
        R"(^\| `([\w-]+\.deflate)` \|.*\| (0, (\d+) product\(s\), (\d+) file\(s\)|13) \|$)");
    int rows = 0;
    for (std::string line; std::getline(readme, line);) {
        std::smatch match;
        if (!std::regex_match(line, match, row)) continue;
        SCOPED_TRACE(line);
        ++rows;
        const std::string stream = (folder / match[1].str()).string();
        const bool inflates = std::filesystem::exists(stream + ".inflated");
        EXPECT_EQ(LZCompressor().Decompress(Path(stream), Path(scratch.kit("out"))),
                  inflates ? kOk : kDamagedData);
        if (inflates) {
            EXPECT_EQ(ReadBytes(scratch.kit("out")), ReadBytes(stream + ".inflated"));
        }
        InstallData<LZCompressor, FileSystem> reference;
        const ResultCode code = reference.Load(Path(stream));
        if (match[3].matched) {
            EXPECT_EQ(code, kOk);
            EXPECT_EQ(reference.products.size(), std::stoul(match[3]));
            EXPECT_EQ(reference.files.size(), std::stoul(match[4]));
            FileSystem::CloseFile(reference.handle);
        } else {
            EXPECT_EQ(code, kDamagedData);
        }
    }
    EXPECT_GE(rows, 10);
}

}  // namespace
