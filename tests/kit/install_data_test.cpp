#include "kit/install_data.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include "fs/file_system.h"
#include "kit/lz_compressor.h"
#include "kit_test_support.h"

using namespace kittest;

namespace {

using Kit = InstallData<LZCompressor, FileSystem>;

class InstallDataTest : public ::testing::Test {
  protected:
    ~InstallDataTest() override {
        if (data.handle != kNoHandle) FileSystem::CloseFile(data.handle);
    }

    ResultCode LoadKit(const Bytes& inflated, int level = 6) {
        return data.Load(Path(scratch.StoreKit(inflated, level)));
    }

    // The content of file `index` as the worker will find it through the handle.
    std::string ContentOf(std::size_t index) {
        const auto& file = data.files.at(index);
        const Bytes bytes = ReadAt(data.handle, file.offset, file.size);
        return std::string(bytes.begin(), bytes.end());
    }

    ScratchFolder scratch;
    Kit data;
};

TEST_F(InstallDataTest, ConstructedKitHasNoTablesNoHandleAndAFullBuffer) {
    EXPECT_TRUE(data.products.empty());
    EXPECT_TRUE(data.files.empty());
    EXPECT_TRUE(data.tempPath.empty());
    EXPECT_EQ(data.handle, kNoHandle);
    EXPECT_EQ(data.bufferSize, 0x100000u);
    ASSERT_NE(data.buffer, nullptr);
    data.buffer[data.bufferSize - 1] = 1;  // the whole buffer is ours (ASan checks)
}

TEST_F(InstallDataTest, MultiLanguageKitRoundTrips) {
    const std::vector<ProductSpec> products = {
        {u"en", u"Ledger", u"Tavri", u"doc/readme_en.html"},
        {u"de", u"Hauptbuch", u"Tavri GmbH", u"doc/readme_de.html"},
        {u"ru", u"\u0423\u0447\u0451\u0442", u"", u""},
    };
    const std::vector<FileSpec> files = {
        {u"tmplts/a.cfg", "alpha contents", 0x01D9000011112222ull},
        {u"tmplts\\sub\\b.cfg", std::string(70000, 'b'), 1},
        {u"\u0444\u0430\u0439\u043b.txt", "third", 0xFFFFFFFFFFFFFFFFull},
    };
    const Bytes inflated = BuildKit(1, products, files);
    ASSERT_EQ(LoadKit(inflated), kOk);

    ASSERT_EQ(data.products.size(), 3u);
    for (std::size_t i = 0; i < products.size(); ++i) {
        EXPECT_EQ(Std(data.products[i].language), products[i].language);
        EXPECT_EQ(Std(data.products[i].productName), products[i].name);
        EXPECT_EQ(Std(data.products[i].provider), products[i].provider);
        EXPECT_EQ(Std(data.products[i].descriptionFile), products[i].description);
    }
    const std::uint32_t dataStart = static_cast<std::uint32_t>(inflated.size() - 14 - 70000 - 5);
    ASSERT_EQ(data.files.size(), 3u);
    EXPECT_EQ(CurrentPosition(data.handle), dataStart) << "handle must wait at the data area";
    EXPECT_EQ(data.files[0].offset, dataStart);
    EXPECT_EQ(data.files[1].offset, dataStart + 14);
    EXPECT_EQ(data.files[2].offset, dataStart + 14 + 70000);
    for (std::size_t i = 0; i < files.size(); ++i) {
        EXPECT_EQ(Std(data.files[i].name), files[i].name);
        EXPECT_EQ(data.files[i].modificationTime, files[i].modificationTime);
        EXPECT_EQ(data.files[i].size, files[i].content.size());
        EXPECT_EQ(ContentOf(i), files[i].content);
    }

    // The inflated kit stays behind, open, under TMPDIR with the "edf" prefix.
    const auto entries = scratch.TempEntries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].rfind("edf", 0), 0u);
    EXPECT_EQ(Std(data.tempPath), Std(Path(scratch.temp() + "/" + entries[0])));
    EXPECT_EQ(ReadBytes(scratch.temp() + "/" + entries[0]), inflated);
}

