// wizard: the differences between the platforms the window runs on, in one place, each
// with the reason it exists. The logic above never asks which platform it is on.
#pragma once

// The command that opens a document in the user's default viewer. On Linux `open` is an
// unrelated program (it starts a virtual console), so the desktop's opener is used.
#if defined(__APPLE__)
inline constexpr char kDocumentOpener[] = "open";
#else
inline constexpr char kDocumentOpener[] = "xdg-open";
#endif

#if defined(__OBJC__)
#import <AppKit/AppKit.h>

// The window is written with the names macOS has used since 10.12 (the older ones are
// deprecated there, and deprecation warnings fail our build); GNUstep 0.29 still lacks
// some of them, so they are mapped to its older names with the same values.
#if !defined(__APPLE__)
#define NSButtonTypeSwitch NSSwitchButton
#define NSButtonTypeMomentaryLight NSMomentaryLightButton
#define NSBezelStyleRounded NSRoundedBezelStyle
#define NSEventMaskAny NSAnyEventMask
#define NSEventTypeKeyDown NSKeyDown
#define NSEventTypeLeftMouseDown NSLeftMouseDown
#define NSEventTypeLeftMouseUp NSLeftMouseUp
#define NSEventTypeRightMouseDown NSRightMouseDown
#define NSEventTypeRightMouseUp NSRightMouseUp
#define NSEventTypeOtherMouseDown NSOtherMouseDown
#define NSEventTypeOtherMouseUp NSOtherMouseUp
#define NSEventTypeMouseMoved NSMouseMoved
#define NSEventTypeLeftMouseDragged NSLeftMouseDragged
#define NSEventTypeRightMouseDragged NSRightMouseDragged
#define NSEventTypeOtherMouseDragged NSOtherMouseDragged
#define NSEventTypeMouseEntered NSMouseEntered
#define NSEventTypeMouseExited NSMouseExited
#define NSEventTypeScrollWheel NSScrollWheel
#endif

// GNUstep's compiler here (g++) has no blocks, so a block-taking call such as the open
// panel's sheet cannot be written there; macOS's clang has them.
#if defined(__APPLE__) && defined(__BLOCKS__)
#define ORD8_HAS_BLOCKS 1
#else
#define ORD8_HAS_BLOCKS 0
#endif

// Runs `panel` for `window` (as a sheet on macOS, as a modal panel on GNUstep, which
// has no sheet with a completion handler) and then calls `done` with its result.
void RunFolderPanel(NSOpenPanel* panel, NSWindow* window,
                    void (*done)(NSOpenPanel* panel, NSInteger result, void* context),
                    void* context);

// Gives `alert` its window title, style mask and delegate. GNUstep makes an alert's
// window only inside runModal, so there it is done from the modal run loop's first
// turn; on macOS the window exists at once.
void PrepareAlertWindow(NSAlert* alert, NSString* title, id delegate);

// The alert's message. GNUstep draws the message text as a one-line heading that cuts
// a long message off, and "No information" below it when there is no informative text:
// there the message goes below, where it wraps, under the dialog's title as heading.
void SetAlertText(NSAlert* alert, NSString* text, NSString* title);

// Return presses `button`. GNUstep also draws a return-arrow image beside the title of
// such a button, which would take 16 of its points from the title: it is left out.
void MakeDefaultButton(NSButton* button);

// The app becomes a regular one with a menu bar and Dock icon. GNUstep has no
// activation policy; there it hides its separate app-icon window instead.
void BecomeRegularApplication();

// Escape, recognised by its character: GNUstep reports X key codes (Escape is 9, not
// 53), and the path field's editor would take Escape as completion before the window's
// keyDown: saw it, so the window looks at every key event in sendEvent:.
bool IsEscapeKey(NSEvent* event);
#endif
