#include "tools/progress_line.h"

#include <cinttypes>
#include <cstdio>
#include <utility>

#include "tools/utf_conversion.h"

namespace kittool {

namespace {

constexpr std::size_t kLongestFileShown = 40;

// The end of a long name says more than its start; the cut falls between characters.
std::string ShownFile(const std::string& file) {
    std::string shown = escape_control_bytes(file);
    if (shown.size() <= kLongestFileShown) return shown;
    std::size_t cut = shown.size() - kLongestFileShown;
    while (cut < shown.size() && (static_cast<unsigned char>(shown[cut]) & 0xC0) == 0x80) ++cut;
    return "..." + shown.substr(cut);
}

}  // namespace

std::string FormatProgress(const ProgressCounts& counts) {
    double fraction = 1;
    if (counts.bytesTotal > 0)
        fraction = static_cast<double>(counts.bytesDone) / static_cast<double>(counts.bytesTotal);
    else if (counts.filesTotal > 0)
        fraction = static_cast<double>(counts.filesDone) / static_cast<double>(counts.filesTotal);
    // Truncated, so that 100% means done and not merely nearly done.
    const unsigned percent = fraction >= 1 ? 100u : static_cast<unsigned>(fraction * 100);
    constexpr double kMiB = 1024.0 * 1024.0;
    char text[128];
    std::snprintf(text, sizeof text, "%" PRIu64 "/%" PRIu64 " files, %.1f/%.1f MiB, %u%%",
                  counts.filesDone, counts.filesTotal, static_cast<double>(counts.bytesDone) / kMiB,
                  static_cast<double>(counts.bytesTotal) / kMiB, percent);
    if (counts.currentFile.empty()) return text;
    return text + ("  " + ShownFile(counts.currentFile));
}

ProgressLine::ProgressLine(Sink sink, Now now, Clock::duration interval)
    : sink_(std::move(sink)), now_(std::move(now)), interval_(interval) {}

ProgressLine::~ProgressLine() { Finish(); }

void ProgressLine::Update(const ProgressCounts& counts) {
    latest_ = counts;
    shown_ = false;
    const Clock::time_point now = now_();
    if (open_ && now - lastWrite_ < interval_) return;
    open_ = true;
    lastWrite_ = now;
    Show();
}

void ProgressLine::Finish() {
    if (!open_) return;
    if (!shown_) Show();
    sink_("\n");
    open_ = false;
    lastLength_ = 0;
}

void ProgressLine::Show() {
    std::string text = FormatProgress(latest_);
    const std::size_t length = text.size();
    // Blank out the rest of a longer earlier text.
    if (length < lastLength_) text.append(lastLength_ - length, ' ');
    sink_("\r" + text);
    lastLength_ = length;
    shown_ = true;
}

}  // namespace kittool
