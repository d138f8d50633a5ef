#include "config/launcher_config_store.h"

#include <algorithm>

#include "text/encoding.h"

namespace config {

bool LauncherConfigStore::insert(const stdx::u16string& key, const stdx::u16string& value) {
    LauncherConfigEntry* entry = find_mutable(key);
    if (entry == nullptr) {
        entries_.push_back(LauncherConfigEntry{key, {value}});
        return true;
    }
    const bool known = std::any_of(
        entry->values.begin(), entry->values.end(),
        [&value](const stdx::u16string& kept) { return stdx::compare_no_case(kept, value) == 0; });
    if (known) return false;
    entry->values.push_back(value);
    return true;
}

const LauncherConfigEntry* LauncherConfigStore::find(const stdx::u16string& key) const {
    for (const LauncherConfigEntry& entry : entries_)
        if (stdx::compare_no_case(entry.key, key) == 0) return &entry;
    return nullptr;
}

LauncherConfigEntry* LauncherConfigStore::find_mutable(const stdx::u16string& key) {
    return const_cast<LauncherConfigEntry*>(
        static_cast<const LauncherConfigStore*>(this)->find(key));
}

void LauncherConfigStore::set_values(const stdx::u16string& key,
                                     const std::vector<stdx::u16string>& values) {
    if (LauncherConfigEntry* entry = find_mutable(key))
        entry->values = values;
    else
        entries_.push_back(LauncherConfigEntry{key, values});
}

}  // namespace config
