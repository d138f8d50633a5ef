#include "tools/kit_commands.h"

#include "tools/file_time.h"
#include "tools/installer_reader.h"
#include "tools/utf_conversion.h"

namespace kittool {

namespace {

std::string Shown(const stdx::u16string& text) { return escape_control_bytes(ToUtf8(text)); }

std::string WhereItEnds(const StreamReport& stream) {
    return "after " + std::to_string(stream.consumed) + " kit bytes and " +
           std::to_string(stream.inflatedSize) + " unpacked";
}

// Why the installer cannot use the kit: the stream's fault, or the reader's refusal with
// a truncated stream named as its likely cause. Then the reader's answer.
std::string Failure(const LoadedKit& kit) {
    std::string problem;
    if (kit.stream.end == StreamEnd::kCorrupt)
        problem = "the deflate data is corrupt near kit byte " +
                  std::to_string(kit.stream.consumed) + " (" + kit.stream.damage + ")";
    else if (kit.stream.end == StreamEnd::kTooLarge)
        problem = "the kit unpacks to more than the 4 GiB a kit can address";
    else
        problem = kit.refusal.empty() ? "cannot load the kit" : kit.refusal;
    if (kit.stream.end == StreamEnd::kEndsEarly)
        problem = "the kit is truncated (the deflate stream ends early, " +
                  WhereItEnds(kit.stream) + "): " + problem;
    return problem + "; the installer's reader answers " + DescribeResultCode(kit.code);
}

}  // namespace

bool ListKit(const std::string& kitPath, std::string& listing, std::string& error) {
    const LoadedKit kit = LoadKit(kitPath);
    if (kit.code != kOk) {
        error = Failure(kit);
        return false;
    }
    for (const config::ProductInfo& product : kit.products)
        listing += "product\t" + Shown(product.language) + "\t" + Shown(product.productName) +
                   "\t" + Shown(product.provider) + "\t" + Shown(product.descriptionFile) + "\n";
    for (const KitFile& file : kit.files)
        listing += "file\t" + std::to_string(file.size) + "\t" +
                   file_time_to_iso(file.modificationTime) + "\t" + Shown(file.name) + "\n";
    return true;
}

KitVerdict VerifyKit(const std::string& kitPath) {
    const LoadedKit kit = LoadKit(kitPath);
    KitVerdict verdict;
    if (kit.code != kOk) {
        verdict.error = Failure(kit);
        return verdict;
    }
    // The installer reads both of these fine; a writer never makes them, so they hint at
    // a kit that was cut short or mixed up.
    if (kit.stream.end == StreamEnd::kEndsEarly)
        verdict.warnings.push_back("the deflate stream lacks its end marker (it ends " +
                                   WhereItEnds(kit.stream) +
                                   "), yet every table and data range is whole");
    if (kit.stream.trailing > 0)
        verdict.warnings.push_back(std::to_string(kit.stream.trailing) +
                                   " bytes follow the end of the deflate stream");
    verdict.summary = "ok: " + std::to_string(kit.products.size()) + " product(s), " +
                      std::to_string(kit.files.size()) + " file(s), " +
                      std::to_string(kit.stream.inflatedSize) + " bytes unpacked";
    return verdict;
}

}  // namespace kittool
