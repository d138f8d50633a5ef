// One load or save over a pair of launcher configuration files. Store A is the file
// that is written back (the user's own), store B a second file that is only read, store
// C a third store that is searched but never filled. The alternate flag picks the pair:
//   false: B = product_launcher_config_path(), A = launcher_config_path();
//   true:  B = launcher_config_path(),         A = alternate_launcher_config_path().
// Built on the stack for one operation.
#pragma once

#include <vector>

#include "config/launcher_config_store.h"
#include "text/string.h"

namespace config {

// Gives every non-empty location that ends in neither "/" nor a backslash a trailing
// backslash (the launcher's own separator; users of a location turn backslashes into
// "/"), then drops later locations equal to an earlier one in any letter case.
void normalise_locations(std::vector<stdx::u16string>& locations);

class LauncherConfig {
  public:
    explicit LauncherConfig(bool alternate) : alternate_(alternate) {}

    // Reads file B, then file A. Never fails: a missing or unreadable file adds nothing.
    void load();

    // The values of `key` from stores A, B, C (C, B, A when `inOrder` is false), with
    // every backslash turned into "/", then normalised (normalise_locations).
    std::vector<stdx::u16string> values_of(const stdx::u16string& key, bool inOrder) const;

    // In store A, the entry of `key` gets exactly `values`.
    void set_values(const stdx::u16string& key, const std::vector<stdx::u16string>& values);

    // Loads, sets the templates locations of store A to `locations` (normalised) and
    // writes store A back, creating the file's folder when the file is missing. When the
    // write fails, a fallback folder is created and the write is tried once more (to
    // the same file); a second failure is thrown as the int of write_config_file. Throws
    // kConfigCannotOpen, without writing, when file A exists but could not be read in
    // full, since its other settings would be lost.
    void save(const std::vector<stdx::u16string>& locations);

    // The path that store A is read from and written to.
    stdx::u16string written_path() const;

  private:
    // product_settings_folder() + "\Tavri" + ".Tavri/ostart" (or "ostartt"): a leftover
    // of the launcher's path scheme on another platform, backslash and all.
    stdx::u16string fallback_folder() const;

    bool alternate_;
    bool storeAComplete_ = true;
    LauncherConfigStore storeA_;
    LauncherConfigStore storeB_;
    LauncherConfigStore storeC_;
};

}  // namespace config
