#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "fs/file_system.h"
#include "kit/install_data.h"
#include "kit/lz_compressor.h"
#include "kit_test_support.h"

using namespace kittest;

namespace {

using Kit = InstallData<LZCompressor, FileSystem>;

struct DamagedCase {
    const char* what;
    Bytes inflated;
};

Bytes WithFileRecord(const Bytes& fileRecordBody, std::uint32_t statedLength,
                     const std::string& data = "") {
    return KitWriter().U32(1).U32(0).U32(1).Record(fileRecordBody, statedLength).Raw(data).bytes();
}

Bytes WithProductRecord(const Bytes& productRecordBody, std::uint32_t statedLength) {
    return KitWriter().U32(1).U32(1).Record(productRecordBody, statedLength).U32(0).bytes();
}

// A well-formed kit with two products and two files, the last file's data ending the kit.
Bytes SmallKit() {
    return BuildKit(1, {{u"en", u"Ledger", u"Tavri", u"d.html"}, {u"de", u"Buch", u"T", u""}},
                    {{u"a/one.cfg", "first file"}, {u"two.cfg", "second"}});
}

class DamagedKitTest : public ::testing::Test {
  protected:
    // Loads `kitPath` into a fresh kit and checks what every failure must leave behind.
    ResultCode LoadAndCheckFailure(const std::string& kitPath, Kit& kit) {
        const int descriptors = CountOpenDescriptors();
        const ResultCode code = kit.Load(Path(kitPath));
        if (code == kOk) return code;
        EXPECT_TRUE(kit.files.empty());
        EXPECT_EQ(kit.handle, kNoHandle);
        EXPECT_TRUE(scratch.TempEntries().empty()) << "temporary file left behind";
        EXPECT_EQ(CountOpenDescriptors(), descriptors) << "descriptor leaked";
        return code;
    }

    ResultCode LoadInflated(const Bytes& inflated) {
        Kit kit;
        return LoadAndCheckFailure(scratch.StoreKit(inflated), kit);
    }

