#include "kit/lz_compressor.h"

#include <gtest/gtest.h>

#include "kit_test_support.h"

using namespace kittest;

namespace {

// Whole, truncated, corrupt and trailed streams of every block kind are the reference
// kits' job (install_data_test.cpp); these are the failures no kit file can show.
class LZCompressorTest : public ::testing::Test {
  protected:
    ResultCode Inflate(const std::string& into) {  // every path closes both files
        const std::size_t descriptors = OpenDescriptors();
        const ResultCode code = LZCompressor().Decompress(U16(scratch.kit), U16(into), &report);
        EXPECT_EQ(OpenDescriptors(), descriptors);
        return code;
    }
    KitScratch scratch;
    std::string output = scratch.root / "inflated";
    StreamReport report;
};

// Offsets are 32-bit: inflation stops at the first byte the reader could not address.
TEST_F(LZCompressorTest, KitUnpackingBeyond4GiBIsDamagedData) {
    const std::string piece = Deflate(std::string(16 << 20, '\0'), 1, Z_FULL_FLUSH);
    std::string pieces;
    for (int i = 0; i < 255; ++i) pieces += piece;
    WriteText(scratch.kit, pieces + Deflate("", 1));
    EXPECT_EQ(Inflate("/dev/null"), kOk);
    WriteText(scratch.kit, pieces + piece + Deflate("", 1));
    EXPECT_EQ(Inflate("/dev/null"), kDamagedData);
    EXPECT_EQ(report.end, StreamEnd::kTooLarge);
}

// A write that fails or comes up short is 1013, so a full volume never passes for a kit.
TEST_F(LZCompressorTest, OpenAndWriteFailuresPassTheirCodes) {
    EXPECT_EQ(Inflate(output), kFileNotFound);  // no kit yet
    EXPECT_FALSE(StatOf(output).st_mode) << "destination untouched";
    WriteText(scratch.kit, Deflate(std::string(300000, 'x')));
    EXPECT_EQ(Inflate(scratch.root / "no/out"), kFileNotFound);
    const FileSizeLimit limit(100000);
    EXPECT_EQ(Inflate(output), kCannotWrite);
}

}  // namespace
