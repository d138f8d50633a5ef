// Reads arbitrary bytes as the launcher's ostart.cfg, the way the installer reads it
// from the user's home: through a file, in chunks. Checks that every setting read is a
// "key=value" line as the format allows.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "config/launcher_config_file.h"
#include "text/encoding.h"

namespace {

void Require(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "launcher_config_read_fuzzer: %s\n", what);
        std::abort();
    }
}

// The one file of the run, in memory when possible; removed at exit.
char scratchFile[] = "/dev/shm/ord8-config-fuzz-XXXXXX";

const char* ScratchFile() {
    static const bool made = [] {
        setenv("LC_ALL", "C.UTF-8", 1);
        int fd = mkstemp(scratchFile);
        if (fd < 0) {
            std::snprintf(scratchFile, sizeof scratchFile, "/tmp/ord8-config-fuzz-XXXXXX");
            fd = mkstemp(scratchFile);
        }
        Require(fd >= 0, "mkstemp");
        close(fd);
        std::atexit([] { std::remove(scratchFile); });
        return true;
    }();
    return made ? scratchFile : nullptr;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const char* path = ScratchFile();
    FILE* file = std::fopen(path, "wb");
    Require(file != nullptr, "cannot write the scratch file");
    std::fwrite(data, 1, size, file);
    std::fclose(file);

    config::LauncherConfigStore store;
    Require(config::read_config_file(stdx::from_multibyte(stdx::mbstring(path)), store),
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
