// The two-state reader of the launcher file's text: "key=value" lines, the key up to the
// first "=", the value up to the line feed. No comments, no sections, no trimming; a
// carriage return is an ordinary character; a line without "=" is a key with an empty
// value; empty lines are skipped; the last line needs no line feed. Text arrives in
// pieces of any size and keys and values may be of any length.
#pragma once

#include <array>
#include <cstddef>

#include "config/launcher_config_store.h"
#include "text/string.h"

namespace config {

class LauncherConfigParser {
  public:
    explicit LauncherConfigParser(LauncherConfigStore& store) : store_(store) {}

    // Every complete line in `units` is inserted into the store as it ends.
    void feed(const char16_t* units, std::size_t count);
    // End of text: a last line without a line feed is inserted too.
    void finish();

    // Units collected before they are moved into the key or value being built.
    static constexpr std::size_t kWorkBufferUnits = 2048;

  private:
    enum class State { kKey, kValue };

    void collect(char16_t unit);
    stdx::u16string take_collected();
    void end_line();

    LauncherConfigStore& store_;
    State state_ = State::kKey;
    std::array<char16_t, kWorkBufferUnits> work_{};
    std::size_t workUsed_ = 0;
    stdx::u16string collected_;  // earlier, flushed contents of the work buffer
    stdx::u16string key_;
};

}  // namespace config