    ScratchFolder scratch;
};

TEST_F(DamagedKitTest, DamagedTablesAreRefusedCleanly) {
    const Bytes oneUnitName = FileRecordBody({u"a", "x"}, 0);  // 22 bytes after L
    const std::vector<DamagedCase> cases = {
        {"nothing inflated", {}},
        {"layout only", KitWriter().U32(1).bytes()},
        {"single-product string longer than the kit",
         KitWriter().U32(0).U32(1000).Raw(std::string("ab")).bytes()},
        {"product count beyond the kit", KitWriter().U32(1).U32(0xFFFFFFFF).U32(0).bytes()},
        {"one product missing", KitWriter()
                                    .U32(1)
                                    .U32(2)
                                    .Record(ProductRecordBody({u"en", u"", u"", u""}))
                                    .U32(0)
                                    .bytes()},
        {"product length zero", KitWriter().U32(1).U32(1).U32(0).Raw(Bytes(16, 0)).U32(0).bytes()},
        {"product length below its four counts", WithProductRecord(Bytes(16, 0), 19)},
        {"product string past its record",
         WithProductRecord(KitWriter().U32(50).U32(0).U32(0).U32(0).bytes(), 0)},
        {"last product string past its record",
         WithProductRecord(KitWriter().U32(0).U32(0).U32(0).U32(1).bytes(), 0)},
        {"product length beyond the kit",
         WithProductRecord(ProductRecordBody({u"en", u"", u"", u""}), 1000)},
        {"product length of 4 GiB", WithProductRecord(Bytes(16, 0), 0xFFFFFFFF)},
        {"file count beyond the kit",
         KitWriter().U32(1).U32(0).U32(100000).Raw(Bytes(64, 0)).bytes()},
        {"file length below its fixed fields", WithFileRecord(Bytes(19, 0), 23)},
        {"file name past its record",
         WithFileRecord(KitWriter().U32(9).U64(0).U32(0).U32(0).bytes(), 0)},
        {"file fixed fields past its record", WithFileRecord(oneUnitName, 25, "x")},
        {"file length beyond the kit", WithFileRecord(oneUnitName, 5000, "x")},
        {"file data beyond the kit",
         WithFileRecord(FileRecordBody({u"a", "0123456789"}, 0), 0, "012345678")},
        {"file data starting beyond the kit",
         WithFileRecord(FileRecordBody({u"a", ""}, 2), 0, "x")},
        {"file offset wrapping once absolute",
         WithFileRecord(FileRecordBody({u"a", ""}, 0xFFFFFFF0u), 0)},
        {"file size wrapping the range",
         WithFileRecord(KitWriter().String(u"a").U64(0).U32(1).U32(0xFFFFFFFF).bytes(), 0, "xx")},
    };
    for (const auto& damaged : cases) {
        SCOPED_TRACE(damaged.what);
        EXPECT_EQ(LoadInflated(damaged.inflated), kDamagedData);
    }
}

TEST_F(DamagedKitTest, UnsafeFileNamesAreRefused) {
    const std::u16string unsafe[] = {u"",         std::u16string(u"a\0b", 3),
                                     u"/etc/x",   u"\\x",
                                     u"C:x",      u"..",
                                     u"../x",     u"a/../b",
                                     u"a\\..\\b", u"a/..",
                                     u"z:/y"};
    for (const auto& name : unsafe) {
        SCOPED_TRACE(std::string(name.begin(), name.end()));
        EXPECT_EQ(LoadInflated(BuildKit(1, {}, {{u"fine", "1"}, {name, "2"}})), kDamagedData);
    }
}

TEST_F(DamagedKitTest, EveryTruncationIsRefusedOrLoadsTheWholeKit) {
    const Bytes inflated = SmallKit();
    for (int level : {0, 9}) {
        const Bytes whole = Deflate(inflated, level);
        for (std::size_t length = 0; length < whole.size(); ++length) {
            SCOPED_TRACE("level " + std::to_string(level) + " length " + std::to_string(length));
            const std::string path = scratch.kit();
            WriteBytes(path, Bytes(whole.begin(), whole.begin() + length));
            Kit kit;
            const ResultCode code = LoadAndCheckFailure(path, kit);
            if (code == kOk) {
                // Only the end-of-stream bits were cut: every inflated byte is there.
                EXPECT_EQ(ReadBytes(NativePath(kit.tempPath)), inflated);
                FileSystem::CloseFile(kit.handle);
                FileSystem::DeleteFile(kit.tempPath);
            } else {
                EXPECT_EQ(code, kDamagedData);
            }
        }
    }
}

TEST_F(DamagedKitTest, CorruptedBytesNeverYieldATableOutsideTheKit) {
    const Bytes whole = Deflate(SmallKit(), 9);
    for (std::size_t at = 0; at < whole.size(); ++at) {
        for (unsigned char flip : {0x01, 0x80, 0xFF}) {
            SCOPED_TRACE("byte " + std::to_string(at) + " xor " + std::to_string(flip));
            Bytes corrupted = whole;
            corrupted[at] ^= flip;
            const std::string path = scratch.kit();
            WriteBytes(path, corrupted);
            Kit kit;
            const ResultCode code = LoadAndCheckFailure(path, kit);
            if (code != kOk) {
                EXPECT_EQ(code, kDamagedData);
                continue;
            }
            const std::size_t inflatedSize = ReadBytes(NativePath(kit.tempPath)).size();
            for (const auto& file : kit.files) {
                EXPECT_LE(std::uint64_t{file.offset} + file.size, inflatedSize);
            }
            FileSystem::CloseFile(kit.handle);
            FileSystem::DeleteFile(kit.tempPath);
        }
    }
}

TEST_F(DamagedKitTest, ZlibWrappedKitIsDamaged) {
    Bytes wrapped = {0x78, 0x9C};
    const Bytes raw = Deflate(SmallKit(), 6);
    wrapped.insert(wrapped.end(), raw.begin(), raw.end());
    Kit kit;
    const std::string path = scratch.kit();
    WriteBytes(path, wrapped);
    EXPECT_EQ(LoadAndCheckFailure(path, kit), kDamagedData);
}

TEST_F(DamagedKitTest, MissingKitIsNotFoundAndLeavesNoTemporaryFile) {
    Kit kit;
    EXPECT_EQ(LoadAndCheckFailure(scratch.kit("absent.dkz"), kit), kFileNotFound);
    EXPECT_FALSE(kit.tempPath.empty()) << "the deleted file's name stays known";
}

TEST_F(DamagedKitTest, FailureKeepsProductsAlreadyRead) {
    Bytes inflated = KitWriter()
                         .U32(1)
                         .U32(2)
                         .Record(ProductRecordBody({u"en", u"A", u"", u""}))
                         .Record(ProductRecordBody({u"de", u"B", u"", u""}))
                         .U32(2)
                         .Record(FileRecordBody({u"ok", "1"}, 0))
                         .Record(FileRecordBody({u"../escape", "2"}, 1))
                         .Raw(std::string("12"))
                         .bytes();
    Kit kit;
    EXPECT_EQ(LoadAndCheckFailure(scratch.StoreKit(inflated), kit), kDamagedData);
    ASSERT_EQ(kit.products.size(), 2u);
    EXPECT_EQ(Std(kit.products[1].productName), u"B");
}

// Reads fail with 87 once `readsAllowed` reads have succeeded.
struct FailingReads : FileSystem {
    static inline int readsAllowed = 0;
    static inline ResultCode lastError = kOk;
    static ResultCode ReadFile(FileHandle handle, void* buffer, std::uint32_t count,
                               std::uint32_t* read, void* overlapped) {
        if (readsAllowed-- > 0)
            return FileSystem::ReadFile(handle, buffer, count, read, overlapped);
        lastError = kInvalidParameter;
        return kInvalidParameter;
    }
    static ResultCode GetLastError() { return lastError; }
};

TEST_F(DamagedKitTest, ReadFailurePassesItsCode) {
    const std::string path = scratch.StoreKit(SmallKit());
    for (int allowed : {0, 1, 3}) {
        SCOPED_TRACE(allowed);
        FailingReads::readsAllowed = allowed;
        InstallData<LZCompressor, FailingReads> kit;
        EXPECT_EQ(kit.Load(Path(path)), kInvalidParameter);
        EXPECT_TRUE(kit.files.empty());
        EXPECT_EQ(kit.handle, kNoHandle);
        EXPECT_TRUE(scratch.TempEntries().empty());
    }
}

// Temporary-file creation that fails but names a file which exists.
struct ForeignTempName : FileSystem {
    static inline std::string foreign;
    static ResultCode CreateTempFile(const stdx::u16string&, const stdx::u16string&,
                                     stdx::u16string& name) {
        name = Path(foreign);
        return kCannotWrite;
    }
};

TEST_F(DamagedKitTest, FailedTemporaryFileDeletesNothing) {
    ForeignTempName::foreign = scratch.temp() + "/edfTaken";
    WriteBytes(ForeignTempName::foreign, Bytes{1, 2, 3});
    InstallData<LZCompressor, ForeignTempName> kit;
    EXPECT_EQ(kit.Load(Path(scratch.StoreKit(SmallKit()))), kCannotWrite);
    EXPECT_EQ(kit.handle, kNoHandle);
    EXPECT_EQ(ReadBytes(ForeignTempName::foreign), (Bytes{1, 2, 3}));
}

}  // namespace
