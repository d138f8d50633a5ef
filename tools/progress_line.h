// One line of progress for long commands: files and bytes done, the percentage and the
// current file, rewritten in place with "\r" at a bounded rate and ended with a line feed. Knows
// nothing of terminals: the caller decides whether to show it at all (only when standard
// error is a terminal) and supplies where the text goes and the clock, so tests can drive
// it with neither. One line belongs to one thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace kittool {

struct ProgressCounts {
    std::uint64_t filesDone = 0;
    std::uint64_t filesTotal = 0;
    std::uint64_t bytesDone = 0;
    std::uint64_t bytesTotal = 0;
    std::string currentFile;  // UTF-8; none when empty
};

// "12/40 files, 3.1/10.0 MiB, 31%  docs/a.dt": the percentage follows the bytes, or the
// files when there are no bytes, and is never rounded up to 100 before the end. The
// file is shown with control bytes escaped and, beyond 40 bytes, by its end only
// ("...") so that the line stays shorter than a terminal's.
std::string FormatProgress(const ProgressCounts& counts);

class ProgressLine {
  public:
    using Clock = std::chrono::steady_clock;
    using Sink = std::function<void(const std::string&)>;
    using Now = std::function<Clock::time_point()>;

    static constexpr Clock::duration kDefaultInterval = std::chrono::milliseconds(100);

    explicit ProgressLine(Sink sink, Now now = Clock::now,
                          Clock::duration interval = kDefaultInterval);
    ~ProgressLine();  // finishes the line
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    // Cheap enough to call for every chunk: the line is rewritten only when `interval`
    // has passed since it was last written (the first update is shown at once).
    void Update(const ProgressCounts& counts);

    // Shows the latest counts if they are not on the line yet and ends the line, so that
    // whatever is printed next starts on a line of its own. Nothing when there was no
    // update since the last Finish.
    void Finish();

  private:
    void Show();

    Sink sink_;
    Now now_;
    Clock::duration interval_;
    ProgressCounts latest_;
    bool open_ = false;   // an update arrived since the last Finish
    bool shown_ = false;  // the line shows `latest_`
    Clock::time_point lastWrite_;
    std::size_t lastLength_ = 0;
};

}  // namespace kittool
