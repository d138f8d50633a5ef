// wizard: the installer's pages and what the user does on them. CInstallerDlg, the
// controller, owns the run (the prepared kit, the worker and its shared record, the
// chosen directory) and decides in plain C++ what each page shows and what Back, Next,
// Cancel, Escape and Finish do in each page state; the window behind WizardWindow (on
// AppKit: wizard/appkit_window.h) only shows views and reports events. It never
// touches views itself, so tests drive it through a recording window.
//
// Threads: main thread only. The worker it starts reads the kit and the shared record;
// StopInstallation (also run by the destructor) stops and joins the worker, and every
// way the window closes must reach it before the process ends.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "install/install_process_data.h"
#include "install/install_thread.h"
#include "kit/installer_session.h"
#include "kit/message_sink.h"
#include "text/string.h"
#include "wizard/window_layout.h"
#include "wizard/wizard_window.h"

// Page states; their numbers are the ones the installer has always used.
enum PageState : std::int32_t {
    kStateNone = 0,
    kStateWelcome = 1,
    kStateDirectory = 2,
    kStateInstalling = 3,
    kStateSuccess = 4,
    kStateError = 5,
};

// The fixed texts of the final pages, the same in every interface language.
extern const char16_t kSuccessPageText[];
extern const char16_t kErrorPageText[];

class CInstallerDlg {
  public:
    CInstallerDlg(int argc, char** argv, bool silent, std::string title,
                  stdx::u16string languageName, bool useCwd);
    virtual ~CInstallerDlg();
    CInstallerDlg(const CInstallerDlg&) = delete;
    CInstallerDlg& operator=(const CInstallerDlg&) = delete;

    // Undoes passes an earlier run left interrupted, then prepares the kit (found beside
    // the program, in the working directory, or at `kitPath` when given); false (the
    // user has been told why through `messages`) when the wizard must not start.
    bool Prepare(MessageSink& messages,
                 const std::optional<stdx::u16string>& kitPath = std::nullopt);
    // The window the pages go to; not owned. Set before any Show.
    void AttachWindow(WizardWindow* window) { window_ = window; }

    void ShowWelcomePage();
    void ShowDirSelectPage();
    void ShowSuccessPage();
    void ShowErrorPage();

    // What the buttons and keys do in the current page state.
    void OnNext();
    void OnBack();
    void OnCancel();
    void OnEscape() { AskCancel(); }
    // Asks whether to cancel (when confirmCancel) and closes the window on Yes.
    void AskCancel();

    // Installs into targetDir on the worker while the window stays alive, and ends on
    // the success page or, after an error box, on the error page. Silent starts call it
    // right after the welcome page.
    void RunProgressLoop();
    // A silent start: the proposed directory, read as a typed one, is installed into.
    void RunSilent();
    // Finish: opens the description when asked and allowed, then closes the window.
    void finish();
    // Stops and joins the worker (its rollback included) and releases the kit's
    // temporary file. Safe to call more than once.
    void StopInstallation();

    // Product and provider of the first product record in `language`; empty when none.
    std::pair<stdx::u16string, stdx::u16string> FindProductNames(
        const stdx::u16string& language) const;

    int argc() const { return argc_; }
    char** argv() const { return argv_; }
    bool silent() const { return silent_; }
    std::int32_t pageState() const { return pageState_; }
    const std::string& title() const { return title_; }
    const stdx::u16string& targetDir() const { return targetDir_; }
    const InstallerSession& session() const { return session_; }
    std::int32_t width() const { return width_; }
    std::int32_t height() const { return height_; }

  private:
    using Kit = InstallProcessData::Kit;
    void SetFinishButtons();
    // Next on the directory page: refuses an empty or relative path with a message,
    // else runs the progress loop on it.
    void StartInstallation(const stdx::u16string& typed);

    bool silent_;
    InstallProcessData processData_;
    InstallerSession session_;  // kit path, templates choice, loaded kit
    stdx::u16string targetDir_;
    stdx::u16string journalFolder_;  // where passes keep their journals; empty: none
    stdx::u16string languageName_;
    std::int32_t pageState_ = kStateNone;
    bool confirmCancel_ = true;
    int argc_;
    char** argv_;
    std::int32_t width_ = static_cast<std::int32_t>(layout::kWindowWidth);
    std::int32_t height_ = static_cast<std::int32_t>(layout::kWindowHeight);
    std::string title_;
    WizardWindow* window_ = nullptr;
    InstallThread installThread_;
};
