#include "config/templates_location.h"

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "config/launcher_paths.h"
#include "config_test_support.h"

namespace config {
namespace {

using configtest::names_in;
using configtest::read_bytes;
using configtest::u16;
using configtest::write_bytes;

class TemplatesLocation : public configtest::TempHome {
  protected:
    void SetUp() override {
        TempHome::SetUp();
        std::filesystem::create_directories(home_ + "/a");
        std::filesystem::create_directories(home_ + "/b");
        write_bytes(home_ + "/plain", "not a folder");
    }
    static ConfigWriteResult remember(const std::string& location, bool alternateExists = false) {
        return remember_template_locations({u16(location)}, false, alternateExists);
    }
    // The old file is byte-identical and nothing else lies beside it.
    void expectUntouched() {
        EXPECT_EQ(read_bytes(ordinaryFile()), kOldText);
        EXPECT_EQ(names_in(home_ + "/.Tavri/ostart"), std::set<std::string>{"ostart.cfg"});
    }
    static constexpr char kOldText[] = "DefaultVersion=8.3\nConfigurationTemplatesLocation=/old/\n";
    std::vector<stdx::u16string> expandAll(const std::vector<std::string>& texts) const {
        std::vector<stdx::u16string> out;
        for (const std::string& text : texts) out.push_back(u16(expand(text)));
        return out;
    }
};

TEST_F(TemplatesLocation, ProposalFollowsWhichLauncherFilesExist) {
    struct Case {
        const char *ordinary, *alternate, *product;  // file contents; null: no file
        std::vector<std::string> locations;
        std::string directory;
        bool alternateChosen, alternateExists;
    };
    const std::string fallback = "$H/.ord8/Tavri/tavri8/tmplts/";
    // clang-format off
    const std::vector<Case> cases = {
        {nullptr, nullptr, "$K$H/a\n", {}, fallback, false, false},
        {"CONFIGURATIONtemplatesLOCATION=$H/a\n", nullptr, nullptr, {"$H/a\\"}, "$H/a\\", 0, 0},
        {nullptr, "$K$H/b/\n", nullptr, {"$H/b/"}, "$H/b/", true, true},
        {"$K$H/a\n", "$K$H/b\n", nullptr, {"$H/a\\"}, "$H/a\\", false, true},
        {"DefaultVersion=8\n", "$K$H/b\n", nullptr, {}, fallback, false, true},
        {nullptr, "DefaultVersion=8\n", nullptr, {}, fallback, false, true},
        {"$K$H/missing\n$K$H/plain\n$K$H\\b\\\n", nullptr, "$K$H\\A\\\n$K$H/B/\n",
         {"$H/missing\\", "$H/plain\\", "$H/b/", "$H/A/"}, "$H/b/", false, false},
    };
    // clang-format on
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const Case& c = cases[i];
        std::filesystem::remove_all(home_ + "/.Tavri");
        std::filesystem::remove_all(home_ + "/.ord8");
        if (c.ordinary) write_bytes(ordinaryFile(), expand(c.ordinary));
        if (c.alternate) write_bytes(alternateFile(), expand(c.alternate));
        if (c.product) write_bytes(home_ + "/.ord8/.Tavri/ostart/ostart.cfg", expand(c.product));
        const TemplatesChoice choice = choose_templates_directory();
        SCOPED_TRACE(i);
        EXPECT_EQ(choice.locations, expandAll(c.locations));
        EXPECT_EQ(choice.directory, u16(expand(c.directory)));
        EXPECT_EQ(choice.alternateFolderChosen, c.alternateChosen);
        EXPECT_EQ(choice.alternateFileExists, c.alternateExists);
    }
    EXPECT_TRUE(std::filesystem::is_empty(home_ + "/b"));  // the probe was removed
    EXPECT_EQ(product_launcher_config_path(), u16(home_ + "/.ord8//.Tavri/ostart/ostart.cfg"));
    EXPECT_FALSE(is_writable_directory(u16("")));
}

TEST_F(TemplatesLocation, WriteBackGoesToTheFilesTheLocationsCameFrom) {
    const std::string written = expand("$K$H/a\\\n$K$H/A/\n");
    for (const auto& [alternateChosen, alternateExists] :
         {std::pair{false, false}, {false, true}, {true, true}}) {
        std::filesystem::remove_all(home_ + "/.Tavri");
        EXPECT_EQ(remember_template_locations(expandAll({"$H/a", "$H/A/", "$H/a\\"}),
                                              alternateChosen, alternateExists),
                  kConfigWritten);
        EXPECT_EQ(read_bytes(ordinaryFile()), alternateChosen ? "" : written);
        EXPECT_EQ(read_bytes(alternateFile()), alternateExists ? written : "");
    }
}

TEST_F(TemplatesLocation, LauncherFolderThatIsAFileFailsAfterTryingTheFallbackFolder) {
    write_bytes(home_ + "/.Tavri/ostart", "in the way");
    EXPECT_EQ(remember_template_locations({u16("/t/")}, false, false), kConfigCannotOpen);
    EXPECT_EQ(read_bytes(home_ + "/.Tavri/ostart"), "in the way");
    EXPECT_TRUE(std::filesystem::is_directory(home_ + "/.ord8/\\Tavri.Tavri/ostart"));
}

// The acceptance check: the launcher's own lines survive a proposal and a write-back,
// in order; only the templates locations change (gathered where the key first stood).
TEST_F(TemplatesLocation, WriteBackKeepsEveryOtherLauncherLine) {
    write_bytes(ordinaryFile(), expand("DefaultVersion=8.3.24\r\nCommonInfoBases=/u/b.v8i\n"
                                       "$K$H/missing\nInstalledLocation=/Apps/x\n$K$H/a/\n"
                                       "InstallComponents=DESIGNER=1 THIN=1\n"));
    TemplatesChoice choice = choose_templates_directory();
    ASSERT_EQ(choice.directory, u16(home_ + "/a/"));
    ASSERT_EQ(remember_installed_directory(choice, u16(home_ + "/b/")), kConfigWritten);
    EXPECT_EQ(read_bytes(ordinaryFile()),
              expand("DefaultVersion=8.3.24\r\nCommonInfoBases=/u/b.v8i\n$K$H/b/\n"
                     "$K$H/missing\\\n$K$H/a/\nInstalledLocation=/Apps/x\n"
                     "InstallComponents=DESIGNER=1 THIN=1\n"));
    // Installing again into a folder already remembered moves it to the front.
    EXPECT_EQ(remember_installed_directory(choice, u16(home_ + "/A")), kConfigWritten);
    EXPECT_EQ(choice.locations, expandAll({"$H/A", "$H/b/", "$H/missing\\"}));
}

// The file size limit stands in for a full disk: writes past it fail with EFBIG. A
// long text fails while lines are written, a short one only when the buffer is flushed.
TEST_F(TemplatesLocation, DiskFullDuringRewriteLeavesOldFileAndNoTemporary) {
    write_bytes(ordinaryFile(), kOldText);
    for (const std::size_t length : {100000u, 1000u}) {
        struct rlimit saved {};
        getrlimit(RLIMIT_FSIZE, &saved);
        const struct rlimit small = {100, saved.rlim_max};
        const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
        setrlimit(RLIMIT_FSIZE, &small);
        const ConfigWriteResult result = remember("/" + std::string(length, 'v') + "/");
        setrlimit(RLIMIT_FSIZE, &saved);
        std::signal(SIGXFSZ, oldHandler);
        EXPECT_EQ(result, kConfigCannotWrite) << length;
        expectUntouched();
    }
}

TEST_F(TemplatesLocation, SymbolicLinkIsKeptAndItsTargetReplacedWithItsMode) {
    write_bytes(home_ + "/real.cfg", kOldText);
    std::filesystem::create_directories(home_ + "/.Tavri/ostart");
    chmod((home_ + "/real.cfg").c_str(), 0600);
    std::filesystem::create_symlink("../../real.cfg", ordinaryFile());
    ASSERT_EQ(remember("/n/", true), kConfigWritten);
    EXPECT_TRUE(std::filesystem::is_symlink(ordinaryFile()));
    EXPECT_EQ(read_bytes(home_ + "/real.cfg"),
              "DefaultVersion=8.3\nConfigurationTemplatesLocation=/n/\n");
    EXPECT_EQ(names_in(home_), (std::set<std::string>{".Tavri", "a", "b", "plain", "real.cfg"}));
    for (const auto& [file, mode] : {std::pair{home_ + "/real.cfg", 0600}, {alternateFile(), 0644}})
        EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms(mode));
}

// As an ordinary user (root is not stopped by permissions): a file that may not be
// read, a file that may not be written, and a folder that may not be written each make
// the write-back fail with nothing changed.
TEST_F(TemplatesLocation, ProtectedFileOrFolderIsLeftAsItWas) {
    if (geteuid() != 0) GTEST_SKIP() << "needs root to act as another user";
    const uid_t nobody = 65534;
    write_bytes(ordinaryFile(), kOldText);
    chmod(home_.c_str(), 0755);
    for (const auto& [folderMode, fileMode] : {std::pair{0777, 0200}, {0777, 0444}, {0755, 0666}}) {
        chmod((home_ + "/.Tavri/ostart").c_str(), folderMode);
        chmod(ordinaryFile().c_str(), fileMode);
        ASSERT_EQ(chown(ordinaryFile().c_str(), fileMode == 0200 ? nobody : 0, 0), 0);
        const pid_t child = fork();
        if (child == 0) {
            if (setgid(nobody) != 0 || setuid(nobody) != 0) _exit(99);
            _exit(remember("/new/"));
        }
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_EQ(WEXITSTATUS(status), kConfigCannotOpen) << fileMode;
        expectUntouched();
    }
}

}  // namespace
}  // namespace config
