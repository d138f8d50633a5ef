// The window layer's platform differences (see wizard/platform_compat.h).
#include "wizard/platform_compat.h"

#include "wizard/appkit_window.h"

void RunFolderPanel(NSOpenPanel* panel, NSWindow* window,
                    void (*done)(NSOpenPanel* panel, NSInteger result, void* context),
                    void* context) {
#if ORD8_HAS_BLOCKS
    [panel beginSheetModalForWindow:window
                  completionHandler:^(NSInteger result) {
                    done(panel, result, context);
                  }];
#else
    (void)window;
    done(panel, [panel runModal], context);
#endif
}

#if !defined(__APPLE__)
// Finishes an alert's window once runModal has made it.
@interface Ord8AlertWindowSetter : NSObject {
  @public
    NSAlert* alert_;
    NSString* title_;
    id delegate_;
}
- (void)apply:(id)unused;
@end

@implementation Ord8AlertWindowSetter
- (void)apply:(id)unused {
    NSWindow* window = [alert_ window];
    if (title_ != nil) [window setTitle:title_];
    [window setDelegate:delegate_];
}
- (void)dealloc {
    [title_ release];
    [delegate_ release];
    [super dealloc];
}
@end
#endif

void PrepareAlertWindow(NSAlert* alert, NSString* title, id delegate) {
#if defined(__APPLE__)
    NSWindow* window = [alert window];
    [window setStyleMask:NSWindowStyleMaskTitled | NSWindowStyleMaskClosable];
    [window setDelegate:delegate];
    if (title != nil) [window setTitle:title];
#else
    Ord8AlertWindowSetter* setter = [[[Ord8AlertWindowSetter alloc] init] autorelease];
    setter->alert_ = alert;
    setter->title_ = [title retain];
    setter->delegate_ = [delegate retain];
    [setter performSelector:@selector(apply:)
                 withObject:nil
                 afterDelay:0
                    inModes:[NSArray arrayWithObject:NSModalPanelRunLoopMode]];
#endif
}

void SetAlertText(NSAlert* alert, NSString* text, NSString* title) {
#if defined(__APPLE__)
    (void)title;
    [alert setMessageText:text];
#else
    [alert setMessageText:title != nil ? title : @" "];
    [alert setInformativeText:text];
#endif
}

void MakeDefaultButton(NSButton* button) {
    [button setKeyEquivalent:@"\r"];
#if !defined(__APPLE__)
    [button setImage:nil];
#endif
}

void BecomeRegularApplication() {
#if defined(__APPLE__)
    [NSApp setActivationPolicy:NSApplicationActivationPolicyRegular];
#else
    [[NSUserDefaults standardUserDefaults]
        registerDefaults:[NSDictionary dictionaryWithObject:@"YES" forKey:@"GSSuppressAppIcon"]];
#endif
    [NSApp activateIgnoringOtherApps:YES];
}

bool IsEscapeKey(NSEvent* event) {
    if ([event type] != NSEventTypeKeyDown) return false;
    NSString* characters = [event characters];
    return [characters length] == 1 && [characters characterAtIndex:0] == 0x1B;
}

#if !defined(__APPLE__)
// GNUstep opens the process's plain arguments as documents when it finishes launching
// (an unknown one as an empty "Alert"); ours ("usecwd") are options, so the delegate
// takes them and does nothing.
@implementation ExtNSApplicationDelegate (ArgumentsAreNotDocuments)
- (BOOL)application:(NSApplication*)application openFile:(NSString*)file {
    return YES;
}
@end
#endif
