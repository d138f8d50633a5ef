#include "tools/command_line.h"

namespace kittool {

namespace {

bool parse_level(const std::string& text, int& level) {
    if (text.size() != 1 || text[0] < '0' || text[0] > '9') return false;
    level = text[0] - '0';
    return true;
}

bool parse_pack(const std::vector<std::string>& args, PackOptions& pack, std::string& error) {
    bool have_level = false;
    for (std::size_t i = 1; i < args.size(); ++i) {
        const std::string& arg = args[i];
        const bool takes_value =
            arg == "-o" || arg == "--manifest" || arg == "--product" || arg == "--level";
        if (takes_value && i + 1 == args.size()) {
            error = "pack: option " + arg + " needs a value";
            return false;
        }
        if (arg == "-o") {
            if (!pack.output_path.empty()) {
                error = "pack: -o given twice";
                return false;
            }
            pack.output_path = args[++i];
        } else if (arg == "--manifest") {
            pack.manifest_paths.push_back(args[++i]);
        } else if (arg == "--product") {
            pack.product_options.push_back(args[++i]);
        } else if (arg == "--level") {
            if (have_level || !parse_level(args[++i], pack.level)) {
                error = "pack: --level takes one number from 0 to 9, once";
                return false;
            }
            have_level = true;
        } else if (arg.size() > 1 && arg[0] == '-') {
            error = "pack: unknown option '" + arg + "'";
            return false;
        } else if (pack.source_dir.empty() && !arg.empty()) {
            pack.source_dir = arg;
        } else {
            error = "pack: unexpected argument '" + arg + "' (one DIR only)";
            return false;
        }
    }
    if (pack.source_dir.empty()) {
        error = "pack: no source directory given";
        return false;
    }
    if (pack.output_path.empty()) {
        error = "pack: no output given (-o FILE)";
        return false;
    }
    return true;
}

}  // namespace

bool parse_command_line(const std::vector<std::string>& args, CommandLine& line,
                        std::string& error) {
    if (args.empty()) {
        error = "no command given (pack, list or verify; --help shows the usage)";
        return false;
    }
    const std::string& command = args[0];
    if (command == "--help" || command == "-h" || command == "help") {
        line.command = Command::kHelp;
        return true;
    }
    if (command == "pack") {
        line.command = Command::kPack;
        return parse_pack(args, line.pack, error);
    }
    if (command == "list" || command == "verify") {
        line.command = command == "list" ? Command::kList : Command::kVerify;
        for (std::size_t i = 1; i < args.size(); ++i) {
            if (args[i] == "--strict" && line.command == Command::kVerify && !line.strict) {
                line.strict = true;
            } else if (args[i].empty() || args[i][0] == '-' || !line.kit_path.empty()) {
                line.kit_path.clear();
                break;
            } else {
                line.kit_path = args[i];
            }
        }
        if (line.kit_path.empty()) {
            error = command + ": expected exactly one kit file";
            return false;
        }
        return true;
    }
    error = "unknown command '" + command + "' (pack, list or verify)";
    return false;
}

const char* usage_text() {
    return "usage:\n"
           "  ord8kit pack DIR -o KIT [--manifest FILE]... [--product "
           "LANG:NAME:VENDOR:DESCRIPTION]..."
           " [--level N]\n"
           "      pack every regular file below DIR into KIT (level 0-9, default 9)\n"
           "  ord8kit list KIT     show the kit's products and files as the installer reads them\n"
           "  ord8kit verify [--strict] KIT\n"
           "      check the whole kit; exit 0 when the installer can use it, warnings\n"
           "      included (--strict: exit 1 on any warning too)\n"
           "exit status: 0 success, 1 refused input or kit, 2 bad command line\n";
}

}  // namespace kittool
