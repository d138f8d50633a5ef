// Reads arbitrary bytes as the launcher's ostart.cfg, the way the installer reads it
// from the user's home: through a file, in chunks. Checks that every setting read is a
// "key=value" line as the format allows.
#include <cstdint>
#include <cstdio>
#include <string>

#include "config/launcher_config_file.h"
#include "tests/fuzz/fuzz_support.h"
#include "text/encoding.h"

// Non-ASCII text needs a UTF-8 locale, as the installer sets up at start.
inline const bool kUtf8Locale = setenv("LC_ALL", "C.UTF-8", 1) == 0;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::string path = ScratchFolder() + "/ostart.cfg";
    FILE* file = std::fopen(path.c_str(), "wb");
    Require(file != nullptr, "cannot write the scratch file");
    std::fwrite(data, 1, size, file);
    std::fclose(file);

    config::LauncherConfigStore store;
    Require(config::read_config_file(stdx::from_multibyte(stdx::mbstring(path.c_str())), store),
            "a whole file read as unread");
    for (const config::LauncherConfigEntry& entry : store.entries()) {
        Require(!entry.values.empty(), "a key without a value");
        Require(entry.key.find(u'=') == stdx::u16string::npos &&
                    entry.key.find(u'\n') == stdx::u16string::npos,
                "a key holding '=' or a line feed");
        for (const stdx::u16string& value : entry.values)
            Require(value.find(u'\n') == stdx::u16string::npos, "a value holding a line feed");
    }
    return 0;
}
