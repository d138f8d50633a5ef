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

// Layout 1 with one product record (at byte 8), or with one file record (at byte 12)
// and the data "x"; a `statedLength` of 0 gives the record its real length.
std::string OneProduct(const KitWriter& body, std::uint32_t statedLength = 0) {
    return KitWriter().U32(1).U32(1).Record(body, statedLength).U32(0).bytes;
}
std::string OneFile(const KitWriter& body, std::uint32_t statedLength = 0) {
    return KitWriter().U32(1).U32(0).U32(1).Record(body, statedLength).Raw("x").bytes;
}
std::string TwoFiles(const KitWriter& first, const KitWriter& second) {
    return KitWriter().U32(1).U32(0).U32(2).Record(first).Record(second).Raw("x").bytes;
}

class InstallDataTest : public ::testing::Test {
  protected:
    ~InstallDataTest() override { kit.Close(); }
    // Whatever the outcome, nothing is left in the temporary directory and at most the
    // kit's own descriptor stays open; a failure leaves no tables and no handle, a
    // success only data ranges inside the inflated kit.
    ResultCode LoadFile(const std::string& path) {
        kit.Close();
        kit.products.clear();  // a second Load would append to them
        const std::size_t descriptors = OpenDescriptors();
        const ResultCode code = kit.Load(U16(path));
        EXPECT_EQ(EntriesOf(scratch.tmp), Names{}) << "an inflated kit was left behind";
        EXPECT_EQ(OpenDescriptors(), descriptors + (code == kOk ? 1 : 0));
        EXPECT_EQ(code == kOk, kit.handle != kNoHandle);
        EXPECT_TRUE(code == kOk || kit.files.empty());
        const std::size_t size = code == kOk ? Inflated().size() : 0;
        for (const auto& file : kit.files) EXPECT_LE(file.offset + std::uint64_t{file.size}, size);
        return code;
    }
    ResultCode Load(const std::string& inflated) {
        WriteText(scratch.kit, Deflate(inflated));
        return LoadFile(scratch.kit);
    }
    std::string Inflated() {    // through the handle: the file has no name any more
        struct stat status {};  // not lseek: the handle must stay where Load left it
        fstat(int(kit.handle), &status);
        std::string bytes(std::size_t(status.st_size), '\0');
        EXPECT_EQ(pread(int(kit.handle), bytes.data(), bytes.size(), 0), ssize_t(bytes.size()));
        return bytes;
    }
    // The loaded tables as text: each product's fields, then each file's name and bytes.
    std::string Listing() {
        std::string listing;
        for (const auto& p : kit.products)
            listing += Utf8(p.language + u"|" + p.productName + u"|" + p.provider + u"|" +
                            p.descriptionFile) +
                       ";";
        for (const auto& f : kit.files)
            listing += Utf8(f.name) + "=" + Inflated().substr(f.offset, f.size) + ";";
        return listing;
    }

    KitScratch scratch;
    Kit kit;
};

TEST_F(InstallDataTest, EachLayoutLoadsAndTheHandleWaitsAtTheData) {
    const std::string big(70000, 'b');
    const std::u16string longName = u"reports\\monthly\\summary \u0433\u043e\u0434.txt";
    // Any non-zero layout; padding after a record's fields; data out of order, overlapping.
    KitWriter padded;
    padded.U32(0xFFFFFFFF).U32(1).Record(ProductBody(u"en").Raw("xyz")).U32(2);
    padded.Record(FileBody(u"late", 4, 4).Raw("???")).Record(FileBody(u"early", 0, 6));
    const struct {
        std::string inflated;
        std::string listing;
        std::size_t dataArea;
    } cases[] = {
        {KitWriter().U32(0).String(u"Ledger").String(u"").String(u"d").U32(0).bytes,
         "en|Ledger||d;", 0},
        {padded.Raw("abcdefgh").bytes, "en|P-en|Tavri|;late=efgh;early=abcdef;", 8},
        {BuildKit({u"en", u"\u0440\u0443"}, {{longName, "alpha"}, {u"t/b", big}, {u"c", ""}}),
         "en|P-en|Tavri|;\u0440\u0443|P-\u0440\u0443|Tavri|;" + Utf8(longName.c_str()) +
             "=alpha;t/b=" + big + ";c=;",
         70005},
    };
    for (const auto& c : cases) {
        ASSERT_EQ(Load(c.inflated), kOk);
        EXPECT_EQ(Listing(), c.listing);
        EXPECT_EQ(Inflated(), c.inflated);
        EXPECT_EQ(FileSystem::SetFilePointer(kit.handle, 0, nullptr, kFileCurrent),
                  c.inflated.size() - c.dataArea);
    }
    EXPECT_EQ(kit.files[1].modificationTime, 0x01D900000007u);
    EXPECT_EQ(kit.files[2].offset, cases[2].inflated.size()) << "an empty file may end the kit";
}

