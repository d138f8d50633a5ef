// wizard: the window layer on AppKit (GNUstep on Linux). It makes the installer window,
// its buttons and pages, shows and hides them as CInstallerDlg says, runs message boxes
// and the folder panel, and turns clicks and keys into the controller's calls. It holds
// no decisions of its own. Objective-C++ only; main thread only.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "kit/message_sink.h"
#include "text/string.h"
#include "wizard/appkit_controls.h"
#include "wizard/platform_compat.h"
#include "wizard/wizard_window.h"

class CInstallerDlg;
class AppKitWizardWindow;

// A content view with its origin at the top left, as every frame in
// wizard/window_layout.h assumes (the only public way on both platforms).
@interface Ord8FlippedView : NSView
@end

@interface ExtNSWindow : NSWindow {
  @public
    CInstallerDlg* m_mainDlg;
    AppKitWizardWindow* m_view;
}
- (id)initWithContentRectAndDlg:(NSRect)rect
                      styleMask:(NSUInteger)style
                        backing:(NSBackingStoreType)backing
                          defer:(BOOL)defer
                            dlg:(CInstallerDlg*)dlg;
@end

@interface ExtNSButton : NSButton {
  @public
    CInstallerDlg* m_mainDlg;
    AppKitWizardWindow* m_view;
}
- (id)initWithFrameAndDlg:(NSRect)frame dlg:(CInstallerDlg*)dlg;
- (void)on_buttonPrev_clicked:(id)sender;
- (void)on_buttonNext_clicked:(id)sender;
- (void)button_clicked_handler:(id)sender;
- (void)dir_button_clicked_handler:(id)sender;
@end

// Ends a sheet when its window closes; message boxes make it their window's delegate.
@interface ExtNSWindowDelegate : NSObject
@end

// Closing the last window ends the application; before it ends, the installation worker
// is stopped and joined (AppKit's terminate path never returns to main).
@interface ExtNSApplicationDelegate : NSObject {
  @public
    CInstallerDlg* m_mainDlg;
}
@end

// The views of one page, hidden and shown together.
class WizardDialogPage {
  public:
    virtual ~WizardDialogPage() = default;
    virtual void OnActivate() {}
    void SetHidden(bool hidden);

  protected:
    // Adds `view` (autoreleased) to the content view and to this page.
    id Add(NSView* contentView, NSView* view);
    std::vector<id> views_;
};

class MessagePage : public WizardDialogPage {
  public:
    MessagePage(NSView* contentView, NSImage* pageImage, const stdx::u16string& text);
    void SetText(const stdx::u16string& text);

  private:
    NSTextField* text_;
};

class SuccessFinalPage : public MessagePage {
  public:
    SuccessFinalPage(NSView* contentView, NSImage* pageImage, const stdx::u16string& text);
    bool Checked() const;

  private:
    NSButton* checkBox_;
};

class DirSelectPage : public WizardDialogPage {
  public:
    DirSelectPage(NSView* contentView, NSImage* pageImage, CInstallerDlg* dlg,
                  AppKitWizardWindow* view);
    void SetPath(const stdx::u16string& path);
    stdx::u16string Path() const;
    // The Browse button: a folder panel whose choice, when confirmed, replaces the path.
    void Browse();
    NSTextField* pathField() const { return path_; }
    NSButton* browseButton() const { return browse_; }

  private:
    NSTextField* path_;
    ExtNSButton* browse_;
};

class ProgressPage : public WizardDialogPage {
  public:
    ProgressPage(NSView* contentView, double width);
    void SetStatus(const stdx::u16string& status, std::int32_t percent);

  private:
    NSTextField* status_;
    NSProgressIndicator* bar_;
};

class AppKitWizardWindow : public WizardWindow {
  public:
    // Builds the window and its buttons for `dlg` and shows it (no page yet).
    explicit AppKitWizardWindow(CInstallerDlg& dlg);
    ~AppKitWizardWindow() override;

    void ShowPage(WizardPage page, const stdx::u16string& text) override;
    void SetButtons(const ButtonStates& buttons) override;
    stdx::u16string TypedPath() override;
    void SetProgress(const stdx::u16string& status, std::int32_t percent) override;
    bool OpenDescriptionChecked() override;
    std::uint32_t ShowMessageBox(const stdx::u16string& text, std::uint32_t type) override;
    LoopEvent PumpEvent(std::int32_t milliseconds) override;
    void Close() override;

    void Browse();

  private:
    void SetCurrentPage(WizardDialogPage* page);

    CInstallerDlg& dlg_;
    ExtNSWindow* window_;
    NSImage* pageImage_;
    ExtNSButton* backButton_;
    ExtNSButton* nextButton_;
    ExtNSButton* cancelButton_;
    MessagePage* welcomePage_ = nullptr;
    DirSelectPage* dirPage_ = nullptr;
    ProgressPage* progressPage_ = nullptr;
    SuccessFinalPage* successPage_ = nullptr;
    MessagePage* errorPage_ = nullptr;
    WizardDialogPage* currentPage_ = nullptr;
};

// An application-modal alert of `type` (wizard/message_box.h) with `text`, titled
// `title` when it is not empty; returns the answer.
std::uint32_t ShowMessageBox(const std::string& title, const stdx::u16string& text,
                             std::uint32_t type);

// Preparation's failures, as message boxes.
class AlertMessages : public MessageSink {
  public:
    explicit AlertMessages(std::string title) : title_(std::move(title)) {}
    void ShowError(const std::string& key, const stdx::u16string& text,
                   std::uint32_t style) override;

  private:
    std::string title_;
};
