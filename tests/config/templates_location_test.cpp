#include "config/templates_location.h"

#include <filesystem>
#include <string>
#include <vector>

#include "config/launcher_paths.h"
#include "config_test_support.h"
#include "text/encoding.h"

namespace config {
namespace {

using configtest::read_bytes;
using configtest::u16;
using configtest::write_bytes;

constexpr char kKey[] = "ConfigurationTemplatesLocation=";

class TemplatesLocation : public configtest::TempHome {
  protected:
    // "$H" in `text` stands for the home directory.
    std::string expand(std::string text) const {
        for (std::size_t at = text.find("$H"); at != std::string::npos; at = text.find("$H"))
            text.replace(at, 2, home_);
        return text;
    }
    std::vector<stdx::u16string> expandAll(const std::vector<std::string>& texts) const {
        std::vector<stdx::u16string> out;
        for (const std::string& text : texts) out.push_back(u16(expand(text)));
        return out;
    }
    void SetUp() override {
        TempHome::SetUp();
        std::filesystem::create_directories(home_ + "/a");
        std::filesystem::create_directories(home_ + "/b");
        write_bytes(home_ + "/plain", "not a folder");
    }
};

TEST_F(TemplatesLocation, PathsAreBuiltUnderHome) {
    EXPECT_EQ(home_directory(), u16(home_));
    EXPECT_EQ(product_launcher_config_path(), u16(productFile()));
    EXPECT_EQ(launcher_config_path(), u16(ordinaryFile()));
    EXPECT_EQ(alternate_launcher_config_path(), u16(alternateFile()));
    EXPECT_EQ(default_templates_directory(), u16(home_ + "/.ord8/Tavri/tavri8/tmplts/"));
}

TEST_F(TemplatesLocation, ProposalFollowsWhichLauncherFilesExist) {
    struct Case {
        const char* ordinary;  // file contents, null for no file
        const char* alternate;
        const char* product;
        std::vector<std::string> locations;
        std::string directory;
        bool alternateChosen, alternateExists;
    };
    const std::string fallback = "$H/.ord8/Tavri/tavri8/tmplts/";
    const std::vector<Case> cases = {
        {nullptr, nullptr, nullptr, {}, fallback, false, false},
        {"k=$H/b\n", nullptr, "Key=1\n", {}, fallback, false, false},
        {"CONFIGURATIONtemplatesLOCATION=$H/a\n",
         nullptr,
         nullptr,
         {"$H/a\\"},
         "$H/a\\",
         false,
         false},
        {nullptr,
         "ConfigurationTemplatesLocation=$H/b/\n",
         nullptr,
         {"$H/b/"},
         "$H/b/",
         true,
         true},
        {"ConfigurationTemplatesLocation=$H/a\n",
         "ConfigurationTemplatesLocation=$H/b\n",
         nullptr,
         {"$H/a\\"},
         "$H/a\\",
         false,
         true},
        {"DefaultVersion=8\n",
         "ConfigurationTemplatesLocation=$H/b\n",
         nullptr,
         {},
         fallback,
         false,
         true},
        {"ConfigurationTemplatesLocation=$H/missing\nConfigurationTemplatesLocation=$H/plain\n"
         "ConfigurationTemplatesLocation=$H\\b\\\n",
         nullptr,
         "ConfigurationTemplatesLocation=$H\\A\\\nConfigurationTemplatesLocation=$H/B/\n",
         {"$H/missing\\", "$H/plain\\", "$H/b/", "$H/A/"},
         "$H/b/",
         false,
         false},
    };
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const Case& c = cases[i];
        std::filesystem::remove_all(home_ + "/.Tavri");
        std::filesystem::remove_all(home_ + "/.ord8");
        if (c.ordinary) write_bytes(ordinaryFile(), expand(c.ordinary));
        if (c.alternate) write_bytes(alternateFile(), expand(c.alternate));
        if (c.product) write_bytes(productFile(), expand(c.product));
        const TemplatesChoice choice = choose_templates_directory();
        EXPECT_EQ(choice.locations, expandAll(c.locations)) << "case " << i;
        EXPECT_EQ(choice.directory, u16(expand(c.directory))) << "case " << i;
        EXPECT_EQ(choice.alternateFolderChosen, c.alternateChosen) << "case " << i;
        EXPECT_EQ(choice.alternateFileExists, c.alternateExists) << "case " << i;
    }
    EXPECT_FALSE(is_writable_directory(u16("")));
    EXPECT_TRUE(std::filesystem::is_empty(home_ + "/b"));  // probes are removed
}

TEST_F(TemplatesLocation, WriteBackGoesToTheFilesTheLocationsCameFrom) {
    struct Case {
        bool alternateChosen, alternateExists, ordinaryWritten, alternateWritten;
    };
    for (const Case& c : {Case{false, false, true, false}, Case{false, true, true, true},
                          Case{true, true, false, true}}) {
        std::filesystem::remove_all(home_ + "/.Tavri");
        EXPECT_EQ(remember_template_locations(expandAll({"$H/a", "$H/A/", "$H/a\\"}),
                                              c.alternateChosen, c.alternateExists),
                  kConfigWritten);
        const std::string expected = expand(std::string(kKey) + "$H/a\\\n" + kKey + "$H/A/\n");
        EXPECT_EQ(read_bytes(ordinaryFile()), c.ordinaryWritten ? expected : "");
        EXPECT_EQ(read_bytes(alternateFile()), c.alternateWritten ? expected : "");
    }
}

TEST_F(TemplatesLocation, LauncherFolderThatIsAFileFailsAfterTheFallbackFolder) {
    write_bytes(home_ + "/.Tavri/ostart", "in the way");
    EXPECT_EQ(remember_template_locations({u16("/t/")}, false, false), kConfigCannotOpen);
    EXPECT_EQ(read_bytes(home_ + "/.Tavri/ostart"), "in the way");
    EXPECT_TRUE(std::filesystem::is_directory(home_ + "/.ord8/\\Tavri.Tavri/ostart"));
}

// The launcher's own settings survive a proposal and a write-back in order; only the
// templates locations change.
TEST_F(TemplatesLocation, WriteBackKeepsEveryOtherLauncherLine) {
    const std::string before =
        expand("DefaultVersion=8.3.24\r\nCommonInfoBases=/Users/u/bases.v8i\n" + std::string(kKey) +
               "$H/missing\n" + "InstalledLocation=/Applications/x\n" + kKey + "$H/a/\n" +
               "InstallComponents=DESIGNERALLCLIENTS=1 THINCLIENT=1\n");
    write_bytes(ordinaryFile(), before);
    TemplatesChoice choice = choose_templates_directory();
    ASSERT_EQ(choice.directory, u16(home_ + "/a/"));
    ASSERT_EQ(remember_installed_directory(choice, u16(home_ + "/b/")), kConfigWritten);
    EXPECT_EQ(read_bytes(ordinaryFile()),
              expand("DefaultVersion=8.3.24\r\nCommonInfoBases=/Users/u/bases.v8i\n" +
                     std::string(kKey) + "$H/b/\n" + kKey + "$H/missing\\\n" + kKey + "$H/a/\n" +
                     "InstalledLocation=/Applications/x\n" +
                     "InstallComponents=DESIGNERALLCLIENTS=1 THINCLIENT=1\n"));
    EXPECT_EQ(remember_installed_directory(choice, u16(home_ + "/A")), kConfigWritten);
    // Read back, the launcher's trailing backslashes come out as "/".
    EXPECT_EQ(choose_templates_directory().locations, expandAll({"$H/A/", "$H/b/", "$H/missing/"}));
}

}  // namespace
}  // namespace config
