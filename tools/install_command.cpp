#include "tools/install_command.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "app/startup_choices.h"
#include "app/string_catalogue.h"
#include "config/launcher_paths.h"
#include "config/templates_location.h"
#include "install/install_pass.h"
#include "install/install_thread.h"
#include "install/recovery.h"
#include "kit/preparation.h"
#include "text/encoding.h"
#include "tools/file_time.h"
#include "tools/progress_line.h"
#include "tools/utf_conversion.h"

namespace kittool {

namespace {

constexpr int kExitFailed = 1;
constexpr std::chrono::milliseconds kPollInterval(50);

// Set by the handlers, read by the thread that polls the pass: a lock-free atomic is
// safe in a handler, a semaphore (the pass's cancel flag) is not.
std::atomic<int> gSignal{0};
static_assert(std::atomic<int>::is_always_lock_free, "signal handlers need a lock-free flag");

extern "C" void NoteSignal(int signal) {
    int none = 0;
    gSignal.compare_exchange_strong(none, signal);
}

// Handlers for the signals that end a run from outside, for one scope.
class SignalScope {
  public:
    SignalScope() {
        struct sigaction action {};
        action.sa_handler = NoteSignal;
        sigemptyset(&action.sa_mask);
        for (std::size_t i = 0; i < kCount; ++i) sigaction(kSignals[i], &action, &saved_[i]);
    }
    ~SignalScope() {
        for (std::size_t i = 0; i < kCount; ++i) sigaction(kSignals[i], &saved_[i], nullptr);
    }
    SignalScope(const SignalScope&) = delete;
    SignalScope& operator=(const SignalScope&) = delete;

  private:
    static constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};
    static constexpr std::size_t kCount = sizeof kSignals / sizeof kSignals[0];
    struct sigaction saved_[kCount] {};
};

int ExitAfter(int signal) {
    return signal == SIGINT   ? kExitAfterSigInt
           : signal == SIGHUP ? kExitAfterSigHup
                              : kExitAfterSigTerm;
}

const char* SignalName(int signal) {
    return signal == SIGINT ? "SIGINT" : signal == SIGHUP ? "SIGHUP" : "SIGTERM";
}

std::string Shown(const stdx::u16string& text) { return escape_control_bytes(ToUtf8(text)); }

// The locale as the C library picks it for messages, without encoding or modifier.
std::string LocaleIdentifier() {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(name);
        if (value != nullptr && *value != '\0') {
            const std::string id(value);
            return id.substr(0, id.find_first_of(".@"));
        }
    }
    return "C";
}

// The start-up rules, with `language` standing for the window's /L option. LANG is set
// when it is empty even with a language given, so that the kit's names convert.
void ChooseLanguage(const std::string& language) {
    const std::string option = "-L" + language;
    const char* argv[] = {"ord8kit", option.c_str()};
    const std::string locale = LocaleIdentifier();
    const char* lang = std::getenv("LANG");
    StartupChoices choices = ChooseStartup(language.empty() ? 1 : 2, argv, locale, lang);
    if (!choices.langToSet && (lang == nullptr || *lang == '\0'))
        choices.langToSet = locale + ".UTF-8";
    ApplyStartupChoices(choices);
}

// Preparation's message box, as one line naming the kit.
class ConsoleMessages : public MessageSink {
  public:
    explicit ConsoleMessages(std::string kitPath) : kitPath_(std::move(kitPath)) {}
    void ShowError(const std::string&, const stdx::u16string& text, std::uint32_t) override {
        Tell(ToUtf8(text) + " (" + kitPath_ + ")");
    }

  private:
    std::string kitPath_;
};

// The loaded kit's temporary file goes when the command ends, however it ends.
struct KitCloser {
    ~KitCloser() { kit.Close(); }
    InstallProcessData::Kit& kit;
};

// Preparation finds a kit by its full path, as the installer always names it.
stdx::u16string AbsoluteKitPath(const std::string& path) {
    std::string absolute = path;
    if (path.empty() || path[0] != '/') {
        char* cwd = getcwd(nullptr, 0);
        if (cwd != nullptr) absolute = std::string(cwd) + "/" + path;
        std::free(cwd);
    }
    return stdx::from_multibyte(absolute.c_str());
}

