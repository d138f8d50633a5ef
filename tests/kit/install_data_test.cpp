#include "kit/install_data.h"

#include <gtest/gtest.h>

#include <regex>

#include "kit/kit_format.h"
#include "kit/lz_compressor.h"
#include "kit_test_support.h"

using namespace kittest;

namespace {

using Kit = InstallData<LZCompressor, FileSystem>;

// Layout 1 with one product record (at byte 8), or with file records (the first at byte
// 12) and the data "x"; a `statedLength` of 0 gives the record its real length.
std::string OneProduct(const std::string& body, std::uint32_t statedLength = 0) {
    return U32(1) + U32(1) + Record(body, statedLength) + U32(0);
}
std::string OneFile(const std::string& body, std::uint32_t statedLength = 0) {
    return U32(1) + U32(0) + U32(1) + Record(body, statedLength) + "x";
}
std::string TwoFiles(const std::string& first, const std::string& second) {
    return U32(1) + U32(0) + U32(2) + Record(first) + Record(second) + "x";
}

class InstallDataTest : public ::testing::Test {
  protected:
    // Whatever the outcome, nothing is left in the temporary directory and at most the
    // kit's own descriptor stays open.
    ResultCode Load(const std::string& path) {
        kit.Close();
        kit.products.clear();  // a second Load would append to them
        const std::size_t descriptors = OpenDescriptors();
        const ResultCode code = kit.Load(U16(path));
        EXPECT_EQ(EntriesOf(scratch.tmp), Names{}) << "an inflated kit was left behind";
        EXPECT_EQ(OpenDescriptors(), descriptors + (code == kOk ? 1 : 0));
        return code;
    }
    // Each product's fields, then each file's name and bytes, read through a new open of
    // the handle's file: it has no name any more, and the handle must stay where it is.
    std::string Listing() {
        std::string listing, data = ReadText("/dev/fd/" + std::to_string(kit.handle));
        for (const auto& p : kit.products)
            listing += Utf8(p.language + u"|" + p.productName + u"|" + p.provider + u"|" +
                            p.descriptionFile + u";");
        for (const auto& f : kit.files)
            listing += Utf8(f.name) + "=" + data.substr(f.offset, f.size) + ";";
        return listing;
    }

