#include "config/launcher_config.h"

#include <utility>

#include "config/launcher_config_file.h"
#include "config/launcher_keys.h"
#include "config/launcher_paths.h"
#include "fs/file_system.h"
#include "text/encoding.h"

namespace config {

void normalise_locations(std::vector<stdx::u16string>& locations) {
    std::vector<stdx::u16string> kept;
    for (stdx::u16string location : locations) {
        if (!location.empty() && location.back() != u'/' && location.back() != u'\\')
            location.push_back(u'\\');
        bool seen = false;
        for (const stdx::u16string& earlier : kept)
            seen = seen || stdx::compare_no_case(earlier, location) == 0;
        if (!seen) kept.push_back(location);
    }
    locations.swap(kept);
}

void LauncherConfig::load() {
    const stdx::u16string readOnlyPath =
        alternate_ ? launcher_config_path() : product_launcher_config_path();
    read_config_file(readOnlyPath, storeB_);
    storeAComplete_ = read_config_file(written_path(), storeA_);
}

std::vector<stdx::u16string> LauncherConfig::values_of(const stdx::u16string& key,
                                                       bool inOrder) const {
    const LauncherConfigStore* order[] = {&storeA_, &storeB_, &storeC_};
    if (!inOrder) std::swap(order[0], order[2]);
    // Values met twice are dropped by normalise_locations, which keeps the first one,
    // so they are simply collected here.
    std::vector<stdx::u16string> values;
    for (const LauncherConfigStore* store : order) {
        if (const LauncherConfigEntry* entry = store->find(key))
            values.insert(values.end(), entry->values.begin(), entry->values.end());
    }
    const stdx::u16string backslash(u"\\"), slash(u"/");
    for (stdx::u16string& value : values) stdx::replace_all(value, backslash, slash);
    normalise_locations(values);
    return values;
}

void LauncherConfig::set_values(const stdx::u16string& key,
                                const std::vector<stdx::u16string>& values) {
    storeA_.set_values(key, values);
}

stdx::u16string LauncherConfig::written_path() const {
    return alternate_ ? alternate_launcher_config_path() : launcher_config_path();
}

stdx::u16string LauncherConfig::fallback_folder() const {
    return product_settings_folder() + u"\\" + u"Tavri" +
           (alternate_ ? u".Tavri/ostartt" : u".Tavri/ostart");
}

void LauncherConfig::save(const std::vector<stdx::u16string>& locations) {
    load();
    if (!storeAComplete_) throw static_cast<int>(kConfigCannotOpen);
    std::vector<stdx::u16string> values = locations;
    normalise_locations(values);
    set_values(launcher_key_name(LauncherKey::kConfigurationTemplatesLocation), values);

    const stdx::u16string path = written_path();
    if (!file_exists(path)) FileSystem::CreateDirectory(folder_of(path));
    try {
        write_config_file(path, storeA_);
    } catch (int) {
        // The retry deliberately writes to the unchanged path.
        FileSystem::CreateDirectory(fallback_folder());
        write_config_file(path, storeA_);
    }
}

}  // namespace config
