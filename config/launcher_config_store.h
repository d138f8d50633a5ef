// The in-memory form of one launcher configuration file: keys with their values, in
// the order in which they were first met. Keys and values compare without regard to
// letter case (stdx::compare_no_case), so a store never holds two keys, nor two values
// of one key, that differ only in case.
#pragma once

#include <vector>

#include "text/string.h"

namespace config {

struct LauncherConfigEntry {
    stdx::u16string key;                  // as first written, case kept
    std::vector<stdx::u16string> values;  // in the order met
};

class LauncherConfigStore {
  public:
    // Appends `value` to the entry of `key`, or appends a new entry at the end. Answers
    // false, changing nothing, when the entry already holds the value in any case.
    bool insert(const stdx::u16string& key, const stdx::u16string& value);

    // The entry for `key` in any letter case, or null.
    const LauncherConfigEntry* find(const stdx::u16string& key) const;

    // The entry for `key` gets exactly `values` (no duplicate check); a missing entry is
    // appended at the end.
    void set_values(const stdx::u16string& key, const std::vector<stdx::u16string>& values);

    const std::vector<LauncherConfigEntry>& entries() const { return entries_; }

  private:
    LauncherConfigEntry* find_mutable(const stdx::u16string& key);

    std::vector<LauncherConfigEntry> entries_;
};

}  // namespace config
