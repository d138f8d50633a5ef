// Reads the kit tool's command line into the options of one command. Checks only the
// shape of the arguments; whether paths exist is the command's business. Pure
// functions; safe from any thread.
#pragma once

#include <string>
#include <vector>

#include "tools/install_command.h"
#include "tools/pack_command.h"

namespace kittool {

enum class Command { kHelp, kPack, kList, kVerify, kInstall, kRecover };

struct CommandLine {
    Command command = Command::kHelp;
    PackOptions pack;        // for kPack
    std::string kit_path;    // for kList and kVerify
    bool strict = false;     // for kVerify: warnings count as errors
    InstallOptions install;  // for kInstall
};

// `args` excludes the program name. False with a one-line `error` for unknown
// commands or options, missing or repeated values, a level outside 0-9 and a language
// the catalogue lacks.
bool parse_command_line(const std::vector<std::string>& args, CommandLine& line,
                        std::string& error);

// The usage text, several lines, ending in a line feed.
const char* usage_text();

}  // namespace kittool
