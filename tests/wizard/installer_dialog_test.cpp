#include "wizard/installer_dialog.h"

#include <gtest/gtest.h>

#include <deque>
#include <functional>

#include "app/string_catalogue.h"
#include "tests/install/transaction_test_support.h"
#include "tests/kit/kit_test_support.h"
#include "wizard/message_box.h"

namespace {

// Stands in for the window: remembers what it was told to show and answers message
// boxes and events from scripts.
class RecordingWindow : public WizardWindow {
  public:
    void ShowPage(WizardPage shown, const stdx::u16string& text) override {
        page = shown;
        pageText = Utf8(text);
    }
    void SetButtons(const ButtonStates& states) override { buttons = states; }
    stdx::u16string TypedPath() override { return U16(typed); }
    void SetProgress(const stdx::u16string&, std::int32_t percent) override {
        progress.push_back(percent);
    }
    bool OpenDescriptionChecked() override { return checked; }
    std::uint32_t ShowMessageBox(const stdx::u16string& text, std::uint32_t type) override {
        boxes.push_back({Utf8(text), type});
        if (answers.empty()) return type == kMessageQuestion ? kAnswerNo : kAnswerOk;
        const std::uint32_t answer = answers.front();
        answers.pop_front();
        return answer;
    }
    LoopEvent PumpEvent(std::int32_t) override { return pump ? pump() : LoopEvent::kNone; }
    void Close() override { closed = true; }

    WizardPage page = WizardPage::kWelcome;
    std::string pageText;
    ButtonStates buttons;
    std::string typed;
    bool checked = true;
    std::vector<std::int32_t> progress;
    std::vector<std::pair<std::string, std::uint32_t>> boxes;
    std::deque<std::uint32_t> answers;
    std::function<LoopEvent()> pump;
    bool closed = false;
};

class NoMessages : public MessageSink {
  public:
    void ShowError(const std::string& key, const stdx::u16string&, std::uint32_t) override {
        ADD_FAILURE() << "preparation refused: " << key;
    }
};

using KitFiles = std::vector<std::pair<std::u16string, std::string>>;

// A scratch HOME with the user's templates, a kit, and a wizard on a recording window.
class WizardTest : public ::testing::Test {
  protected:
    void Start(const KitFiles& files, bool silent = false) {
        // Newer than the user's files, so that they are replaced.
        const FileTime time = FileSystem::UnixTimeToFileTime(1600000000);
        WriteText(kit, kittest::Deflate(kittest::BuildKit({u"en"}, files, time), 1));
        char* argv[] = {nullptr};
        dlg = std::make_unique<CInstallerDlg>(0, argv, silent, "Title", u"en", false);
        dlg->AttachWindow(&window);
        NoMessages messages;
        ASSERT_TRUE(dlg->Prepare(messages, U16(kit)));
        dlg->ShowWelcomePage();
    }
    std::string LauncherFile() { return ReadText(home + "/.Tavri/ostart/ostart.cfg"); }

    UserTemplates user;  // templates, TMPDIR
    const std::string home = user.scratch / "home";
    const bool madeHome = std::filesystem::create_directories(home);
    ScopedEnvironment homeVariable{"HOME", home};
    const std::string kit = user.scratch / "ord8.dkz";
    RecordingWindow window;
    std::unique_ptr<CInstallerDlg> dlg;
};

// The tests where the progress loop and the worker run at once (picked up by the thread
// sanitizer's run).
using WizardConcurrency = WizardTest;

const KitFiles kKit = {{u"a.dt", "new a"}, {u"docs\\readme.txt", "read me"}, {u"new.dt", "new"}};

TEST_F(WizardConcurrency, InstallEndsOnSuccessPageAndRemembersTheDirectory) {
    Start(kKit);
    dlg->OnNext();
    window.typed = user.templates;  // the user's own folder, with backslashes below
    std::replace(window.typed.begin(), window.typed.end(), '/', '\\');
    window.typed = "/" + window.typed.substr(1);
    dlg->OnNext();
    EXPECT_EQ(kStateSuccess, dlg->pageState());
    EXPECT_EQ(std::u16string(kSuccessPageText), std::u16string(U16(window.pageText).data()));
    EXPECT_TRUE(window.buttons.nextIsFinish && !window.buttons.backVisible &&
                !window.buttons.cancelEnabled);
    EXPECT_EQ(100, window.progress.back());
    EXPECT_TRUE(window.boxes.empty());
    EXPECT_EQ("new a", ReadText(user.At("a.dt")));
    EXPECT_EQ("read me", ReadText(user.At("docs/readme.txt")));
    EXPECT_NE(std::string::npos, LauncherFile().find(user.templates)) << LauncherFile();
    dlg->OnCancel();  // disabled on the last page; nothing may happen behind it
    dlg->OnNext();    // Finish
    EXPECT_TRUE(window.closed);
}

TEST_F(WizardTest, FailedInstallShowsErrorAndLeavesTemplatesUnchanged) {
    std::filesystem::create_directories(user.At("new.dt"));  // a folder where a file goes
    const Tree before = Snapshot(user.templates);
    Start(kKit);
    dlg->OnNext();
    window.typed = user.templates;
    dlg->OnNext();
    EXPECT_EQ(kStateError, dlg->pageState());
    EXPECT_EQ(Utf8(kErrorPageText), window.pageText);
    ASSERT_EQ(1u, window.boxes.size());
    EXPECT_EQ(std::make_pair(Utf8(LoadString("IDS_INSTALL_ERROR")), kMessageError),
              window.boxes[0]);
    EXPECT_EQ(before, Snapshot(user.templates));
    EXPECT_EQ("", LauncherFile());
}

// The cancel test fires on the first event inside Cancel; the loop goes on until the
// worker has rolled back, so the error page tells the truth.
TEST_F(WizardConcurrency, CancelDuringInstallRollsBackBeforeTheErrorPage) {
    ScopedEnvironment hold{"ORD8_TEST_HOLD_AT_FILE", "3"};
    const Tree before = Snapshot(user.templates);
    Start(kKit);
    dlg->OnNext();
    window.typed = user.templates;
    int rounds = 0;
    window.pump = [&] { return ++rounds == 5 ? LoopEvent::kInsideCancel : LoopEvent::kOther; };
    dlg->OnNext();
    EXPECT_EQ(kStateError, dlg->pageState());
    ASSERT_EQ(1u, window.boxes.size());
    EXPECT_EQ(kMessageError, window.boxes[0].second);
    EXPECT_EQ(before, Snapshot(user.templates));
    EXPECT_TRUE(EntriesOf(user.tmp).empty()) << "backup folder left";
}

TEST_F(WizardTest, SilentStartHidesNavigationAndInstallsTheProposedDirectory) {
    Start(kKit, true);
    EXPECT_FALSE(window.buttons.backVisible || window.buttons.nextVisible);
    dlg->RunSilent();
    EXPECT_EQ(kStateSuccess, dlg->pageState());
    EXPECT_EQ("new", ReadText(home + "/.ord8/Tavri/tavri8/tmplts/new.dt"));
}

}  // namespace