TEST_F(InstallDataTest, TwelveByteKitHasNoTablesAndDataAtTwelve) {
    ASSERT_EQ(LoadKit(KitWriter().U32(1).U32(0).U32(0).bytes()), kOk);
    EXPECT_TRUE(data.products.empty());
    EXPECT_TRUE(data.files.empty());
    EXPECT_EQ(CurrentPosition(data.handle), 12u);
}

TEST_F(InstallDataTest, SingleProductLayoutIsEnglishAndMayBeEmpty) {
    ASSERT_EQ(LoadKit(BuildKit(0, {{u"ignored", u"Ledger", u"Tavri", u"d.html"}}, {{u"f", "x"}})),
              kOk);
    ASSERT_EQ(data.products.size(), 1u);
    EXPECT_EQ(Std(data.products[0].language), u"en");
    EXPECT_EQ(Std(data.products[0].productName), u"Ledger");
    EXPECT_EQ(Std(data.products[0].provider), u"Tavri");
    EXPECT_EQ(Std(data.products[0].descriptionFile), u"d.html");
    ASSERT_EQ(data.files.size(), 1u);
    FileSystem::CloseFile(data.handle);

    Kit empty;
    ASSERT_EQ(empty.Load(Path(scratch.StoreKit(BuildKit(0, {}, {}), 6, "empty.dkz"))), kOk);
    ASSERT_EQ(empty.products.size(), 1u);
    EXPECT_EQ(Std(empty.products[0].language), u"en");
    EXPECT_TRUE(empty.products[0].productName.empty());
    EXPECT_TRUE(empty.products[0].provider.empty());
    EXPECT_TRUE(empty.products[0].descriptionFile.empty());
    EXPECT_EQ(CurrentPosition(empty.handle), 20u);
    FileSystem::CloseFile(empty.handle);
}

