// ord8kit: packs, lists and verifies distribution kits for vendors and for our tests, and
// installs them without a window.
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "tools/command_line.h"
#include "tools/install_command.h"
#include "tools/kit_commands.h"
#include "tools/pack_command.h"
#include "tools/utf_conversion.h"

namespace {

constexpr int kExitRefused = 1;
constexpr int kExitUsage = 2;

using kittool::Tell;

int fail(const std::string& message, int status) {
    Tell(message);
    return status;
}

int pack(const kittool::PackOptions& options) {
    kittool::PackSummary summary;
    std::string error;
    // Progress is for a person watching; logs and pipes get only the result.
    std::unique_ptr<kittool::ProgressLine> progress;
    if (isatty(STDERR_FILENO))
        progress = std::make_unique<kittool::ProgressLine>(
            [](const std::string& text) { std::fputs(text.c_str(), stderr); });
    const bool packed = kittool::run_pack(options, summary, error, progress.get());
    if (progress) progress->Finish();
    if (!packed) return fail(error, kExitRefused);
    for (const std::string& warning : summary.warnings) Tell("warning: " + warning);
    std::printf("%s: %zu product(s), %zu file(s), layout %u, %llu bytes unpacked, %llu packed\n",
                options.output_path.c_str(), summary.product_count, summary.file_count,
                static_cast<unsigned>(summary.layout),
                static_cast<unsigned long long>(summary.inflated_size),
                static_cast<unsigned long long>(summary.kit_size));
    return 0;
}

int list(const std::string& kit_path) {
    std::string listing, error;
    if (!kittool::ListKit(kit_path, listing, error))
        return fail(kit_path + ": " + error, kExitRefused);
    std::fputs(listing.c_str(), stdout);
    return 0;
}

// Warnings leave a kit usable, so they keep exit 0 unless `strict` makes them errors.
int Verify(const std::string& kitPath, bool strict) {
    const kittool::KitVerdict verdict = kittool::VerifyKit(kitPath);
    if (!verdict.error.empty()) return fail(kitPath + ": " + verdict.error, kExitRefused);
    for (const std::string& warning : verdict.warnings)
        Tell((strict ? "" : "warning: ") + kitPath + ": " + warning);
    if (strict && !verdict.warnings.empty()) return kExitRefused;
    std::printf("%s: %s\n", kitPath.c_str(), verdict.summary.c_str());
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> args(argv + 1, argv + argc);
    kittool::CommandLine line;
    std::string error;
    if (!kittool::parse_command_line(args, line, error)) return fail(error, kExitUsage);
    switch (line.command) {
        case kittool::Command::kHelp:
            std::fputs(kittool::usage_text(), stdout);
            return 0;
        case kittool::Command::kPack:
            return pack(line.pack);
        case kittool::Command::kList:
            return list(line.kit_path);
        case kittool::Command::kVerify:
            return Verify(line.kit_path, line.strict);
        case kittool::Command::kInstall:
            return kittool::Install(line.install);
        case kittool::Command::kRecover:
            return kittool::Recover();
    }
    return kExitUsage;
}
