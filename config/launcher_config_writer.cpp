#include "config/launcher_config_file.h"
#include "fs/file_replacement.h"
#include "fs/file_system.h"
#include "text/encoding.h"

namespace config {

void write_config_file(const stdx::u16string& path, const LauncherConfigStore& store) {
    const std::optional<stdx::mbstring> target = FileSystem::ToSystemPath(path);
    FileReplacement file;
    if (!target || file.Begin(*target) != FileReplacement::Outcome::kDone)
        throw static_cast<int>(kConfigCannotOpen);
    // Thrown before Commit(), the replacement's destructor removes the unfinished file.
    for (const LauncherConfigEntry& entry : store.entries()) {
        const stdx::mbstring key = stdx::to_multibyte(entry.key);
        for (const stdx::u16string& value : entry.values) {
            if (std::fprintf(file.Stream(), "%s=%s", key.c_str(),
                             stdx::to_multibyte(value).c_str()) < 0 ||
                std::fputc('\n', file.Stream()) == EOF)
                throw static_cast<int>(kConfigCannotWrite);
        }
    }
    switch (file.Commit()) {
        case FileReplacement::Outcome::kDone:
            return;
        case FileReplacement::Outcome::kCannotWrite:
            throw static_cast<int>(kConfigCannotWrite);
        case FileReplacement::Outcome::kCannotCreate:
            throw static_cast<int>(kConfigCannotOpen);
    }
}

}  // namespace config
