// The ord8kit binary as vendors and scripts see it: exit status, stdout, one-line errors.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <tuple>
#include <vector>

#include "tool_test_support.h"

namespace {

using kittool_test::reference_kit;
using kittool_test::ScratchDir;
using kittool_test::write_file;

struct ToolRun {
    int status = -1;
    std::string out;
    std::string err;
};

std::string quoted(const std::string& arg) {
    std::string text = "'";
    for (char c : arg) text += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return text + "'";
}

// Runs with a private TMPDIR, which must be empty again afterwards.
ToolRun run_tool(const std::vector<std::string>& args) {
    static ScratchDir capture;
    kittool_test::fs::create_directories(capture / "tmp");
    std::string command = "TMPDIR=" + quoted(capture / "tmp") + " " + quoted(ORD8KIT_PATH);
    for (const std::string& arg : args) command += " " + quoted(arg);
    command += " >" + quoted(capture / "out") + " 2>" + quoted(capture / "err");
    const int raw = std::system(command.c_str());
    EXPECT_TRUE(kittool_test::fs::is_empty(capture / "tmp")) << "scratch files left behind";
    return {WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, kittool_test::read_file(capture / "out"),
            kittool_test::read_file(capture / "err")};
}

// One line on stderr, naming the tool, holding `fragment`; nothing on stdout.
void expect_one_line_error(const ToolRun& run, int status, const std::string& fragment) {
    EXPECT_EQ(run.status, status) << run.err;
    EXPECT_EQ(run.err.rfind("ord8kit: ", 0), 0u) << run.err;
    EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << run.err;
    EXPECT_NE(run.err.find(fragment), std::string::npos) << run.err;
    EXPECT_EQ(run.out, "");
}

TEST(CommandLine, FailuresGiveOneLineAndTheirStatus) {
    ScratchDir dir;
    write_file(dir / "src/a.txt", "a");
    write_file(dir / "manifest.txt", "# products\n\nproduct\ten\tName\n");
    write_file(dir / "odd/back\\slash\nline.txt", "x");  // its refusal must stay one line
    const std::string kit = dir / "k.dkz";
    const std::tuple<std::vector<std::string>, int, std::string> cases[] = {
        {{}, 2, "no command given"},
        {{"unpack", "x"}, 2, "unknown command 'unpack'"},
        {{"pack", "dir"}, 2, "no output given"},
        {{"pack", "dir", "-o"}, 2, "option -o needs a value"},
        {{"pack", "dir", "-o", "a", "-o", "b"}, 2, "-o given twice"},
        {{"pack", "dir", "-o", "kit", "--fast"}, 2, "unknown option '--fast'"},
        {{"pack", "dir", "other", "-o", "kit"}, 2, "unexpected argument 'other'"},
        {{"pack", "dir", "-o", "kit", "--level", "10"}, 2, "--level takes one number"},
        {{"verify", "a.dkz", "b.dkz"}, 2, "verify: expected exactly one kit file"},
        {{"pack", dir / "absent", "-o", kit}, 1, "cannot read directory '" + (dir / "absent")},
        {{"pack", dir / "src", "-o", kit, "--manifest", dir / "manifest.txt"},
         1,
         "manifest line 3: expected 5 tab-separated fields"},
        {{"pack", dir / "odd", "-o", kit}, 1, "file 'back\\slash\\x0aline.txt': a backslash"},
        {{"list", reference_kit("truncated")}, 1, "refuses the kit with code 13 (damaged data)"},
        {{"list", reference_kit("absent")}, 1, "refuses the kit with code 2 (file not found)"},
    };
    for (const auto& [args, status, fragment] : cases)
        expect_one_line_error(run_tool(args), status, fragment);
    EXPECT_FALSE(kittool_test::fs::exists(kit));
    EXPECT_EQ(run_tool({"--help"}).status, 0);
}

TEST(CommandLine, PackReportsWhatItWroteAndListShowsWhatTheReaderLoads) {
    ScratchDir dir;
    write_file(dir / "src/tab\there.txt", "abc");
    ASSERT_EQ(symlink("tab\there.txt", (dir / "src/link").c_str()), 0);
    const ToolRun run = run_tool({"pack", dir / "src", "-o", dir / "k.dkz", "--level", "0",
                                  "--product", "en:Name:Vendor:tab\there.txt"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, dir / "k.dkz" +
                           ": 1 product(s), 1 file(s), layout 0, 115 bytes unpacked, 120 packed\n");
    EXPECT_EQ(run.err, "ord8kit: warning: skipped 'link': not a regular file\n");
    // The single-product layout stores no language: the reader must still find English.
    EXPECT_EQ(run_tool({"list", dir / "k.dkz"}).out,
              "product\ten\tName\tVendor\ttab\\x09here.txt\n"
              "file\t3\t2024-03-01T09:30:00Z\ttab\\x09here.txt\n");
}

TEST(CommandLine, VerifyPassesSoundKitsAndNamesTheFirstProblemOfOthers) {
    const std::pair<const char*, const char*> verified[] = {
        {"dynamic-level9", "sound: 3 product(s), 4 file(s), 7273 bytes unpacked"},
        {"single-product", "sound: 1 product(s), 1 file(s), 215 bytes unpacked"},
        {"empty-tables", "sound: 0 product(s), 0 file(s), 12 bytes unpacked"},
        {"exact-32k", "sound: 1 product(s), 1 file(s), 65536 bytes unpacked"},
        {"long-run", "sound: 1 product(s), 0 file(s), 65537 bytes unpacked"},
        {"layout-ffffffff", "sound: 1 product(s), 1 file(s), 247 bytes unpacked"},
        {"padded-records", "sound: 2 product(s), 2 file(s), 635 bytes unpacked"},
        {"truncated", "the deflate stream ends early, after 472 kit bytes and 748 unpacked"},
        {"empty", "the deflate stream ends early, after 0 kit bytes"},
        {"trailing-bytes", "15 bytes follow the end of the deflate stream; the installer's reader"},
        {"zlib-header", "the deflate data is corrupt near kit byte"},
        {"dotdot-name", "file record 1 at byte 16: unsafe file name; the installer's reader"},
        {"absent", "cannot read '"},
    };
    for (const auto& [name, answer] : verified) {
        const std::string kit = reference_kit(name);
        const ToolRun run = run_tool({"verify", kit});
        if (std::string(answer).rfind("sound", 0) == 0)
            EXPECT_EQ(run.out, kit + ": " + answer + "\n") << run.err;
        else
            expect_one_line_error(run, 1, kit + ": " + answer);
    }
}

TEST(CommandLine, SampleKitPacksWithoutWarningsAndVerifies) {
    ScratchDir dir;
    const std::string sample = kittool_test::source_path("examples/sample-kit/");
    const ToolRun pack = run_tool({"pack", sample + "templates", "-o", dir / "ord8.dkz",
                                   "--manifest", sample + "manifest.txt"});
    EXPECT_EQ(pack.status, 0);
    EXPECT_EQ(pack.err, "");
    EXPECT_NE(run_tool({"verify", dir / "ord8.dkz"}).out.find("sound: 3 product(s)"),
              std::string::npos);
}

}  // namespace
