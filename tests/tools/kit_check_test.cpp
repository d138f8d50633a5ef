// Table faults verify must name that the reference kits do not show (those are covered
// through the command line).
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kit/kit_format.h"
#include "tools/file_ptr.h"
#include "tools/kit_tables.h"
#include "tools/table_check.h"

namespace {

kittool::TableReport check(const std::vector<unsigned char>& bytes) {
    kittool::FilePtr file(std::tmpfile());
    std::fwrite(bytes.data(), 1, bytes.size(), file.get());
    return kittool::check_kit_tables(file.get(), bytes.size());
}

TEST(TableCheck, NamesFieldsRunningPastTheirRecordAndWrappingRanges) {
    // A file record one byte short of its time, offset and size.
    std::vector<unsigned char> kit = kittool::encode_kit_tables(1, {}, {{u"abc", 0, 0, 1}});
    kit.push_back('d');
    ASSERT_TRUE(check(kit).sound);
    kit[12] = static_cast<unsigned char>(kit[12] - 1);
    EXPECT_EQ(check(kit).problem,
              "file record 1 at byte 12: time, offset and size run past its record");

    // A provider string longer than its record, though the kit has room for it.
    std::vector<unsigned char> product = {1, 0, 0, 0, 1, 0, 0, 0, 20, 0, 0, 0};
    for (std::uint32_t count : {0u, 0u, 100u, 0u}) kitformat::append_u32le(product, count);
    product.resize(product.size() + 300);
    EXPECT_EQ(check(product).problem,
              "product record 1 provider at byte 20 (100 units) runs past its record");

    // Stored offsets count from the data area; adding its start must not wrap.
    kit = kittool::encode_kit_tables(1, {}, {{u"a", 0, 0xFFFFFFFF, 2}});
    kit.resize(kit.size() + 4);
    EXPECT_NE(check(kit).problem.find("lies outside the"), std::string::npos);
}

}  // namespace
