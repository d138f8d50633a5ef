#include "config/templates_location.h"

#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "tests/support/test_support.h"

namespace config {
namespace {

// HOME is a new, empty scratch folder for each test. In texts given to expand(), "$H"
// stands for it and "$K" for "ConfigurationTemplatesLocation=".
class TemplatesLocation : public ::testing::Test {
  protected:
    std::string expand(std::string text) const {
        for (auto at = text.find('$'); at != std::string::npos;) {
            const std::string to = text[at + 1] == 'H' ? home_ : "ConfigurationTemplatesLocation=";
            text.replace(at, 2, to);
            at = text.find('$', at + to.size());
        }
        return text;
    }
    std::string ordinaryFile() const { return home_ + "/.Tavri/ostart/ostart.cfg"; }
    std::string alternateFile() const { return home_ + "/.Tavri/ostartt/ostart.cfg"; }
    static ConfigWriteResult remember(const std::string& location = "/new/") {
        return remember_template_locations({U16(location)}, false, false);
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

    ScratchDirectory scratch_;
    const std::string home_ = scratch_.path();
    ScopedEnvironment homeVariable_{"HOME", home_};
};

TEST_F(TemplatesLocation, ProposalFollowsWhichLauncherFilesExist) {
    // Contents of the ordinary, alternate and product launcher files (null: no file), then
    // the locations, the directory proposed, and whether the alternate folder is chosen.
    // The alternate file exists exactly when it has contents.
    using Case = std::tuple<const char*, const char*, const char*, std::vector<std::string>,
                            std::string, bool>;
    for (const char* folder : {"/a", "/b"}) std::filesystem::create_directory(home_ + folder);
    WriteText(home_ + "/plain", "not a folder");
    // clang-format off
    const Case cases[] = {
        {nullptr, nullptr, "$K$H/a\n", {}, "$H/.ord8/Tavri/tavri8/tmplts/", false},
        {"CONFIGURATIONtemplatesLOCATION=$H/a\n", nullptr, nullptr, {"$H/a\\"}, "$H/a\\", false},
        {nullptr, "$K$H/b/\n", nullptr, {"$H/b/"}, "$H/b/", true},
        {"$K$H/a\n", "$K$H/b\n", nullptr, {"$H/a\\"}, "$H/a\\", false},
        {"DefaultVersion=8\n", "$K$H/b\n", nullptr, {}, "$H/.ord8/Tavri/tavri8/tmplts/", false},
        {nullptr, "DefaultVersion=8\n", nullptr, {}, "$H/.ord8/Tavri/tavri8/tmplts/", false},
        {"$K$H/missing\n$K$H/plain\n$K$H\\b\\\n", nullptr, "$K$H\\A\\\n$K$H/B/\n",
         {"$H/missing\\", "$H/plain\\", "$H/b/", "$H/A/"}, "$H/b/", false},
    };
    // clang-format on
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        const auto& [ordinary, alternate, product, locations, directory, alternateChosen] =
            cases[i];
        std::filesystem::remove_all(home_ + "/.Tavri");
        std::filesystem::remove_all(home_ + "/.ord8");
        if (ordinary) WriteText(ordinaryFile(), expand(ordinary));
        if (alternate) WriteText(alternateFile(), expand(alternate));
        if (product) WriteText(home_ + "/.ord8/.Tavri/ostart/ostart.cfg", expand(product));
        const TemplatesChoice choice = choose_templates_directory();
        SCOPED_TRACE(i);
        EXPECT_EQ(choice.locations, expandAll(locations));
        EXPECT_EQ(choice.directory, U16(expand(directory)));
        EXPECT_EQ(choice.alternateFolderChosen, alternateChosen);
        EXPECT_EQ(choice.alternateFileExists, alternate != nullptr);
    }
    EXPECT_TRUE(std::filesystem::is_empty(home_ + "/b"));  // the probe was removed
    EXPECT_FALSE(is_writable_directory(U16("")));
}

TEST_F(TemplatesLocation, WriteBackGoesToTheFilesTheLocationsCameFrom) {
    const std::string written = expand("$K$H/a\\\n$K$H/A/\n");
    const auto locations = expandAll({"$H/a", "$H/A/", "$H/a\\"});
    // Whether the alternate folder was chosen, and whether the alternate file exists.
    for (const auto& [chosen, exists] : {std::pair{false, false}, {false, true}, {true, true}}) {
        std::filesystem::remove_all(home_ + "/.Tavri");
        EXPECT_EQ(remember_template_locations(locations, chosen, exists), kConfigWritten);
        EXPECT_EQ(ReadText(ordinaryFile()), chosen ? "" : written);
        EXPECT_EQ(ReadText(alternateFile()), exists ? written : "");
    }
    EXPECT_EQ(std::filesystem::status(alternateFile()).permissions(), std::filesystem::perms(0644));
}

// The acceptance check: the launcher's own lines survive a proposal and a write-back,
// in order; only the templates locations change (gathered where the key first stood).
// The launcher file is a link here: it stays one, and its target is replaced, mode kept.
TEST_F(TemplatesLocation, WriteBackKeepsEveryOtherLauncherLineAndTheLink) {
    std::filesystem::create_directories(home_ + "/.Tavri/ostart");
    std::filesystem::create_symlink("../../a/real.cfg", ordinaryFile());
    WriteText(home_ + "/a/real.cfg", expand("DefaultVersion=8.3.24\r\nCommonInfoBases=/u/b.v8i\n"
                                            "$K$H/missing\nInstalledLocation=/Apps/x\n$K$H/a/\n"
                                            "InstallComponents=DESIGNER=1 THIN=1\n"));
    TemplatesChoice choice = choose_templates_directory();
    ASSERT_EQ(choice.directory, U16(home_ + "/a/"));
    chmod((home_ + "/a/real.cfg").c_str(), 0600);
    ASSERT_EQ(remember_installed_directory(choice, U16(home_ + "/b/")), kConfigWritten);
    EXPECT_EQ(ReadText(ordinaryFile()),
              expand("DefaultVersion=8.3.24\r\nCommonInfoBases=/u/b.v8i\n$K$H/b/\n"
                     "$K$H/missing\\\n$K$H/a/\nInstalledLocation=/Apps/x\n"
                     "InstallComponents=DESIGNER=1 THIN=1\n"));
    EXPECT_TRUE(std::filesystem::is_symlink(ordinaryFile()));
    EXPECT_EQ(std::filesystem::status(ordinaryFile()).permissions(), std::filesystem::perms(0600));
    // Installing again into a folder already remembered moves it to the front.
    EXPECT_EQ(remember_installed_directory(choice, U16(home_ + "/A")), kConfigWritten);
    EXPECT_EQ(choice.locations, expandAll({"$H/A", "$H/b/", "$H/missing\\"}));
}

// Each failure leaves the old file as it was. The file size limit stands in for a full disk: writes
// past it fail with EFBIG. A long text fails while lines are written, a short one only when the
// buffer is flushed. Then, as an ordinary user (root is not stopped by permissions): a file that
// may not be read, a file that may not be written, and a folder that may not be written.
TEST_F(TemplatesLocation, FailedRewriteLeavesTheOldFileAndNoTemporary) {
    // A launcher folder that is a file fails too, after the fallback folder is made.
    WriteText(home_ + "/.Tavri/ostart", "in the way");
    EXPECT_EQ(remember("/t/"), kConfigCannotOpen);
    EXPECT_EQ(ReadText(home_ + "/.Tavri/ostart"), "in the way");
    EXPECT_TRUE(std::filesystem::is_directory(home_ + "/.ord8/\\Tavri.Tavri/ostart"));
    std::filesystem::remove(home_ + "/.Tavri/ostart");
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
        EXPECT_EQ(RunAsNobody([] { return int{remember()}; }), kConfigCannotOpen) << fileMode;
        expectUntouched();
    }
}

}  // namespace
}  // namespace config
