#include "wizard/appkit_window.h"

#include "app/string_catalogue.h"
#include "assets/page_images.h"
#include "wizard/appkit_controls.h"
#include "wizard/installer_dialog.h"
#include "wizard/message_box.h"
#include "wizard/window_layout.h"

namespace {

NSImage* ImageFrom(ImageBytes bytes) {
    NSData* data = [NSData dataWithBytes:bytes.data length:bytes.size];
    return [[[NSImage alloc] initWithData:data] autorelease];
}

NSString* Catalogue(const char* key) { return ToNSString(LoadString(key)); }

NSImageView* MakeSideImage(NSImage* image) {
    NSImageView* view =
        [[[NSImageView alloc] initWithFrame:ToRect(layout::kSideImage)] autorelease];
    [view setImageScaling:static_cast<NSImageScaling>(3)];  // proportionally up or down
    [view setImageAlignment:NSImageAlignCenter];
    [view setImage:image];
    return view;
}

bool HasLocation(NSEventType type) {
    switch (type) {
        case NSEventTypeLeftMouseDown:
        case NSEventTypeLeftMouseUp:
        case NSEventTypeRightMouseDown:
        case NSEventTypeRightMouseUp:
        case NSEventTypeOtherMouseDown:
        case NSEventTypeOtherMouseUp:
        case NSEventTypeMouseMoved:
        case NSEventTypeLeftMouseDragged:
        case NSEventTypeRightMouseDragged:
        case NSEventTypeOtherMouseDragged:
        case NSEventTypeMouseEntered:
        case NSEventTypeMouseExited:
        case NSEventTypeScrollWheel:
            return true;
        default:
            return false;
    }
}

void BrowseFinished(NSOpenPanel* panel, NSInteger result, void* context) {
    if (result == NSModalResponseOK)
        [static_cast<DirSelectPage*>(context)->pathField() setStringValue:[[panel URL] path]];
    [panel release];
}

}  // namespace

@implementation Ord8FlippedView
- (BOOL)isFlipped {
    return YES;
}
@end

@implementation ExtNSWindow
- (id)initWithContentRectAndDlg:(NSRect)rect
                      styleMask:(NSUInteger)style
                        backing:(NSBackingStoreType)backing
                          defer:(BOOL)defer
                            dlg:(CInstallerDlg*)dlg {
    m_mainDlg = dlg;
    m_view = nullptr;
    return [super initWithContentRect:rect styleMask:style backing:backing defer:defer];
}

// Escape asks whether to cancel in every page state; while a message box is up the key
// belongs to the box, never to a second question.
- (BOOL)handledEscape:(NSEvent*)event {
    if (m_mainDlg == nullptr || !IsEscapeKey(event) || [NSApp modalWindow] != nil) return NO;
    m_mainDlg->OnEscape();
    return YES;
}

- (void)sendEvent:(NSEvent*)event {
    if (![self handledEscape:event]) [super sendEvent:event];
}

- (void)keyDown:(NSEvent*)event {
    if (![self handledEscape:event]) [super keyDown:event];
}
@end

@implementation ExtNSButton
- (id)initWithFrameAndDlg:(NSRect)frame dlg:(CInstallerDlg*)dlg {
    m_mainDlg = dlg;
    m_view = nullptr;
    return [super initWithFrame:frame];
}
- (void)on_buttonPrev_clicked:(id)sender {
    m_mainDlg->OnBack();
}
- (void)on_buttonNext_clicked:(id)sender {
    m_mainDlg->OnNext();
}
- (void)button_clicked_handler:(id)sender {
    m_mainDlg->OnCancel();
}
- (void)dir_button_clicked_handler:(id)sender {
    if (m_view != nullptr) m_view->Browse();
}
@end

@implementation ExtNSWindowDelegate
- (void)windowWillClose:(NSNotification*)notification {
    [NSApp endSheet:[notification object]];
}
@end

@implementation ExtNSApplicationDelegate
- (BOOL)applicationShouldTerminateAfterLastWindowClosed:(NSApplication*)application {
    return YES;
}
- (void)applicationWillTerminate:(NSNotification*)notification {
    if (m_mainDlg != nullptr) m_mainDlg->StopInstallation();
}
@end

void WizardDialogPage::SetHidden(bool hidden) {
    for (id view : views_) [view setHidden:hidden];
}

id WizardDialogPage::Add(NSView* contentView, NSView* view) {
    [contentView addSubview:view];
    views_.push_back(view);
    return view;
}