    KitScratch scratch;
    Kit kit;
};

// A kit loads with its tables and the handle at its data area, or is refused with the
// rule it broke and the byte where the offending field or record begins; so is every
// truncation of a good kit.
TEST_F(InstallDataTest, EachKitLoadsOrIsRefusedWithItsReasonWhereItBroke) {
    const char *count = "count cannot fit in the rest of the kit",
               *below = "record length below its fixed fields",
               *pastRecord = "string runs past its record", *range = "data range outside the kit";
    const std::string noStrings(16, '\0'), nameOf9 = U32(9) + noStrings, big(70000, 'b');
    // Any non-zero layout; padding after a record's fields; data out of order, overlapping.
    const std::string padded = U32(0xFFFFFFFF) + U32(1) + Record(ProductBody(u"en") + "xyz") +
                               U32(2) + Record(FileBody(u"late", 4, 4) + "???") +
                               Record(FileBody(u"early", 0, 6)) + "abcdefgh";
    // Names that stay inside the templates directory, in languages beyond ASCII, data
    // beyond the read-ahead, an empty file last.
    const std::string multi = BuildKit(
        {u"en", u"\u0440\u0443"},
        {{u"1:x/a..b/..a", "alpha"}, {u"./\u0444\u0430\u0439\u043b", big}, {u"d\\s\\f", ""}});
    struct Case {
        std::string inflated;
        const char* reason;        // none: loads
        std::uint64_t position;    // refused: where; loaded: where the handle waits
        std::string listing = "";  // loaded: the tables; refused: the products kept
    };
    std::vector<Case> cases = {
        {"", "kit ends inside a field", 0},
        {U32(0) + U32(1000) + "ab", "string runs past the end of the kit", 4},  // single product
        {U32(1) + U32(0xFFFFFFFF) + U32(0), count, 4},
        {OneProduct(noStrings, 19), below, 8},
        {OneProduct(noStrings, 1000), "record runs past the end of the kit", 8},
        {OneProduct(noStrings, 0xFFFFFFFF), "record runs past the end of the kit", 8},
        {OneProduct(std::string(12, 0) + U32(1)), pastRecord, 24},
        {U32(1) + U32(0) + U32(100000) + std::string(64, 0), count, 8},
        {OneFile(FileBody(u"a", 0, 1), 23), below, 12},
        {OneFile(nameOf9), pastRecord, 16},
        // The record buffer still holds the longer first record: its bytes must not count.
        {TwoFiles(FileBody(u"a", 0, 0) + std::string(99, 'p'), nameOf9), pastRecord, 141},
        {OneFile(FileBody(u"a", 0, 1), 25), "field runs past its record", 34},
        {OneFile(FileBody(u"a", 0, 2)), range, 12},
        {TwoFiles(FileBody(u"a", 0, 1), FileBody(u"b", 5, 1)), range, 38},  // its own record
        {OneFile(FileBody(u"a", 2, 0)), range, 12},                         // empty, yet beyond
        {OneFile(FileBody(u"a", 1, 0xFFFFFFFF)), range, 12},                // size wraps
        {OneFile(FileBody(u"a", 0xFFFFFFF0, 0)), range, 12},                // wraps once absolute
        // Products read before a refusal stay, as the installer always kept them.
        {BuildKit({u"en", u"de"}, {{u"a", "1"}, {u"../b", "2"}}), kitformat::kUnsafeFileName, 126,
         "en|P-en|Tavri|;de|P-de|Tavri|;"},
        // Loaded after a refusal: nothing of it may linger.
        {U32(0) + Str(u"Ledger") + Str(u"") + Str(u"d") + U32(0), nullptr, 34, "en|Ledger||d;"},
        {padded, nullptr, padded.size() - 8, "en|P-en|Tavri|;late=efgh;early=abcdef;"},
        {multi, nullptr, multi.size() - 70005,
         "en|P-en|Tavri|;\u0440\u0443|P-\u0440\u0443|Tavri|;1:x/a..b/..a=alpha;./"
         "\u0444\u0430\u0439\u043b=" +
             big + ";d\\s\\f=;"}};
    // Names that would leave the templates directory, or not reach the disk whole: the
    // conversion to UTF-8 stops at the first surrogate, so "a\" + U+D800 would become
    // "a/", and U+1F600 + ".txt" the empty name, the templates directory itself.
    const std::vector<std::u16string> unsafe = {
        u"", u"/a", u"\\a", u"c:f", u"..", u"a/..", u"t\\..\\..\\x", std::u16string(u"a\0b", 3)};
    const std::vector<std::u16string> cut = {u"..\xD800", u"\U0001F600.txt", u"a\\\xD800",
                                             u"dir\\..\xDC00"};
    for (const auto& [names, reason] : {std::pair(unsafe, kitformat::kUnsafeFileName),
                                        std::pair(cut, kitformat::kSurrogateInFileName)}) {
        for (const std::u16string& name : names)
            cases.push_back({OneFile(FileBody(name, 0, 1)), reason, 16});
    }
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "case " << &c - cases.data());
        WriteText(scratch.kit, Deflate(c.inflated));
        EXPECT_EQ(Load(scratch.kit), c.reason ? kDamagedData : kOk);
        EXPECT_STREQ(kit.lastRefusal.reason, c.reason);
        EXPECT_EQ(c.reason ? kit.lastRefusal.position
                           : FileSystem::SetFilePointer(kit.handle, 0, nullptr, kFileCurrent),
                  c.position);
        EXPECT_EQ(Listing(), c.listing);
        for (const auto& file : kit.files) EXPECT_EQ(file.modificationTime, 0x01D900000007u);
    }
    EXPECT_EQ(Load(scratch.root / "absent"), kFileNotFound);
    // A cut inside the end-of-stream bits may load, but then every table is whole.
    const std::string whole = Deflate(multi, 9);
    for (std::size_t at = 0; at < whole.size(); ++at) {
        WriteText(scratch.kit, whole.substr(0, at));
        const ResultCode code = Load(scratch.kit);
        EXPECT_TRUE(code == kDamagedData || (code == kOk && kit.files.size() == 3)) << at;
    }
}

// Kits from an independent writer and encoder; their README's table says what each must
// give: 0 with its counts, or 13. NAME.deflate.inflated holds the exact inflated bytes;
// without one, inflation itself must fail. All inflate into one file, so a longer
// earlier output must not show through behind a shorter one.
TEST_F(InstallDataTest, ReferenceKitsLoadAsDocumented) {
    const char* source = std::getenv("ORD8_SOURCE_DIR");
    const std::string folder = std::string(source ? source : ".") + "/tests/data/kit/",
                      out = scratch.root / "out";
    std::ifstream readme(folder + "README.md");
    const std::regex row(
        R"(^\| `([\w-]+\.deflate)` \|.*\| (0, \d+ product\(s\), \d+ file\(s\)|13) \|$)");
    int rows = 0;
    for (std::string line; std::getline(readme, line);) {
        std::smatch match;
        if (!std::regex_match(line, match, row)) continue;
        SCOPED_TRACE(line);
        ++rows;
        const std::string stream = folder + match[1].str(), inflated = stream + ".inflated";
        const bool inflates = std::filesystem::exists(inflated);
        const ResultCode code = Load(stream);
        EXPECT_EQ(code != kOk ? std::to_string(code)
                              : "0, " + std::to_string(kit.products.size()) + " product(s), " +
                                    std::to_string(kit.files.size()) + " file(s)",
                  match[2].str());
        EXPECT_EQ(LZCompressor().Decompress(U16(stream), U16(out)), inflates ? kOk : kDamagedData);
        if (!inflates) continue;
        EXPECT_EQ(ReadText(out), ReadText(inflated));
    }
    EXPECT_GE(rows, 10) << folder;
}

}  // namespace
