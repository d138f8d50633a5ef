#include <gtest/gtest.h>

#include "kit/install_data.h"
#include "kit/kit_format.h"
#include "kit/lz_compressor.h"
#include "kit_test_support.h"

using namespace kittest;

namespace {

using Kit = InstallData<LZCompressor, FileSystem>;

Bytes SmallKit() { return BuildKit({u"en", u"de"}, {{u"a/one.cfg", "first"}, {u"two", "second"}}); }

// Layout 1 with no products and one file record of `statedLength`, then `data`.
Bytes OneFile(const KitWriter& body, std::uint32_t statedLength = 0,
              const std::string& data = "x") {
    return KitWriter().U32(1).U32(0).U32(1).Record(body, statedLength).Raw(data).bytes;
}

Bytes OneProduct(const KitWriter& body, std::uint32_t statedLength = 0) {
    return KitWriter().U32(1).U32(1).Record(body, statedLength).U32(0).bytes;
}

class DamagedKitTest : public ::testing::Test {
  protected:
    // Loads the kit file and checks what every load must leave behind: after a failure
    // no files, no handle, no temporary file; after success data ranges inside the kit.
    ResultCode Load(const std::string& kitPath) {
        const int descriptors = CountOpenDescriptors();
        const ResultCode code = kit.Load(Path(kitPath));
        if (code != kOk) {
            EXPECT_TRUE(kit.files.empty());
            EXPECT_EQ(kit.handle, kNoHandle);
            EXPECT_EQ(scratch.TempFileCount(), 0u) << "temporary file left behind";
            EXPECT_EQ(CountOpenDescriptors(), descriptors);
        } else {
            const auto inflatedSize = ReadBytes(NativePath(kit.tempPath)).size();
            for (const auto& file : kit.files)
                EXPECT_LE(std::uint64_t{file.offset} + file.size, inflatedSize);
            FileSystem::CloseFile(kit.handle);
            FileSystem::DeleteFile(kit.tempPath);
        }
        return code;
    }
    ResultCode LoadInflated(const Bytes& inflated) { return Load(scratch.StoreKit(inflated)); }

    ScratchFolder scratch;
    Kit kit;
};

TEST_F(DamagedKitTest, EachRefusalRuleGivesDamagedData) {
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
        {"huge file count", KitWriter().U32(1).U32(0).U32(100000).Raw(std::string(64, '\0')).bytes},
        {"file length below its fixed fields", OneFile(FileBody(u"a", 0, 1), 23)},
        {"file name past its record", OneFile(KitWriter().U32(9).U32(0).U32(0).U32(0).U32(0))},
        {"file fixed fields past its record", OneFile(FileBody(u"a", 0, 1), 25)},
        {"file data beyond the kit", OneFile(FileBody(u"a", 0, 2))},
        {"empty file starting beyond the kit", OneFile(FileBody(u"a", 2, 0))},
        {"offset wrapping once absolute", OneFile(FileBody(u"a", 0xFFFFFFF0, 0))},
        {"size wrapping the range", OneFile(FileBody(u"a", 1, 0xFFFFFFFF))},
        {"empty name", OneFile(FileBody(u"", 0, 1))},
        {"zero unit in a name", OneFile(FileBody(std::u16string(u"a\0b", 3), 0, 1))},
        {"absolute name", OneFile(FileBody(u"/etc/x", 0, 1))},
        {"drive letter", OneFile(FileBody(u"C:x", 0, 1))},
        {"parent segment", OneFile(FileBody(u"t\\..\\..\\x", 0, 1))},
    };
    for (const auto& [what, inflated] : cases) {
        SCOPED_TRACE(what);
        EXPECT_EQ(LoadInflated(inflated), kDamagedData);
    }
    EXPECT_EQ(Load(scratch.kit("absent")), kFileNotFound);
}

TEST_F(DamagedKitTest, EveryTruncationIsRefusedOrLosesNothing) {
    for (int level : {0, 9}) {
        const Bytes whole = Deflate(SmallKit(), level);
        for (std::size_t length = 0; length < whole.size(); ++length) {
            SCOPED_TRACE(testing::Message() << "level " << level << " length " << length);
            WriteBytes(scratch.kit(), Bytes(whole.begin(), whole.begin() + length));
            const ResultCode code = Load(scratch.kit());
            // Only a cut inside the end-of-stream bits may load: then every table is whole.
            EXPECT_TRUE(code == kDamagedData || (code == kOk && kit.files.size() == 2)) << code;
        }
    }
}

TEST_F(DamagedKitTest, CorruptedBytesLoadOnlyWithinTheKit) {
    const Bytes whole = Deflate(SmallKit(), 9);
    for (std::size_t at = 0; at < whole.size(); ++at) {
        for (unsigned char flip : {0x01, 0x80, 0xFF}) {
            SCOPED_TRACE(testing::Message() << "byte " << at << " xor " << int{flip});
            Bytes corrupted = whole;
            corrupted[at] ^= flip;
            WriteBytes(scratch.kit(), corrupted);
            const ResultCode code = Load(scratch.kit());
            EXPECT_TRUE(code == kOk || code == kDamagedData) << code;
        }
    }
}

TEST_F(DamagedKitTest, FailureKeepsProductsAlreadyRead) {
    const Bytes bad = BuildKit({u"en", u"de"}, {{u"a/one.cfg", "first"}, {u"../two", "second"}});
    EXPECT_EQ(LoadInflated(bad), kDamagedData);
    ASSERT_EQ(kit.products.size(), 2u);
    EXPECT_EQ(Std(kit.products[1].language), u"de");
}

TEST(KitFormatTest, OnlyNamesThatStayInsideTheTargetAreSafe) {
    const auto safe = [](const std::u16string& name) {
        return kitformat::is_safe_file_name(name.data(), name.size());
    };
    for (const char16_t* name :
         {u"a", u"d/f.cfg", u"d\\s\\f", u"a..b", u"..a", u"a/..b/c", u"./a", u"1:x", u"ab:c"}) {
        EXPECT_TRUE(safe(name)) << std::string(name,
                                               name + std::char_traits<char16_t>::length(name));
    }
    for (const char16_t* name :
         {u"", u"/a", u"\\a", u"c:f", u"..", u"../a", u"a/..", u"a\\..\\b", u"a/\\../b"}) {
        EXPECT_FALSE(safe(name)) << std::string(name,
                                                name + std::char_traits<char16_t>::length(name));
    }
}

}  // namespace
