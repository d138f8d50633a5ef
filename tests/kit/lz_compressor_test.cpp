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
                EXPECT_EQ(report.end, StreamEnd::kComplete);
                EXPECT_EQ(report.consumed, stream.size());
                EXPECT_EQ(report.trailing, trailing.size());
                EXPECT_EQ(report.inflatedSize, size);
            }
        }
    }
    EXPECT_EQ(Inflate(""), kOk) << "a zero-length kit is an empty one";
    EXPECT_EQ(StatOf(output).st_size, 0);
    EXPECT_EQ(report.end, StreamEnd::kEndsEarly);
}

TEST_F(LZCompressorTest, TruncationGivesAPrefixButDamageGivesDamagedData) {
    const std::string whole = Deflate(Sample(70000), 9);
    for (std::size_t length : {std::size_t{1}, whole.size() / 2}) {
        ASSERT_EQ(Inflate(whole.substr(0, length)), kOk);
        const std::string prefix = ReadText(output);
        EXPECT_LT(prefix.size(), 70000u);
        EXPECT_EQ(prefix, Sample(70000).substr(0, prefix.size()));
        EXPECT_EQ(report.end, StreamEnd::kEndsEarly);
        EXPECT_EQ(report.consumed, length);
        EXPECT_EQ(report.inflatedSize, prefix.size());
    }
    EXPECT_EQ(Inflate(Deflate(Sample(50), 6, 15)), kDamagedData);
    EXPECT_EQ(report.end, StreamEnd::kCorrupt);
    EXPECT_STREQ(report.damage, "invalid stored block lengths");  // 0x78 reads as stored
    EXPECT_EQ(Inflate("\x07"), kDamagedData);
    EXPECT_STREQ(report.damage, "invalid block type");

    // Damage in the second stored block: the first block's bytes are already written.
    std::string damaged = Deflate(Sample(100000), 0);
    const std::size_t firstLength = std::uint8_t(damaged[1]) | std::uint8_t(damaged[2]) << 8;
    damaged.at(5 + firstLength + 3) ^= 0x55;
    EXPECT_EQ(Inflate(damaged), kDamagedData);
    EXPECT_GE(ReadText(output).size(), firstLength);
    EXPECT_EQ(report.consumed, 5 + firstLength + 5);
}

// Offsets are 32-bit: inflation stops at the first byte the reader could not address.
TEST_F(LZCompressorTest, KitUnpackingBeyond4GiBIsDamagedData) {
    const std::string piece = Deflate(std::string(16 << 20, '\0'), 1, -15, Z_FULL_FLUSH);
    const std::string end = Deflate("", 1);
    std::string pieces;
    for (int i = 0; i < 255; ++i) pieces += piece;
    EXPECT_EQ(Inflate(pieces + end, "/dev/null"), kOk);
    EXPECT_EQ(report.inflatedSize, 255ull << 24);
    EXPECT_EQ(Inflate(pieces + piece + end, "/dev/null"), kDamagedData);
    EXPECT_EQ(report.end, StreamEnd::kTooLarge);
}

TEST_F(LZCompressorTest, OpenAndWriteFailuresPassTheirCodes) {
    EXPECT_EQ(Inflate("", scratch.root / "no/out"), kFileNotFound);
    std::filesystem::remove(scratch.kit);
    EXPECT_EQ(InflateKit(output), kFileNotFound);
    EXPECT_FALSE(StatOf(output).st_mode) << "destination untouched";
    WriteText(scratch.kit, Deflate(Sample(300000)));
    const FileSizeLimit limit(100000);
    EXPECT_EQ(InflateKit(output), kCannotWrite);
    EXPECT_EQ(report.end, StreamEnd::kNotInflated);
}

}  // namespace
