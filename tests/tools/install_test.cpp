// `ord8kit install` and `recover` as a script sees them: the real binary, its status and
// its messages, and the templates directory it leaves, killed or not.
#include <gtest/gtest.h>

#include <chrono>
#include <random>

#include "fs/file_system.h"
#include "tests/install/transaction_test_support.h"
#include "tests/kit/kit_test_support.h"

namespace {

struct Ran {
    int status = -1;  // 128 + the signal when killed
    std::string out, err;
};

// The user's templates, with HOME and TMPDIR of their own while it lives.
struct User : UserTemplates {
    User() { std::filesystem::create_directory(scratch / "home"); }
    ScopedEnvironment home{"HOME", scratch / "home"};
};

// Runs the tool in the user's environment; `tag` names its output files.
pid_t Start(const UserTemplates& user, const std::vector<std::string>& args, const char* tag) {
    std::fflush(nullptr);  // else the child writes out the test's buffered output again
    const pid_t pid = fork();
    if (pid == 0) {
        freopen((user.scratch / (tag + std::string(".out"))).c_str(), "w", stdout);
        freopen((user.scratch / (tag + std::string(".err"))).c_str(), "w", stderr);
        std::vector<char*> argv{const_cast<char*>(ORD8KIT_PATH)};
        for (const std::string& arg : args) argv.push_back(const_cast<char*>(arg.c_str()));
        argv.push_back(nullptr);
        execv(ORD8KIT_PATH, argv.data());
        _exit(127);
    }
    return pid;
}
Ran Wait(const UserTemplates& user, pid_t pid, const char* tag) {
    int raw = 0;
    waitpid(pid, &raw, 0);
    return {WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw),
            ReadText(user.scratch / (tag + std::string(".out"))),
            ReadText(user.scratch / (tag + std::string(".err")))};
}
Ran RunTool(const UserTemplates& user, const std::vector<std::string>& args) {
    return Wait(user, Start(user, args, "run"), "run");
}

// The kit's files date from 2020: the user's (2011) are older, "newer.dt" (2023) is not.
// `many` more files go to a new folder, so that a pass takes a while.
std::string WriteKit(const UserTemplates& user, int many = 0) {
    std::vector<std::pair<std::u16string, std::string>> files = {{u"a.dt", "kit a"},
                                                                 {u"sub\\deep\\c.dt", "kit c"},
                                                                 {u"newer.dt", "kit newer"},
                                                                 {u"made\\new.dt", "kit new"}};
    for (int i = 0; i < many; ++i) {
        const std::string name = std::to_string(i);
        files.push_back({u"many\\f" + std::u16string(name.begin(), name.end()), "x"});
    }
    const FileTime time = FileSystem::UnixTimeToFileTime(1600000000);
    WriteText(user.scratch / "ord8.dkz", kittest::Deflate(kittest::BuildKit({}, files, time), 1));
    WriteText(user.templates + "/newer.dt", "user's newer");
    const timespec newer[2] = {{1700000000, 0}, {1700000000, 0}};
    utimensat(AT_FDCWD, (user.templates + "/newer.dt").c_str(), newer, 0);
    return user.scratch / "ord8.dkz";
}

TEST(Install, ReplacesOlderKeepsNewerAndChangesNothingWhenRepeatedOrDry) {
    User user;
    const std::string kit = WriteKit(user), t = user.templates;
    ASSERT_TRUE(geteuid() != 0 || chown(t.c_str(), kNobody, kNobody) == 0);
    const Tree before = Snapshot(t);
    Ran ran = RunTool(user, {"install", kit, t, "--dry-run"});
    EXPECT_EQ(ran.status, 0) << ran.err;
    for (const char* line : {"replace\t5\t2020-09-13T12:26:40Z\ta.dt\t2011-03-13T07:06:40Z\n",
                             "skip\t9\t2020-09-13T12:26:40Z\tnewer.dt\t2023-11-14T22:13:20Z\n",
                             "add\t7\t2020-09-13T12:26:40Z\tmade/new.dt\n",
                             ": 1 to add, 2 to replace, 1 to skip, 17 bytes to write\n"})
        EXPECT_NE(ran.out.find(line), std::string::npos) << line << " in\n" << ran.out;
    EXPECT_EQ(Snapshot(t), before);

    ran = RunTool(user, {"install", kit, t});
    EXPECT_EQ(ran.status, 0) << ran.err;
    EXPECT_EQ(ran.out, t + ": 3 file(s) installed, 1 already current\n");
    EXPECT_EQ(ReadText(t + "/a.dt") + ReadText(t + "/newer.dt"), "kit auser's newer");
    EXPECT_EQ(StatOf(t + "/made/new.dt").st_mtime, 1600000000);
    EXPECT_NE(ReadText(user.scratch / "home/.Tavri/ostart/ostart.cfg").find(t), std::string::npos);
    // As root, what the pass made goes to the folder's owner.
    for (const char* made : {"/made", "/made/new.dt", "/a.dt"})
        EXPECT_EQ(StatOf(t + made).st_uid, geteuid() == 0 ? kNobody : geteuid()) << made;
    const Tree installed = Snapshot(t);
    EXPECT_EQ(RunTool(user, {"install", kit, t}).out,
              t + ": 0 file(s) installed, 4 already current\n");
    EXPECT_EQ(Snapshot(t), installed);
}

