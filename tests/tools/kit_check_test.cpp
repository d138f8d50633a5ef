// The verify side's own checks: how a stream ends and why tables are refused, against
// the reference kits (written by an independent script) and hand-made tables.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "kit/kit_format.h"
#include "tool_test_support.h"
#include "tools/inflate_check.h"
#include "tools/kit_tables.h"
#include "tools/table_check.h"

namespace {

using kittool::StreamState;
using kittool_test::read_file;

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using ScratchFile = std::unique_ptr<std::FILE, FileCloser>;

std::string reference_kit(const std::string& name) {
    const char* root = std::getenv("ORD8_SOURCE_DIR");
    return std::string(root != nullptr ? root : ".") + "/tests/data/kit/" + name;
}

ScratchFile holding(const std::vector<unsigned char>& bytes) {
    ScratchFile file(std::tmpfile());
    std::fwrite(bytes.data(), 1, bytes.size(), file.get());
    std::fflush(file.get());
    return file;
}

kittool::TableReport check(const std::vector<unsigned char>& bytes) {
    ScratchFile file = holding(bytes);
    return kittool::check_kit_tables(file.get(), bytes.size());
}

void append_string(std::vector<unsigned char>& out, const std::u16string& text) {
    kitformat::append_u32le(out, static_cast<std::uint32_t>(text.size()));
    for (char16_t unit : text) {
        out.push_back(static_cast<unsigned char>(unit));
        out.push_back(static_cast<unsigned char>(unit >> 8));
    }
}

// A layout-1 kit without products: one file record for `name` at `offset`/`size`,
// followed by `data` bytes of data area.
std::vector<unsigned char> one_file_kit(const std::u16string& name, std::uint32_t offset,
                                        std::uint32_t size, std::size_t data) {
    std::vector<unsigned char> kit = kittool::encode_kit_tables(1, {}, {{name, 0, offset, size}});
    kit.resize(kit.size() + data, 'd');
    return kit;
}

struct ReferenceCase {
    const char* file;
    StreamState state;
    bool sound;
    std::uint64_t products;
    std::uint64_t files;
    const char* problem;  // start of the expected problem, when not sound
};

TEST(ReferenceKits, StreamEndsAndTableVerdictsMatchTheirDescriptions) {
    const ReferenceCase cases[] = {
        {"dynamic-level9.deflate", StreamState::kComplete, true, 3, 4, ""},
        {"stored-level0.deflate", StreamState::kComplete, true, 2, 3, ""},
        {"fixed-level1.deflate", StreamState::kComplete, true, 1, 1, ""},
        {"single-product.deflate", StreamState::kComplete, true, 1, 1, ""},
        {"empty-tables.deflate", StreamState::kComplete, true, 0, 0, ""},
        {"layout-ffffffff.deflate", StreamState::kComplete, true, 1, 1, ""},
        {"padded-records.deflate", StreamState::kComplete, true, 2, 2, ""},
        {"exact-32k.deflate", StreamState::kComplete, true, 1, 1, ""},
        {"trailing-bytes.deflate", StreamState::kComplete, true, 3, 4, ""},
        {"truncated.deflate", StreamState::kEndsEarly, false, 0, 0, "file '"},
        {"empty.deflate", StreamState::kEndsEarly, false, 0, 0, "layout at byte 0 runs past"},
        {"zlib-header.deflate", StreamState::kCorrupt, false, 0, 0, ""},
        {"overrunning-record.deflate", StreamState::kComplete, false, 0, 0,
         "file record 1 name at byte 134 (40 units) runs past its record"},
        {"huge-count.deflate", StreamState::kComplete, false, 0, 0,
         "file count 4294967295 cannot fit in the 48 bytes that remain"},
        {"dotdot-name.deflate", StreamState::kComplete, false, 0, 0,
         "file record 1 at byte 12: unsafe name 'reports\\..\\..\\outside.txt'"},
        {"short-record.deflate", StreamState::kComplete, false, 0, 0,
         "product record 1 at byte 8: length 8 is below the 20"},
        {"data-outside.deflate", StreamState::kComplete, false, 0, 0,
         "file 'readme.txt': data at bytes 58 to 62 lies outside the 60-byte kit"},
    };
    for (const ReferenceCase& c : cases) {
        SCOPED_TRACE(c.file);
        ScratchFile inflated(std::tmpfile());
        kittool::InflateReport stream;
        std::string error;
        ASSERT_TRUE(kittool::inflate_kit(reference_kit(c.file), inflated.get(), stream, error))
            << error;
        EXPECT_EQ(stream.state, c.state);
        if (c.state != StreamState::kCorrupt) {
            // Exactly the bytes the installer's inflater must produce.
            std::string bytes(stream.inflated_size, '\0');
            std::rewind(inflated.get());
            EXPECT_EQ(std::fread(&bytes[0], 1, bytes.size(), inflated.get()), bytes.size());
            EXPECT_TRUE(bytes == read_file(reference_kit(c.file) + ".inflated"));
        }
        if (c.state == StreamState::kCorrupt) continue;
        const kittool::TableReport tables =
            kittool::check_kit_tables(inflated.get(), stream.inflated_size);
        EXPECT_EQ(tables.sound, c.sound) << tables.problem;
        if (c.sound) {
            EXPECT_EQ(tables.product_count, c.products);
            EXPECT_EQ(tables.file_count, c.files);
        } else {
            EXPECT_EQ(tables.problem.rfind(c.problem, 0), 0u) << tables.problem;
        }
    }
}

TEST(ReferenceKits, StreamDetailsAreMeasured) {
    struct {
        const char* file;
        std::uint64_t inflated;
        std::uint64_t trailing;
    } cases[] = {{"exact-32k.deflate", 65536, 0},
                 {"trailing-bytes.deflate", 7273, 15},
                 {"empty.deflate", 0, 0}};
    for (const auto& c : cases) {
        ScratchFile inflated(std::tmpfile());
        kittool::InflateReport stream;
        std::string error;
        ASSERT_TRUE(kittool::inflate_kit(reference_kit(c.file), inflated.get(), stream, error));
        EXPECT_EQ(stream.inflated_size, c.inflated) << c.file;
        EXPECT_EQ(stream.trailing_bytes, c.trailing) << c.file;
    }
    ScratchFile inflated(std::tmpfile());
    kittool::InflateReport stream;
    std::string error;
    ASSERT_TRUE(
        kittool::inflate_kit(reference_kit("zlib-header.deflate"), inflated.get(), stream, error));
    EXPECT_FALSE(stream.detail.empty());
    EXPECT_FALSE(kittool::inflate_kit(reference_kit("absent.dkz"), inflated.get(), stream, error));
    EXPECT_NE(error.find("absent.dkz"), std::string::npos);
}

TEST(TableCheck, AcceptsWhatTheToolWritesInBothLayouts) {
    const std::vector<kittool::KitFileEntry> files = {{u"a.txt", 1, 0, 3},
                                                      {u"dir\\b.txt", 2, 3, 0}};
    std::vector<unsigned char> single =
        kittool::encode_kit_tables(0, {{u"en", u"Name", u"Vendor", u"a.txt"}}, files);
    const std::size_t single_tables = single.size();
    single.insert(single.end(), {'a', 'b', 'c'});
    kittool::TableReport report = check(single);
    ASSERT_TRUE(report.sound) << report.problem;
    EXPECT_EQ(report.product_count, 1u);
    EXPECT_EQ(report.file_count, 2u);
    EXPECT_EQ(report.data_start, single_tables);

    std::vector<unsigned char> multi = kittool::encode_kit_tables(
        1, {{u"en", u"N", u"V", u""}, {u"ru", u"\u0418", u"", u""}}, files);
    multi.insert(multi.end(), {'a', 'b', 'c'});
    report = check(multi);
    ASSERT_TRUE(report.sound) << report.problem;
    EXPECT_EQ(report.product_count, 2u);

    multi.pop_back();  // the last file now ends one byte past the kit
    EXPECT_FALSE(check(multi).sound);
}

TEST(TableCheck, RefusesEveryUnsafeNameForm) {
    const std::u16string unsafe[] = {u"",         u"\\lead.txt", u"/lead.txt", u"C:\\x.txt",
                                     u"a\\..\\b", u"../b",       u"a/..",      {u'a', 0, u'b'}};
    for (const std::u16string& name : unsafe) {
        const kittool::TableReport report = check(one_file_kit(name, 0, 1, 1));
        EXPECT_FALSE(report.sound) << name.size();
        EXPECT_NE(report.problem.find("'..' segment"), std::string::npos) << report.problem;
    }
    EXPECT_TRUE(check(one_file_kit(u"a..b\\.hidden\\x..", 0, 1, 1)).sound);
}

TEST(TableCheck, RefusesFieldsRunningPastTheirRecord) {
    // Record length one byte short of the fixed fields.
    std::vector<unsigned char> kit = one_file_kit(u"abc", 0, 1, 1);
    const std::size_t record = 12;
    kit[record] = static_cast<unsigned char>(kit[record] - 1);
    kittool::TableReport report = check(kit);
    EXPECT_FALSE(report.sound);
    EXPECT_NE(report.problem.find("time, offset and size run past its record"), std::string::npos)
        << report.problem;

    // A product string longer than its record, though the kit has room for it.
    std::vector<unsigned char> product = {1, 0, 0, 0, 1, 0, 0, 0};
    kitformat::append_u32le(product, 20);
    for (int i = 0; i < 4; ++i) kitformat::append_u32le(product, i == 2 ? 100 : 0);
    product.resize(product.size() + 300);  // room for the stray string beyond the record
    report = check(product);
    EXPECT_FALSE(report.sound);
    EXPECT_NE(report.problem.find(
                  "product record 1 provider at byte 20 (100 units) runs past its record"),
              std::string::npos)
        << report.problem;

    // Layout 0 with a name count beyond the kit.
    std::vector<unsigned char> single = {0, 0, 0, 0};
    append_string(single, u"x");
    single.push_back(0xFF);
    EXPECT_FALSE(check(single).sound);

    // Offsets are relative to the data area: adding the start must not wrap.
    EXPECT_FALSE(check(one_file_kit(u"a", 0xFFFFFFFF, 2, 1)).sound);
}

}  // namespace