std::string DescribePassCode(ResultCode code) {
    const char* meaning = code == kFileNotFound       ? "file not found"
                          : code == kPathNotFound     ? "path not found"
                          : code == kInUse            ? "another installation holds the directory"
                          : code == kInvalidParameter ? "invalid path or failed operation"
                          : code == kCannotWrite      ? "cannot write, or no room on the volume"
                          : code == kCancelled        ? "cancelled"
                                                      : nullptr;
    return "code " + std::to_string(code) + (meaning ? std::string(" (") + meaning + ")" : "");
}

// One line per journal (but for those of running passes unless `showRunning`), then a
// line per path it names; `left` is set when a journal or an original stays behind.
std::vector<std::string> DescribeRecovery(const RecoveryReport& report, bool dryRun,
                                          bool showRunning, bool& left) {
    using Outcome = JournalRecovery::Outcome;
    std::vector<std::string> lines;
    for (const JournalRecovery& journal : report.journals) {
        if (journal.outcome == Outcome::kPassRunning && !showRunning) continue;
        const UndoReport& undo = journal.undo;
        std::string head = Shown(journal.journal);
        if (!undo.templatesDirectory.empty())
            head += " (templates directory " + Shown(undo.templatesDirectory) + ")";
        switch (journal.outcome) {
            case Outcome::kUndone:
                head += dryRun ? ": an interrupted pass would be undone"
                               : ": an interrupted pass was undone";
                break;
            case Outcome::kCommitFinished:
                head += ": the pass had finished; its backup folder is deleted";
                break;
            case Outcome::kNothingDone:
                head += ": the pass ended before it changed anything";
                break;
            case Outcome::kPassRunning:
                head += ": a running pass holds it; left alone";
                break;
            case Outcome::kTemplatesInUse:
                head += ": left for later, a running pass holds the templates directory";
                left = true;
                break;
            case Outcome::kTemplatesMissing:
                head += ": left for later, the templates directory is missing";
                left = true;
                break;
            case Outcome::kUntrusted:
                head += ": left alone, not a regular file of this user";
                left = true;
                break;
            case Outcome::kNotAJournal:
                head += ": left alone, not a journal";
                left = true;
                break;
        }
        if (journal.damage != nullptr) head += std::string(" (read up to: ") + journal.damage + ")";
        lines.push_back(head);
        const std::string would = dryRun ? "would be " : "";
        for (const auto& path : undo.filesRestored)
            lines.push_back("  " + would + "restored " + Shown(path));
        for (const auto& path : undo.filesRemoved)
            lines.push_back("  " + would + "removed " + Shown(path));
        for (const auto& path : undo.directoriesRemoved)
            lines.push_back("  " + would + "removed folder " + Shown(path));
        for (const LeftBehind& item : undo.leftBehind)
            lines.push_back("  left " + Shown(item.path) + ": " + item.reason);
        if (!undo.leftBehind.empty() || !undo.originalsBack) left = true;
    }
    return lines;
}

// The journals, the proposed templates directory and the launcher file all live in the
// home directory. Without one each would fall back to the root directory: a failure
// naming some other path, or, run as root, folders made in "/". Nothing when unknown,
// which has been said.
std::optional<stdx::u16string> SettingsFolder() {
    std::optional<stdx::u16string> folder = config::existing_settings_folder();
    if (!folder) {
        const stdx::u16string home = config::home_directory();
        Tell("the home directory is unknown" +
             (home.empty() ? std::string() : ": " + Shown(home) + " is not a folder") +
             "; set HOME");
    }
    return folder;
}

std::string Iso(std::int64_t unixSeconds) {
    return file_time_to_iso(FileSystem::UnixTimeToFileTime(unixSeconds));
}

