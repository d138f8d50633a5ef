// The ord8kit binary as vendors and scripts see it: exit status, stdout, one-line errors.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "tool_test_support.h"

namespace {

using kittool_test::read_file;
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

ToolRun run_tool(const std::vector<std::string>& args) {
    static ScratchDir capture;
    std::string command = quoted(ORD8KIT_PATH);
    for (const std::string& arg : args) command += " " + quoted(arg);
    command += " >" + quoted(capture / "out") + " 2>" + quoted(capture / "err");
    const int raw = std::system(command.c_str());
    ToolRun run;
    run.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    run.out = read_file(capture / "out");
    run.err = read_file(capture / "err");
    return run;
}

std::string source_path(const std::string& relative) {
    const char* root = std::getenv("ORD8_SOURCE_DIR");
    return std::string(root != nullptr ? root : ".") + "/" + relative;
}

[[maybe_unused]] std::string reference_kit(const std::string& name) {
    return source_path("tests/data/kit/" + name);
}

// One line on stderr, naming the tool, holding `fragment`; nothing on stdout.
void expect_one_line_error(const ToolRun& run, int status, const std::string& fragment) {
    EXPECT_EQ(run.status, status) << run.err;
    EXPECT_EQ(run.err.rfind("ord8kit: ", 0), 0u) << run.err;
    EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << run.err;
    EXPECT_NE(run.err.find(fragment), std::string::npos) << run.err;
    EXPECT_EQ(run.out, "");
}

TEST(CommandLine, BadArgumentsGiveOneLineAndStatusTwo) {
    const struct {
        std::vector<std::string> args;
        const char* fragment;
    } cases[] = {
        {{}, "no command given"},
        {{"unpack", "x"}, "unknown command 'unpack'"},
        {{"pack", "dir"}, "no output given"},
        {{"pack", "-o", "kit"}, "no source directory"},
        {{"pack", "dir", "-o"}, "option -o needs a value"},
        {{"pack", "dir", "-o", "a", "-o", "b"}, "-o given twice"},
        {{"pack", "dir", "-o", "kit", "--fast"}, "unknown option '--fast'"},
        {{"pack", "dir", "other", "-o", "kit"}, "unexpected argument 'other'"},
        {{"pack", "dir", "-o", "kit", "--level", "x"}, "--level takes one number"},
        {{"pack", "dir", "-o", "kit", "--level", "10"}, "--level takes one number"},
        {{"list"}, "list: expected exactly one kit file"},
        {{"verify", "a.dkz", "b.dkz"}, "verify: expected exactly one kit file"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fragment);
        expect_one_line_error(run_tool(c.args), 2, c.fragment);
    }
    const ToolRun help = run_tool({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("ord8kit pack DIR -o KIT"), std::string::npos);
}

TEST(CommandLine, PackFailuresGiveOneLineAndStatusOne) {
    ScratchDir dir;
    expect_one_line_error(run_tool({"pack", dir / "absent", "-o", dir / "k.dkz"}), 1,
                          "cannot read directory '" + (dir / "absent") + "'");
    write_file(dir / "src/a.txt", "a");
    write_file(dir / "manifest.txt", "product\ten\tName\n");
    expect_one_line_error(
        run_tool({"pack", dir / "src", "-o", dir / "k.dkz", "--manifest", dir / "manifest.txt"}), 1,
        "manifest line 1: expected 5 tab-separated fields");
    EXPECT_FALSE(kittool_test::fs::exists(dir / "k.dkz"));

    // A refused name with a line feed in it still makes a single line.
    write_file(dir / "odd/back\\slash\nline.txt", "x");
    expect_one_line_error(run_tool({"pack", dir / "odd", "-o", dir / "k.dkz"}), 1,
                          "file 'back\\slash\\x0aline.txt': a backslash");
}

TEST(CommandLine, PackReportsWhatItWroteAndWarnsOnStderr) {
    ScratchDir dir;
    write_file(dir / "src/a.txt", "abc");
    const ToolRun run = run_tool({"pack", dir / "src", "-o", dir / "k.dkz", "--level", "0"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, dir / "k.dkz" +
                           ": 0 product(s), 1 file(s), layout 1, 49 bytes unpacked, "
                           "54 packed\n");
    EXPECT_EQ(run.err,
              "ord8kit: warning: no product records: the installer will show its default "
              "names\n");
}

}  // namespace
