#include "kit/preparation.h"

#include <gtest/gtest.h>

#include "app/string_catalogue.h"
#include "kit_test_support.h"

using namespace kittest;

namespace {

TEST(KitLocationTest, KitLiesBesideTheBundleOrTheExecutable) {
    const std::pair<const char*, const char*> cases[] = {
        {"/Apps/Kit.app/Contents/MacOS/run", "/Apps/ord8.dkz"},
        {"/a/B.app/Contents/MacOS/x/C.app/Contents/MacOS/run",
         "/a/B.app/Contents/MacOS/x/ord8.dkz"},
        {"/opt/kit/run", "/opt/kit/ord8.dkz"},
        {"/A/Kit.APP/Contents/MacOS/run", "/A/Kit.APP/Contents/MacOS/ord8.dkz"},
        {"run", "run/ord8.dkz"},
    };
    for (const auto& [executable, kit] : cases) EXPECT_EQ(KitPathForExecutable(executable), kit);
#ifdef __linux__
    const auto self = std::filesystem::read_symlink("/proc/self/exe").parent_path() / "ord8.dkz";
    EXPECT_EQ(NativePath(GetKitPath(false)), self.string());
#endif
}

TEST(KitLocationTest, TemplatesDirectoryIsNormalised) {
    const std::pair<const char16_t*, const char16_t*> cases[] = {
        {u"file:///Users/u/t/", u"/Users/u/t/"},
        {u"/a/file://b/file://c", u"/a/b/file://c"},
        {u"/Users/u/https://x", u""},
        {u"file://http://h", u""},
        {u"ftp://h", u""},
        {u"HTTP://h/\r\n", u"HTTP://h/"},
    };
    for (const auto& [directory, normalised] : cases)
        EXPECT_EQ(Std(NormaliseTemplatesDirectory(directory)), normalised);
}

TEST(KitLocationTest, ThreeTimesTheKitMustFitIn32Bits) {
    EXPECT_TRUE(KitFitsInFreeSpace(1000, 3000));
    EXPECT_FALSE(KitFitsInFreeSpace(1000, 2999));
    EXPECT_TRUE(KitFitsInFreeSpace(1431655766u, 2));  // the product wraps to 2
}

struct RecordingSink : MessageSink {
    void ShowError(const std::string& key, const stdx::u16string& text,
                   std::uint32_t style) override {
        shown += key;
        EXPECT_FALSE(text.empty());
        EXPECT_EQ(Std(text), Std(LoadString(key)));
        EXPECT_EQ(style, 0x1000001u);
    }
    std::string shown;
};

struct StubbedVolume : FileSystem {
    static inline std::uint32_t freeBytes = 0;
    static inline ResultCode result = kOk;
    static ResultCode GetFreeSpace(std::uint32_t* bytes) {
        *bytes = freeBytes;
        return result;
    }
};

// The kit, if any, lies in the working directory; HOME holds no launcher files.
class PreparationTest : public ::testing::Test {
  protected:
    PreparationTest() {
        setenv("HOME", scratch.root.c_str(), 1);
        std::filesystem::current_path(scratch.root + "/kits");
    }
    ~PreparationTest() override {
        std::filesystem::current_path(directory);
        RestoreEnv("HOME", home);
    }
    std::optional<std::string> home = Env("HOME");
    std::filesystem::path directory = std::filesystem::current_path();
    ScratchFolder scratch;
};

TEST_F(PreparationTest, EachOutcomeShowsItsMessageOrLoadsTheKit) {
    const auto padded = [](Bytes kit) {  // 1,000 bytes: bytes after the stream are ignored
        kit.resize(1000);
        return kit;
    };
    const Bytes kit = padded(Deflate(BuildKit({u"en"}, {{u"t/a", "a"}}), 9));
    const struct {
        std::optional<Bytes> kit;
        std::uint32_t freeBytes;
        ResultCode query;
        const char* message;  // none: loaded
    } cases[] = {
        {std::nullopt, 3000, kOk, "IDS_ERROR_NOSOURCE"},
        {kit, 2999, kOk, "IDS_ERROR_NOSPACE"},
        {kit, 3000, kOk, nullptr},
        {kit, 0, kInvalidParameter, nullptr},  // a failed query skips the check
        {padded({0x78, 0x9C, 0x01, 0x02}), 3000, kOk, "IDS_ERROR_DAMAGEDSOURCE"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.message ? c.message : "loaded");
        std::filesystem::remove(scratch.kit());
        if (c.kit) WriteBytes(scratch.kit(), *c.kit);
        StubbedVolume::freeBytes = c.freeBytes;
        StubbedVolume::result = c.query;
        InstallerSession session;
        session.useCwd = true;
        RecordingSink messages;
        const bool ready = PrepareInstallationWith<StubbedVolume>(session, messages);
        EXPECT_EQ(ready, !c.message);
        EXPECT_EQ(messages.shown, c.message ? c.message : "");
        EXPECT_EQ(session.prepareStatus == 0, ready);
        EXPECT_EQ(NativePath(session.kitPath), c.kit ? scratch.kit() : "");
        EXPECT_EQ(NativePath(session.targetDir),
                  c.kit ? scratch.root + "/.ord8/Tavri/tavri8/tmplts/" : "");
        EXPECT_EQ(session.installData.files.size(), ready ? 1u : 0u);
        EXPECT_EQ(scratch.TempFileCount(), 0u);
        EXPECT_EQ(session.installData.handle != kNoHandle, ready);
        session.installData.Close();
    }
}

}  // namespace
