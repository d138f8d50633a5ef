// The progress line as a terminal would receive it, driven by a fake clock.
#include "tools/progress_line.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using kittool::ProgressCounts;
using kittool::ProgressLine;

constexpr std::uint64_t kMiB = 1024 * 1024;

TEST(ProgressLine, RewritesOneLineAtABoundedRateAndEndsIt) {
    std::string out;
    ProgressLine::Clock::time_point now;
    ProgressLine line([&](const std::string& text) { out += text; }, [&] { return now; });
    const struct {
        int ms;
        bool finish;
        ProgressCounts counts;
        const char* shown;
    } steps[] = {
        {0, false, {0, 2, 0, 10 * kMiB, {}}, "\r0/2 files, 0.0/10.0 MiB, 0%"},
        {99, false, {0, 2, kMiB, 10 * kMiB, {}}, ""},  // too soon after the last write
        {150, false, {1, 2, 10 * kMiB - 1, 10 * kMiB, {}}, "\r1/2 files, 10.0/10.0 MiB, 99%"},
        // A shorter text blanks the rest of the longer one before it.
        {250, false, {1, 2, kMiB / 2, 2 * kMiB, {}}, "\r1/2 files, 0.5/2.0 MiB, 25%  "},
        {260, false, {2, 2, 0, 0, {}}, ""},
        {260, true, {}, "\r2/2 files, 0.0/0.0 MiB, 100%\n"},  // the held-back counts come first
        {260, true, {}, ""},                                  // nothing more to end
        {260, false, {}, "\r0/0 files, 0.0/0.0 MiB, 100%"},   // a new line, shown at once
        // A long name shows its end, cut between characters; a line feed is escaped.
        {400,
         false,
         {0, 1, 0, 0, "\xC3\xA9" + std::string(34, 'x') + "\ny"},
         "\r0/1 files, 0.0/0.0 MiB, 0%  ...xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx\\x0ay"},
    };
    for (const auto& step : steps) {
        now = ProgressLine::Clock::time_point(std::chrono::milliseconds(step.ms));
        out.clear();
        step.finish ? line.Finish() : line.Update(step.counts);
        EXPECT_EQ(out, step.shown) << step.ms << (step.finish ? " finish" : "");
    }
}

}  // namespace
