#include "kit/lz_compressor.h"

#include <gtest/gtest.h>

#include "kit_test_support.h"

using namespace kittest;

namespace {

// Alternating 4 KiB stretches of compressible text and noise.
std::string Sample(std::size_t size) {
    std::string bytes(size, '\0');
    std::uint32_t noise = 12345;
    for (std::size_t i = 0; i < size; ++i) {
        noise = noise * 1103515245u + 12345u;
        bytes[i] = char((i / 4096) % 2 ? noise >> 16 : "kit data "[i % 9]);
    }
    return bytes;
}

class LZCompressorTest : public ::testing::Test {
  protected:
    ResultCode Inflate(const std::string& kitBytes, const std::string& into = "") {
        WriteText(scratch.kit, kitBytes);
        return InflateKit(into.empty() ? output : into);
    }
    ResultCode InflateKit(const std::string& into) {  // every path closes both files
        const std::size_t descriptors = OpenDescriptors();
        const ResultCode code = LZCompressor().Decompress(U16(scratch.kit), U16(into), &report);
        EXPECT_EQ(OpenDescriptors(), descriptors);
        return code;
    }
    KitScratch scratch;
    std::string output = scratch.root / "inflated";
    StreamReport report;
};

// Truncated, corrupt and zlib-wrapped streams are judged by the reference kits.
TEST_F(LZCompressorTest, InflatesEveryBlockKindAndReportsTrailingBytes) {
    // Multiples of 32,768 fill the output buffer on the last producing round; an empty
    // stream after a long one shows that the old destination is cut.
    for (std::size_t size : {200001, 0, 1, 32767, 32768, 98304}) {
        for (int level : {0, 1, 9}) {  // stored, fixed (short input) and dynamic blocks
            SCOPED_TRACE(testing::Message() << size << " bytes, level " << level);
            const std::string stream = Deflate(Sample(size), level);
            for (const std::string& trailing : {std::string(), std::string("\0\xFF\x07", 3)}) {
                ASSERT_EQ(Inflate(stream + trailing), kOk);
                EXPECT_EQ(ReadText(output), Sample(size));
                EXPECT_EQ(report.trailing, trailing.size());
            }
        }
    }
}

// Offsets are 32-bit: inflation stops at the first byte the reader could not address.
TEST_F(LZCompressorTest, KitUnpackingBeyond4GiBIsDamagedData) {
    const std::string piece = Deflate(std::string(16 << 20, '\0'), 1, Z_FULL_FLUSH);
    const std::string end = Deflate("", 1);
    std::string pieces;
    for (int i = 0; i < 255; ++i) pieces += piece;
    EXPECT_EQ(Inflate(pieces + end, "/dev/null"), kOk);
    EXPECT_EQ(Inflate(pieces + piece + end, "/dev/null"), kDamagedData);
    EXPECT_EQ(report.end, StreamEnd::kTooLarge);
}

// A write that fails or comes up short is 1013, so a full volume never passes for a kit.
TEST_F(LZCompressorTest, OpenAndWriteFailuresPassTheirCodes) {
    EXPECT_EQ(Inflate("", scratch.root / "no/out"), kFileNotFound);
    std::filesystem::remove(scratch.kit);
    EXPECT_EQ(InflateKit(output), kFileNotFound);
    EXPECT_FALSE(StatOf(output).st_mode) << "destination untouched";
    WriteText(scratch.kit, Deflate(Sample(300000)));
    const FileSizeLimit limit(100000);
    EXPECT_EQ(InflateKit(output), kCannotWrite);
}

}  // namespace