// What a pass into `target` would do with each file, judged as the pass judges it.
int ListPlan(const InstallProcessData::Kit& kit, const stdx::u16string& target) {
    std::uint64_t bytes = 0;
    std::size_t added = 0, replaced = 0, skipped = 0, blocked = 0;
    for (const auto& file : kit.files) {
        const stdx::u16string path = TargetPath(target, file.name);
        const std::optional<stdx::mbstring> system = FileSystem::ToSystemPath(path);
        struct stat status {};
        const bool there = system && stat(system->c_str(), &status) == 0;
        std::string name = file.name.empty() ? "" : ToUtf8(file.name);
        for (char& c : name)
            if (c == '\\') c = '/';
        std::string line = std::to_string(file.size) + "\t" +
                           file_time_to_iso(file.modificationTime) + "\t" +
                           escape_control_bytes(name);
        if (IsFileOlder(path, file.modificationTime) == 0) {
            line = "skip\t" + line + "\t" + Iso(status.st_mtime);
            ++skipped;
        } else if (!there) {
            line = "add\t" + line;
            ++added;
            bytes += file.size;
        } else if (S_ISREG(status.st_mode)) {
            line = "replace\t" + line + "\t" + Iso(status.st_mtime);
            ++replaced;
            bytes += file.size;
        } else {
            // The pass never moves a folder or a device aside: it would stop here.
            line = "blocked\t" + line + "\tnot a regular file";
            ++blocked;
        }
        std::printf("%s\n", line.c_str());
    }
    std::printf("%s: %zu to add, %zu to replace, %zu to skip, %llu bytes to write",
                Shown(target).c_str(), added, replaced, skipped,
                static_cast<unsigned long long>(bytes));
    if (blocked > 0) std::printf(", %zu blocked (the install would fail)", blocked);
    std::printf("\n");
    return blocked > 0 ? kExitFailed : 0;
}

struct Owner {
    uid_t uid;
    gid_t gid;
};

// Root installing into someone else's folder gives what it makes to that folder's
// owner (of the nearest folder that exists, when the pass makes the templates
// directory too); otherwise the user would find files there they cannot change.
std::optional<Owner> OwnerOfNewEntries(const stdx::u16string& target) {
    if (geteuid() != 0) return std::nullopt;
    std::optional<stdx::mbstring> system = FileSystem::ToSystemPath(target);
    if (!system) return std::nullopt;
    std::string path(system->c_str());
    struct stat status {};
    while (!path.empty() && stat(path.c_str(), &status) != 0) {
        while (!path.empty() && path.back() == '/') path.pop_back();
        path.erase(path.find_last_of('/') == std::string::npos ? 0 : path.find_last_of('/') + 1);
    }
    if (path.empty() || status.st_uid == 0) return std::nullopt;
    return Owner{status.st_uid, status.st_gid};
}

// Links are not followed: a link put into the user's folder must not make root give
// away the file it points to.
void GiveToOwner(const TransactionRecord& record, Owner owner) {
    for (const auto* paths :
         {&record.createdDirectories, &record.createdFiles, &record.backedUpFiles})
        for (const stdx::u16string& path : *paths)
            if (const auto system = FileSystem::ToSystemPath(path))
                fchownat(AT_FDCWD, system->c_str(), owner.uid, owner.gid, AT_SYMLINK_NOFOLLOW);
}

// Polls the pass on its own thread: the progress line, and a noted signal turned into
// the pass's cancel.
class PassWatch {
  public:
    PassWatch(InstallProcessData& data, const InstallProcessData::Kit& kit,
              const stdx::u16string& target)
        : data_(data), kit_(kit), target_(target) {
        if (isatty(STDERR_FILENO))
            line_ = std::make_unique<ProgressLine>(
                [](const std::string& text) { std::fputs(text.c_str(), stderr); });
        for (const auto& file : kit.files) bytesTotal_ += file.size;
        thread_ = std::thread([this] { Run(); });
    }
    ~PassWatch() {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            done_ = true;
        }
        wake_.notify_all();
        thread_.join();
    }

  private:
    void Run() {
        std::unique_lock<std::mutex> lock(mutex_);
        while (!wake_.wait_for(lock, kPollInterval, [this] { return done_; })) {
            if (gSignal.load() != 0) data_.SetCancelled(true);
            if (line_) Show();
        }
        if (line_) line_->Finish();
    }

    // The pass names the file it turns to; files are met in kit order, so the search
    // for its index goes on from the last one found.
    void Show() {
        ResultCode code;
        stdx::u16string text;
        std::int32_t progress;
        data_.GetStatus(code, text, progress);
        if (code != kOk || progress >= 100 || text.empty()) return;
        for (std::size_t i = index_; i < kit_.files.size(); ++i) {
            if (TargetPath(target_, kit_.files[i].name) != text) continue;
            for (; index_ < i; ++index_) bytesDone_ += kit_.files[index_].size;
            break;
        }
        line_->Update({index_, kit_.files.size(), bytesDone_, bytesTotal_, ToUtf8(text)});
    }

    InstallProcessData& data_;
    const InstallProcessData::Kit& kit_;
    stdx::u16string target_;
    std::unique_ptr<ProgressLine> line_;
    std::size_t index_ = 0;
    std::uint64_t bytesDone_ = 0, bytesTotal_ = 0;
    std::mutex mutex_;
    std::condition_variable wake_;
    bool done_ = false;
    std::thread thread_;
};

}  // namespace

