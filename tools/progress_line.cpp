#include "tools/progress_line.h"

#include <cinttypes>
#include <cstdio>
#include <utility>

namespace kittool {

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
    return text;
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
