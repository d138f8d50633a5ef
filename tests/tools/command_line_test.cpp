// The ord8kit binary as vendors and scripts see it: exit status, stdout, one-line errors.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "tool_test_support.h"

namespace {

using kittool_test::reference_kit;
using kittool_test::ScratchDir;
using kittool_test::source_path;
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

TEST(CommandLine, BadArgumentsGiveOneLineAndStatusTwo) {
    const std::pair<std::vector<std::string>, const char*> cases[] = {
        {{}, "no command given"},
        {{"unpack", "x"}, "unknown command 'unpack'"},
        {{"pack", "dir"}, "no output given"},
        {{"pack", "dir", "-o"}, "option -o needs a value"},
        {{"pack", "dir", "-o", "a", "-o", "b"}, "-o given twice"},
        {{"pack", "dir", "-o", "kit", "--fast"}, "unknown option '--fast'"},
        {{"pack", "dir", "other", "-o", "kit"}, "unexpected argument 'other'"},
        {{"pack", "dir", "-o", "kit", "--level", "10"}, "--level takes one number"},
        {{"verify", "a.dkz", "b.dkz"}, "verify: expected exactly one kit file"},
    };
    for (const auto& [args, fragment] : cases) expect_one_line_error(run_tool(args), 2, fragment);
    EXPECT_EQ(run_tool({"--help"}).status, 0);
}

TEST(CommandLine, PackFailuresGiveOneLineAndStatusOne) {
    ScratchDir dir;
    expect_one_line_error(run_tool({"pack", dir / "absent", "-o", dir / "k.dkz"}), 1,
                          "cannot read directory '" + (dir / "absent") + "'");
    write_file(dir / "src/a.txt", "a");
    write_file(dir / "manifest.txt", "# products\n\nproduct\ten\tName\n");
    expect_one_line_error(
        run_tool({"pack", dir / "src", "-o", dir / "k.dkz", "--manifest", dir / "manifest.txt"}), 1,
        "manifest line 3: expected 5 tab-separated fields");
    // A refused name with a line feed in it still makes a single line.
    write_file(dir / "odd/back\\slash\nline.txt", "x");
    expect_one_line_error(run_tool({"pack", dir / "odd", "-o", dir / "k.dkz"}), 1,
                          "file 'back\\slash\\x0aline.txt': a backslash");
    EXPECT_FALSE(kittool_test::fs::exists(dir / "k.dkz"));
}

TEST(CommandLine, PackReportsWhatItWroteAndWarnsOnStderr) {
    ScratchDir dir;
    write_file(dir / "src/a.txt", "abc");
    const ToolRun run = run_tool({"pack", dir / "src", "-o", dir / "k.dkz", "--level", "0"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, dir / "k.dkz" +
                           ": 0 product(s), 1 file(s), layout 1, 49 bytes unpacked, 54 packed\n");
    EXPECT_EQ(run.err,
              "ord8kit: warning: no product records: the installer will show its "
              "default names\n");
}

TEST(CommandLine, VerifyPassesSoundKitsAndNamesTheFirstProblemOfOthers) {
    const std::pair<const char*, const char*> sound[] = {
        {"dynamic-level9.deflate", "3 product(s), 4 file(s), 7273 bytes unpacked"},
        {"stored-level0.deflate", "2 product(s), 3 file(s), 7025 bytes unpacked"},
        {"fixed-level1.deflate", "1 product(s), 1 file(s), 110 bytes unpacked"},
        {"single-product.deflate", "1 product(s), 1 file(s), 215 bytes unpacked"},
        {"empty-tables.deflate", "0 product(s), 0 file(s), 12 bytes unpacked"},
        {"layout-ffffffff.deflate", "1 product(s), 1 file(s), 247 bytes unpacked"},
        {"padded-records.deflate", "2 product(s), 2 file(s), 635 bytes unpacked"},
        {"exact-32k.deflate", "1 product(s), 1 file(s), 65536 bytes unpacked"},
    };
    for (const auto& [kit, summary] : sound) {
        const ToolRun run = run_tool({"verify", reference_kit(kit)});
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(run.out, reference_kit(kit) + ": sound: " + summary + "\n");
    }
    const std::pair<const char*, const char*> refused[] = {
        {"truncated.deflate",
         "the deflate stream ends early, after 472 kit bytes and 748 unpacked: the kit is "
         "truncated; the installer's reader answers 13 (damaged data)"},
        {"empty.deflate", "the deflate stream ends early, after 0 kit bytes"},
        {"trailing-bytes.deflate",
         "15 bytes follow the end of the deflate stream; the installer's reader answers 0"},
        {"zlib-header.deflate", "the deflate data is corrupt near kit byte"},
        {"overrunning-record.deflate", "file record 1 name at byte 134 (40 units) runs past its"},
        {"huge-count.deflate", "file count 4294967295 cannot fit in the 48 bytes that remain"},
        {"dotdot-name.deflate",
         "file record 1 at byte 12: unsafe name 'reports\\..\\..\\outside.txt'"},
        {"short-record.deflate", "product record 1 at byte 8: length 8 is below the 20"},
        {"data-outside.deflate",
         "file 'readme.txt': data at bytes 58 to 62 lies outside the 60-byte kit"},
        {"absent.dkz", "cannot read '"},
    };
    for (const auto& [kit, reason] : refused)
        expect_one_line_error(run_tool({"verify", reference_kit(kit)}), 1,
                              reference_kit(kit) + ": " + reason);
}

TEST(CommandLine, ListShowsWhatTheReaderLoads) {
    const ToolRun run = run_tool({"list", reference_kit("dynamic-level9.deflate")});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out,
              "product\ten\tReport Templates\tExample Works\tdocs\\about-en.html\n"
              "product\tru\t\u0428\u0430\u0431\u043B\u043E\u043D\u044B "
              "\u043E\u0442\u0447\u0451\u0442\u043E\u0432\t\u041F\u0440\u0438\u043C\u0435\u0440"
              "\tdocs\\about-en.html\n"
              "product\tde\tBerichtsvorlagen\tBeispielwerk\tdocs\\about-en.html\n"
              "file\t160\t2024-03-01T09:30:00Z\tconfig\\service.cfg\n"
              "file\t75\t2024-03-01T09:30:00Z\tdocs\\about-en.html\n"
              "file\t6360\t2000-01-01T00:00:00Z\treports\\monthly\\summary.txt\n"
              "file\t74\t2024-03-01T09:30:00Z\treports\\\u043E\u0442\u0447\u0451\u0442.txt\n");
    for (const char* kit : {"truncated.deflate", "huge-count.deflate", "zlib-header.deflate"})
        expect_one_line_error(run_tool({"list", reference_kit(kit)}), 1,
                              "the installer's reader refuses the kit with code 13");
    expect_one_line_error(run_tool({"list", reference_kit("absent.dkz")}), 1, "code 2");
}

TEST(CommandLine, SampleKitPacksWithoutWarningsAndVerifies) {
    ScratchDir dir;
    const ToolRun pack =
        run_tool({"pack", source_path("examples/sample-kit/templates"), "-o", dir / "ord8.dkz",
                  "--manifest", source_path("examples/sample-kit/manifest.txt")});
    EXPECT_EQ(pack.status, 0);
    EXPECT_EQ(pack.err, "");
    EXPECT_EQ(run_tool({"verify", dir / "ord8.dkz"}).status, 0);
    const std::string listing = run_tool({"list", dir / "ord8.dkz"}).out;
    for (const char* language : {"en", "ru", "de"})
        EXPECT_NE(listing.find(std::string("product\t") + language + "\t"), std::string::npos);
}

}  // namespace
