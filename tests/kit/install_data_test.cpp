#include "kit/install_data.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <regex>

#include "kit/kit_format.h"
#include "kit/lz_compressor.h"
#include "kit_test_support.h"

using namespace kittest;

namespace {

using Kit = InstallData<LZCompressor, FileSystem>;

// Layout 1 with one product or one file record of `statedLength` (0: its real length).
Bytes OneProduct(const KitWriter& body, std::uint32_t statedLength = 0) {
    return KitWriter().U32(1).U32(1).Record(body, statedLength).U32(0).bytes;
}
Bytes OneFile(const KitWriter& body, std::uint32_t statedLength = 0) {
    return KitWriter().U32(1).U32(0).U32(1).Record(body, statedLength).Raw("x").bytes;
}
std::u16string Describe(const config::ProductInfo& p) {
    return Std(p.language + u"|" + p.productName + u"|" + p.provider + u"|" + p.descriptionFile);
}

class InstallDataTest : public ::testing::Test {
  protected:
    ~InstallDataTest() override { Discard(); }
    // A failed load leaves no files, no handle, no temporary file and no open descriptor; a
    // successful one leaves one of each, with every data range inside the inflated kit.
    ResultCode Load(const Bytes& kitBytes) {
        WriteBytes(scratch.kit(), kitBytes);
        const std::size_t descriptors = CountOpenDescriptors();
        const ResultCode code = kit.Load(Path(scratch.kit()));
        EXPECT_EQ(code != kOk, kit.files.empty() && kit.handle == kNoHandle) << code;
        EXPECT_EQ(scratch.TempFileCount(), 0u) << "an inflated kit was left behind";
        EXPECT_EQ(CountOpenDescriptors(), descriptors + (code == kOk ? 1 : 0));
        for (const auto& file : kit.files)
            EXPECT_LE(file.offset + std::uint64_t{file.size}, Inflated().size());
        return code;
    }
    ResultCode LoadInflated(const Bytes& inflated) { return Load(Deflate(inflated, 6)); }
    void Discard() { kit.Close(); }
    std::string Inflated() {  // through the handle, which alone keeps the data
        struct stat status {};
        fstat(static_cast<int>(kit.handle), &status);
        std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
        EXPECT_EQ(pread(static_cast<int>(kit.handle), bytes.data(), bytes.size(), 0),
                  static_cast<ssize_t>(bytes.size()));
        return bytes;
    }
    std::string ContentOf(std::size_t i) {
        return Inflated().substr(kit.files.at(i).offset, kit.files[i].size);
    }
    std::uint32_t Position() {
        return FileSystem::SetFilePointer(kit.handle, 0, nullptr, kFileCurrent);
    }

