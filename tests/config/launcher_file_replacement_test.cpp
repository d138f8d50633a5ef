#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>

#include "config/launcher_config_file.h"
#include "config/templates_location.h"
#include "config_test_support.h"

namespace config {
namespace {

using configtest::names_in;
using configtest::read_bytes;
using configtest::u16;
using configtest::write_bytes;

constexpr char kOldText[] = "DefaultVersion=8.3\nConfigurationTemplatesLocation=/old/\n";

class LauncherFileReplacement : public configtest::TempHome {
  protected:
    std::string folder() const { return home_ + "/.Tavri/ostart"; }
    LauncherConfigStore storeOf(std::size_t valueBytes) {
        LauncherConfigStore store;
        store.insert(u16("k"), u16(std::string(valueBytes, 'v')));
        return store;
    }
    mode_t modeOf(const std::string& path) {
        struct stat status {};
        EXPECT_EQ(stat(path.c_str(), &status), 0);
        return status.st_mode & 07777;
    }
};

// The file size limit stands in for a full disk: writes past it fail with EFBIG. A
// large store fails while lines are written, a small one only when the buffer is flushed.
TEST_F(LauncherFileReplacement, DiskFullDuringRewriteLeavesOldFileAndNoTemporary) {
    write_bytes(ordinaryFile(), kOldText);
    for (const std::size_t valueBytes : {100000u, 1000u}) {
        struct rlimit saved {};
        getrlimit(RLIMIT_FSIZE, &saved);
        const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
        struct rlimit small = saved;
        small.rlim_cur = 100;
        setrlimit(RLIMIT_FSIZE, &small);
        int thrown = 0;
        try {
            write_config_file(u16(ordinaryFile()), storeOf(valueBytes));
        } catch (int code) {
            thrown = code;
        }
        setrlimit(RLIMIT_FSIZE, &saved);
        std::signal(SIGXFSZ, oldHandler);
        EXPECT_EQ(thrown, kConfigCannotWrite) << valueBytes;
        EXPECT_EQ(read_bytes(ordinaryFile()), kOldText);
        EXPECT_EQ(names_in(folder()), std::set<std::string>{"ostart.cfg"});
    }
}

TEST_F(LauncherFileReplacement, SymbolicLinkIsKeptAndItsTargetReplacedWithItsMode) {
    write_bytes(home_ + "/shared/real.cfg", kOldText);
    chmod((home_ + "/shared/real.cfg").c_str(), 0600);
    std::filesystem::create_directories(folder());
    std::filesystem::create_symlink("../../shared/real.cfg", ordinaryFile());
    write_config_file(u16(ordinaryFile()), storeOf(3));
    EXPECT_TRUE(std::filesystem::is_symlink(ordinaryFile()));
    EXPECT_EQ(read_bytes(home_ + "/shared/real.cfg"), "k=vvv\n");
    EXPECT_EQ(modeOf(home_ + "/shared/real.cfg"), 0600u);
    EXPECT_EQ(names_in(home_ + "/shared"), std::set<std::string>{"real.cfg"});
    EXPECT_EQ(names_in(folder()), std::set<std::string>{"ostart.cfg"});

    write_config_file(u16(home_ + "/new.cfg"), storeOf(1));
    EXPECT_EQ(modeOf(home_ + "/new.cfg"), 0644u);
}

// As an ordinary user (the tests run as root, whom permissions do not stop), a file
// that may not be read, a file that may not be written and a folder that may not be
// written each make the write-back fail with nothing changed.
TEST_F(LauncherFileReplacement, ProtectedFileOrFolderIsLeftAsItWas) {
    if (geteuid() != 0) GTEST_SKIP() << "needs root to act as another user";
    const uid_t nobody = 65534;
    struct Setup {
        mode_t folderMode, fileMode;
        bool userOwnsFile;
    };
    for (const Setup& setup :
         {Setup{0777, 0200, true}, Setup{0777, 0444, false}, Setup{0755, 0666, false}}) {
        write_bytes(ordinaryFile(), kOldText);
        chmod(home_.c_str(), 0755);
        chmod(folder().c_str(), setup.folderMode);
        chmod(ordinaryFile().c_str(), setup.fileMode);
        if (setup.userOwnsFile) {
            ASSERT_EQ(chown(ordinaryFile().c_str(), nobody, nobody), 0);
        }
        const pid_t child = fork();
        if (child == 0) {
            if (setgid(nobody) != 0 || setuid(nobody) != 0) _exit(99);
            _exit(remember_template_locations({u16("/new/")}, false, false));
        }
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_EQ(WEXITSTATUS(status), kConfigCannotOpen) << setup.fileMode;
        EXPECT_EQ(read_bytes(ordinaryFile()), kOldText);
        EXPECT_EQ(names_in(folder()), std::set<std::string>{"ostart.cfg"});
        std::filesystem::remove_all(home_ + "/.Tavri");
    }
}

}  // namespace
}  // namespace config
