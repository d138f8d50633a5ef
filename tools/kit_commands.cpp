#include "tools/kit_commands.h"

#include <cstdio>
#include <memory>

#include "tools/file_ptr.h"
#include "tools/file_time.h"
#include "tools/inflate_check.h"
#include "tools/installer_reader.h"
#include "tools/utf_conversion.h"

namespace kittool {

namespace {

std::string shown(const std::u16string& text) {
    return utf16_for_display(text.data(), text.size());
}

std::string refused_by_reader(const ReaderView& view) {
    return "the installer's reader refuses the kit with code " + describe_result_code(view.code) +
           (view.refusal.empty() ? "" : ": " + view.refusal);
}

// The first problem of the stream itself, or empty.
std::string stream_problem(const InflateReport& report) {
    switch (report.state) {
        case StreamState::kCorrupt:
            return "the deflate data is corrupt near kit byte " + std::to_string(report.consumed) +
                   " (" + report.detail + ")";
        case StreamState::kEndsEarly:
            return "the deflate stream ends early, after " + std::to_string(report.consumed) +
                   " kit bytes and " + std::to_string(report.inflated_size) +
                   " unpacked: the kit is truncated";
        case StreamState::kTooLarge:
            return "the kit unpacks to more than the 4 GiB a kit can address";
        case StreamState::kComplete:
            break;
    }
    return {};
}

}  // namespace

bool list_kit(const std::string& kit_path, std::string& listing, std::string& error) {
    const ReaderView view = load_with_installer_reader(kit_path);
    if (view.code != 0) {
        error = refused_by_reader(view);
        return false;
    }
    for (const KitProduct& product : view.products)
        listing += "product\t" + shown(product.language) + "\t" + shown(product.name) + "\t" +
                   shown(product.vendor) + "\t" + shown(product.description) + "\n";
    for (const KitFileEntry& file : view.files)
        listing += "file\t" + std::to_string(file.size) + "\t" +
                   file_time_to_iso(file.modification_time) + "\t" + shown(file.name) + "\n";
    return true;
}

bool verify_kit(const std::string& kit_path, std::string& summary, std::string& error) {
    FilePtr scratch(std::tmpfile());
    if (!scratch) {
        error = "cannot create a scratch file to unpack into";
        return false;
    }
    InflateReport stream;
    if (!inflate_kit(kit_path, scratch.get(), stream, error)) return false;

    // Stream, then the reader's refusal, then trailing bytes: the first problem is the
    // one reported. The reader alone judges the tables; the stream checks are the tool's.
    const ReaderView view = load_with_installer_reader(kit_path);
    std::string problem = stream_problem(stream);
    if (problem.empty()) problem = view.refusal;
    if (problem.empty() && stream.trailing_bytes > 0)
        problem =
            std::to_string(stream.trailing_bytes) + " bytes follow the end of the deflate stream";

    if (!problem.empty()) {
        error = problem + "; the installer's reader answers " + describe_result_code(view.code);
        return false;
    }
    if (view.code != 0) {
        error = refused_by_reader(view);
        return false;
    }
    summary = "sound: " + std::to_string(view.products.size()) + " product(s), " +
              std::to_string(view.files.size()) + " file(s), " +
              std::to_string(stream.inflated_size) + " bytes unpacked";
    return true;
}

}  // namespace kittool