int Install(const InstallOptions& options) {
    ChooseLanguage(options.language);
    SignalScope signals;
    gSignal.store(0);
    const std::optional<stdx::u16string> settings = SettingsFolder();
    if (!settings) return kExitFailed;
    const auto refuseDirectory = [] {
        Tell(ToUtf8(LoadString("IDS_SETUP_EMPTYTARGET")));
        return kExitFailed;
    };
    // A directory given is judged before the kit is inflated.
    std::optional<stdx::u16string> target;
    if (options.directory) {
        target = ChosenTemplatesDirectory(stdx::from_multibyte(options.directory->c_str()));
        if (!target) return refuseDirectory();
    }
    InstallerSession session;
    ConsoleMessages messages(options.kitPath);
    if (!PrepareInstallation(session, messages, AbsoluteKitPath(options.kitPath)))
        return kExitFailed;
    KitCloser closer{session.installData};
    if (!target) target = ChosenTemplatesDirectory(session.templates.directory);
    if (!target) return refuseDirectory();

    const stdx::u16string& journalFolder = *settings;
    InstallProcessData data;
    data.Init();
    data.SetJob(&session.installData, *target, journalFolder);
    stdx::u16string jobTarget, ignored;
    InstallProcessData::Kit* kit = nullptr;
    data.GetJob(kit, jobTarget, ignored);  // as the pass spells it, ending in "/"
    bool left = false;
    if (options.dryRun) {
        const RecoveryReport report =
            RecoverInterruptedPasses(journalFolder, RecoveryMode::kDryRun);
        for (const std::string& line : DescribeRecovery(report, true, false, left))
            std::printf("recover\t%s\n", line.c_str());
        return ListPlan(session.installData, jobTarget);
    }
    for (const std::string& line : DescribeRecovery(
             RecoverInterruptedPasses(journalFolder, RecoveryMode::kUndo), false, false, left))
        Tell("recovery: " + line);
    if (const int signal = gSignal.load()) {
        Tell(std::string("stopped by ") + SignalName(signal) + " before the installation began");
        return ExitAfter(signal);
    }

    const std::optional<Owner> owner = OwnerOfNewEntries(jobTarget);
    TransactionRecord record;
    ResultCode code;
    {
        PassWatch watch(data, session.installData, jobTarget);
        code = RunInstallation(&data, &record);
    }
    if (code == kCancelled && gSignal.load() != 0) {
        const int signal = gSignal.load();
        Tell(std::string("stopped by ") + SignalName(signal) +
             "; the templates directory is as it was");
        return ExitAfter(signal);
    }
    if (code != kOk) {
        const stdx::u16string file = data.CurrentFile();
        Tell(ToUtf8(LoadString("IDS_INSTALL_ERROR")) + ": " + DescribePassCode(code) + ": " +
             ToUtf8(file.empty() ? jobTarget : file) + "; the templates directory is as it was");
        return kExitFailed;
    }
    if (owner) GiveToOwner(record, *owner);
    const std::size_t written = record.createdFiles.size() + record.backedUpFiles.size();
    std::printf("%s: %zu file(s) installed, %zu already current\n", Shown(*target).c_str(), written,
                session.installData.files.size() - written);
    if (options.remember) {
        const config::ConfigWriteResult result =
            config::remember_installed_directory(session.templates, *target);
        if (result != config::kConfigWritten)
            Tell("warning: the directory was not remembered in the launcher file (" +
                 std::string(result == config::kConfigCannotOpen ? "cannot open it"
                                                                 : "cannot write it") +
                 ")");
    }
    return 0;
}

int Recover() {
    const std::optional<stdx::u16string> settings = SettingsFolder();
    if (!settings) return kExitFailed;
    const RecoveryReport report = RecoverInterruptedPasses(*settings, RecoveryMode::kUndo);
    bool left = false;
    for (const std::string& line : DescribeRecovery(report, false, true, left))
        std::printf("%s\n", line.c_str());
    if (report.journals.empty()) std::printf("no interrupted installation\n");
    return left ? kExitFailed : 0;
}

}  // namespace kittool