TEST_F(InstallDataTest, EachBrokenRuleIsRefusedWithItsReasonWhereItBroke) {
    const char *ends = "kit ends inside a field",
               *count = "count cannot fit in the rest of the kit",
               *below = "record length below its fixed fields",
               *pastKit = "record runs past the end of the kit",
               *pastRecord = "string runs past its record", *range = "data range outside the kit";
    const KitWriter noStrings = KitWriter().U32(0).U32(0).U32(0).U32(0);
    const KitWriter nameOf9 = KitWriter().U32(9).U32(0).U32(0).U32(0).U32(0);
    const struct {
        const char* what;
        std::string inflated;
        const char* reason;
        std::uint64_t position;
    } cases[] = {
        {"nothing inflated", "", ends, 0},
        {"single-product string beyond the kit", KitWriter().U32(0).U32(1000).Raw("ab").bytes,
         "string runs past the end of the kit", 4},
        {"huge product count", KitWriter().U32(1).U32(0xFFFFFFFF).U32(0).bytes, count, 4},
        {"product length 0", KitWriter().U32(1).U32(1).U32(0).Raw(std::string(16, 0)).bytes, below,
         8},
        {"product length below its counts", OneProduct(noStrings, 19), below, 8},
        {"product length beyond the kit", OneProduct(noStrings, 1000), pastKit, 8},
        {"product length of 4 GiB", OneProduct(noStrings, 0xFFFFFFFF), pastKit, 8},
        {"product string past its record", OneProduct(KitWriter().U32(0).U32(0).U32(0).U32(1)),
         pastRecord, 24},
        {"huge file count", KitWriter().U32(1).U32(0).U32(100000).Raw(std::string(64, 0)).bytes,
         count, 8},
        {"file length below its fixed fields", OneFile(FileBody(u"a", 0, 1), 23), below, 12},
        {"file name past its record", OneFile(nameOf9), pastRecord, 16},
        {"file name past a short record after a long one",
         TwoFiles(FileBody(u"a", 0, 0).Raw(std::string(99, 'p')), nameOf9), pastRecord, 141},
        {"file fields past its record", OneFile(FileBody(u"a", 0, 1), 25),
         "field runs past its record", 34},
        {"file data beyond the kit", OneFile(FileBody(u"a", 0, 2)), range, 12},
        {"second file's data beyond the kit", TwoFiles(FileBody(u"a", 0, 1), FileBody(u"b", 5, 1)),
         range, 38},
        {"empty file starting beyond the kit", OneFile(FileBody(u"a", 2, 0)), range, 12},
        {"size wrapping the range", OneFile(FileBody(u"a", 1, 0xFFFFFFFF)), range, 12},
        {"offset wrapping once absolute", OneFile(FileBody(u"a", 0xFFFFFFF0, 0)), range, 12},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(Load(c.inflated), kDamagedData);
        EXPECT_STREQ(kit.lastRefusal.reason, c.reason);
        EXPECT_EQ(kit.lastRefusal.position, c.position);
    }
    // The last: its data would start at 38, after the 26-byte record, + 0xFFFFFFF0.
    const ClaimedRange& claimed = kit.lastRefusal.claimedRange;
    EXPECT_EQ(kit.lastRefusal.record, 1u);
    EXPECT_EQ(claimed.start, 38 + 0xFFFFFFF0ull);
    EXPECT_EQ(claimed.length, 0u);
    EXPECT_EQ(claimed.kitSize, 39u);
    ASSERT_EQ(Load(KitWriter().U32(1).U32(0).U32(0).bytes), kOk);
    EXPECT_EQ(kit.lastRefusal.reason, nullptr);
    EXPECT_EQ(LoadFile(scratch.root / "absent"), kFileNotFound);
}

