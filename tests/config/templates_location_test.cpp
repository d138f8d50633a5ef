#include "config/templates_location.h"

#include <string>
#include <utility>
#include <vector>

#include "config_test_support.h"

namespace config {
namespace {

class TemplatesLocation : public configtest::TempHome {
  protected:
    void SetUp() override {
        TempHome::SetUp();
        std::filesystem::create_directory(home_ + "/a");
        std::filesystem::create_directory(home_ + "/b");
        WriteText(home_ + "/plain", "not a folder");
    }
    static ConfigWriteResult remember(const std::string& location, bool alternateExists = false) {
        return remember_template_locations({U16(location)}, false, alternateExists);
    }
    // The old file is byte-identical and nothing else lies beside it.
    void expectUntouched() {
        EXPECT_EQ(ReadText(ordinaryFile()), kOldText);
        EXPECT_EQ(EntriesOf(home_ + "/.Tavri/ostart"), Names{"ostart.cfg"});
    }
    static constexpr char kOldText[] = "DefaultVersion=8.3\nConfigurationTemplatesLocation=/old/\n";
    std::vector<stdx::u16string> expandAll(const std::vector<std::string>& texts) const {
        std::vector<stdx::u16string> out;
        for (const std::string& text : texts) out.push_back(U16(expand(text)));
        return out;
    }
};

TEST_F(TemplatesLocation, ProposalFollowsWhichLauncherFilesExist) {
    struct Case {
        const char *ordinary, *alternate, *product;  // file contents; null: no file
        std::vector<std::string> locations;
        std::string directory;
        bool alternateChosen;  // the alternate file exists exactly when it has contents
    };
    const std::string fallback = "$H/.ord8/Tavri/tavri8/tmplts/";
    // clang-format off
    const std::vector<Case> cases = {
        {nullptr, nullptr, "$K$H/a\n", {}, fallback, false},
        {"CONFIGURATIONtemplatesLOCATION=$H/a\n", nullptr, nullptr, {"$H/a\\"}, "$H/a\\", false},
        {nullptr, "$K$H/b/\n", nullptr, {"$H/b/"}, "$H/b/", true},
        {"$K$H/a\n", "$K$H/b\n", nullptr, {"$H/a\\"}, "$H/a\\", false},
        {"DefaultVersion=8\n", "$K$H/b\n", nullptr, {}, fallback, false},
        {nullptr, "DefaultVersion=8\n", nullptr, {}, fallback, false},
        {"$K$H/missing\n$K$H/plain\n$K$H\\b\\\n", nullptr, "$K$H\\A\\\n$K$H/B/\n",
         {"$H/missing\\", "$H/plain\\", "$H/b/", "$H/A/"}, "$H/b/", false},
    };
    // clang-format on
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const Case& c = cases[i];
        std::filesystem::remove_all(home_ + "/.Tavri");
        std::filesystem::remove_all(home_ + "/.ord8");
        if (c.ordinary) WriteText(ordinaryFile(), expand(c.ordinary));
        if (c.alternate) WriteText(alternateFile(), expand(c.alternate));
        if (c.product) WriteText(home_ + "/.ord8/.Tavri/ostart/ostart.cfg", expand(c.product));
        const TemplatesChoice choice = choose_templates_directory();
        SCOPED_TRACE(i);
        EXPECT_EQ(choice.locations, expandAll(c.locations));
        EXPECT_EQ(choice.directory, U16(expand(c.directory)));
        EXPECT_EQ(choice.alternateFolderChosen, c.alternateChosen);
        EXPECT_EQ(choice.alternateFileExists, c.alternate != nullptr);
    }
    EXPECT_TRUE(std::filesystem::is_empty(home_ + "/b"));  // the probe was removed
    EXPECT_FALSE(is_writable_directory(U16("")));
}

TEST_F(TemplatesLocation, WriteBackGoesToTheFilesTheLocationsCameFrom) {
    const std::string written = expand("$K$H/a\\\n$K$H/A/\n");
    for (const auto& [alternateChosen, alternateExists] :
         {std::pair{false, false}, {false, true}, {true, true}}) {
        std::filesystem::remove_all(home_ + "/.Tavri");
        EXPECT_EQ(remember_template_locations(expandAll({"$H/a", "$H/A/", "$H/a\\"}),
                                              alternateChosen, alternateExists),
                  kConfigWritten);
        EXPECT_EQ(ReadText(ordinaryFile()), alternateChosen ? "" : written);
        EXPECT_EQ(ReadText(alternateFile()), alternateExists ? written : "");
    }
}

TEST_F(TemplatesLocation, LauncherFolderThatIsAFileFailsAfterTryingTheFallbackFolder) {
    WriteText(home_ + "/.Tavri/ostart", "in the way");
    EXPECT_EQ(remember_template_locations({U16("/t/")}, false, false), kConfigCannotOpen);
    EXPECT_EQ(ReadText(home_ + "/.Tavri/ostart"), "in the way");
    EXPECT_TRUE(std::filesystem::is_directory(home_ + "/.ord8/\\Tavri.Tavri/ostart"));
}

// The acceptance check: the launcher's own lines survive a proposal and a write-back,
// in order; only the templates locations change (gathered where the key first stood).
TEST_F(TemplatesLocation, WriteBackKeepsEveryOtherLauncherLine) {
    WriteText(ordinaryFile(), expand("DefaultVersion=8.3.24\r\nCommonInfoBases=/u/b.v8i\n"
                                     "$K$H/missing\nInstalledLocation=/Apps/x\n$K$H/a/\n"
                                     "InstallComponents=DESIGNER=1 THIN=1\n"));
    TemplatesChoice choice = choose_templates_directory();
    ASSERT_EQ(choice.directory, U16(home_ + "/a/"));
    ASSERT_EQ(remember_installed_directory(choice, U16(home_ + "/b/")), kConfigWritten);
    EXPECT_EQ(ReadText(ordinaryFile()),
              expand("DefaultVersion=8.3.24\r\nCommonInfoBases=/u/b.v8i\n$K$H/b/\n"
                     "$K$H/missing\\\n$K$H/a/\nInstalledLocation=/Apps/x\n"
                     "InstallComponents=DESIGNER=1 THIN=1\n"));
    // Installing again into a folder already remembered moves it to the front.
    EXPECT_EQ(remember_installed_directory(choice, U16(home_ + "/A")), kConfigWritten);
    EXPECT_EQ(choice.locations, expandAll({"$H/A", "$H/b/", "$H/missing\\"}));
}

TEST_F(TemplatesLocation, SymbolicLinkIsKeptAndItsTargetReplacedWithItsMode) {
    WriteText(home_ + "/real.cfg", kOldText);
    std::filesystem::create_directories(home_ + "/.Tavri/ostart");
    chmod((home_ + "/real.cfg").c_str(), 0600);
    std::filesystem::create_symlink("../../real.cfg", ordinaryFile());
    ASSERT_EQ(remember("/n/", true), kConfigWritten);
    EXPECT_TRUE(std::filesystem::is_symlink(ordinaryFile()));
    EXPECT_EQ(ReadText(home_ + "/real.cfg"),
              "DefaultVersion=8.3\nConfigurationTemplatesLocation=/n/\n");
    for (const auto& [file, mode] : {std::pair{home_ + "/real.cfg", 0600}, {alternateFile(), 0644}})
        EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms(mode));
}