// Also refused: an empty HOME, whose paths would all fall back to "/".
TEST(Install, RefusesAnEmptyOrRelativeDirectoryInTheChosenLanguageOrAnUnknownHome) {
    User user;
    const std::string kit = WriteKit(user);
    const std::string english = "Specify correct path to template directory.",
                      german = "Geben Sie einen gültigen Pfad zum Vorlagenverzeichnis an.";
    const struct {
        std::vector<std::string> args;
        std::string message;
        std::optional<std::string> home = std::nullopt;  // none: the user's
    } cases[] = {{{"install", kit, ""}, english},
                 {{"install", kit, "templates"}, english},
                 {{"install", "--lang", "de", kit, "~x"}, german},
                 {{"install", kit}, "the home directory is unknown; set HOME", ""}};
    for (const auto& [args, message, home] : cases) {
        std::optional<ScopedEnvironment> otherHome;
        if (home) otherHome.emplace("HOME", *home);
        const Ran ran = RunTool(user, args);
        EXPECT_EQ(ran.status, 1);
        EXPECT_EQ(ran.err, "ord8kit: " + message + "\n");
    }
}

// Polls until the pass has made `file` (files are made in kit order) or the process
// has ended; bounded.
bool WaitForFile(const std::string& file, pid_t pid) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (std::chrono::steady_clock::now() < deadline) {
        if (StatOf(file).st_mode != 0) return true;
        siginfo_t ended{};
        if (waitid(P_PID, pid, &ended, WEXITED | WNOHANG | WNOWAIT) != 0 || ended.si_pid != 0)
            return false;
    }
    return false;
}

// Every way a pass can be stopped from outside leaves the user's files as they were:
// signals it answers with a rollback, and SIGKILL, after which recover does it. Each
// signal once in a sanitized build, where a pass takes much longer.
TEST(Install, StoppedAtARandomPointLeavesEveryOriginalIntact) {
    const unsigned seed = std::random_device()();
    std::mt19937 random(seed);
    std::cout << "seed " << seed << "\n";
    const int signals[] = {SIGKILL, SIGTERM, SIGINT, SIGHUP};
    const int rounds = kSanitizedBuild ? 4 : 10;
    int stopped = 0;
    for (int round = 0; round < rounds; ++round) {
        User user;
        const std::string kit = WriteKit(user, 2000);
        const Tree before = Snapshot(user.templates);
        const pid_t pid = Start(user, {"install", kit, user.templates}, "kill");
        const int signal = signals[round % 4];
        const bool inPass =
            WaitForFile(user.templates + "/many/f" + std::to_string(random() % 1000), pid);
        kill(pid, signal);
        const Ran ran = Wait(user, pid, "kill");
        if (!inPass || ran.status == 0) continue;  // it finished first
        ++stopped;
        SCOPED_TRACE("seed " + std::to_string(seed) + " round " + std::to_string(round));
        EXPECT_EQ(ran.status, 128 + signal) << ran.err;
        const Ran recovered = RunTool(user, {"recover"});
        EXPECT_EQ(recovered.status, 0) << recovered.out;
        EXPECT_EQ(Snapshot(user.templates), before);
        EXPECT_EQ(EntriesOf(user.scratch / "home/.ord8"), Names{});
        EXPECT_EQ(EntriesOf(user.tmp), Names{});
    }
    EXPECT_GT(stopped, rounds / 2);
}

TEST(Install, ASecondInstallIntoABusyDirectoryFailsWithCode32AndChangesNothing) {
    User user;
    const std::string kit = WriteKit(user, 2000);
    const pid_t first = Start(user, {"install", kit, user.templates}, "first");
    EXPECT_TRUE(WaitForFile(user.templates + "/many/f0", first));
    kill(first, SIGSTOP);  // holds the directory for as long as the second waits
    int stopped = 0;
    waitpid(first, &stopped, WUNTRACED);  // the signal is delivered, not only sent
    const Tree during = Snapshot(user.templates);
    const Ran second = RunTool(user, {"install", kit, user.templates});
    EXPECT_EQ(second.status, 1);
    EXPECT_NE(second.err.find("Installation error: code 32"), std::string::npos) << second.err;
    EXPECT_EQ(Snapshot(user.templates), during);
    kill(first, SIGCONT);
    EXPECT_EQ(Wait(user, first, "first").status, 0);
}

}  // namespace
