// `ord8kit install` and `ord8kit recover`: the installer without a window, for scripted
// deployment and machines without a display. It runs the wizard's own steps: the
// preparation (kit/preparation.h) with a sink that prints the catalogue's message, the
// chosen-directory rule, recovery of interrupted passes (install/recovery.h), one pass
// (RunInstallation) with its journal in the user's settings folder, and the write-back
// of the directory to the launcher file. Results go to stdout; messages, one line each,
// and the progress line (only on a terminal) go to stderr.
//
// Threads: call from the main thread. While a pass runs, one helper thread polls its
// status for the progress line and turns SIGINT, SIGTERM and SIGHUP (whose handlers
// only note the signal) into the pass's cancel.
#pragma once

#include <optional>
#include <string>

namespace kittool {

struct InstallOptions {
    std::string kitPath;
    std::optional<std::string> directory;  // none: the proposed templates directory
    std::string language;                  // a catalogue code; empty: the locale's
    bool dryRun = false;                   // only say what would be done
    bool remember = true;                  // write the directory to the launcher file
};

// Exit statuses of install besides 0 (also after a launcher write-back that failed,
// which is a warning) and 1 (refused or failed; nothing changed): 128 plus the signal
// after a pass that a signal cancelled and that rolled back.
constexpr int kExitAfterSigHup = 129;
constexpr int kExitAfterSigInt = 130;
constexpr int kExitAfterSigTerm = 143;

int Install(const InstallOptions& options);

// Recovers the interrupted passes of this user and prints what was done to each
// journal. 0 when nothing is left behind, 1 when a journal or an original stays.
int Recover();

}  // namespace kittool
