#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "fs/file_system.h"
#include "text/encoding.h"

void FileSystem::RunCommand(const stdx::u16string& command) {
    // The result is of no interest to any caller; the cast only silences the warning.
    static_cast<void>(std::system(stdx::to_multibyte(command).c_str()));
}

stdx::u16string FileSystem::RunCommandOutput(const stdx::u16string& command) {
    FILE* pipe = popen(stdx::to_multibyte(command).c_str(), "r");
    if (pipe == nullptr) return stdx::u16string();
    char line[255];
    stdx::mbstring text;
    if (std::fgets(line, sizeof line, pipe) != nullptr) {
        const std::size_t length = std::strlen(line);
        // The last character goes even when it is not a newline (a line cut short).
        if (length > 0) text.assign(line, length - 1);
    }
    pclose(pipe);
    return stdx::from_multibyte(text);
}
