// The keys the launcher's configuration file is known to hold. The installer reads and
// writes only the templates location; the others pass through a rewrite untouched.
#pragma once

#include <cstddef>

#include "text/string.h"

namespace config {

enum class LauncherKey : std::size_t {
    kDefaultVersion,
    kCommonInfoBases,
    kInstalledLocation,
    kDistributiveLocation,
    kCommonCfgLocation,
    kInstallComponents,
    kConfigurationTemplatesLocation,
};

// Indexed by LauncherKey.
constexpr const char16_t* kLauncherKeyNames[] = {
    u"DefaultVersion",
    u"CommonInfoBases",
    u"InstalledLocation",
    u"DistributiveLocation",
    u"CommonCfgLocation",
    u"InstallComponents",
    u"ConfigurationTemplatesLocation",
};

inline stdx::u16string launcher_key_name(LauncherKey key) {
    return stdx::u16string(kLauncherKeyNames[static_cast<std::size_t>(key)]);
}

}  // namespace config
