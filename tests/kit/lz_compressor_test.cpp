#include "kit/lz_compressor.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <csignal>

#include "kit_test_support.h"

using namespace kittest;

namespace {

// Alternating 4 KiB stretches of compressible text and noise.
Bytes Sample(std::size_t size) {
    Bytes bytes(size);
    std::uint32_t noise = 12345;
    for (std::size_t i = 0; i < size; ++i) {
        noise = noise * 1103515245u + 12345u;
        bytes[i] = std::uint8_t((i / 4096) % 2 ? noise >> 16 : "kit data "[i % 9]);
    }
    return bytes;
}

class LZCompressorTest : public ::testing::Test {
  protected:
    ResultCode Inflate(const Bytes& kitBytes) {
        WriteBytes(scratch.kit(), kitBytes);
        return LZCompressor().Decompress(Path(scratch.kit()), Path(output), &report);
    }
    StreamReport report;
    ScratchFolder scratch;
    std::string output = scratch.kit("inflated");
};

TEST_F(LZCompressorTest, InflatesEveryBlockKindAndIgnoresTrailingBytes) {
    // Multiples of 32,768 fill the output buffer on the last producing round; an empty
    // stream after a long one shows that the old destination is cut.
    for (std::size_t size : {200001, 0, 1, 32767, 32768, 98304}) {
        for (int level : {0, 1, 9}) {  // stored, fixed (short input) and dynamic blocks
            SCOPED_TRACE(testing::Message() << size << " bytes, level " << level);
            Bytes kitBytes = Deflate(Sample(size), level);
            for (const Bytes& trailing : {Bytes{}, Bytes{0x00, 0xFF, 0x07}}) {
                kitBytes.insert(kitBytes.end(), trailing.begin(), trailing.end());
                ASSERT_EQ(Inflate(kitBytes), kOk);
                EXPECT_EQ(ReadBytes(output), Sample(size));
                EXPECT_EQ(report.end, StreamEnd::kComplete);
                EXPECT_EQ(report.trailing, trailing.size());
                EXPECT_EQ(report.consumed + report.trailing, kitBytes.size());
                EXPECT_EQ(report.inflatedSize, size);
            }
        }
    }
    EXPECT_EQ(Inflate({}), kOk) << "a zero-length kit is an empty one";
    EXPECT_TRUE(std::filesystem::exists(output) && ReadBytes(output).empty());
}

TEST_F(LZCompressorTest, TruncationGivesAPrefixButDamageGivesDamagedData) {
    const Bytes whole = Deflate(Sample(70000), 9);
    for (std::size_t length : {std::size_t{1}, whole.size() / 2}) {
        ASSERT_EQ(Inflate(Bytes(whole.begin(), whole.begin() + length)), kOk);
        const Bytes prefix = ReadBytes(output);
        EXPECT_EQ(report.end, StreamEnd::kEndsEarly);
        EXPECT_EQ(report.consumed, length);
        EXPECT_EQ(report.inflatedSize, prefix.size());
        EXPECT_LT(prefix.size(), 70000u);
        EXPECT_TRUE(std::equal(prefix.begin(), prefix.end(), Sample(70000).begin()));
    }
    EXPECT_EQ(Inflate(ZlibWrapped(Sample(50), 6)), kDamagedData);
    EXPECT_EQ(report.end, StreamEnd::kCorrupt);
    EXPECT_STREQ(report.damage, "invalid stored block lengths");  // 0x78 reads as a stored block
    EXPECT_EQ(Inflate({0x07, 0x00, 0x00}), kDamagedData);         // reserved block type

    // Damage in the second stored block: the first block's bytes are already written.
    Bytes damaged = Deflate(Sample(100000), 0);
    const std::size_t firstLength = damaged[1] | damaged[2] << 8;
    damaged.at(5 + firstLength + 3) ^= 0xFF;
    EXPECT_EQ(Inflate(damaged), kDamagedData);
    EXPECT_GE(ReadBytes(output).size(), firstLength);
}

TEST_F(LZCompressorTest, OpenFailuresPassTheirCodeAndEveryPathClosesBoth) {
    const std::size_t descriptors = CountOpenDescriptors();
    EXPECT_EQ(LZCompressor().Decompress(Path(scratch.kit("absent")), Path(output)), kFileNotFound);
    EXPECT_FALSE(std::filesystem::exists(output));
    WriteBytes(scratch.kit(), Deflate(Sample(10), 6));
    EXPECT_EQ(LZCompressor().Decompress(Path(scratch.kit()), Path(scratch.root + "/no/out")),
              kFileNotFound);
    EXPECT_EQ(Inflate({0x07}), kDamagedData);
    EXPECT_EQ(Inflate(Deflate(Sample(100000), 1)), kOk);
    EXPECT_EQ(CountOpenDescriptors(), descriptors);
}

TEST_F(LZCompressorTest, ShortWriteIsCannotWrite) {
    WriteBytes(scratch.kit(), Deflate(Sample(300000), 6));
    rlimit saved{};
    getrlimit(RLIMIT_FSIZE, &saved);
    const rlimit small{100000, saved.rlim_max};
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &small);
    const ResultCode code = LZCompressor().Decompress(Path(scratch.kit()), Path(output));
    setrlimit(RLIMIT_FSIZE, &saved);
    std::signal(SIGXFSZ, oldHandler);
    EXPECT_EQ(code, kCannotWrite);
}

}  // namespace
