#include "kit/preparation.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "app/string_catalogue.h"
#include "kit_test_support.h"

using namespace kittest;

namespace {

std::string KitPathFor(const char* executable) {
    const stdx::mbstring path = KitPathForExecutable(executable);
    return std::string(path.data(), path.size());
}

std::u16string Normalised(const std::u16string& directory) {
    return Std(NormaliseTemplatesDirectory(stdx::u16string(directory.data(), directory.size())));
}

TEST(KitLocationTest, KitLiesBesideTheBundleOrTheExecutable) {
    EXPECT_EQ(KitPathFor("/Apps/Kit.app/Contents/MacOS/run"), "/Apps/ord8.dkz");
    EXPECT_EQ(KitPathFor("/a/B.app/Contents/MacOS/x/C.app/Contents/MacOS/run"),
              "/a/B.app/Contents/MacOS/x/ord8.dkz");
    EXPECT_EQ(KitPathFor("/opt/kit/run"), "/opt/kit/ord8.dkz");
    EXPECT_EQ(KitPathFor("/A/Kit.APP/Contents/MacOS/run"), "/A/Kit.APP/Contents/MacOS/ord8.dkz");
    EXPECT_EQ(KitPathFor("run"), "run/ord8.dkz");
#ifdef __linux__
    const auto self = std::filesystem::read_symlink("/proc/self/exe").parent_path() / "ord8.dkz";
    EXPECT_EQ(NativePath(GetKitPath(false)), self.string());
#endif
}

TEST(KitLocationTest, TemplatesDirectoryIsNormalised) {
    EXPECT_EQ(Normalised(u"file:///Users/u/t/"), u"/Users/u/t/");
    EXPECT_EQ(Normalised(u"/a/file://b/file://c"), u"/a/b/file://c");
    EXPECT_EQ(Normalised(u"/Users/u/https://x"), u"");
    EXPECT_EQ(Normalised(u"file://http://h"), u"");
    EXPECT_EQ(Normalised(u"ftp://h"), u"");
    EXPECT_EQ(Normalised(u"HTTP://h/\r\n"), u"HTTP://h/");
}

TEST(KitLocationTest, ThreeTimesTheKitMustFitIn32Bits) {
    EXPECT_TRUE(KitFitsInFreeSpace(1000, 3000));
    EXPECT_FALSE(KitFitsInFreeSpace(1000, 2999));
    EXPECT_TRUE(KitFitsInFreeSpace(1431655766u, 2));  // the product wraps to 2
}

struct RecordingSink : MessageSink {
    void ShowError(const std::string& key, const stdx::u16string& text,
                   std::uint32_t style) override {
        shown.push_back(key);
        EXPECT_EQ(Std(text), Std(LoadString(key)));
        EXPECT_FALSE(text.empty());
        EXPECT_EQ(style, 0x1000001u);
    }
    std::vector<std::string> shown;
};

struct StubbedVolume : FileSystem {
    static inline std::uint32_t freeBytes = 0;
    static inline ResultCode result = kOk;
    static ResultCode GetFreeSpace(std::uint32_t* bytes) {
        *bytes = freeBytes;
        return result;
    }
};

class PreparationTest : public ::testing::Test {
  protected:
    PreparationTest() {
        setenv("HOME", scratch.root.c_str(), 1);  // no launcher files: the default folder
        std::filesystem::current_path(scratch.root + "/kits");
        session.useCwd = true;
        StubbedVolume::freeBytes = 3000;
        StubbedVolume::result = kOk;
    }
    ~PreparationTest() override {
        std::filesystem::current_path(directory);
        home.empty() ? unsetenv("HOME") : setenv("HOME", home.c_str(), 1);
        if (session.installData.handle != kNoHandle)
            FileSystem::CloseFile(session.installData.handle);
    }
    bool Prepare() { return PrepareInstallationWith<StubbedVolume>(session, messages); }
    void PlaceKit(Bytes kitBytes) {
        kitBytes.resize(1000, 0);  // bytes after the stream are ignored
        WriteBytes(scratch.kit(), kitBytes);
    }

    std::string home = std::getenv("HOME") ? std::getenv("HOME") : "";
    std::filesystem::path directory = std::filesystem::current_path();
    ScratchFolder scratch;
    InstallerSession session;
    RecordingSink messages;
};

TEST_F(PreparationTest, KitThatFitsExactlyIsLoaded) {
    PlaceKit(Deflate(BuildKit({u"en"}, {{u"t/a", "a"}}), 9));
    ASSERT_TRUE(Prepare());
    EXPECT_TRUE(messages.shown.empty());
    EXPECT_EQ(session.prepareStatus, 0);
    EXPECT_EQ(NativePath(session.kitPath), scratch.kit());
    EXPECT_EQ(NativePath(session.targetDir), scratch.root + "/.ord8/Tavri/tavri8/tmplts/");
    EXPECT_EQ(session.installData.files.size(), 1u);
    EXPECT_EQ(scratch.TempFileCount(), 1u);

    StubbedVolume::result = kInvalidParameter;  // a failed query skips the check
    StubbedVolume::freeBytes = 0;
    InstallerSession again;
    again.useCwd = true;
    EXPECT_TRUE(PrepareInstallationWith<StubbedVolume>(again, messages));
    FileSystem::CloseFile(again.installData.handle);
}

TEST_F(PreparationTest, EachFailureShowsItsMessage) {
    EXPECT_FALSE(Prepare());
    EXPECT_TRUE(session.kitPath.empty());

    PlaceKit(Deflate(BuildKit({u"en"}, {}), 9));
    StubbedVolume::freeBytes = 2999;
    EXPECT_FALSE(Prepare());
    EXPECT_FALSE(session.targetDir.empty());

    PlaceKit({0x78, 0x9C, 0x01, 0x02});
    StubbedVolume::freeBytes = 3000;
    EXPECT_FALSE(Prepare());
    EXPECT_EQ(NativePath(session.kitPath), scratch.kit());
    EXPECT_EQ(session.installData.handle, kNoHandle);
    EXPECT_EQ(scratch.TempFileCount(), 0u);
    EXPECT_NE(session.prepareStatus, 0);
    EXPECT_EQ(messages.shown, (std::vector<std::string>{"IDS_ERROR_NOSOURCE", "IDS_ERROR_NOSPACE",
                                                        "IDS_ERROR_DAMAGEDSOURCE"}));
}

}  // namespace
