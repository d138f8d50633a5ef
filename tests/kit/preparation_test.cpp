#include "kit/preparation.h"

#include <gtest/gtest.h>

#include "app/string_catalogue.h"
#include "kit_test_support.h"

using namespace kittest;

namespace {

// The kit lies beside the bundle or the executable; a proposed templates directory must
// be local; the space check is 32-bit, as the installer always did it.
TEST(KitLocationTest, KitPathTemplatesDirectoryAndSpaceCheckAreDerivedAsDocumented) {
    const std::pair<const char*, const char*> cases[] = {
        {"/Apps/Kit.app/Contents/MacOS/run", "/Apps/ord8.dkz"},
        {"/a/B.app/Contents/MacOS/x/C.app/Contents/MacOS/run",
         "/a/B.app/Contents/MacOS/x/ord8.dkz"},
        {"/opt/kit/run", "/opt/kit/ord8.dkz"},
        {"/A/Kit.APP/Contents/MacOS/run", "/A/Kit.APP/Contents/MacOS/ord8.dkz"},
        {"run", "run/ord8.dkz"}};
    for (const auto& [executable, kit] : cases) EXPECT_EQ(KitPathForExecutable(executable), kit);
#ifdef __linux__
    const auto self = std::filesystem::read_symlink("/proc/self/exe").parent_path() / "ord8.dkz";
    EXPECT_EQ(Utf8(GetKitPath(false)), self.string());
#endif
    const std::pair<const char16_t*, const char*> directories[] = {
        {u"file:///Users/u/t/", "/Users/u/t/"},
        {u"/a/file://b/file://c", "/a/b/file://c"},
        {u"/Users/u/https://x", ""},
        {u"file://http://h", ""},
        {u"ftp://h", ""},
        {u"HTTP://h/\r\n", "HTTP://h/"}};
    for (const auto& [directory, normalised] : directories)
        EXPECT_EQ(Utf8(NormaliseTemplatesDirectory(directory)), normalised);
    EXPECT_TRUE(KitFitsInFreeSpace(1431655766u, 2));  // three times the size wraps to 2
}

struct RecordingSink : MessageSink {
    void ShowError(const std::string& key, const stdx::u16string& text, std::uint32_t) override {
        shown += key;
        EXPECT_EQ(Utf8(text), Utf8(LoadString(key)));
    }
    std::string shown;
};

struct StubbedVolume : FileSystem {
    static inline std::uint32_t freeBytes = 0;
    static inline ResultCode result = kOk;
    static ResultCode GetFreeSpace(std::uint32_t* bytes) { return *bytes = freeBytes, result; }
};

// The kit, if any, lies in the working directory ("usecwd"); HOME holds no launcher files.
TEST(PreparationTest, EachOutcomeShowsItsMessageOrLoadsTheKit) {
    KitScratch scratch;
    const ScopedEnvironment home("HOME", scratch.root.path());
    const std::string kitFolder = scratch.root / kHostile, kitPath = kitFolder + "/ord8.dkz";
    std::filesystem::create_directory(kitFolder);
    const std::filesystem::path oldDirectory = std::filesystem::current_path();
    std::filesystem::current_path(kitFolder);
    // Each kit has 1,000 bytes: bytes after the stream are ignored; 0xFF starts no valid block.
    std::string kit = Deflate(BuildKit({u"en"}, {{u"t/a", "a"}}), 9), damaged(1000, '\xFF');
    kit.resize(1000);
    const struct {
        const std::string* kit;  // none: absent
        std::uint32_t freeBytes;
        ResultCode query;
        const char* message;  // none: loaded
    } cases[] = {{nullptr, 3000, kOk, "IDS_ERROR_NOSOURCE"},
                 {&kit, 2999, kOk, "IDS_ERROR_NOSPACE"},
                 {&kit, 3000, kOk, nullptr},
                 {&kit, 0, kInvalidParameter, nullptr},  // a failed query skips the check
                 {&damaged, 3000, kOk, "IDS_ERROR_DAMAGEDSOURCE"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.message ? c.message : "loaded");
        std::filesystem::remove(kitPath);
        if (c.kit) WriteText(kitPath, *c.kit);
        StubbedVolume::freeBytes = c.freeBytes;
        StubbedVolume::result = c.query;
        InstallerSession session;
        session.useCwd = true;
        RecordingSink messages;
        EXPECT_EQ(PrepareInstallationWith<StubbedVolume>(session, messages), !c.message);
        EXPECT_EQ(messages.shown, c.message ? c.message : "");
        EXPECT_EQ(session.prepareStatus == 0, !c.message);
        EXPECT_EQ(Utf8(session.kitPath), c.kit ? kitPath : "");
        EXPECT_EQ(Utf8(session.templates.directory),
                  c.kit ? scratch.root / ".ord8/Tavri/tavri8/tmplts/" : "");
        EXPECT_EQ(session.installData.files.size(), c.message ? 0u : 1u);
        session.installData.Close();
    }
    std::filesystem::current_path(oldDirectory);
}

}  // namespace
