#include "kit/lz_compressor.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <zlib.h>

#include <csignal>
#include <string>

#include "kit_test_support.h"

using namespace kittest;

namespace {

// Text-like bytes that compress well, mixed with a noisy stretch that does not.
Bytes SampleContent(std::size_t size) {
    Bytes bytes(size);
    std::uint32_t noise = 12345;
    for (std::size_t i = 0; i < size; ++i) {
        noise = noise * 1103515245u + 12345u;
        bytes[i] = (i / 4096) % 2 == 0 ? static_cast<unsigned char>("kit data "[i % 9])
                                       : static_cast<unsigned char>(noise >> 16);
    }
    return bytes;
}

class LZCompressorTest : public ::testing::Test {
  protected:
    ResultCode Inflate(const Bytes& kitBytes) {
        WriteBytes(source, kitBytes);
        return LZCompressor().Decompress(Path(source), Path(destination));
    }

    ScratchFolder scratch;
    std::string source = scratch.kit("source.dkz");
    std::string destination = scratch.kit("inflated");
};

TEST_F(LZCompressorTest, InflatesStoredFixedAndDynamicBlocksOfEverySize) {
    // 32,768 and its multiples fill the output buffer exactly on the last round.
    for (std::size_t size :
         {std::size_t{1}, std::size_t{1000}, std::size_t{32767}, std::size_t{32768},
          std::size_t{65536}, std::size_t{98304}, std::size_t{200001}}) {
        const Bytes content = SampleContent(size);
        for (int level : {0, 1, 9}) {
            for (int strategy : {Z_DEFAULT_STRATEGY, Z_FIXED}) {
                SCOPED_TRACE("size " + std::to_string(size) + " level " + std::to_string(level) +
                             " strategy " + std::to_string(strategy));
                ASSERT_EQ(Inflate(Deflate(content, level, strategy)), kOk);
                EXPECT_EQ(ReadBytes(destination), content);
            }
        }
    }
}

TEST_F(LZCompressorTest, EmptyKitGivesEmptyDestination) {
    WriteBytes(destination, Bytes(5000, 'x'));  // an old, longer file must not show through
    EXPECT_EQ(Inflate(Bytes{}), kOk);
    EXPECT_TRUE(Exists(destination));
    EXPECT_TRUE(ReadBytes(destination).empty());
}

TEST_F(LZCompressorTest, TruncatedStreamGivesAPrefixAndSuccess) {
    const Bytes content = SampleContent(70000);
    const Bytes whole = Deflate(content, 9);
    for (std::size_t length :
         {std::size_t{1}, std::size_t{2}, whole.size() / 3, whole.size() / 2, whole.size() - 1}) {
        SCOPED_TRACE("length " + std::to_string(length));
        ASSERT_EQ(Inflate(Bytes(whole.begin(), whole.begin() + length)), kOk);
        const Bytes inflated = ReadBytes(destination);
        ASSERT_LT(inflated.size(), content.size());
        EXPECT_TRUE(std::equal(inflated.begin(), inflated.end(), content.begin()));
    }
}

TEST_F(LZCompressorTest, BytesAfterTheEndOfTheStreamAreIgnored) {
    const Bytes content = SampleContent(40000);
    Bytes kitBytes = Deflate(content, 6);
    kitBytes.insert(kitBytes.end(), {0xFF, 0x00, 0x13, 0x37, 0xFF, 0xFF});
    EXPECT_EQ(Inflate(kitBytes), kOk);
    EXPECT_EQ(ReadBytes(destination), content);
}

TEST_F(LZCompressorTest, DataThatIsNotRawDeflateIsDamaged) {
    const Bytes content = SampleContent(5000);
    // A zlib header: read as raw deflate it starts a stored block whose lengths disagree.
    z_stream stream{};
    deflateInit(&stream, 6);
    Bytes wrapped(deflateBound(&stream, content.size()));
    stream.next_in = const_cast<Bytef*>(content.data());
    stream.avail_in = static_cast<uInt>(content.size());
    stream.next_out = wrapped.data();
    stream.avail_out = static_cast<uInt>(wrapped.size());
    ASSERT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    wrapped.resize(stream.total_out);
    deflateEnd(&stream);
    ASSERT_EQ(wrapped[0], 0x78);
    EXPECT_EQ(Inflate(wrapped), kDamagedData);

    // Block type 3 is reserved.
    EXPECT_EQ(Inflate(Bytes{0x07, 0x00, 0x00}), kDamagedData);

    // Damage in the second stored block: what the first produced is already written.
    const Bytes large = SampleContent(100000);
    Bytes damaged = Deflate(large, 0);
    const std::size_t firstLength = damaged[1] | damaged[2] << 8;
    ASSERT_LT(firstLength + 5, damaged.size());
    damaged[5 + firstLength + 3] ^= 0xFF;  // the second block's length check
    EXPECT_EQ(Inflate(damaged), kDamagedData);
    const Bytes partial = ReadBytes(destination);
    EXPECT_GE(partial.size(), firstLength);
    EXPECT_TRUE(std::equal(partial.begin(), partial.end(), large.begin()));
}

TEST_F(LZCompressorTest, OpenFailuresPassTheirCodeAndCloseEverything) {
    const int before = CountOpenDescriptors();

    EXPECT_EQ(LZCompressor().Decompress(Path(scratch.kit("absent.dkz")), Path(destination)),
              kFileNotFound);
    EXPECT_FALSE(Exists(destination)) << "destination touched although the source is absent";

    WriteBytes(source, Deflate(SampleContent(100), 6));
    EXPECT_EQ(LZCompressor().Decompress(Path(source), Path(scratch.root() + "/no/such/dir/out")),
              kFileNotFound);

    EXPECT_EQ(Inflate(Bytes{0x07, 0x00}), kDamagedData);
    EXPECT_EQ(Inflate(Deflate(SampleContent(100000), 1)), kOk);
    EXPECT_EQ(CountOpenDescriptors(), before);
}

TEST_F(LZCompressorTest, ShortWriteToTheDestinationIsCannotWrite) {
    const Bytes kitBytes = Deflate(SampleContent(300000), 6);
    WriteBytes(source, kitBytes);

    struct rlimit saved {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &saved), 0);
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    struct rlimit small = saved;
    small.rlim_cur = 100000;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const ResultCode code = LZCompressor().Decompress(Path(source), Path(destination));
    setrlimit(RLIMIT_FSIZE, &saved);
    std::signal(SIGXFSZ, oldHandler);

    EXPECT_EQ(code, kCannotWrite);
    EXPECT_LE(ReadBytes(destination).size(), 100000u);
}

}  // namespace