    ScratchFolder scratch;
    Kit kit;
};

TEST_F(InstallDataTest, MultiLanguageKitLoadsAndWaitsAtItsData) {
    const std::string big(70000, 'b');
    const Bytes inflated =
        BuildKit({u"en", u"\u0440\u0443"}, {{u"t/a", "alpha"}, {u"t\\b", big}, {u"c", ""}});
    ASSERT_EQ(LoadInflated(inflated), kOk);
    ASSERT_EQ(kit.products.size(), 2u);
    EXPECT_EQ(Describe(kit.products[1]), u"\u0440\u0443|P-\u0440\u0443|Tavri|");
    ASSERT_EQ(kit.files.size(), 3u);
    EXPECT_EQ(Position(), inflated.size() - 70005) << "the handle waits at the data area";
    EXPECT_EQ(Std(kit.files[1].name), u"t\\b");
    EXPECT_EQ(kit.files[1].modificationTime, 0x01D900000007u);
    EXPECT_EQ(kit.files[2].offset, inflated.size()) << "an empty file may end the kit";
    EXPECT_EQ(ContentOf(0) + ContentOf(1), "alpha" + big);
    const std::filesystem::path temporary = NativePath(kit.tempPath);
    EXPECT_EQ(temporary.parent_path(), scratch.root + "/tmp");
    EXPECT_EQ(temporary.filename().string().substr(0, 3), "edf");
    EXPECT_EQ(Inflated(), std::string(inflated.begin(), inflated.end()));
}

TEST_F(InstallDataTest, RecordLengthMovesTheReaderAndDataMayLieAnywhere) {
    // Any non-zero layout; extra bytes after the fields; data out of order and overlapping.
    KitWriter inflated;
    inflated.U32(0xFFFFFFFF).U32(1).Record(ProductBody(u"en").Raw("xyz")).U32(2);
    inflated.Record(FileBody(u"late", 4, 4).Raw("???")).Record(FileBody(u"early", 0, 6));
    ASSERT_EQ(LoadInflated(inflated.Raw("abcdefgh").bytes), kOk);
    EXPECT_EQ(Describe(kit.products.at(0)), u"en|P-en|Tavri|");
    ASSERT_EQ(kit.files.size(), 2u);
    EXPECT_EQ(Std(kit.files[1].name), u"early");
    EXPECT_EQ(ContentOf(0) + ContentOf(1), "efghabcdef");
}

TEST_F(InstallDataTest, SingleProductLayoutIsEnglish) {
    const Bytes inflated =
        KitWriter().U32(0).String(u"Ledger").String(u"").String(u"d").U32(0).bytes;
    ASSERT_EQ(LoadInflated(inflated), kOk);
    ASSERT_EQ(kit.products.size(), 1u);
    EXPECT_EQ(Describe(kit.products[0]), u"en|Ledger||d");
    EXPECT_EQ(Position(), inflated.size());
}

TEST_F(InstallDataTest, EachRefusalRuleGivesDamagedData) {
    const KitWriter noStrings = KitWriter().U32(0).U32(0).U32(0).U32(0);
    const std::pair<const char*, Bytes> cases[] = {
        {"nothing inflated", {}},
        {"single-product string beyond the kit", KitWriter().U32(0).U32(1000).Raw("ab").bytes},
        {"huge product count", KitWriter().U32(1).U32(0xFFFFFFFF).U32(0).bytes},
        {"product length 0", KitWriter().U32(1).U32(1).U32(0).Raw(std::string(16, '\0')).bytes},
        {"product length below its counts", OneProduct(noStrings, 19)},
        {"product length beyond the kit", OneProduct(noStrings, 1000)},
        {"product length of 4 GiB", OneProduct(noStrings, 0xFFFFFFFF)},
        {"product string past its record", OneProduct(KitWriter().U32(0).U32(0).U32(0).U32(1))},
        {"huge file count", KitWriter().U32(1).U32(0).U32(100000).Raw(std::string(64, 0)).bytes},
        {"file length below its fixed fields", OneFile(FileBody(u"a", 0, 1), 23)},
        {"file name past its record", OneFile(KitWriter().U32(9).U32(0).U32(0).U32(0).U32(0))},
        {"file fixed fields past its record", OneFile(FileBody(u"a", 0, 1), 25)},
        {"file data beyond the kit", OneFile(FileBody(u"a", 0, 2))},
        {"empty file starting beyond the kit", OneFile(FileBody(u"a", 2, 0))},
        {"offset wrapping once absolute", OneFile(FileBody(u"a", 0xFFFFFFF0, 0))},
        {"size wrapping the range", OneFile(FileBody(u"a", 1, 0xFFFFFFFF))},
        {"unsafe name", OneFile(FileBody(u"t\\..\\..\\x", 0, 1))},
    };
    for (const auto& [what, inflated] : cases) {
        SCOPED_TRACE(what);
        EXPECT_EQ(LoadInflated(inflated), kDamagedData);
        EXPECT_NE(kit.lastRefusal.reason, nullptr);
    }
    EXPECT_STREQ(kit.lastRefusal.reason, "unsafe file name");
    EXPECT_EQ(kit.lastRefusal.position, 16u) << "where the name begins";
    ASSERT_EQ(LoadInflated(KitWriter().U32(1).U32(0).U32(0).bytes), kOk);
    EXPECT_EQ(kit.lastRefusal.reason, nullptr);
    Discard();
    EXPECT_EQ(kit.Load(Path(scratch.kit("absent"))), kFileNotFound);
    EXPECT_EQ(scratch.TempFileCount(), 0u);
}

TEST_F(InstallDataTest, FailureKeepsProductsAlreadyRead) {
    EXPECT_EQ(LoadInflated(BuildKit({u"en", u"de"}, {{u"a", "1"}, {u"../b", "2"}})), kDamagedData);
    ASSERT_EQ(kit.products.size(), 2u);
    EXPECT_EQ(Std(kit.products[1].language), u"de");
}

// A cut inside the end-of-stream bits may load, but then every table is whole.
TEST_F(InstallDataTest, EveryTruncationIsRefusedOrLosesNothing) {
    const Bytes whole = Deflate(BuildKit({u"en", u"de"}, {{u"a/one", "first"}, {u"two", "2"}}), 9);
    for (std::size_t at = 0; at < whole.size(); ++at) {
        const ResultCode code = Load(Bytes(whole.begin(), whole.begin() + at));
        EXPECT_TRUE(code == kDamagedData || (code == kOk && kit.files.size() == 2)) << at;
        Discard();
    }
}

TEST(KitFormatTest, OnlyNamesThatStayInsideTheTargetAreSafe) {
    const auto safe = [](const std::u16string& name) {
        return kitformat::is_safe_file_name(name.data(), name.size());
    };
    for (const char16_t* name :
         {u"a", u"d/f", u"d\\s\\f", u"a..b", u"..a", u"a/..b/c", u"./a", u"1:x"})
        EXPECT_TRUE(safe(name)) << Std(name).size();
    for (const char16_t* name : {u"", u"/a", u"\\a", u"c:f", u"..", u"../a", u"a/..", u"a\\..\\b"})
        EXPECT_FALSE(safe(name)) << Std(name).size();
    EXPECT_FALSE(safe(std::u16string(u"a\0b", 3))) << "a zero unit would cut the name short";
}

// Kits from an independent writer and encoder; their README's table says what each must
// give: 0 with its counts, or 13. NAME.deflate.inflated holds the exact inflated bytes;
// without one, inflation itself must fail.
TEST_F(InstallDataTest, ReferenceKitsLoadAsDocumented) {
    const auto folder =
        std::filesystem::path(Env("ORD8_SOURCE_DIR").value_or(".")) / "tests/data/kit";
    std::ifstream readme(folder / "README.md");
    const std::regex row(
        R"(^\| `([\w-]+\.deflate)` \|.*\| (0, \d+ product\(s\), \d+ file\(s\)|13) \|$)");
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
        Kit reference;
        const ResultCode code = reference.Load(Path(stream));
        EXPECT_EQ(code != kOk
                      ? std::to_string(code)
                      : "0, " + std::to_string(reference.products.size()) + " product(s), " +
                            std::to_string(reference.files.size()) + " file(s)",
                  match[2].str());
        reference.Close();
    }
    EXPECT_GE(rows, 10) << folder;
}

}  // namespace
