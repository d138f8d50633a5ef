#include "wizard/installer_dialog.h"

#include "app/string_catalogue.h"
#include "config/launcher_paths.h"
#include "config/templates_location.h"
#include "install/recovery.h"
#include "kit/preparation.h"
#include "wizard/finishing.h"
#include "wizard/message_box.h"

const char16_t kSuccessPageText[] = u"Конфигурация успешно установлена.";
const char16_t kErrorPageText[] =
    u"В процессе установки произошла ошибка. Установка прервана. Каталог шаблонов не изменен.";

namespace {

// Each round of the progress loop waits this long for an event: the worker needs the
// processor more than the loop does.
constexpr std::int32_t kLoopWaitMilliseconds = 20;

}  // namespace

CInstallerDlg::CInstallerDlg(int argc, char** argv, bool silent, std::string title,
                             stdx::u16string languageName, bool useCwd)
    : silent_(silent),
      languageName_(std::move(languageName)),
      argc_(argc),
      argv_(argv),
      title_(std::move(title)) {
    processData_.Init();
    processData_.SetStatus(kOk, LoadString("IDS_PREPARECOPY"), 0);
    session_.useCwd = useCwd;
}

CInstallerDlg::~CInstallerDlg() { StopInstallation(); }

bool CInstallerDlg::Prepare(MessageSink& messages, const std::optional<stdx::u16string>& kitPath) {
    // Before the directory is proposed: an interrupted pass may still hide the user's
    // originals there. Without a home there are no journals, and passes keep none.
    journalFolder_ = config::existing_settings_folder().value_or(stdx::u16string());
    if (!journalFolder_.empty()) RecoverInterruptedPasses(journalFolder_, RecoveryMode::kUndo);
    if (!PrepareInstallation(session_, messages, kitPath)) return false;
    targetDir_ = session_.templates.directory;
    return true;
}

std::pair<stdx::u16string, stdx::u16string> CInstallerDlg::FindProductNames(
    const stdx::u16string& language) const {
    for (const config::ProductInfo& product : session_.installData.products)
        if (product.language == language) return {product.productName, product.provider};
    return {};
}

void CInstallerDlg::ShowWelcomePage() {
    auto [product, provider] = FindProductNames(languageName_);
    if (product.empty()) product = LoadString("IDS_DEFPRODUCT");
    if (provider.empty()) provider = LoadString("IDS_DEFPROVIDER");
    const stdx::u16string text =
        LoadString("IDS_WELCOME_TITLE") + u" " + product + u" (" + provider + u").";
    ButtonStates buttons;
    buttons.backEnabled = false;
    buttons.backVisible = buttons.nextVisible = !silent_;
    pageState_ = kStateWelcome;
    window_->SetButtons(buttons);
    window_->ShowPage(WizardPage::kWelcome, text);
}

void CInstallerDlg::ShowDirSelectPage() {
    pageState_ = kStateDirectory;
    window_->SetButtons(ButtonStates{});
    window_->ShowPage(WizardPage::kDirectory, targetDir_);
}

void CInstallerDlg::ShowSuccessPage() {
    pageState_ = kStateSuccess;
    SetFinishButtons();
    window_->ShowPage(WizardPage::kSuccess, kSuccessPageText);
}

void CInstallerDlg::ShowErrorPage() {
    pageState_ = kStateError;
    SetFinishButtons();
    window_->ShowPage(WizardPage::kError, kErrorPageText);
}

void CInstallerDlg::SetFinishButtons() {
    ButtonStates buttons;
    buttons.backVisible = false;
    buttons.cancelEnabled = false;
    buttons.nextIsFinish = true;
    window_->SetButtons(buttons);
}

void CInstallerDlg::OnNext() {
    switch (pageState_) {
        case kStateWelcome:
            ShowDirSelectPage();
            break;
        case kStateDirectory:
            StartInstallation(window_->TypedPath());
            break;
        case kStateSuccess:
        case kStateError:
            finish();
            break;
        default:
            break;
    }
}

void CInstallerDlg::OnBack() {
    if (pageState_ == kStateDirectory) ShowWelcomePage();
}

void CInstallerDlg::OnCancel() {
    if (pageState_ == kStateInstalling)
        RequestStop(installThread_);
    else
        AskCancel();
}

void CInstallerDlg::AskCancel() {
    if (confirmCancel_ &&
        window_->ShowMessageBox(LoadString("IDS_ACCEPT_CANCEL"), kMessageQuestion) != kAnswerYes)
        return;
    window_->Close();
}

void CInstallerDlg::StartInstallation(const stdx::u16string& typed) {
    const std::optional<stdx::u16string> chosen = ChosenTemplatesDirectory(typed);
    if (!chosen) {
        window_->ShowMessageBox(LoadString("IDS_SETUP_EMPTYTARGET"), kMessageInformation);
        if (silent_) ShowErrorPage();  // nobody is there to type another path
        return;
    }
    targetDir_ = *chosen;
    RunProgressLoop();
}

void CInstallerDlg::RunProgressLoop() {
    ButtonStates buttons;
    buttons.backEnabled = buttons.nextEnabled = false;
    buttons.backVisible = buttons.nextVisible = !silent_;
    processData_.SetJob(&session_.installData, targetDir_, journalFolder_);
    window_->SetButtons(buttons);
    window_->ShowPage(WizardPage::kProgress, {});
    pageState_ = kStateInstalling;
    StartInstallThread(installThread_, &processData_);
    if (installThread_.createResult != 0)
        processData_.SetStatus(kInvalidParameter, LoadString("IDS_INSTALL_ERROR"), 0);

    const stdx::u16string startText = LoadString("IDS_PROGRESS_START");
    const stdx::u16string finishText = LoadString("IDS_INSTALL_FINISH");
    ResultCode code = kOk;
    stdx::u16string text;
    std::int32_t progress = 0;
    // Only the worker's own end ends the loop: after a cancel it still has to roll back
    // before "nothing has changed" is true.
    for (;;) {
        processData_.GetStatus(code, text, progress);
        window_->SetProgress(progress == 100 ? finishText : startText, progress);
        if (code != kOk || progress >= 100) break;
        if (window_->PumpEvent(kLoopWaitMilliseconds) == LoopEvent::kInsideCancel)
            RequestStop(installThread_);
    }
    // A failed pass publishes its code before it rolls back, and a successful one would
    // run again after its pause: either way the worker is done with once it has joined.
    StopAndJoinInstallThread(installThread_);
    if (code != kOk) {
        window_->ShowMessageBox(text, kMessageError);
        ShowErrorPage();
        return;
    }
    ShowSuccessPage();
    config::remember_installed_directory(session_.templates, targetDir_);
}

void CInstallerDlg::RunSilent() { StartInstallation(session_.templates.directory); }

void CInstallerDlg::finish() {
    StopAndJoinInstallThread(installThread_);
    if (pageState_ == kStateSuccess && window_->OpenDescriptionChecked()) {
        Kit* kit = nullptr;
        stdx::u16string jobTarget, journalFolder;
        processData_.GetJob(kit, jobTarget, journalFolder);
        if (const auto path = DescriptionToOpen(session_.installData, jobTarget, languageName_))
            OpenDocument(*path);
    }
    window_->Close();
}

void CInstallerDlg::StopInstallation() {
    StopAndJoinInstallThread(installThread_);
    session_.installData.Close();
}