// A name must stay inside the templates directory and reach the disk whole: the
// conversion to UTF-8 stops at the first surrogate, so "a\" + U+D800 would become "a/",
// and U+1F600 + ".txt" the empty name, the templates directory itself.
TEST_F(InstallDataTest, NamesThatCannotReachTheDiskWholeAndInsideAreRefused) {
    const std::vector<std::u16string> safe = {
        u"a", u"d/f", u"d\\s\\f", u"a..b", u"..a", u"./a", u"1:x", u"\u0444\u0430\u0439\u043b"};
    const std::vector<std::u16string> unsafe = {
        u"", u"/a", u"\\a", u"c:f", u"..", u"a/..", u"t\\..\\..\\x", std::u16string(u"a\0b", 3)};
    const std::vector<std::u16string> cut = {u"..\xD800", u"\U0001F600.txt", u"a\\\xD800",
                                             u"dir\\..\xDC00"};
    for (const auto& [names, reason] :
         {std::pair(safe, (const char*)nullptr), std::pair(unsafe, kitformat::kUnsafeFileName),
          std::pair(cut, kitformat::kSurrogateInFileName)}) {
        for (const std::u16string& name : names) {
            SCOPED_TRACE(testing::Message()
                         << name.size() << " units, " << (reason ? reason : "safe"));
            EXPECT_EQ(Load(OneFile(FileBody(name, 0, 1))), reason ? kDamagedData : kOk);
            EXPECT_STREQ(kit.lastRefusal.reason, reason);
            EXPECT_EQ(kit.lastRefusal.position, reason ? 16u : 0u) << "where the name begins";
            EXPECT_EQ(EntriesOf(scratch.root.path()), (Names{"tmp", kHostile + ".dkz"}));
        }
    }
    // Products read before the refusal stay, as the installer always kept them.
    EXPECT_EQ(Load(BuildKit({u"en", u"de"}, {{u"a", "1"}, {u"../b", "2"}})), kDamagedData);
    EXPECT_EQ(kit.products.size(), 2u);
}

// A cut inside the end-of-stream bits may load, but then every table is whole.
TEST_F(InstallDataTest, EveryTruncationIsRefusedOrLosesNothing) {
    const std::string whole =
        Deflate(BuildKit({u"en", u"de"}, {{u"a/one", "first"}, {u"two", "2"}}), 9);
    for (std::size_t at = 0; at < whole.size(); ++at) {
        WriteText(scratch.kit, whole.substr(0, at));
        const ResultCode code = LoadFile(scratch.kit);
        EXPECT_TRUE(code == kDamagedData || (code == kOk && kit.files.size() == 2)) << at;
    }
}

// Kits from an independent writer and encoder; their README's table says what each must
// give: 0 with its counts, or 13. NAME.deflate.inflated holds the exact inflated bytes;
// without one, inflation itself must fail.
TEST_F(InstallDataTest, ReferenceKitsLoadAsDocumented) {
    const char* source = std::getenv("ORD8_SOURCE_DIR");
    const std::string folder = std::string(source ? source : ".") + "/tests/data/kit/";
    std::ifstream readme(folder + "README.md");
    const std::regex row(
        R"(^\| `([\w-]+\.deflate)` \|.*\| (0, \d+ product\(s\), \d+ file\(s\)|13) \|$)");
    int rows = 0;
    for (std::string line; std::getline(readme, line);) {
        std::smatch match;
        if (!std::regex_match(line, match, row)) continue;
        SCOPED_TRACE(line);
        ++rows;
        const std::string stream = folder + match[1].str();
        const bool inflates = std::filesystem::exists(stream + ".inflated");
        const std::string out = scratch.root / "out";
        EXPECT_EQ(LZCompressor().Decompress(U16(stream), U16(out)), inflates ? kOk : kDamagedData);
        if (inflates) {
            EXPECT_EQ(ReadText(out), ReadText(stream + ".inflated"));
        }
        const ResultCode code = LoadFile(stream);
        EXPECT_EQ(code != kOk ? std::to_string(code)
                              : "0, " + std::to_string(kit.products.size()) + " product(s), " +
                                    std::to_string(kit.files.size()) + " file(s)",
                  match[2].str());
    }
    EXPECT_GE(rows, 10) << folder;
}

}  // namespace
