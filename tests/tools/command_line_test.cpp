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
    std::string out, err;
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

// Rows run in order: a kit packed by one row is read by the next. Verify exits 0 whenever
// the installer can use the kit; warnings fail only with --strict. Anything on stderr is
// one line naming the tool; an empty fragment means nothing may appear there.
TEST(CommandLine, AnswersWithItsStatusOutputAndOneLineMessages) {
    ScratchDirectory dir;
    WriteFileAt(dir / "src/tab\there.txt", "abc");
    ASSERT_EQ(symlink("tab\there.txt", (dir / "src/link").c_str()), 0);
    WriteFileAt(dir / "m.txt", "# products\n\nproduct\ten\tName\n");
    WriteFileAt(dir / ("odd/back\\slash " + kHostile), "x");  // its refusal must stay one line
    // One file record of a five-unit name: the tables end at byte 46.
    WriteKit(dir / "beyond-4GiB", {{u"a.txt", 0, 0xFFFFFFF0, 5}}, std::string(14, 'x'));
    // Cut in the unused end of the data area: no end marker, yet every needed byte is there.
    WriteKit(dir / "cut", {{u"a.txt", 0, 0, 3}}, "abc" + std::string(4000, '\0'), 0, 2000);
    const std::string src = dir / "src", kit = dir / "k.dkz", cut = dir / "cut",
                      trail = ReferenceKit("trailing-bytes"),
                      templates = SourcePath("examples/sample-kit/templates"),
                      manifest = SourcePath("examples/sample-kit/manifest.txt");
    const auto ref = [](const char* name) { return ReferenceKit(name); };
    const struct {
        std::vector<std::string> args;
        int status;
        std::string out, err;  // fragments
    } cases[] = {
        {{"--help"}, 0, "usage:", ""},
        {{}, 2, "", "no command given"},
        {{"unpack", "x"}, 2, "", "unknown command 'unpack'"},
        {{"verify", "a.dkz", "b.dkz"}, 2, "", "verify: expected exactly one kit file"},
        {{"list", "--strict", "a.dkz"}, 2, "", "list: expected exactly one kit file"},
        {{"pack", dir / "absent", "-o", kit}, 1, "", "cannot read directory '" + (dir / "absent")},
        {{"pack", src, "-o", kit, "--manifest", dir / "m.txt"}, 1, "", "line 3: expected 5 tab"},
        {{"pack", dir / "odd", "-o", kit}, 1, "", "кіт': a backslash in a name would read as a"},
        {{"pack", src, "-o", kit, "--level", "0", "--product", "en:N:V:tab\there.txt"},
         0,
         ": 1 product(s), 1 file(s), layout 0, 99 bytes unpacked, 104 packed\n",
         "ord8kit: warning: skipped 'link': not a regular file\n"},
        // The single-product layout stores no language: the reader must still find English.
        {{"list", kit}, 0, "\ten\tN\tV\ttab\\x09here.txt\nfile\t3\t2024-03-01T09:30:00Z\t", ""},
        {{"pack", templates, "-o", kit, "--manifest", manifest}, 0, "10 file(s), layout 1", ""},
        {{"verify", "--strict", kit}, 0, kit + ": ok: 3 product(s), 10 file(s)", ""},
        // One product, but not English.
        {{"pack", templates, "-o", kit, "--product", "de:N:V:"}, 0, "layout 1", "no 'en' product"},
        {{"verify", trail}, 0, "ok: 3 product(s), 4 file(s), 7273 bytes", "warning: " + trail},
        {{"verify", "--strict", trail}, 1, "", "ord8kit: " + trail + ": 15 bytes follow the end"},
        {{"verify", cut}, 0, "ok: 0 product(s), 1 file(s), 1995 bytes unpacked", "warning: "},
        {{"verify", "--strict", cut}, 1, "", cut + ": the deflate stream lacks its end marker (it"},
        {{"verify", ref("truncated")},
         1,
         "",
         "the kit is truncated (the deflate stream ends early, after 472 kit bytes and 748 "
         "unpacked): file record 1 at byte 348: data range outside the kit"},
        {{"verify", ref("zlib-header")}, 1, "", "the deflate data is corrupt near kit byte 5"},
        {{"verify", ref("huge-count")}, 1, "", "file table at byte 8: count cannot fit in the"},
        {{"list", ref("short-record")}, 1, "", "product record 1 at byte 8: record length below"},
        {{"verify", dir / "beyond-4GiB"},
         1,
         "",
         "file record 1 at byte 12: data range outside the kit (starts at byte 4294967326, 5 "
         "bytes long, the kit is 60 bytes); the installer's reader answers 13 (damaged data)"},
        {{"verify", ref("absent")}, 1, "", "cannot load the kit; the installer's reader answers 2"},
    };
    for (const auto& [args, status, out, err] : cases) {
        const ToolRun run = RunTool(args);
        SCOPED_TRACE(args.empty() ? "" : args[0] + " " + args.back());
        EXPECT_EQ(run.status, status) << run.err;
        for (const auto& [got, want] : {std::pair{run.out, out}, std::pair{run.err, err}})
            EXPECT_TRUE(want.empty() ? got.empty() : got.find(want) != std::string::npos) << got;
        EXPECT_TRUE(run.err.empty() || (run.err.rfind("ord8kit: ", 0) == 0 &&
                                        run.err.find('\n') == run.err.size() - 1))
            << run.err;
    }
}

}  // namespace
