#include "tools/command_line.h"

#include "app/string_catalogue.h"

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

// install KIT [DIR] with its options anywhere; DIR may be given empty (and is then
// refused by the install itself, with the installer's message).
bool ParseInstall(const std::vector<std::string>& args, InstallOptions& install,
                  std::string& error) {
    std::size_t positional = 0;
    for (std::size_t i = 1; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (arg == "--lang") {
            if (i + 1 == args.size() || !install.language.empty()) {
                error = "install: --lang takes one language code, once";
                return false;
            }
            install.language = args[++i];
            if (FindLanguage(install.language) == 0) {
                error = "install: unknown language '" + install.language + "' (codes:";
                for (const auto& language : CatalogueLanguages())
                    error += " " + language.second.code;
                error += ")";
                return false;
            }
        } else if (arg == "--dry-run") {
            install.dryRun = true;
        } else if (arg == "--no-remember") {
            install.remember = false;
        } else if (arg.size() > 1 && arg[0] == '-') {
            error = "install: unknown option '" + arg + "'";
            return false;
        } else if (positional == 0 && !arg.empty()) {
            install.kitPath = arg;
            ++positional;
        } else if (positional == 1) {
            install.directory = arg;
            ++positional;
        } else {
            error = "install: unexpected argument '" + arg + "' (KIT and one DIR only)";
            return false;
        }
    }
    if (install.kitPath.empty()) {
        error = "install: no kit given";
        return false;
    }
    return true;
}

}  // namespace

bool parse_command_line(const std::vector<std::string>& args, CommandLine& line,
                        std::string& error) {
    if (args.empty()) {
        error = "no command given (pack, list, verify, install or recover; --help shows the usage)";
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
    if (command == "install") {
        line.command = Command::kInstall;
        return ParseInstall(args, line.install, error);
    }
    if (command == "recover") {
        line.command = Command::kRecover;
        if (args.size() == 1) return true;
        error = "recover: takes no arguments";
        return false;
    }
    error = "unknown command '" + command + "' (pack, list, verify, install or recover)";
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
           "  ord8kit install KIT [DIR] [--lang CODE] [--dry-run] [--no-remember]\n"
           "      install KIT into DIR (default: the proposed templates directory) and\n"
           "      remember DIR for the launcher; --dry-run only lists what would change\n"
           "  ord8kit recover      undo installations that were killed halfway\n"
           "exit status: 0 success, 1 refused input or kit, or failed install, 2 bad\n"
           "command line; install: 130 after SIGINT, 143 after SIGTERM, 129 after SIGHUP\n";
}

}  // namespace kittool
