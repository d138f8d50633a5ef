// The ord8kit binary as vendors and scripts see it: exit status, stdout, one-line errors.
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "tool_test_support.h"
#include "tools/deflate_writer.h"
#include "tools/file_ptr.h"
#include "tools/kit_tables.h"

namespace {

struct ToolRun {
    int status = -1;
    std::string out;
    std::string err;
};

std::string Quoted(const std::string& arg) {
    std::string text = "'";
    for (char c : arg) text += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return text + "'";
}

// Runs with a private TMPDIR, which must be empty again afterwards.
ToolRun RunTool(const std::vector<std::string>& args) {
    static ScratchDirectory capture;
    std::filesystem::create_directories(capture / "tmp");
    std::string command = "TMPDIR=" + Quoted(capture / "tmp") + " " + Quoted(ORD8KIT_PATH);
    for (const std::string& arg : args) command += " " + Quoted(arg);
    command += " >" + Quoted(capture / "out") + " 2>" + Quoted(capture / "err");
    const int raw = std::system(command.c_str());
    EXPECT_EQ(EntriesOf(capture / "tmp"), Names{}) << "scratch files left behind";
    return {WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, ReadText(capture / "out"),
            ReadText(capture / "err")};
}

// One line on stderr, naming the tool, holding `fragment`; nothing on stdout.
void ExpectOneLineError(const ToolRun& run, int status, const std::string& fragment) {
    EXPECT_EQ(run.status, status) << run.err;
    EXPECT_EQ(run.err.rfind("ord8kit: ", 0), 0u) << run.err;
    EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << run.err;
    EXPECT_NE(run.err.find(fragment), std::string::npos) << run.err;
    EXPECT_EQ(run.out, "");
}

TEST(CommandLine, FailuresGiveOneLineAndTheirStatus) {
    ScratchDirectory dir;
    WriteFileAt(dir / "src/a.txt", "a");
    WriteFileAt(dir / "manifest.txt", "# products\n\nproduct\ten\tName\n");
    WriteFileAt(dir / ("odd/back\\slash " + kHostile), "x");  // its refusal must stay one line
    const std::string kit = dir / "k.dkz";
    const struct {
        std::vector<std::string> args;
        int status;
        std::string fragment;
    } cases[] = {
        {{}, 2, "no command given"},
        {{"unpack", "x"}, 2, "unknown command 'unpack'"},
        {{"verify", "a.dkz", "b.dkz"}, 2, "verify: expected exactly one kit file"},
        {{"list", "--strict", "a.dkz"}, 2, "list: expected exactly one kit file"},
        {{"pack", dir / "absent", "-o", kit}, 1, "cannot read directory '" + (dir / "absent")},
        {{"pack", dir / "src", "-o", kit, "--manifest", dir / "manifest.txt"},
         1,
         "manifest line 3: expected 5 tab-separated fields"},
        {{"pack", dir / "odd", "-o", kit}, 1, "file 'back\\slash it's \"quoted\" $(touch pwned)"},
        {{"list", ReferenceKit("dotdot-name")},
         1,
         "file record 1 at byte 16: unsafe file name; the installer's reader answers 13"},
    };
    for (const auto& [args, status, fragment] : cases)
        ExpectOneLineError(RunTool(args), status, fragment);
    EXPECT_EQ(EntriesOf(dir.path()), (Names{"manifest.txt", "odd", "src"}));
    EXPECT_EQ(RunTool({"--help"}).status, 0);
}

TEST(CommandLine, PackReportsWhatItWroteAndListShowsWhatTheReaderLoads) {
    ScratchDirectory dir;
    WriteFileAt(dir / "src/tab\there.txt", "abc");
    ASSERT_EQ(symlink("tab\there.txt", (dir / "src/link").c_str()), 0);
    const ToolRun run = RunTool({"pack", dir / "src", "-o", dir / "k.dkz", "--level", "0",
                                 "--product", "en:Name:Vendor:tab\there.txt"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, dir / "k.dkz" +
                           ": 1 product(s), 1 file(s), layout 0, 115 bytes unpacked, 120 packed\n");
    EXPECT_EQ(run.err, "ord8kit: warning: skipped 'link': not a regular file\n");
    // The single-product layout stores no language: the reader must still find English.
    EXPECT_EQ(RunTool({"list", dir / "k.dkz"}).out,
              "product\ten\tName\tVendor\ttab\\x09here.txt\n"
              "file\t3\t2024-03-01T09:30:00Z\ttab\\x09here.txt\n");
}

// Deflates a kit of no products, `files` and then `data` into `path`, and cuts it to
// `cutTo` bytes unless 0.
void WriteKit(const std::string& path, std::vector<kittool::KitFile> files, const std::string& data,
              int level = 9, off_t cutTo = 0) {
    std::vector<unsigned char> inflated = kittool::encode_kit_tables(1, {}, files);
    inflated.insert(inflated.end(), data.begin(), data.end());
    kittool::FilePtr out(std::fopen(path.c_str(), "wb"));
    kittool::RawDeflateWriter writer;
    std::string error;
    ASSERT_TRUE(writer.start(out.get(), level, error) &&
                writer.write(inflated.data(), inflated.size(), error) && writer.finish(error));
    out.reset();
    ASSERT_TRUE(cutTo == 0 || truncate(path.c_str(), cutTo) == 0);
}

// Exit 0 whenever the installer can use the kit; warnings fail only with --strict.
TEST(CommandLine, VerifyAnswersWhetherTheInstallerCanUseTheKit) {
    ScratchDirectory dir;
    // One file record of a five-unit name: the tables end at byte 46.
    WriteKit(dir / "beyond-4GiB", {{u"a.txt", 0, 0xFFFFFFF0, 5}}, std::string(14, 'x'));
    // Cut in the unused end of the data area: no end marker, yet every needed byte is there.
    WriteKit(dir / "cut", {{u"a.txt", 0, 0, 3}}, "abc" + std::string(4000, '\0'), 0, 2000);
    const auto kit = [](const char* name) { return ReferenceKit(name); };
    const struct {
        std::string kit;
        bool strict;
        int status;
        std::string said;  // the line on stdout for 0, else the start of the stderr line
    } cases[] = {
        {kit("dynamic-level9"), true, 0, "ok: 3 product(s), 4 file(s), 7273 bytes unpacked"},
        {kit("trailing-bytes"), false, 0, "ok: 3 product(s), 4 file(s), 7273 bytes unpacked"},
        {kit("trailing-bytes"), true, 1, "15 bytes follow the end of the deflate stream"},
        {dir / "cut", false, 0, "ok: 0 product(s), 1 file(s), 1995 bytes unpacked"},
        {dir / "cut", true, 1, "the deflate stream lacks its end marker (it ends after 2000 kit"},
        {kit("truncated"), false, 1,
         "the kit is truncated (the deflate stream ends early, after 472 kit bytes and 748 "
         "unpacked): file record 1 at byte 348: data range outside the kit"},
        {kit("zlib-header"), false, 1, "the deflate data is corrupt near kit byte 5 (invalid"},
        {kit("short-record"), false, 1,
         "product record 1 at byte 8: record length below its fixed fields; the installer's "
         "reader answers 13 (damaged data)"},
        {kit("huge-count"), false, 1, "file table at byte 8: count cannot fit in the rest"},
        {kit("lone-surrogate-name"), false, 1,
         "file record 1 at byte 16: file name holds a surrogate"},
        {dir / "beyond-4GiB", false, 1,
         "file record 1 at byte 12: data range outside the kit (starts at byte 4294967326, 5 "
         "bytes long, the kit is 60 bytes); the installer's reader answers 13 (damaged data)"},
        {kit("absent"), false, 1, "cannot load the kit; the installer's reader answers 2"},
    };
    for (const auto& [path, strict, status, said] : cases) {
        const ToolRun run =
            strict ? RunTool({"verify", "--strict", path}) : RunTool({"verify", path});
        if (status == 0)
            EXPECT_EQ(run.out, path + ": " + said + "\n") << run.err;
        else
            ExpectOneLineError(run, status, "ord8kit: " + path + ": " + said);
    }
    EXPECT_EQ(RunTool({"verify", kit("trailing-bytes")}).err,
              "ord8kit: warning: " + kit("trailing-bytes") +
                  ": 15 bytes follow the end of the deflate stream\n");
}

TEST(CommandLine, SampleKitPacksWithoutWarningsAndVerifies) {
    ScratchDirectory dir;
    const std::string sample = SourcePath("examples/sample-kit/");
    const ToolRun pack = RunTool({"pack", sample + "templates", "-o", dir / "ord8.dkz",
                                  "--manifest", sample + "manifest.txt"});
    EXPECT_EQ(pack.status, 0);
    EXPECT_EQ(pack.err, "");
    EXPECT_EQ(RunTool({"verify", "--strict", dir / "ord8.dkz"}).status, 0);
}

}  // namespace