TEST_F(InstallDataTest, AnyNonZeroLayoutIsMultiLanguage) {
    for (std::uint32_t layout : {1u, 2u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(layout);
        Kit kit;
        const std::string name = "layout" + std::to_string(layout);
        ASSERT_EQ(kit.Load(Path(scratch.StoreKit(
                      BuildKit(layout, {{u"lv", u"P", u"V", u""}}, {{u"a", "1"}}), 6, name))),
                  kOk);
        ASSERT_EQ(kit.products.size(), 1u);
        EXPECT_EQ(Std(kit.products[0].language), u"lv");
        EXPECT_EQ(kit.files.size(), 1u);
        FileSystem::CloseFile(kit.handle);
    }
}

TEST_F(InstallDataTest, RecordLengthMovesTheReaderPastExtraBytes) {
    const std::vector<ProductSpec> products = {{u"en", u"A", u"B", u"C", 7},
                                               {u"de", u"D", u"E", u"F", 0}};
    const std::vector<FileSpec> files = {{u"one", "1111", 5, 13}, {u"two", "22", 6, 1}};
    ASSERT_EQ(LoadKit(BuildKit(1, products, files)), kOk);
    ASSERT_EQ(data.products.size(), 2u);
    EXPECT_EQ(Std(data.products[1].language), u"de");
    EXPECT_EQ(Std(data.products[1].descriptionFile), u"F");
    ASSERT_EQ(data.files.size(), 2u);
    EXPECT_EQ(Std(data.files[1].name), u"two");
    EXPECT_EQ(data.files[1].modificationTime, 6u);
    EXPECT_EQ(ContentOf(0), "1111");
    EXPECT_EQ(ContentOf(1), "22");
}

TEST_F(InstallDataTest, RecordReadersConsumeExactlyTheStatedLength) {
    // Two records back to back in a plain file; each reader must stop at the next one.
    const Bytes bytes = KitWriter()
                            .Record(ProductRecordBody({u"en", u"N", u"P", u"", 9}))
                            .Record(FileRecordBody({u"dir/f", "", 77, 3}, 40))
                            .U32(0xABCD)
                            .bytes();
    const std::string path = scratch.kit("records");
    WriteBytes(path, bytes);
    FileHandle handle = kNoHandle;
    ASSERT_EQ(FileSystem::OpenFile(Path(path), kGenericRead, 0, kOpenExisting, handle), kOk);

    config::ProductInfo product;
    ASSERT_EQ(data.ReadProductInfo(handle, product), kOk);
    EXPECT_EQ(Std(product.productName), u"N");
    const std::uint32_t afterProduct =
        static_cast<std::uint32_t>(ProductRecordBody({u"en", u"N", u"P", u"", 9}).size() + 4);
    EXPECT_EQ(CurrentPosition(handle), afterProduct);

    config::FileData<FileSystem> file;
    ASSERT_EQ(data.ReadFileData(handle, file), kOk);
    EXPECT_EQ(Std(file.name), u"dir/f");
    EXPECT_EQ(file.modificationTime, 77u);
    EXPECT_EQ(file.offset, 40u) << "a lone record keeps its stored offset";
    EXPECT_EQ(file.size, 0u);
    EXPECT_EQ(CurrentPosition(handle), bytes.size() - 4);

    // A record that does not fit in what is left leaves the output untouched.
    config::FileData<FileSystem> untouched;
    untouched.size = 99;
    EXPECT_EQ(data.ReadFileData(handle, untouched), kDamagedData);
    EXPECT_EQ(untouched.size, 99u);
    FileSystem::CloseFile(handle);
}

TEST_F(InstallDataTest, OffsetsBecomeAbsoluteWhateverTheDataOrder) {
    // Tables end at exactly 100: 12 bytes of layout and counts, three 26-byte records
    // with one-unit names, and 10 extra bytes in the first record.
    KitWriter kit;
    kit.U32(1).U32(0).U32(3);
    kit.Record(FileRecordBody({u"z", std::string(4, '?'), 0, 10}, 4));
    kit.Record(FileRecordBody({u"y", "", 0, 0}, 0));        // empty, at the very start
    kit.Record(FileRecordBody({u"x", "abcdef", 0, 0}, 0));  // overlaps the first
    ASSERT_EQ(kit.bytes().size(), 100u);
    kit.Raw(std::string("abcdefgh"));
    ASSERT_EQ(LoadKit(kit.bytes()), kOk);

    ASSERT_EQ(data.files.size(), 3u);
    EXPECT_EQ(data.files[0].offset, 104u);
    EXPECT_EQ(data.files[1].offset, 100u);
    EXPECT_EQ(data.files[1].size, 0u);
    EXPECT_EQ(data.files[2].offset, 100u);
    EXPECT_EQ(ContentOf(0), "efgh");
    EXPECT_EQ(ContentOf(2), "abcdef");
}

TEST_F(InstallDataTest, EmptyFileMayEndExactlyAtTheEndOfTheKit) {
    KitWriter kit;
    kit.U32(1).U32(0).U32(2);
    kit.Record(FileRecordBody({u"full", "data"}, 0));
    kit.Record(FileRecordBody({u"empty", ""}, 4));
    kit.Raw(std::string("data"));
    ASSERT_EQ(LoadKit(kit.bytes()), kOk);
    EXPECT_EQ(data.files[1].offset, data.files[0].offset + 4);
    EXPECT_EQ(data.files[1].size, 0u);
}

TEST_F(InstallDataTest, KitsFromEveryKindOfDeflateBlockLoadAlike) {
    std::vector<FileSpec> files;
    for (int i = 0; i < 40; ++i) {
        files.push_back({u"t/file" + std::u16string(1, static_cast<char16_t>(u'A' + i)),
                         std::string(1000 + 997 * i, static_cast<char>('a' + i % 26))});
    }
    const Bytes inflated = BuildKit(1, {{u"en", u"P", u"V", u"D"}}, files);
    for (int level : {0, 1, 9}) {
        for (int strategy : {Z_DEFAULT_STRATEGY, Z_FIXED, Z_HUFFMAN_ONLY}) {
            SCOPED_TRACE("level " + std::to_string(level) + " strategy " +
                         std::to_string(strategy));
            const std::string path = scratch.kit("blocks.dkz");
            WriteBytes(path, Deflate(inflated, level, strategy));
            Kit kit;
            ASSERT_EQ(kit.Load(Path(path)), kOk);
            ASSERT_EQ(kit.files.size(), files.size());
            const auto& last = kit.files.back();
            const Bytes tail = ReadAt(kit.handle, last.offset, last.size);
            EXPECT_EQ(std::string(tail.begin(), tail.end()), files.back().content);
            FileSystem::CloseFile(kit.handle);
            FileSystem::DeleteFile(kit.tempPath);
        }
    }
}

}  // namespace