MessagePage::MessagePage(NSView* contentView, NSImage* pageImage, const stdx::u16string& text) {
    Add(contentView, MakeSideImage(pageImage));
    text_ = Add(contentView, MakeLabel(layout::kPageText, true));
    SetText(text);
}

void MessagePage::SetText(const stdx::u16string& text) { [text_ setStringValue:ToNSString(text)]; }

SuccessFinalPage::SuccessFinalPage(NSView* contentView, NSImage* pageImage,
                                   const stdx::u16string& text)
    : MessagePage(contentView, pageImage, text) {
    checkBox_ = [[[NSButton alloc] initWithFrame:ToRect(layout::kOpenDescriptionBox)] autorelease];
    StyleCheckBox(checkBox_);
    [checkBox_ setTitle:Catalogue("IDS_SUCCESS_OPENDESCR")];
    [checkBox_ setState:NSControlStateValueOn];
    Add(contentView, checkBox_);
}

bool SuccessFinalPage::Checked() const { return [checkBox_ state] == NSControlStateValueOn; }

DirSelectPage::DirSelectPage(NSView* contentView, NSImage* pageImage, CInstallerDlg* dlg,
                             AppKitWizardWindow* view) {
    Add(contentView, MakeSideImage(pageImage));
    NSTextField* prompt = Add(contentView, MakeLabel(layout::kPageText, true));
    [prompt setStringValue:Catalogue("IDS_DESTINATION_PROMPT")];
    NSTextField* label = Add(contentView, MakeLabel(layout::kDirectoryLabel, false));
    [label setStringValue:Catalogue("IDS_TEMPLATE_CATALOG")];
    path_ = [[[NSTextField alloc] initWithFrame:ToRect(layout::kPathField)] autorelease];
    // A long path scrolls in its one line instead of wrapping out of sight.
    [[path_ cell] setWraps:NO];
    [[path_ cell] setScrollable:YES];
    Add(contentView, path_);
    browse_ = [[[ExtNSButton alloc] initWithFrameAndDlg:ToRect(layout::kBrowseButton)
                                                    dlg:dlg] autorelease];
    browse_->m_view = view;
    [browse_ setButtonType:NSButtonTypeMomentaryLight];
    [browse_ setBezelStyle:static_cast<NSBezelStyle>(11)];
    [browse_ setTitle:@"..."];
    [browse_ setTarget:browse_];
    [browse_ setAction:@selector(dir_button_clicked_handler:)];
    Add(contentView, browse_);
}

void DirSelectPage::SetPath(const stdx::u16string& path) {
    [path_ setStringValue:ToNSString(path)];
}

stdx::u16string DirSelectPage::Path() const { return FromNSString([path_ stringValue]); }

void DirSelectPage::Browse() {
    NSOpenPanel* panel = [[NSOpenPanel openPanel] retain];
    [panel setResolvesAliases:YES];
    [panel setCanChooseFiles:NO];
    [panel setCanChooseDirectories:YES];
    [panel setCanCreateDirectories:NO];
    [panel setAllowsMultipleSelection:NO];
    // The panel opens where the field points, not in the working directory.
    NSString* typed = [[path_ stringValue] stringByExpandingTildeInPath];
    BOOL isFolder = NO;
    if ([[NSFileManager defaultManager] fileExistsAtPath:typed isDirectory:&isFolder] && isFolder)
        [panel setDirectoryURL:[NSURL fileURLWithPath:typed]];
    RunFolderPanel(panel, [path_ window], BrowseFinished, this);
}

ProgressPage::ProgressPage(NSView* contentView, double width) {
    Frame statusFrame = layout::kStatusLine;
    Frame barFrame = layout::kProgressBar;
    statusFrame.width = barFrame.width = width;
    status_ = Add(contentView, MakeLabel(statusFrame, false));
    bar_ = [[[NSProgressIndicator alloc] initWithFrame:ToRect(barFrame)] autorelease];
    [bar_ setIndeterminate:NO];
    [bar_ setMinValue:0.0];
    [bar_ setMaxValue:100.0];
    [bar_ setDoubleValue:0.0];
    Add(contentView, bar_);
    SetStatus(LoadString("IDS_PROGRESS_START"), 0);
}

void ProgressPage::SetStatus(const stdx::u16string& status, std::int32_t percent) {
    NSString* text = ToNSString(status);
    if (![[status_ stringValue] isEqualToString:text]) [status_ setStringValue:text];
    if ([bar_ doubleValue] != percent) [bar_ setDoubleValue:percent];
}

