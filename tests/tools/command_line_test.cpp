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

std::string reference_kit(const std::string& name) { return source_path("tests/data/kit/" + name); }

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

TEST(CommandLine, VerifyAcceptsSoundKitsWithOneSummaryLine) {
    const struct {
        const char* kit;
        const char* summary;
    } cases[] = {
        {"dynamic-level9.deflate", "sound: 3 product(s), 4 file(s), 7273 bytes unpacked\n"},
        {"stored-level0.deflate", "sound: 2 product(s), 3 file(s), 7025 bytes unpacked\n"},
        {"fixed-level1.deflate", "sound: 1 product(s), 1 file(s), 110 bytes unpacked\n"},
        {"single-product.deflate", "sound: 1 product(s), 1 file(s), 215 bytes unpacked\n"},
        {"empty-tables.deflate", "sound: 0 product(s), 0 file(s), 12 bytes unpacked\n"},
        {"layout-ffffffff.deflate", "sound: 1 product(s), 1 file(s), 247 bytes unpacked\n"},
        {"padded-records.deflate", "sound: 2 product(s), 2 file(s), 635 bytes unpacked\n"},
        {"exact-32k.deflate", "sound: 1 product(s), 1 file(s), 65536 bytes unpacked\n"},
    };
    for (const auto& c : cases) {
        const ToolRun run = run_tool({"verify", reference_kit(c.kit)});
        EXPECT_EQ(run.status, 0) << c.kit << ": " << run.err;
        EXPECT_EQ(run.out, reference_kit(c.kit) + ": " + c.summary);
        EXPECT_EQ(run.err, "");
    }
}

TEST(CommandLine, VerifyNamesTheFirstProblemAndTheReadersAnswer) {
    const struct {
        const char* kit;
        const char* reason;
    } cases[] = {
        {"truncated.deflate",
         "the deflate stream ends early, after 472 kit bytes and 748 unpacked: the kit is "
         "truncated; the installer's reader answers 13 (damaged data)"},
        {"empty.deflate", "ends early, after 0 kit bytes"},
        {"trailing-bytes.deflate",
         "15 bytes follow the end of the deflate stream; the installer's reader answers 0"},
        {"zlib-header.deflate", "the deflate data is corrupt near kit byte"},
        {"overrunning-record.deflate", "file record 1 name at byte 134 (40 units) runs past its"},
        {"huge-count.deflate", "file count 4294967295 cannot fit"},
        {"dotdot-name.deflate", "unsafe name 'reports\\..\\..\\outside.txt'"},
        {"short-record.deflate",
         "length 8 is below the 20 its fields need; the installer's reader "
         "answers 13 (damaged data)"},
        {"data-outside.deflate", "lies outside the 60-byte kit"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.kit);
        const ToolRun run = run_tool({"verify", reference_kit(c.kit)});
        expect_one_line_error(run, 1, std::string("ord8kit: ") + reference_kit(c.kit) + ": ");
        EXPECT_NE(run.err.find(c.reason), std::string::npos) << run.err;
    }
    expect_one_line_error(run_tool({"verify", reference_kit("absent.dkz")}), 1,
                          "cannot read '" + reference_kit("absent.dkz") + "'");
}

TEST(CommandLine, ListShowsWhatTheReaderLoads) {
    const ToolRun run = run_tool({"list", reference_kit("dynamic-level9.deflate")});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out,
              "product\ten\tReport Templates\tExample Works\tdocs\\about-en.html\n"
              "product\tru\t\xD0\xA8\xD0\xB0\xD0\xB1\xD0\xBB\xD0\xBE\xD0\xBD\xD1\x8B "
              "\xD0\xBE\xD1\x82\xD1\x87\xD1\x91\xD1\x82\xD0\xBE\xD0\xB2\t"
              "\xD0\x9F\xD1\x80\xD0\xB8\xD0\xBC\xD0\xB5\xD1\x80\tdocs\\about-en.html\n"
              "product\tde\tBerichtsvorlagen\tBeispielwerk\tdocs\\about-en.html\n"
              "file\t160\t2024-03-01T09:30:00Z\tconfig\\service.cfg\n"
              "file\t75\t2024-03-01T09:30:00Z\tdocs\\about-en.html\n"
              "file\t6360\t2000-01-01T00:00:00Z\treports\\monthly\\summary.txt\n"
              "file\t74\t2024-03-01T09:30:00Z\treports\\\xD0\xBE\xD1\x82\xD1\x87\xD1\x91\xD1\x82"
              ".txt\n");

    const ToolRun single = run_tool({"list", reference_kit("single-product.deflate")});
    EXPECT_EQ(single.out.rfind("product\ten\tReport Templates\tExample Works\treadme.txt\n", 0),
              0u);

    for (const char* kit : {"truncated.deflate", "huge-count.deflate", "zlib-header.deflate"})
        expect_one_line_error(run_tool({"list", reference_kit(kit)}), 1,
                              "the installer's reader refuses the kit with code 13");
    expect_one_line_error(run_tool({"list", reference_kit("absent.dkz")}), 1, "code 2");
}

TEST(CommandLine, SampleKitPacksCleanlyAndVerifies) {
    ScratchDir dir;
    const ToolRun pack =
        run_tool({"pack", source_path("examples/sample-kit/templates"), "-o", dir / "ord8.deflate",
                  "--manifest", source_path("examples/sample-kit/manifest.txt")});
    EXPECT_EQ(pack.status, 0);
    EXPECT_EQ(pack.err, "");  // every description file is in the kit, English is there
    const ToolRun verify = run_tool({"verify", dir / "ord8.deflate"});
    EXPECT_EQ(verify.status, 0) << verify.err;
    const ToolRun list = run_tool({"list", dir / "ord8.deflate"});
    EXPECT_EQ(list.out.rfind("product\ten\t", 0), 0u);
    EXPECT_NE(list.out.find("\nproduct\tru\t"), std::string::npos);
    EXPECT_NE(list.out.find("\nproduct\tde\t"), std::string::npos);
    EXPECT_NE(list.out.find("\tdocs\\description-de.html\n"), std::string::npos);
}

}  // namespace