// The file size limit stands in for a full disk: writes past it fail with EFBIG. A
// long text fails while lines are written, a short one only when the buffer is flushed.
// Then, as an ordinary user (root is not stopped by permissions): a file that may not
// be read, a file that may not be written, and a folder that may not be written.
TEST_F(TemplatesLocation, FailedRewriteLeavesTheOldFileAndNoTemporary) {
    WriteText(ordinaryFile(), kOldText);
    for (const std::size_t length : {100000u, 1000u}) {
        FileSizeLimit limit(100);
        EXPECT_EQ(remember("/" + std::string(length, 'v') + "/"), kConfigCannotWrite) << length;
        expectUntouched();
    }
    if (geteuid() != 0) GTEST_SKIP() << "needs root to act as another user";
    chmod(home_.c_str(), 0755);
    for (const auto& [folderMode, fileMode] : {std::pair{0777, 0200}, {0777, 0444}, {0755, 0666}}) {
        chmod((home_ + "/.Tavri/ostart").c_str(), folderMode);
        chmod(ordinaryFile().c_str(), fileMode);
        ASSERT_EQ(chown(ordinaryFile().c_str(), fileMode == 0200 ? kNobody : 0, 0), 0);
        EXPECT_EQ(RunAsNobody([] { return static_cast<int>(remember("/new/")); }),
                  kConfigCannotOpen)
            << fileMode;
        expectUntouched();
    }
}

}  // namespace
}  // namespace config