AppKitWizardWindow::AppKitWizardWindow(CInstallerDlg& dlg) : dlg_(dlg) {
    const NSRect content = NSMakeRect(0, 0, dlg.width(), dlg.height());
    window_ = [[ExtNSWindow alloc]
        initWithContentRectAndDlg:content
                        styleMask:NSWindowStyleMaskTitled | NSWindowStyleMaskClosable
                          backing:NSBackingStoreBuffered
                            defer:NO
                              dlg:&dlg];
    window_->m_view = this;
    [window_ setReleasedWhenClosed:NO];
    [window_ setContentView:[[[Ord8FlippedView alloc] initWithFrame:content] autorelease]];
    [window_ center];
    [window_ setTitle:[NSString stringWithUTF8String:dlg.title().c_str()]];
    [window_ setBackgroundColor:[NSColor colorWithCalibratedRed:1 green:1 blue:1 alpha:1]];
    [window_ setAcceptsMouseMovedEvents:YES];
    NSView* view = [window_ contentView];

    NSBox* separator = [[[NSBox alloc] initWithFrame:ToRect(layout::kSeparator)] autorelease];
    [separator setBoxType:NSBoxSeparator];
    [view addSubview:separator];

    struct ButtonSpec {
        ExtNSButton** button;
        Frame frame;
        const char* key;
        SEL action;
    };
    const ButtonSpec buttons[] = {
        {&backButton_, layout::kBackButton, "IDS_WIZARD_BACK", @selector(on_buttonPrev_clicked:)},
        {&nextButton_, layout::kNextButton, "IDS_WIZARD_NEXT", @selector(on_buttonNext_clicked:)},
        {&cancelButton_, layout::kCancelButton, "IDS_WIZARD_CANCEL",
         @selector(button_clicked_handler:)},
    };
    for (const ButtonSpec& spec : buttons) {
        ExtNSButton* button = [[[ExtNSButton alloc] initWithFrameAndDlg:ToRect(spec.frame)
                                                                    dlg:&dlg] autorelease];
        StyleWizardButton(button);
        [button setTitle:Catalogue(spec.key)];
        [button setTarget:button];
        [button setAction:spec.action];
        [view addSubview:button];
        *spec.button = button;
    }
    // Return presses Next (and Finish), as in every wizard.
    MakeDefaultButton(nextButton_);
    pageImage_ = [ImageFrom(SideImage()) retain];
    [window_ makeKeyAndOrderFront:nil];
}

AppKitWizardWindow::~AppKitWizardWindow() {
    for (WizardDialogPage* page : std::initializer_list<WizardDialogPage*>{
             welcomePage_, dirPage_, progressPage_, successPage_, errorPage_})
        delete page;
    [pageImage_ release];
    window_->m_mainDlg = nullptr;
    [window_ release];
}

void AppKitWizardWindow::SetCurrentPage(WizardDialogPage* page) {
    if (currentPage_ != nullptr) currentPage_->SetHidden(true);
    currentPage_ = page;
    if (currentPage_ != nullptr) currentPage_->SetHidden(false);
}

void AppKitWizardWindow::ShowPage(WizardPage page, const stdx::u16string& text) {
    NSView* view = [window_ contentView];
    switch (page) {
        case WizardPage::kWelcome:
            if (welcomePage_ == nullptr) welcomePage_ = new MessagePage(view, pageImage_, text);
            welcomePage_->SetText(text);
            SetCurrentPage(welcomePage_);
            welcomePage_->OnActivate();
            break;
        case WizardPage::kDirectory:
            if (dirPage_ == nullptr) {
                dirPage_ = new DirSelectPage(view, pageImage_, &dlg_, this);
                // Tab: path, Browse, then the buttons, and round again.
                [dirPage_->pathField() setNextKeyView:dirPage_->browseButton()];
                [dirPage_->browseButton() setNextKeyView:backButton_];
                [backButton_ setNextKeyView:nextButton_];
                [nextButton_ setNextKeyView:cancelButton_];
                [cancelButton_ setNextKeyView:dirPage_->pathField()];
            }
            dirPage_->SetPath(text);
            SetCurrentPage(dirPage_);
            [window_ makeFirstResponder:dirPage_->pathField()];
            break;
        case WizardPage::kProgress:
            if (progressPage_ == nullptr) progressPage_ = new ProgressPage(view, dlg_.width() - 20);
            [window_ makeFirstResponder:nil];
            SetCurrentPage(progressPage_);
            break;
        case WizardPage::kSuccess:
            if (successPage_ == nullptr)
                successPage_ = new SuccessFinalPage(view, pageImage_, text);
            SetCurrentPage(successPage_);
            break;
        case WizardPage::kError:
            if (errorPage_ == nullptr) errorPage_ = new MessagePage(view, pageImage_, text);
            SetCurrentPage(errorPage_);
            break;
    }
    // The focus ring goes to Next (Finish) on the pages without a field, not to the
    // first button, which is a disabled or hidden Back there.
    const bool nextUsable = ![nextButton_ isHidden] && [nextButton_ isEnabled];
    if (page != WizardPage::kDirectory) [window_ makeFirstResponder:nextUsable ? nextButton_ : nil];
    [window_ display];
}

void AppKitWizardWindow::SetButtons(const ButtonStates& buttons) {
    [backButton_ setHidden:!buttons.backVisible];
    [backButton_ setEnabled:buttons.backEnabled];
    [nextButton_ setHidden:!buttons.nextVisible];
    [nextButton_ setEnabled:buttons.nextEnabled];
    [nextButton_
        setTitle:Catalogue(buttons.nextIsFinish ? "IDS_WIZARD_FINISH" : "IDS_WIZARD_NEXT")];
    [cancelButton_ setEnabled:buttons.cancelEnabled];
}

stdx::u16string AppKitWizardWindow::TypedPath() {
    return dirPage_ != nullptr ? dirPage_->Path() : stdx::u16string();
}

void AppKitWizardWindow::SetProgress(const stdx::u16string& status, std::int32_t percent) {
    if (progressPage_ != nullptr) progressPage_->SetStatus(status, percent);
}

bool AppKitWizardWindow::OpenDescriptionChecked() {
    return successPage_ != nullptr && successPage_->Checked();
}

std::uint32_t AppKitWizardWindow::ShowMessageBox(const stdx::u16string& text, std::uint32_t type) {
    return ::ShowMessageBox(dlg_.title(), text, type);
}

LoopEvent AppKitWizardWindow::PumpEvent(std::int32_t milliseconds) {
    NSEvent* event =
        [NSApp nextEventMatchingMask:NSEventMaskAny
                           untilDate:[NSDate dateWithTimeIntervalSinceNow:milliseconds / 1000.0]
                              inMode:NSDefaultRunLoopMode
                             dequeue:YES];
    if (event == nil) return LoopEvent::kNone;
    bool inside = false;
    if ([event window] == window_ && HasLocation([event type])) {
        const NSPoint point = [[window_ contentView] convertPoint:[event locationInWindow]
                                                         fromView:nil];
        inside = layout::Contains(layout::kCancelButton, point.x, point.y);
    }
    [NSApp sendEvent:event];
    return inside ? LoopEvent::kInsideCancel : LoopEvent::kOther;
}

void AppKitWizardWindow::Close() { [window_ close]; }

void AppKitWizardWindow::Browse() {
    if (dirPage_ != nullptr) dirPage_->Browse();
}

std::uint32_t ShowMessageBox(const std::string& title, const stdx::u16string& text,
                             std::uint32_t type) {
    NSAlert* alert = [[NSAlert alloc] init];
    const MessageBoxLook look = LookOf(type);
    if (look.icon == MessageIcon::kError) [alert setIcon:ImageFrom(ErrorIcon())];
    if (look.icon == MessageIcon::kQuestion) [alert setIcon:ImageFrom(QuestionIcon())];
    [alert setAlertStyle:static_cast<NSAlertStyle>(look.style)];
    // The titles are these English words in every interface language.
    if (look.yesNo) {
        [[alert addButtonWithTitle:@"Yes"] setKeyEquivalent:@"\r"];
        [[alert addButtonWithTitle:@"No"] setKeyEquivalent:@"\033"];
    } else {
        [[alert addButtonWithTitle:@"OK"] setKeyEquivalent:@"\r"];
    }
    NSString* titleText = title.empty() ? nil : [NSString stringWithUTF8String:title.c_str()];
    PrepareAlertWindow(alert, titleText, [[[ExtNSWindowDelegate alloc] init] autorelease]);
    SetAlertText(alert, ToNSString(text), titleText);
    const NSInteger result = [alert runModal];
    [alert release];
    const NSInteger first = NSAlertFirstButtonReturn;
    return AnswerOf(type, result == first ? 0 : result == first + 1 ? 1 : -1);
}

void AlertMessages::ShowError(const std::string&, const stdx::u16string& text,
                              std::uint32_t style) {
    ShowMessageBox(title_, text, style);
}
